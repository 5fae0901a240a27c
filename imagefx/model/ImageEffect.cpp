#include "imagefx/model/ImageEffect.h"

#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/model/EffectStackWriter.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtCore/QPointer>
#include <QtCore/QResource>

namespace ko::imagefx
{

class ImageEffect::Private
{
public:
    explicit Private(const QString &id) : effectId(id) {}

    QSharedPointer<ImageEffectState> state;
    const QString effectId;
    QString name;
    bool enabled = true;
    bool dirty = true;
    float alpha = 1.0F;
    BlendMode blendMode = Normal;
    QPointer<AlphaMask> alphaMask;
};

ImageEffect::ImageEffect(const QString &effectId, QObject *parent)
    : QObject(parent), d(std::make_unique<Private>(effectId))
{
    connect(this, &ImageEffect::updateRequired, this, &ImageEffect::markDirty);
}

ImageEffect::~ImageEffect() = default;

QString ImageEffect::effectId() const
{
    return d->effectId;
}

QString ImageEffect::name() const
{
    return d->name;
}

// A name is not part of the picture, so no update is asked for.
void ImageEffect::setName(const QString &name)
{
    if (d->name == name) {
        return;
    }
    d->name = name;
    Q_EMIT nameChanged();
}

bool ImageEffect::enabled() const
{
    return d->enabled;
}

void ImageEffect::setEnabled(bool enabled)
{
    assign(d->enabled, enabled, &ImageEffect::enabledChanged);
}

float ImageEffect::alpha() const
{
    return d->alpha;
}

void ImageEffect::setAlpha(float alpha)
{
    assign(d->alpha, alpha, &ImageEffect::alphaChanged);
}

ImageEffect::BlendMode ImageEffect::blendMode() const
{
    return d->blendMode;
}

void ImageEffect::setBlendMode(BlendMode blendMode)
{
    assign(d->blendMode, blendMode, &ImageEffect::blendModeChanged);
}

AlphaMask *ImageEffect::alphaMask() const
{
    return d->alphaMask;
}

void ImageEffect::setAlphaMask(AlphaMask *mask)
{
    if (d->alphaMask == mask) {
        return;
    }
    if (d->alphaMask) {
        d->alphaMask->disconnect(this);
    }
    d->alphaMask = mask;
    if (mask != nullptr) {
        connect(mask, &AlphaMask::updateRequired, this, &ImageEffect::updateRequired);
    }
    Q_EMIT alphaMaskChanged();
    Q_EMIT updateRequired();
}

QSharedPointer<ImageEffectState> ImageEffect::currentState()
{
    if (!d->state) {
        d->state.reset(createState());
    }
    if (d->dirty) {
        d->state->update(this);
        // An update may upload tables; whoever draws next expects unit 0.
        activateTextureUnit(sourceUnit);
        d->dirty = false;
    }
    return d->state;
}

bool ImageEffect::isNeutral() const
{
    return false;
}

void ImageEffect::markDirty()
{
    d->dirty = true;
}

// Uncompressed bytes end at the first NUL. Compressed ones begin with one, the high byte of their
// length, so only the resource's own size tells where they end.
QByteArray ImageEffect::readShader(const QString &name)
{
    const QResource resource(QStringLiteral(":/imagefx/lib/shaders/") + name);
    if (!resource.isValid()) {
        return {};
    }
    if (resource.compressionAlgorithm() != QResource::NoCompression) {
        return resource.uncompressedData();
    }
    const auto *text = reinterpret_cast<const char *>(resource.data());
    return {text, int(qstrnlen(text, uint(resource.size())))};
}

void ImageEffect::initialize()
{
    EffectRegistry::library().fill();
}

ImageEffect *ImageEffect::createEffect(const QString &effectId)
{
    return EffectRegistry::library().createEffect(effectId);
}

AlphaMask *ImageEffect::createAlphaMask(const QString &maskId)
{
    return EffectRegistry::library().createAlphaMask(maskId);
}

QJsonObject ImageEffect::serialize(ImageEffect *effect)
{
    return writeEffect(effect);
}

QJsonArray ImageEffect::serialize(const QList<ImageEffect *> &effects)
{
    return writeStack(effects);
}

ImageEffect *ImageEffect::unserialize(const QJsonObject &object)
{
    return EffectStackReader(EffectRegistry::library()).readEffect(object);
}

QList<ImageEffect *> ImageEffect::unserialize(const QJsonArray &array)
{
    return EffectStackReader(EffectRegistry::library()).readStack(array);
}

} // namespace ko::imagefx
