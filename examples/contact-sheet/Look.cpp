#include "examples/contact-sheet/Look.h"

#include "examples/contact-sheet/Error.h"

#include "imagefx/effects/BatchImageEffect.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/model/AlphaMask.h"
#include "imagefx/model/EffectStackReader.h"
#include "imagefx/render/ImageEffectRenderer.h"

#include <QtCore/QDir>
#include <QtCore/QJsonDocument>
#include <QtGui/QOpenGLFramebufferObject>

namespace ko::contactsheet
{

using imagefx::BatchImageEffect;
using imagefx::EffectRegistry;
using imagefx::EffectStackReader;
using imagefx::ImageEffect;
using imagefx::ImageEffectRenderer;
using imagefx::LookupTableImageEffect;

namespace
{

QJsonArray readArray(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Error{
            QStringLiteral("the stack %1 cannot be read: %2").arg(path, file.errorString())};
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        throw Error{QStringLiteral("the stack %1 is not valid JSON: %2 at byte %3")
                        .arg(path, error.errorString(), QString::number(error.offset))};
    }
    if (!document.isArray()) {
        throw Error{QStringLiteral("the stack %1 is not a JSON array of effects").arg(path)};
    }
    return document.array();
}

} // namespace

Look::Look(const QString &name, const QList<ImageEffect *> &effects)
    : m_name(name), m_effects(effects), m_owner(std::make_unique<QObject>())
{
    adopt(effects);
}

void Look::adopt(const QList<ImageEffect *> &effects)
{
    for (ImageEffect *effect : effects) {
        effect->setParent(m_owner.get());
        if (effect->alphaMask() != nullptr) {
            effect->alphaMask()->setParent(m_owner.get());
        }
        if (const auto *batch = qobject_cast<const BatchImageEffect *>(effect)) {
            adopt(batch->imageEffectList());
        }
    }
}

QImage Look::apply(const Photograph &photograph) const
{
    QList<ImageEffect *> enabled;
    for (ImageEffect *effect : m_effects) {
        if (effect->enabled()) {
            enabled.append(effect);
        }
    }
    QOpenGLFramebufferObject framebuffer(photograph.thumbnail.size());
    ImageEffectRenderer renderer(enabled);
    renderer.setRelativeScale(photograph.scale);
    renderer.render(photograph.thumbnail, &framebuffer);
    // Drawn with the first scan line at the bottom, so it is not to be turned over.
    return framebuffer.toImage(false);
}

std::vector<Look> readStacks(const QString &folder)
{
    const QFileInfoList files =
        QDir(folder).entryInfoList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    if (files.isEmpty()) {
        throw Error{QStringLiteral("no stacks (json) in the folder %1").arg(folder)};
    }
    const EffectRegistry registry = EffectRegistry::complete();
    std::vector<Look> looks;
    for (const QFileInfo &file : files) {
        EffectStackReader reader(registry);
        const QJsonArray array = readArray(file.filePath());
        looks.emplace_back(file.completeBaseName(), reader.readStack(array));
        if (!reader.unknownIds().isEmpty()) {
            throw Error{QStringLiteral("the stack %1 has an effect or mask of unknown id \"%2\"")
                            .arg(file.filePath(), reader.unknownIds().constFirst())};
        }
    }
    return looks;
}

std::vector<Look> presets()
{
    const QDir folder(QStringLiteral(":/imagefx/lib/lut"));
    std::vector<Look> looks;
    const QFileInfoList files =
        folder.entryInfoList({QStringLiteral("*.png")}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        auto grade = std::make_unique<LookupTableImageEffect>();
        grade->setTable(QUrl(QStringLiteral("qrc") + file.filePath()));
        looks.emplace_back(file.completeBaseName(), QList<ImageEffect *>{grade.release()});
    }
    return looks;
}

} // namespace ko::contactsheet
