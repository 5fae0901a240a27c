#pragma once

#include "exporter/ExportOptions.h"
#include "exporter/Failure.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace ko::exporter
{

class EffectStack;
class EngineChoice;
class OffscreenGl;
class PictureExport;

// One picture, one stack, one file.
struct ExportRequest {
    QString source;
    QString target;
    QString effects;
    // With `strict` a stack with anything that would be left out or read differently is a failure.
    ExportOptions options;
    // How many work on the picture, for an engine that lets one choose; at least 1.
    int threads = 1;
};

// Draws a picture through its stack of effects as a live item shows it and
// writes the result. One GL context may serve any number of exports, one after
// the other; it is started by the first that needs it.
class ImageExport
{
public:
    // `gl` must outlive the export.
    explicit ImageExport(OffscreenGl &gl);

    // To be called once.
    Outcome run(const ExportRequest &request);
    // What was left out, each with its file's name. The target is complete
    // nevertheless.
    QStringList warnings() const { return m_warnings; }
    // What a user may like to know.
    QStringList notes() const { return m_notes; }

private:
    Outcome drawAndSave(PictureExport *picture, const EffectStack &stack,
                        const ExportRequest &request);
    Outcome draw(PictureExport *picture, const EffectStack &stack, EngineChoice *engine,
                 const QString &stackFile);

    OffscreenGl &m_gl;
    QStringList m_warnings;
    QStringList m_notes;
};

} // namespace ko::exporter
