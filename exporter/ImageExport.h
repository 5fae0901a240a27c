#pragma once

#include "exporter/Failure.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtGui/QImage>

namespace ko::exporter
{

class EffectStack;
class OffscreenGl;
class SourcePicture;

// One picture, one stack, one file.
struct ExportRequest {
    QString source;
    QString target;
    QString effects;
    // A stack with anything that would be left out is a failure.
    bool strict = false;
};

// Draws a picture through its stack of effects as a live item shows it and writes the result. One
// GL context may serve any number of exports, one after the other; it is started by the first that
// has something to draw.
class ImageExport
{
public:
    // `gl` must outlive the export.
    explicit ImageExport(OffscreenGl &gl);

    // To be called once.
    Outcome run(const ExportRequest &request);
    // What was left out, each with its file's name. The target is complete nevertheless.
    QStringList warnings() const { return m_warnings; }

private:
    Outcome readStack(const ExportRequest &request, EffectStack *stack);
    Outcome draw(const ExportRequest &request, SourcePicture *source, const EffectStack &stack,
                 QImage *result);

    OffscreenGl &m_gl;
    QStringList m_warnings;
};

} // namespace ko::exporter
