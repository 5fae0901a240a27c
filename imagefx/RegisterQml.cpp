#include "imagefx/RegisterQml.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/BlurImageEffect.h"
#include "imagefx/effects/BrightnessContrastImageEffect.h"
#include "imagefx/effects/ChannelShiftImageEffect.h"
#include "imagefx/effects/ColorFillImageEffect.h"
#include "imagefx/effects/ExposureImageEffect.h"
#include "imagefx/effects/GrayScaleImageEffect.h"
#include "imagefx/effects/HSVImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/effects/SelectiveSaturationImageEffect.h"
#include "imagefx/effects/SharpenImageEffect.h"
#include "imagefx/export/ImageEffectExporter.h"
#include "imagefx/model/DistanceAlphaMask.h"
#include "imagefx/model/HueAlphaMask.h"
#include "imagefx/model/LuminanceAlphaMask.h"
#include "imagefx/quick/PixelBuffer.h"

#include <QtQml/qqml.h>

void imagefx_register_qml(const char *uri)
{
    using namespace ko::imagefx;
    qmlRegisterUncreatableType<ImageEffect>(uri, 1, 0, "ImageEffect",
                                            QStringLiteral("ImageEffect is abstract"));
    qmlRegisterUncreatableType<AlphaMask>(uri, 1, 0, "AlphaMask",
                                          QStringLiteral("AlphaMask is abstract"));
    qmlRegisterType<PixelBuffer>(uri, 1, 0, "PixelBuffer");
    qmlRegisterType<SharpenImageEffect>(uri, 1, 0, "SharpenImageEffect");
    qmlRegisterType<GrayScaleImageEffect>(uri, 1, 0, "GrayScaleImageEffect");
    qmlRegisterType<BrightnessContrastImageEffect>(uri, 1, 0, "BrightnessContrastImageEffect");
    qmlRegisterType<ChannelShiftImageEffect>(uri, 1, 0, "ChannelShiftImageEffect");
    qmlRegisterType<HSVImageEffect>(uri, 1, 0, "HSVImageEffect");
    qmlRegisterType<LookupTableImageEffect>(uri, 1, 0, "LookupTableImageEffect");
    qmlRegisterType<BatchImageEffect>(uri, 1, 0, "BatchImageEffect");
    qmlRegisterType<BlurImageEffect>(uri, 1, 0, "BlurImageEffect");
    qmlRegisterType<ExposureImageEffect>(uri, 1, 0, "ExposureImageEffect");
    qmlRegisterType<ColorFillImageEffect>(uri, 1, 0, "ColorFillImageEffect");
    qmlRegisterType<SelectiveSaturationImageEffect>(uri, 1, 0, "SelectiveSaturationImageEffect");
    qmlRegisterType<AlphaGradientStop>(uri, 1, 0, "AlphaGradientStop");
    qmlRegisterType<DistanceAlphaMask>(uri, 1, 0, "DistanceAlphaMask");
    qmlRegisterType<HueAlphaMask>(uri, 1, 0, "HueAlphaMask");
    qmlRegisterType<LuminanceAlphaMask>(uri, 1, 0, "LuminanceAlphaMask");
    qmlRegisterType<ImageEffectExporter>(uri, 1, 0, "ImageEffectExporter");
}
