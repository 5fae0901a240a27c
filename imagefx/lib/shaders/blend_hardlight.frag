// b < 0.5: 2ba; else 1 - 2(1 - b)(1 - a); a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return mix(2.0 * b * a, 1.0 - 2.0 * (1.0 - b) * (1.0 - a), step(.5, b));
}
