#include "imagefx/render/ImageEffectPass.h"

namespace ko::imagefx
{

ImageEffectPass::ImageEffectPass() = default;

} // namespace ko::imagefx
