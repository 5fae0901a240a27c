// A copy: premultiplied colour stays premultiplied.

uniform lowp sampler2D u_texture;

varying mediump vec2 v_texCoord;

void main()
{
    gl_FragColor = texture2D(u_texture, v_texCoord);
}
