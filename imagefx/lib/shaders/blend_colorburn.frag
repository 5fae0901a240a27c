// 1 - (1 - b) / a, kept finite: the effect is burnt by the source, not the other way round; a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return 1.0 - (1.0 - b) / (a + .00001);
}
