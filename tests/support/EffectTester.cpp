#include "tests/support/EffectTester.h"

#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/PixelBufferState.h"
#include "tests/support/EffectRendering.h"

#include <QtCore/QMetaProperty>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtTest/QSignalSpy>

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

QByteArray checkAlphaUntouched(ImageEffect *effect)
{
    const QImage source = translucentPicture();
    return checkAlphaUntouched(renderTexture({effect}, source), source);
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

QVector<int> rendered(ImageEffect *effect, const QVector<int> &pixel)
{
    QImage source(1, 1, QImage::Format_RGBA8888);
    std::copy(pixel.begin(), pixel.end(), source.bits());
    const QImage result = renderTexture({effect}, source);
    const uchar *bytes = result.constBits();
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

} // namespace ko::imagefx::test
