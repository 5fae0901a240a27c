#include "HeadlessPlugin.h"

#include "HeadlessIntegration.h"

QPlatformIntegration *HeadlessIntegrationPlugin::create(const QString &key,
                                                        const QStringList &arguments)
{
    if (key.compare(QLatin1String("headless"), Qt::CaseInsensitive) != 0)
        return nullptr;
    return new HeadlessIntegration(HeadlessOptions::parse(arguments));
}
