// gradient(fx_mask(source)) in all channels; the mask's piece stands in front of this text

uniform lowp sampler2D u_source;
uniform lowp sampler2D u_maskGradient;

varying mediump vec2 v_texCoord;
varying mediump vec2 v_vertexCoord;

// What a mask's piece looks like.
#if 0
lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, mediump vec2 vertexCoord)
{
    return 1.0;
}
#endif

void main()
{
    lowp vec4 color = texture2D(u_source, v_texCoord);
    lowp float m = fx_mask(color.rgb, v_texCoord, v_vertexCoord);
    lowp float alpha = texture2D(u_maskGradient, vec2(m, 0.0)).a;
    gl_FragColor = vec4(alpha);
}
