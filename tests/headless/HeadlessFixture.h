#pragma once

#include <QtGui/QGuiApplication>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtTest/QtTest>

// A context, current on a surface of its own for as long as it lives.
struct Current {
    explicit Current(const QSurfaceFormat &format = {}, QOpenGLContext *share = nullptr)
    {
        context.setFormat(format);
        context.setShareContext(share);
        created = context.create();
        surface.setFormat(context.format());
        surface.create();
        current = created && context.makeCurrent(&surface);
    }
    ~Current() { context.doneCurrent(); }
    QOpenGLFunctions *gl() { return context.functions(); }

    QOpenGLContext context;
    QOffscreenSurface surface;
    bool created = false;
    bool current = false;
};

// Runs a test class on the platform under test, with a context that all others share with.
template <typename Test>
int runHeadlessTest(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "headless");
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
    QGuiApplication app(argc, argv);
    Test test;
    return QTest::qExec(&test, argc, argv);
}
