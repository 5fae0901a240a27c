attribute mediump vec4 a_Vertex;
attribute mediump vec2 a_TexCoord;

varying mediump vec2 v_texCoord;
varying mediump vec2 v_vertexCoord;

void main()
{
    gl_Position = a_Vertex;
    v_texCoord = a_TexCoord;
    v_vertexCoord = a_Vertex.xy;
}
