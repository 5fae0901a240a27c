#pragma once

namespace ko::imagefx
{

// What a renderer tells every state and pass about the frame.
struct PixelBufferState {
    // Multiplies the alpha of every effect.
    float imageEffectAlpha = 1.0F;
    // Target pixels per pixel of the reference image: pixel-sized parameters are multiplied by it.
    float renderScale = 1.0F;
};

} // namespace ko::imagefx
