// The result of the nested effects, un-premultiplied.

uniform sampler2D u_batch;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    lowp vec4 batch = texture2D(u_batch, texCoord);
    return batch.rgb / batch.a;
}
