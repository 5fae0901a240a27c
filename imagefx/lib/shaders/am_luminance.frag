// The plain average: each channel weighs 0.333.

lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, mediump vec2 vertexCoord)
{
    return dot(vec3(.333), color);
}
