// Box blur, second pass, vertical, and unsharp mask: colour + (colour - blurred) strength. The blurred
// colour is divided by the centre's alpha once more, which darkens translucent pixels.

uniform sampler2D u_preprocessed;
uniform lowp float u_strength;
uniform lowp float u_radius; // in pixels

// A tap on the border of two texels reads the outer one, however coordinates are rounded; in pixels.
const mediump float BEYOND = 1.0 / 256.0;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    mediump float dist = dFdy(texCoord.y);
    lowp vec4 color = texture2D(u_preprocessed, texCoord);
    mediump vec4 blurred = color;
    for (int i = 1; i <= RADIUS; ++i) {
        mediump vec2 offset = dist * vec2(0.0, u_radius * float(i) / float(RADIUS) + BEYOND);
        blurred += texture2D(u_preprocessed, texCoord + offset);
        blurred += texture2D(u_preprocessed, texCoord - offset);
    }
    blurred /= float(2 * RADIUS + 1);
    return colorSample + (colorSample - blurred.rgb / (color.a + step(color.a, 0.0))) * u_strength;
}
