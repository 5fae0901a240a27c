attribute mediump vec4 a_vertex;
attribute mediump vec2 a_texCoord;

varying mediump vec2 v_texCoord;
varying mediump vec2 v_vertexCoord;

void main()
{
    gl_Position = a_vertex;
    v_texCoord = a_texCoord;
    v_vertexCoord = a_vertex.xy;
}
