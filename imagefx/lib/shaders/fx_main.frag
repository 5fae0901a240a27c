// source a, effect b: mix(a, fx_blend(a, b), u_alpha * mask) * source alpha

uniform sampler2D u_source;
uniform sampler2D u_maskGradient;
uniform lowp float u_alpha;

varying mediump vec2 v_texCoord;
varying mediump vec2 v_vertexCoord;

#ifndef USE_EFFECT
lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    return colorSample;
}
#endif

#ifndef USE_MASK
lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, mediump vec2 vertexCoord)
{
    return 1.0;
}
#endif

#ifndef USE_BLEND
lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)
{
    return b;
}
#endif

void main()
{
    lowp vec4 colorSample = texture2D(u_source, v_texCoord);
    colorSample.rgb = colorSample.rgb / colorSample.a;
    lowp vec3 fx = fx_main(u_source, colorSample.rgb, v_texCoord, v_vertexCoord);
    lowp float alpha = u_alpha;
#ifdef USE_MASK
    alpha *= texture2D(u_maskGradient,
                       vec2(fx_mask(colorSample.rgb, v_texCoord, v_vertexCoord), 0.0)).a;
#endif
#ifdef USE_BLEND
    fx = fx_blend(colorSample.rgb, fx);
#endif
    gl_FragColor.rgb = mix(colorSample.rgb, fx, alpha) * colorSample.a;
    gl_FragColor.a = colorSample.a;
}
