// Box blur, first pass, horizontal: the mean of taps at i / RADIUS of the radius, divided by the
// centre's alpha.

uniform sampler2D u_source;
uniform lowp float u_radius; // in pixels

varying mediump vec2 v_texCoord;

// A tap on the border of two texels reads the outer one, however coordinates are rounded; in pixels.
const mediump float BEYOND = 1.0 / 256.0;

void main()
{
    mediump float dist = dFdx(v_texCoord.x);
    lowp vec4 color = texture2D(u_source, v_texCoord);
    mediump vec4 blurred = color;
    for (int i = 1; i <= RADIUS; ++i) {
        mediump vec2 offset = dist * vec2(u_radius * float(i) / float(RADIUS) + BEYOND, 0.0);
        blurred += texture2D(u_source, v_texCoord + offset);
        blurred += texture2D(u_source, v_texCoord - offset);
    }
    blurred /= float(2 * RADIUS + 1);
    // A transparent centre keeps finite colour, since its neighbours read it.
    gl_FragColor = vec4(blurred.rgb / (color.a + step(color.a, 0.0)), color.a);
}
