// a / (1 - b), kept finite; a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return a / (1.0 - b + .00001);
}
