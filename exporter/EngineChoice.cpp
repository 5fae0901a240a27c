#include "exporter/EngineChoice.h"

#include "exporter/EffectStack.h"
#include "exporter/OffscreenGl.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <unistd.h>

namespace ko::exporter
{

namespace
{

using Engine = ExportOptions::Engine;

bool mayUse(const QString &device)
{
    return access(QFile::encodeName(device).constData(), R_OK | W_OK) == 0;
}

} // namespace

// Render nodes are those of the kernel's drivers; some other drivers bring nodes of their own.
bool hasGraphicsDevice(const QString &deviceFolder)
{
    const struct {
        const char *folder;
        const char *pattern;
    } nodes[] = {{"/dri", "renderD*"}, {"", "nvidia[0-9]*"}};
    return std::any_of(std::begin(nodes), std::end(nodes), [&](const auto &node) {
        const QDir folder(deviceFolder + QLatin1String(node.folder));
        const QStringList names =
            folder.entryList({QLatin1String(node.pattern)}, QDir::Files | QDir::System);
        return std::any_of(names.begin(), names.end(),
                           [&](const QString &name) { return mayUse(folder.filePath(name)); });
    });
}

bool isSoftwareRenderer(const QByteArray &renderer)
{
    const char *const names[] = {"llvmpipe",    "softpipe", "swrast", "software rasterizer",
                                 "swiftshader", "swr"};
    const QByteArray lower = renderer.toLower();
    return std::any_of(std::begin(names), std::end(names),
                       [&](const char *name) { return lower.contains(name); });
}

EngineChoice::EngineChoice(Engine wanted, OffscreenGl &gl, const EffectStack &stack, int threads,
                           const QString &deviceFolder)
    : m_wanted(wanted), m_gl(gl)
{
    if (stack.isEmpty()) {
        m_processor = std::make_unique<ProcessorRenderer>(stack, threads);
        return;
    }
    if (wanted != Engine::Gl) {
        m_processor = std::make_unique<ProcessorRenderer>(stack, threads);
    }
    m_asksGl = wanted == Engine::Gl ||
               (wanted == Engine::Automatic &&
                (!m_processor->unsupported().isEmpty() || hasGraphicsDevice(deviceFolder)));
}

Outcome EngineChoice::make(const QString &picture, const QString &stackFile)
{
    const QString unsupported = m_processor ? m_processor->unsupported() : QString();
    if (!m_asksGl) {
        return unsupported.isEmpty()
                   ? Outcome()
                   : Failure{ExitCode::RenderingFailed,
                             QStringLiteral("the effects file %1 cannot be drawn by the processor, "
                                            "which does not know \"%2\"; --engine=gl draws it")
                                 .arg(stackFile, unsupported)};
    }
    Outcome failure = m_gl.start(picture);
    const bool needed = m_wanted == Engine::Gl || !unsupported.isEmpty();
    if (failure && needed) {
        return failure;
    }
    if (needed || (!failure && !isSoftwareRenderer(m_gl.renderer()))) {
        m_processor.reset();
    }
    return {};
}

QString EngineChoice::note() const
{
    if (!m_processor) {
        return QStringLiteral("OpenGL draws, on %1").arg(QString::fromUtf8(m_gl.renderer()));
    }
    const int threads = m_processor->threads();
    return QStringLiteral("the processor draws, with %1 and %2 a picture")
        .arg(imagefx::EffectEngine::instructionSet(),
             threads == 1 ? QStringLiteral("1 thread")
                          : QStringLiteral("up to %1 threads").arg(threads));
}

} // namespace ko::exporter
