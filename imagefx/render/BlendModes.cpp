#include "imagefx/render/BlendModes.h"

#include "imagefx/model/ImageEffect.h"

#include <QtCore/QMetaEnum>

namespace ko::imagefx
{

// The files are named after the modes, in lower case: "blend_hardlight.frag".
QByteArray blendModeShaderCode(int blendMode)
{
    const char *mode = QMetaEnum::fromType<ImageEffect::BlendMode>().valueToKey(blendMode);
    if (mode == nullptr || blendMode == ImageEffect::Normal) {
        return {};
    }
    return ImageEffect::readShader(
        QStringLiteral("blend_%1.frag").arg(QLatin1String(mode)).toLower());
}

} // namespace ko::imagefx
