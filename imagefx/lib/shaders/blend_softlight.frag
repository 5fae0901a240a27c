// a < 0.5: 2ab + a^2 (1 - 2b); else 2a(1 - b) + sqrt(a)(2b - 1); a: source, b: effect

lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return mix(2.0 * a * b + a * a * (1.0 - 2.0 * b),
               2.0 * a * (1.0 - b) + sqrt(a) * (2.0 * b - 1.0), step(.5, a));
}
