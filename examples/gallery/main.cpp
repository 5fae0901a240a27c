#include "examples/gallery/Gallery.h"

#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>

int main(int argc, char **argv)
{
    QGuiApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    const QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    loadGallery(&engine);
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
