#pragma once

#include "exporter/ExportOptions.h"
#include "exporter/Failure.h"
#include "exporter/ProcessorRenderer.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <memory>

namespace ko::exporter
{

class EffectStack;
class OffscreenGl;

// Whether there is a graphics card that this process may use, as its device nodes tell: nothing is
// loaded or started to find out.
bool hasGraphicsDevice(const QString &deviceFolder);
// Whether what GL calls its renderer draws on the processor.
bool isSoftwareRenderer(const QByteArray &renderer);

// What draws the pictures of one call of the program: GL or the processor.
class EngineChoice
{
public:
    // `gl` and `stack` must outlive the choice, and the stack must have been read. `threads`: how
    // many work on one picture that the processor draws, at least 1. `deviceFolder`: where an
    // automatic choice looks for a graphics card.
    EngineChoice(ExportOptions::Engine wanted, OffscreenGl &gl, const EffectStack &stack,
                 int threads, const QString &deviceFolder = QStringLiteral("/dev"));

    // Whether make() may start GL, which takes its time.
    bool asksGl() const { return m_asksGl; }
    // Decides, on the main thread, and starts GL when it is to draw. A failure names `picture`,
    // which waits for it, or `stackFile`. To be called once.
    Outcome make(const QString &picture, const QString &stackFile);

    // Null: GL draws, and its context is current. Only after make().
    const ProcessorRenderer *processor() const { return m_processor.get(); }
    // What draws, for people.
    QString note() const;

private:
    const ExportOptions::Engine m_wanted;
    OffscreenGl &m_gl;
    std::unique_ptr<const ProcessorRenderer> m_processor;
    bool m_asksGl = false;
};

} // namespace ko::exporter
