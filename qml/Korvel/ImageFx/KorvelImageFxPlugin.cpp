#include "KorvelImageFxPlugin.h"

#include "imagefx/RegisterQml.h"
#include "imagefx/model/ImageEffect.h"

void KorvelImageFxPlugin::registerTypes(const char *uri)
{
    imagefx_register_qml(uri);
    ko::imagefx::ImageEffect::initialize();
}
