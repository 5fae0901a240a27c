#include "exporter/ImageExport.h"

#include "exporter/EffectStack.h"
#include "exporter/OffscreenGl.h"
#include "exporter/PictureRenderer.h"
#include "exporter/SourcePicture.h"
#include "exporter/StackFile.h"
#include "exporter/TargetWriter.h"

#include <algorithm>

namespace ko::exporter
{

namespace
{

Outcome checkSize(const QString &path, const QSize &size, int largestSide)
{
    if (std::max(size.width(), size.height()) <= largestSide) {
        return {};
    }
    return Failure{
        ExitCode::PictureTooLarge,
        QStringLiteral("the source %1 of %2 x %3 pixels is larger than OpenGL's limit of "
                       "%4 x %4 here")
            .arg(path, QString::number(size.width()), QString::number(size.height()),
                 QString::number(largestSide))};
}

} // namespace

ImageExport::ImageExport(OffscreenGl &gl) : m_gl(gl) {}

Outcome ImageExport::run(const ExportRequest &request)
{
    TargetWriter target(request.target);
    SourcePicture source(request.source);
    EffectStack stack;
    if (Outcome failure = source.open()) {
        return failure;
    }
    if (Outcome failure = readStack(request, &stack)) {
        return failure;
    }
    if (Outcome failure = target.check()) {
        return failure;
    }
    QImage result;
    if (stack.isEmpty()) {
        if (Outcome failure = source.decode()) {
            return failure;
        }
        result = source.image();
    } else if (Outcome failure = draw(request, &source, stack, &result)) {
        return failure;
    }
    Outcome failure = target.write(result, source.iccProfile());
    m_warnings += target.warnings();
    return failure;
}

Outcome ImageExport::readStack(const ExportRequest &request, EffectStack *stack)
{
    StackFile file(request.effects);
    if (Outcome failure = file.read()) {
        return failure;
    }
    stack->read(file.array());
    const QStringList complaints = stack->complaints();
    if (request.strict && !complaints.isEmpty()) {
        return Failure{ExitCode::EffectsNotExact,
                       QStringLiteral("the effects file %1 cannot be applied as it is: %2")
                           .arg(request.effects, complaints.join(QStringLiteral("; ")))};
    }
    for (const QString &complaint : complaints) {
        m_warnings.append(
            QStringLiteral("%1: %2, so it is left out").arg(request.effects, complaint));
    }
    return {};
}

Outcome ImageExport::draw(const ExportRequest &request, SourcePicture *source,
                          const EffectStack &stack, QImage *result)
{
    if (Outcome failure = m_gl.start(request.source)) {
        return failure;
    }
    const int largestSide = m_gl.largestSide();
    if (Outcome failure = checkSize(request.source, source->storedSize(), largestSide)) {
        return failure;
    }
    if (Outcome failure = source->decode()) {
        return failure;
    }
    if (Outcome failure = checkSize(request.source, source->image().size(), largestSide)) {
        return failure;
    }
    const QList<imagefx::ImageEffect *> effects = stack.visibleEffects();
    *result = effects.isEmpty() ? source->image() : renderPicture(source->image(), effects);
    if (result->isNull()) {
        return Failure{ExitCode::RenderingFailed,
                       QStringLiteral("the source %1 cannot be drawn: OpenGL reports an error, "
                                      "perhaps for lack of memory")
                           .arg(request.source)};
    }
    return {};
}

} // namespace ko::exporter
