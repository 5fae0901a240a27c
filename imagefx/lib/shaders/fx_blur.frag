// Gaussian blur, second pass, horizontal: taps at i / SAMPLES of the radius, weighted w[i].

uniform sampler2D u_preprocessed;
uniform lowp float u_radius; // in pixels

// A tap on the border of two texels reads the outer one, however coordinates are rounded; in pixels.
const mediump float BEYOND = 1.0 / 256.0;

#if 0 // what stands at the marker below
#define SAMPLES 2
mediump float w[SAMPLES];
#endif

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    // [DEFS]
    mediump float dist = dFdx(texCoord.x);
    lowp vec3 blurred = texture2D(u_preprocessed, texCoord).rgb * w[0];
    for (int i = 1; i < SAMPLES; ++i) {
        mediump vec2 offset = dist * vec2(u_radius * float(i) / float(SAMPLES) + BEYOND, 0.0);
        blurred += texture2D(u_preprocessed, texCoord + offset).rgb * w[i];
        blurred += texture2D(u_preprocessed, texCoord - offset).rgb * w[i];
    }
    return blurred;
}
