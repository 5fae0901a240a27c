// dot(factors, colour) in every channel; the factors add up to 1

uniform lowp vec3 u_factors;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return vec3(dot(u_factors, colorSample));
}
