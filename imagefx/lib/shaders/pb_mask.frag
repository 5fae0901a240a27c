// source * mask red: colour is premultiplied, so all four channels shrink alike

uniform lowp sampler2D u_source;
uniform lowp sampler2D u_mask;

varying mediump vec2 v_texCoord;

void main()
{
    lowp vec4 color = texture2D(u_source, v_texCoord);
    lowp float alpha = texture2D(u_mask, v_texCoord).r;
    gl_FragColor = color * alpha;
}
