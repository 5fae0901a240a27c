// The sample as it is, written straight to the framebuffer: not a piece of the main shader.

void fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord)
{
    gl_FragColor = texture2D(source, texCoord);
}
