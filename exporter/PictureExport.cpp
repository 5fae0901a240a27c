#include "exporter/PictureExport.h"

#include "exporter/EffectStack.h"
#include "exporter/JpegRowReader.h"
#include "exporter/JpegStream.h"
#include "exporter/PictureRenderer.h"
#include "exporter/ProcessorRenderer.h"

#include <QtGui/QPixelFormat>

#include <algorithm>
#include <memory>
#include <utility>

namespace ko::exporter
{

namespace
{

QString inPixels(const QSize &size)
{
    return QStringLiteral("%1 x %2").arg(size.width()).arg(size.height());
}

// Inside `limit`, the sides in proportion, never larger and never empty.
QSize fitted(const QSize &size, const QSize &limit)
{
    if (!limit.isValid() || (size.width() <= limit.width() && size.height() <= limit.height())) {
        return size;
    }
    return size.scaled(limit, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
}

// Each pixel becomes the mean of the area it covers, in the file's own (gamma)
// values like nearly everybody's tools. Qt does it without conversion for 32
// bits in one of its own orders, and the order of the channels does not matter
// here. Grey it would turn into 8 bits a channel of colour.
QImage scaled(QImage picture, const QSize &size)
{
    const QImage::Format format = picture.format();
    if (format == QImage::Format_RGBX8888) {
        picture.reinterpretAsFormat(QImage::Format_RGB32);
    } else if (format == QImage::Format_Grayscale16) {
        picture = std::move(picture).convertToFormat(QImage::Format_RGBX64);
        if (picture.isNull()) {
            return picture;
        }
    }
    picture = picture.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (format == QImage::Format_RGBX8888) {
        picture.reinterpretAsFormat(format);
    }
    const bool isGray = format == QImage::Format_Grayscale8 || format == QImage::Format_Grayscale16;
    return isGray ? picture.convertToFormat(format) : picture;
}

bool hasDeepChannels(const QImage &picture)
{
    return picture.pixelFormat().redSize() > 8 || picture.format() == QImage::Format_Grayscale16;
}

} // namespace

PictureExport::PictureExport(const QString &source, const QString &target,
                             const ExportOptions &options)
    : m_options(options), m_source(source), m_target(target, options)
{
}

Outcome PictureExport::open()
{
    if (Outcome failure = m_source.open()) {
        return failure;
    }
    m_opened = true;
    return checkPixels(m_source.size());
}

QSize PictureExport::drawnSize() const
{
    return fitted(m_source.size(), m_options.maxSize);
}

// All that can be told without decoding.
Outcome PictureExport::check()
{
    if (!m_opened) {
        if (Outcome failure = open()) {
            return failure;
        }
    }
    if (Outcome failure = checkTarget()) {
        return failure;
    }
    return checkSide(drawnSize());
}

Outcome PictureExport::load()
{
    if (Outcome failure = check()) {
        return failure;
    }
    const QSize promised = m_source.size();
    const QSize wanted = drawnSize();
    if (Outcome failure = m_source.decode(wanted == promised ? QSize() : wanted)) {
        return failure;
    }
    m_picture = m_source.takeImage();
    if (promised.isEmpty()) {
        if (Outcome failure = checkPixels(m_picture.size())) {
            return failure;
        }
    }
    return scale(promised.isEmpty() ? m_picture.size() : promised);
}

// The picture may be smaller than the source already, where the codec can do
// that at less cost.
Outcome PictureExport::scale(const QSize &whole)
{
    const QSize size = fitted(whole, m_options.maxSize);
    if (Outcome failure = checkSide(size)) {
        return failure;
    }
    if (size != whole) {
        m_picture = scaled(std::move(m_picture), size);
        m_scale = float(size.width()) / float(whole.width());
    }
    if (m_picture.isNull()) {
        return Failure{ExitCode::RenderingFailed,
                       QStringLiteral("the source %1 cannot be scaled for lack of memory")
                           .arg(m_source.path())};
    }
    return {};
}

Outcome PictureExport::checkPixels(const QSize &size) const
{
    if (qint64(size.width()) * size.height() <= m_options.maxPixels) {
        return {};
    }
    return Failure{ExitCode::PictureTooLarge,
                   QStringLiteral("the source %1 of %2 pixels is larger than the limit of %3 "
                                  "pixels; --max-pixels=N changes it")
                       .arg(m_source.path(), inPixels(size), QString::number(m_options.maxPixels))};
}

Outcome PictureExport::checkSide(const QSize &size) const
{
    if (m_largestSide == 0 || std::max(size.width(), size.height()) <= m_largestSide) {
        return {};
    }
    return Failure{ExitCode::PictureTooLarge,
                   QStringLiteral("the source %1 of %2 pixels is larger than "
                                  "OpenGL's limit of %3 x %3 here; "
                                  "--max-size=%3x%3 makes it smaller")
                       .arg(m_source.path(), inPixels(size), QString::number(m_largestSide))};
}

Outcome PictureExport::render(PictureRenderer &renderer, const EffectStack &stack)
{
    const QList<imagefx::ImageEffect *> effects = stack.visibleEffects();
    if (effects.isEmpty()) {
        return {};
    }
    if (Outcome failure = checkSide(m_picture.size())) {
        return failure;
    }
    noteDepth();
    stack.bringToRest();
    if (renderer.draw(&m_picture, effects, m_scale)) {
        return {};
    }
    return Failure{ExitCode::RenderingFailed,
                   QStringLiteral("the source %1 cannot be drawn: OpenGL reports an error, perhaps "
                                  "for lack of memory")
                       .arg(m_source.path())};
}

Outcome PictureExport::render(const ProcessorRenderer &renderer)
{
    if (renderer.isIdle()) {
        return {};
    }
    noteDepth();
    return renderer.draw(&m_picture, m_scale) ? Outcome() : undrawable();
}

Failure PictureExport::undrawable() const
{
    return {
        ExitCode::RenderingFailed,
        QStringLiteral("the source %1 cannot be drawn for lack of memory").arg(m_source.path())};
}

Outcome PictureExport::exportWith(const ProcessorRenderer &renderer)
{
    if (Outcome failure = check()) {
        return failure;
    }
    if (drawnSize() == m_source.size() && m_target.takesJpegRows(m_source.data())) {
        const bool colored = !renderer.isIdle() || !m_target.takesGrayRows(m_source.data());
        if (const std::unique_ptr<JpegRowReader> rows = m_source.rows(colored)) {
            return stream(rows.get(), renderer);
        }
    }
    if (Outcome failure = load()) {
        return failure;
    }
    if (Outcome failure = render(renderer)) {
        return failure;
    }
    return save();
}

Outcome PictureExport::stream(JpegRowReader *rows, const ProcessorRenderer &renderer)
{
    StreamedJpeg jpeg = streamJpeg(rows, renderer, m_options.quality);
    if (Outcome failure = m_source.finishRows(rows)) {
        return failure;
    }
    if (!jpeg.error.isEmpty()) {
        return m_target.unencodable(rows->size(), jpeg.error);
    }
    if (!jpeg.drawn) {
        return undrawable();
    }
    Outcome failure = m_target.writeJpeg(std::move(jpeg.file), rows->size(), m_source.data());
    m_warnings += m_source.warnings() + m_target.warnings();
    m_notes += m_source.notes();
    return failure;
}

void PictureExport::noteDepth()
{
    if (hasDeepChannels(m_picture)) {
        m_notes.append(QStringLiteral("the source %1 has 16 bits a channel, of which 8 are used")
                           .arg(m_source.path()));
    }
}

Outcome PictureExport::save()
{
    if (!m_target.format().holdsDeepChannels()) {
        noteDepth();
    }
    Outcome failure = m_target.write(m_picture, m_source.data(), m_source.texts());
    m_picture = QImage();
    m_warnings += m_source.warnings() + m_target.warnings();
    m_notes += m_source.notes();
    return failure;
}

} // namespace ko::exporter
