#include "KorvelCorePlugin.h"

#include "core/RegisterQml.h"

void KorvelCorePlugin::registerTypes(const char *uri)
{
    korvelcore_register_qml(uri);
}
