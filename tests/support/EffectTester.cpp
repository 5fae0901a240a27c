#include "tests/support/EffectTester.h"

#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/EngineRendering.h"
#include "tests/support/PictureTester.h"

#include <QtCore/QMetaProperty>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <algorithm>
#include <memory>

namespace ko::imagefx::test
{

namespace
{

QByteArray text(const QVariant &value)
{
    return value.toString().toLatin1();
}

QMetaProperty propertyOf(const QObject *object, const char *name)
{
    const QMetaObject *meta = object->metaObject();
    return meta->property(meta->indexOfProperty(name));
}

// What the signals of one assignment amount to.
struct Signals {
    int changes = 0;
    int updates = 0;
    bool ordered = true; // no update was asked for before the property's own signal
};

Signals assign(ImageEffect *effect, const char *property, const QVariant &value)
{
    const QSignalSpy changed(effect, propertyOf(effect, property).notifySignal());
    const QSignalSpy updateRequired(effect, &ImageEffect::updateRequired);
    bool ordered = true;
    const auto connection = QObject::connect(effect, &ImageEffect::updateRequired,
                                             [&] { ordered = ordered && changed.count() == 1; });
    effect->setProperty(property, value);
    QObject::disconnect(connection);
    return {changed.count(), updateRequired.count(), ordered};
}

void failUnlessAlike(const QImage &engine, const QImage &gl, double tolerance)
{
    const QByteArray difference = comparePictures(engine, gl, tolerance);
    if (!difference.isEmpty()) {
        QTest::qFail(("the engine beside GL: " + difference).constData(), __FILE__, __LINE__);
    }
}

QImage pictureOf(const QVector<int> &pixel)
{
    QImage picture(1, 1, QImage::Format_RGBA8888);
    std::copy(pixel.begin(), pixel.end(), picture.bits());
    return picture;
}

QVector<int> levelsOf(const QImage &pixel)
{
    const uchar *bytes = pixel.constBits();
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

} // namespace

QByteArray checkSetter(ImageEffect *effect, const char *property, const QVariant &value,
                       const QVariant &stored)
{
    const QByteArray what = QByteArray(property) + " = " + text(value) + ": ";
    if (!propertyOf(effect, property).isValid()) {
        return what + "no such property";
    }
    const Signals emitted = assign(effect, property, value);
    if (effect->property(property) != stored) {
        return what + text(effect->property(property)) + " is stored, not " + text(stored);
    }
    if (emitted.changes != 1 || emitted.updates != 1 || !emitted.ordered) {
        return what + QByteArray::number(emitted.changes) + " changes and " +
               QByteArray::number(emitted.updates) + " updates are signalled" +
               (emitted.ordered ? "" : " in the wrong order");
    }
    return checkIgnored(effect, property, value);
}

QByteArray checkIgnored(ImageEffect *effect, const char *property, const QVariant &value)
{
    const QByteArray what = QByteArray(property) + " = " + text(value) + " once more: ";
    const QVariant before = effect->property(property);
    const Signals emitted = assign(effect, property, value);
    if (effect->property(property) != before) {
        return what + text(before) + " became " + text(effect->property(property));
    }
    return emitted.changes == 0 && emitted.updates == 0 ? QByteArray() : what + "signals";
}

QByteArray checkJsonRoundTrip(ImageEffect *effect)
{
    const QJsonObject json = ImageEffect::serialize(effect);
    const EffectRegistry registry = EffectRegistry::complete();
    const std::unique_ptr<ImageEffect> read(EffectStackReader(registry).readEffect(json));
    if (!read || read->metaObject() != effect->metaObject()) {
        return effect->effectId().toLatin1() + " is not read back";
    }
    const QMetaObject *meta = effect->metaObject();
    for (int i = ImageEffect::staticMetaObject.propertyOffset(); i < meta->propertyCount(); ++i) {
        const QMetaProperty property = meta->property(i);
        if (!json.contains(QLatin1String(property.name()))) {
            return QByteArray(property.name()) + " is not written";
        }
        if (property.read(read.get()) != property.read(effect)) {
            return QByteArray(property.name()) + ": " + text(property.read(effect)) + " became " +
                   text(property.read(read.get()));
        }
    }
    return {};
}

QByteArray checkPicture(const QList<ImageEffect *> &effects, const QImage &source,
                        const QImage &expected, double tolerance, const RenderSettings &settings)
{
    const QImage gl = renderTexture(effects, source, settings);
    const QImage engine = renderWithEngine(effects, source, settings);
    QByteArray difference = comparePictures(gl, expected, tolerance);
    if (!difference.isEmpty()) {
        return "GL: " + difference;
    }
    difference = comparePictures(engine, expected, tolerance);
    if (!difference.isEmpty()) {
        return "the engine: " + difference;
    }
    difference = comparePictures(engine, gl, tolerance);
    return difference.isEmpty() ? difference : "the engine beside GL: " + difference;
}

QByteArray checkIdentity(const QList<ImageEffect *> &effects, const QImage &source)
{
    return checkPicture(effects, source, source, 0.0);
}

QByteArray checkAlphaUntouched(ImageEffect *effect, double mostLevels)
{
    const QImage source = translucentPicture();
    const QImage gl = renderTexture({effect}, source);
    const QImage engine = renderWithEngine({effect}, source);
    QByteArray difference = comparePictures(engine, gl, mostLevels);
    if (!difference.isEmpty()) {
        return "the engine beside GL: " + difference;
    }
    difference = checkAlphaUntouched(gl, source);
    if (!difference.isEmpty()) {
        return "GL: " + difference;
    }
    difference = checkAlphaUntouched(engine, source);
    return difference.isEmpty() ? difference : "the engine: " + difference;
}

QByteArray checkDrawTheSame(const QList<ImageEffect *> &effects, const QList<ImageEffect *> &others,
                            const QImage &source)
{
    QByteArray difference =
        comparePictures(renderTexture(effects, source), renderTexture(others, source), 0.0);
    if (!difference.isEmpty()) {
        return "GL: " + difference;
    }
    difference =
        comparePictures(renderWithEngine(effects, source), renderWithEngine(others, source), 0.0);
    return difference.isEmpty() ? difference : "the engine: " + difference;
}

QVector<float> uniformOf(ImageEffect *effect, const char *name, int components)
{
    const PixelBufferState pbs;
    const auto pass = effect->currentState()->effectPass(&pbs);
    QVector<float> values(components);
    QOpenGLContext::currentContext()->functions()->glGetUniformfv(
        pass->programId(), pass->uniformLocation(name), values.data());
    return values;
}

QByteArray shaderPieceOf(ImageEffect *effect)
{
    const PixelBufferState pbs;
    return effect->currentState()->effectShaderCode(&pbs);
}

QVector<QImage> drawnByBoth(ImageEffect *effect, const QImage &source)
{
    const QImage gl = renderTexture({effect}, source);
    const QImage engine = renderWithEngine({effect}, source);
    failUnlessAlike(engine, gl, 1.0);
    return {gl, engine};
}

QImage drawnAlike(const QList<ImageEffect *> &effects, const QImage &source,
                  const RenderSettings &settings)
{
    QImage gl = renderTexture(effects, source, settings);
    failUnlessAlike(renderWithEngine(effects, source, settings), gl, 0.0);
    return gl;
}

QVector<int> rendered(ImageEffect *effect, const QVector<int> &pixel)
{
    return levelsOf(drawnAlike({effect}, pictureOf(pixel)));
}

QVector<int> renderedByGl(ImageEffect *effect, const QVector<int> &pixel)
{
    return levelsOf(renderTexture({effect}, pictureOf(pixel)));
}

} // namespace ko::imagefx::test
