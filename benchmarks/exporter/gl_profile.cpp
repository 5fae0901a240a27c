// exporter_gl_profile [--parts] EFFECTS SOURCE TARGET: exports one JPEG with GL by the exporter's
// own code and prints, a line each, how many milliseconds every step took and its name. Until the
// picture is written it does what the exporter does, decoding while the context starts. With
// --parts it does one thing at a time, and then draws once more, step by step.

#include "benchmarks/exporter/ProfiledSteps.h"
#include "benchmarks/exporter/StepClock.h"

#include "exporter/EffectStack.h"
#include "exporter/OffscreenGl.h"
#include "exporter/PictureRenderer.h"
#include "exporter/StackReading.h"

#include "imagefx/render/ImageEffectRenderer.h"

#include <QtCore/QStringList>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <future>
#include <memory>
#include <utility>

using namespace ko;
using namespace ko::exporter;
using namespace ko::exporter::benchmarks;

namespace
{

void start(OffscreenGl *gl, const QString &source)
{
    if (const Outcome failure = gl->start(source)) {
        giveUp(failure->message);
    }
}

QImage loadAndStart(OffscreenGl *gl, const QString &source, StepClock *clock)
{
    std::future<LoadedPicture> loading =
        std::async(std::launch::async, [&source] { return loadPicture(source); });
    start(gl, source);
    clock->lap("context started, while the picture is read and decoded");
    LoadedPicture loaded = loading.get();
    clock->lap("wait until the picture is decoded");
    return loaded.image;
}

QImage loadThenStart(OffscreenGl *gl, const QString &source, StepClock *clock)
{
    LoadedPicture loaded = loadPicture(source);
    clock->add("file read", loaded.reading);
    clock->add("decoded", loaded.decoding);
    clock->skip();
    start(gl, source);
    clock->lap("context started");
    return loaded.image;
}

// What PictureRenderer does, each part waited for. The program of the effect is made already.
// Nobody else may hold the picture, whose memory takes the result.
void drawByParts(QImage picture, const QList<imagefx::ImageEffect *> &effects, StepClock *clock)
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    clock->skip();
    QOpenGLFramebufferObject first(picture.size());
    QOpenGLFramebufferObject second(picture.size());
    gl->glFinish();
    clock->lap("two framebuffers made");
    gl->glBindTexture(GL_TEXTURE_2D, first.texture());
    gl->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width(), picture.height(), GL_RGBA,
                        GL_UNSIGNED_BYTE, picture.constBits());
    gl->glFinish();
    clock->lap("picture uploaded");
    imagefx::ImageEffectRenderer renderer(effects);
    QOpenGLFramebufferObject *result = renderer.renderInPlace(&first, &second);
    gl->glFinish();
    clock->lap("effects drawn into fresh memory");
    result->bind();
    gl->glReadPixels(0, 0, picture.width(), picture.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                     picture.bits());
    result->release();
    clock->lap("result read back");
    renderer.renderInPlace(&first, &second);
    gl->glFinish();
    clock->lap("effects drawn again");
}

void run(const QStringList &names, bool parts)
{
    StepClock clock;
    OffscreenGl gl(QStringLiteral("headless"));
    QStringList warnings;
    EffectStack stack;
    if (const Outcome failure = readStack(names[0], true, &stack, &warnings)) {
        giveUp(failure->message);
    }
    clock.lap("effects read");
    QImage picture =
        parts ? loadThenStart(&gl, names[1], &clock) : loadAndStart(&gl, names[1], &clock);
    stack.bringToRest();
    const QList<imagefx::ImageEffect *> effects = stack.visibleEffects();
    auto renderer = std::make_unique<PictureRenderer>();
    if (!renderer->draw(&picture, effects, 1.0F)) {
        giveUp(QStringLiteral("not drawn"));
    }
    clock.lap("uploaded, drawn and read back");
    const QByteArray bytes = encoded(picture);
    clock.lap("encoded");
    writeTarget(names[2], bytes);
    clock.lap("written");
    if (parts) {
        renderer.reset();
        drawByParts(std::move(picture), effects, &clock);
    }
    clock.print();
}

} // namespace

int main(int argc, char **argv)
{
    QStringList names;
    for (int i = 1; i < argc; ++i) {
        names.append(QString::fromLocal8Bit(argv[i]));
    }
    const bool parts = names.removeOne(QStringLiteral("--parts"));
    if (names.size() != 3) {
        giveUp(QStringLiteral("exporter_gl_profile [--parts] EFFECTS SOURCE TARGET"));
    }
    run(names, parts);
    return 0;
}
