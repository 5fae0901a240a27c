// colour + shift

uniform lowp vec3 u_shift;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return colorSample + u_shift;
}
