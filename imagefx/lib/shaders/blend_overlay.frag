// a < 0.5: 2ab; else 1 - 2(1 - a)(1 - b); a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return mix(2.0 * a * b, 1.0 - 2.0 * (1.0 - a) * (1.0 - b), step(.5, a));
}
