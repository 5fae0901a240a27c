// 1 - (1 - a)(1 - b); a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return 1.0 - (1.0 - a) * (1.0 - b);
}
