// red, (1 - mask) / 2 opaque: where the mask lets nothing through half of the picture is covered

uniform lowp sampler2D u_mask;

varying mediump vec2 v_texCoord;

void main()
{
    lowp float alpha = texture2D(u_mask, v_texCoord).a;
    gl_FragColor = vec4(1.0, 0.0, 0.0, (1.0 - alpha) * 0.5);
}
