#pragma once

#include <qpa/qplatformintegrationplugin.h>

// Entry point of the platform "headless", static and shared. Arguments follow the platform's name
// after colons; HeadlessOptions lists them.
class HeadlessIntegrationPlugin : public QPlatformIntegrationPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QPlatformIntegrationFactoryInterface_iid FILE "headless.json")

public:
    QPlatformIntegration *create(const QString &key, const QStringList &arguments) override;
};
