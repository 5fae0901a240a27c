// Gaussian blur, first pass, vertical: taps at i / SAMPLES of the radius, weighted w[i].

uniform sampler2D u_source;
uniform lowp float u_radius; // in pixels

varying mediump vec2 v_texCoord;
varying mediump vec2 v_vertexCoord;

// A tap on the border of two texels reads the outer one, however coordinates are rounded; in pixels.
const mediump float BEYOND = 1.0 / 256.0;

#if 0 // what stands at the marker below
#define SAMPLES 2
mediump float w[SAMPLES];
lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord);
#endif

void main()
{
    // [DEFS]
    lowp vec4 color = texture2D(u_source, v_texCoord);
    mediump float dist = dFdy(v_texCoord.y);
    lowp vec3 blurred = color.rgb * w[0];
    for (int i = 1; i < SAMPLES; ++i) {
        mediump vec2 offset = dist * vec2(0.0, u_radius * float(i) / float(SAMPLES) + BEYOND);
        blurred += texture2D(u_source, v_texCoord + offset).rgb * w[i];
        blurred += texture2D(u_source, v_texCoord - offset).rgb * w[i];
    }
    gl_FragColor = vec4(blurred, color.a);
}
