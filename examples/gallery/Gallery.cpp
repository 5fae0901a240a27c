#include "examples/gallery/Gallery.h"

#include "examples/gallery/ExportFolder.h"

#include <QtCore/QCoreApplication>
#include <QtQml/QQmlApplicationEngine>

void loadGallery(QQmlApplicationEngine *engine)
{
    qmlRegisterType<ExportFolder>("Gallery", 1, 0, "ExportFolder");
    engine->addImportPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../qml"));
    engine->load(QUrl(QStringLiteral("qrc:/gallery/Main.qml")));
}
