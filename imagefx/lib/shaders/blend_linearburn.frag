// a + b - 1; a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return a + b - 1.0;
}
