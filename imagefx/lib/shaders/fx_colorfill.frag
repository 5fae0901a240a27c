// one colour, its alpha unused

uniform lowp vec4 u_color;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return u_color.rgb;
}
