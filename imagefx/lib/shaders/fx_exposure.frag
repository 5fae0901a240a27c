// The tone curve of 256 levels, channel by channel.

uniform sampler2D u_lut;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return vec3(texture2D(u_lut, vec2(colorSample.r, 0.0)).a,
                texture2D(u_lut, vec2(colorSample.g, 0.0)).a,
                texture2D(u_lut, vec2(colorSample.b, 0.0)).a);
}
