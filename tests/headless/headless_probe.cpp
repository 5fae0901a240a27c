#include <QtGui/QGuiApplication>
#include <QtGui/QImage>
#include <QtGui/QOffscreenSurface>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtGui/QScreen>

#include <cstdio>

// Clears one pixel to orange with whatever platform it is started on, and says what it saw in
// lines of the form "key: value". Exits with 3 if there is no OpenGL.
int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    const QSize screen = QGuiApplication::primaryScreen()->size();
    std::printf("platform: %s\nscreen: %dx%d\n", qPrintable(QGuiApplication::platformName()),
                screen.width(), screen.height());

    QOpenGLContext context;
    if (!context.create()) {
        std::printf("context: none\n");
        return 3;
    }
    QOffscreenSurface surface;
    surface.setFormat(context.format());
    surface.create();
    if (!context.makeCurrent(&surface)) {
        std::printf("context: refused\n");
        return 4;
    }
    QOpenGLFramebufferObject target(1, 1);
    target.bind();
    context.functions()->glClearColor(1.0f, 0.5f, 0.0f, 1.0f);
    context.functions()->glClear(GL_COLOR_BUFFER_BIT);
    std::printf("pixel: %s\n", qPrintable(target.toImage().pixelColor(0, 0).name()));
    return 0;
}
