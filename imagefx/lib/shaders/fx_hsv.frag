// Hue by way of HSV, saturation as the distance from luma (Rec. 709), value as a mix with white or
// black.

uniform lowp vec3 u_parameters; // hue, saturation, value

const lowp float ZERO = 0.0;
const lowp float ONE = 1.0;
const lowp float SIX = 6.0;
const lowp float EPS = 0.000001;

// Of equal maxima red counts before green, green before blue; a grey has the hue 0.
lowp float hsv_hue(lowp vec3 color, lowp float maximum, lowp float diff)
{
    lowp float divisor = diff + step(diff, ZERO);
    lowp float isRed = float(color.r == maximum);
    lowp float isGreen = float(color.g == maximum) * (ONE - isRed);
    lowp float isBlue = ONE - isRed - isGreen;
    lowp float distance = isRed * (color.g - color.b) + isGreen * (color.b - color.r)
        + isBlue * (color.r - color.g);
    lowp float sixth = isGreen * 2.0 + isBlue * 4.0 + distance / divisor;
    return mod(sixth / SIX + ONE, ONE);
}

// One channel of the pure hue: a trapezoid that is 1 around its own third of the circle.
lowp float hsv_ramp(lowp float position)
{
    return clamp(abs(mod(position, SIX) - 3.0) - ONE, ZERO, ONE);
}

lowp vec3 hsv_turn(lowp vec3 color)
{
    lowp float maximum = max(max(color.r, color.g), color.b);
    lowp float diff = maximum - min(min(color.r, color.g), color.b);
    lowp float sixth = SIX * mod(hsv_hue(color, maximum, diff) + ONE + u_parameters.x * 0.5, ONE);
    lowp vec3 pure = vec3(hsv_ramp(sixth), hsv_ramp(sixth + 4.0), hsv_ramp(sixth + 2.0));
    return maximum * mix(vec3(ONE), pure, diff / (maximum + EPS));
}

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    lowp vec3 color = colorSample;
    if (u_parameters.x != ZERO)
        color = hsv_turn(color);
    lowp float luma = dot(vec3(0.2125, 0.7154, 0.0721), color);
    color = mix(vec3(luma), color, ONE + u_parameters.y);
    return mix(color, vec3(step(ZERO, u_parameters.z)), abs(u_parameters.z));
}
