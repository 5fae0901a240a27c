attribute mediump vec4 a_vertex;
attribute mediump vec2 a_texCoord;

varying mediump vec2 v_texCoord;

void main()
{
    gl_Position = a_vertex;
    v_texCoord = a_texCoord;
}
