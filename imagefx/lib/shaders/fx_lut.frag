// The table of 256 colours, each channel by itself.

uniform sampler2D u_lut;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return vec3(texture2D(u_lut, vec2(colorSample.r, 0.0)).r,
                texture2D(u_lut, vec2(colorSample.g, 0.0)).g,
                texture2D(u_lut, vec2(colorSample.b, 0.0)).b);
}
