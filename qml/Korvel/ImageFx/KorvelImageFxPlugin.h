#pragma once

#include <QtQml/QQmlExtensionPlugin>

// What `import Korvel.ImageFx 1.0` loads.
class KorvelImageFxPlugin : public QQmlExtensionPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QQmlExtensionInterface_iid)

public:
    void registerTypes(const char *uri) override;
};
