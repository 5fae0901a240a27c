// An application that quits in the middle of its exports: export_and_quit MODE TARGET LOCAL REMOTE.
// It exports three times what LOCAL is and once what REMOTE is, until a line comes on its standard
// input. MODE tells how the exporter goes.

#include "imagefx/RegisterQml.h"
#include "imagefx/export/ExportJob.h"
#include "imagefx/export/ImageEffectExporter.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>

#include <memory>
#include <unistd.h>

using ko::imagefx::ImageEffectExporter;

namespace
{

constexpr int localExports = 3;

std::unique_ptr<ImageEffectExporter> createInQml(QQmlEngine *engine)
{
    imagefx_register_qml("Korvel.ImageFx");
    QQmlComponent component(engine);
    component.setData("import Korvel.ImageFx 1.0\nImageEffectExporter {}", QUrl());
    return std::unique_ptr<ImageEffectExporter>(
        qobject_cast<ImageEffectExporter *>(component.create()));
}

void exportAll(ImageEffectExporter *exporter, const QStringList &arguments)
{
    const QUrl target = QUrl::fromLocalFile(arguments.at(2));
    exporter->setSource(QUrl::fromLocalFile(arguments.at(3)));
    for (int i = 0; i < localExports; ++i) {
        exporter->exportToFile(target);
    }
    exporter->setSource(QUrl(arguments.at(4)));
    for (int i = 0; i < 3; ++i) {
        exporter->exportToFile(target);
    }
}

} // namespace

int main(int argc, char **argv)
{
    static std::unique_ptr<ImageEffectExporter> afterAll;
    static ImageEffectExporter *never = nullptr;

    QCoreApplication application(argc, argv);
    ko::imagefx::exportProgramName = QStringLiteral("korvel_standin_exporter");
    auto engine = std::make_unique<QQmlEngine>();
    std::unique_ptr<ImageEffectExporter> exporter = createInQml(engine.get());
    const QStringList arguments = QCoreApplication::arguments();
    const QString &mode = arguments.at(1);
    exportAll(exporter.get(), arguments);

    QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, &application,
                     [] { QCoreApplication::quit(); });
    QCoreApplication::exec();

    if (mode == QLatin1String("exporter-first")) {
        exporter.reset();
    } else if (mode == QLatin1String("engine-first")) {
        engine.reset();
    } else if (mode == QLatin1String("with-the-application")) {
        exporter.release()->setParent(&application);
    } else if (mode == QLatin1String("after-main")) {
        afterAll = std::move(exporter);
    } else if (mode == QLatin1String("never")) {
        never = exporter.release();
    } else {
        return 2;
    }
    return never != nullptr && never->parent() != nullptr ? 3 : 0;
}
