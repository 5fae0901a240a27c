#include "core/RegisterQml.h"

#include "core/RenderScope.h"

#include <QtQml/qqml.h>

void korvelcore_register_qml(const char *uri)
{
    qmlRegisterType<ko::RenderScope>(uri, 1, 0, "RenderScope");
}
