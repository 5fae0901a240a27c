// length(position) / sqrt(2): 0 in the centre, 1 in the corners

lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, mediump vec2 vertexCoord)
{
    return length(vertexCoord) / 1.4142135;
}
