#pragma once

#include "exporter/ExportOptions.h"
#include "exporter/Failure.h"
#include "exporter/SourcePicture.h"
#include "exporter/TargetWriter.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

class EffectStack;
class PictureRenderer;
class ProcessorRenderer;

// One picture's way through the tool: load(), render(), save(), or all of it in
// exportWith(). The steps run one after the other, each on any thread, render()
// with GL on that of the GL context; different pictures are independent of one
// another. After a failure no further step is to be called.
class PictureExport
{
public:
    PictureExport(const QString &source, const QString &target, const ExportOptions &options);

    // The longest side that can be drawn, which load() then checks before it
    // decodes; default 0, no limit. OffscreenGl::largestSide() tells it.
    void setLargestSide(int pixels) { m_largestSide = pixels; }

    // Reads the file and checks its size against --max-pixels. A part of load(),
    // for those who want this failure before others.
    Outcome open();
    // Whether the target can be written, as far as that can be told without a
    // picture. Also a part of load().
    Outcome checkTarget() const { return m_target.check(); }
    // The size that render() will draw. Only after open(); empty where only
    // decoding tells.
    QSize drawnSize() const;

    // Everything until the picture is in memory as it will be drawn: upright and
    // scaled.
    Outcome load();
    // Draws the picture through the effects that show; does nothing for an empty
    // stack.
    Outcome render(PictureRenderer &renderer, const EffectStack &stack);
    Outcome render(const ProcessorRenderer &renderer);
    // Encodes the picture and writes it, complete or not at all, and frees its
    // memory.
    Outcome save();

    // All of that in one call. A JPEG that becomes a JPEG of the same size is
    // drawn while it is decoded and encoded, and is never in memory as a picture.
    Outcome exportWith(const ProcessorRenderer &renderer);

    QString source() const { return m_source.path(); }
    QString target() const { return m_target.path(); }
    // What is not in the target though it was in the source; complete after
    // save().
    QStringList warnings() const { return m_warnings; }
    // What a user may like to know; complete after save().
    QStringList notes() const { return m_notes; }

private:
    Outcome check();
    Outcome stream(JpegRowReader *rows, const ProcessorRenderer &renderer);
    Failure undrawable() const;
    Outcome scale(const QSize &whole);
    void noteDepth();
    Outcome checkPixels(const QSize &size) const;
    Outcome checkSide(const QSize &size) const;

    const ExportOptions m_options;
    SourcePicture m_source;
    TargetWriter m_target;
    bool m_opened = false;
    int m_largestSide = 0;
    QImage m_picture;
    // Of the drawn picture to the source.
    float m_scale = 1.0F;
    QStringList m_warnings;
    QStringList m_notes;
};

} // namespace ko::exporter
