// The hue of HSV, red at 0. Of equal maxima red counts before green, green before blue; a grey
// gives 0.

lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, mediump vec2 vertexCoord)
{
    lowp float maximum = max(max(color.r, color.g), color.b);
    lowp float diff = maximum - min(min(color.r, color.g), color.b);
    lowp float divisor = diff + step(diff, 0.0);
    lowp float isRed = float(color.r == maximum);
    lowp float isGreen = float(color.g == maximum) * (1.0 - isRed);
    lowp float isBlue = 1.0 - isRed - isGreen;
    lowp float sixth = isRed * ((color.g - color.b) / divisor)
        + isGreen * (2.0 + (color.b - color.r) / divisor)
        + isBlue * (4.0 + (color.r - color.g) / divisor);
    return mod(sixth / 6.0 + 1.0, 1.0);
}
