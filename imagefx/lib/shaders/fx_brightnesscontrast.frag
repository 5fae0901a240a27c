// F (contrast + 1) / (F - contrast) * (colour + brightness - 0.5) + 0.5

uniform lowp float u_brightness;
uniform lowp float u_contrast;

const lowp float F = 259.047619 / 255.0;

lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord,
                  mediump vec2 vertexCoord)
{
    lowp float factor = (F * (u_contrast + 1.0)) / (F - u_contrast);
    return factor * (colorSample + u_brightness - 0.5) + 0.5;
}
