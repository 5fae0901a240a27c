// mix(luma, colour, 2 table(hue)), luma by Rec. 709

uniform sampler2D u_table;

lowp float max3(lowp vec3 color)
{
    return max(max(color.r, color.g), color.b);
}

lowp float min3(lowp vec3 color)
{
    return min(min(color.r, color.g), color.b);
}

// In turns, from -1/6 to 1: the sectors of red, green and blue side by side, and the weights that pick
// one of them. Of equal maxima red counts before green, green before blue; a grey has no weight, and
// so the hue 0.
lowp float get_hue(lowp vec3 color)
{
    lowp float vmax = max3(color);
    lowp float diff = vmax - min3(color);
    lowp float divisor = diff + step(diff, 0.0);
    lowp vec3 hues = vec3(0.0, 2.0, 4.0) + (color.gbr - color.brg) / divisor;
    lowp vec4 fac = vec4(float(color.r == vmax), float(color.g == vmax), float(color.b == vmax),
                         float(diff == 0.0));
    lowp vec3 weights = max(vec3(0.0), fac.xyz - fac.wxx - fac.wwy - fac.www);
    return dot(hues, weights) / 6.0;
}

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    lowp float value = texture2D(u_table, vec2(fract(get_hue(colorSample)), 0.0)).a;
    lowp float luma = dot(vec3(0.2125, 0.7154, 0.0721), colorSample);
    return mix(vec3(luma), colorSample, value * 2.0);
}
