#pragma once

#include "engine/kernels/Kernels.h"

#include <QtCore/QList>
#include <QtCore/QString>

#include <vector>

namespace ko::imagefx
{
class AlphaMask;
class ImageEffect;
} // namespace ko::imagefx

namespace ko::imagefx::engine
{

// What one effect does to the picture.
struct Step {
    enum class Kind { Point, Blur, Sharpen, Batch };

    Kind kind = Kind::Point;
    Pass pass{};                 // but for `opaque`, which the picture decides
    float radiusInPixels = 0.0F; // of blur and sharpen
    std::vector<Step> nested;    // of a batch
};

// A stack of effects as plain data, with the very numbers and tables that the effects' render
// states give their shaders. Reads the effects once; they may go afterwards. It owns the tables
// that the steps point to. Unchanging, so any thread may read it.
class StackProgram
{
public:
    StackProgram() = default;
    // Pixel-sized parameters are multiplied by `relativeScale`, the alpha of every effect, nested
    // ones too, by `globalAlpha`; for `settled` see EffectEngine::Options. On the thread that owns
    // the effects; no GL.
    StackProgram(const QList<ImageEffect *> &effects, float relativeScale, float globalAlpha,
                 bool settled = false);
    StackProgram(StackProgram &&other) noexcept = default;
    StackProgram &operator=(StackProgram &&other) noexcept = default;
    ~StackProgram() = default;

    // In order of application. Of a batch, those that are off or change nothing are left out; of
    // the stack itself only those whose blend mode is none, which draw nothing.
    const std::vector<Step> &steps() const { return m_steps; }
    // The id of the first effect or mask of an unknown kind; empty when there is none.
    QString unsupported() const { return m_unsupported; }

private:
    Q_DISABLE_COPY(StackProgram)

    std::vector<Step> read(const QList<ImageEffect *> &effects, bool isNested);
    bool isSkippedInBatch(const ImageEffect &effect) const;
    Step read(const ImageEffect &effect);
    float inPixels(float radius) const;
    bool readPoint(const ImageEffect &effect, Pass *pass);
    void readMask(const AlphaMask *mask, Pass *pass);
    // `width` bytes as the alpha of black texels.
    Table alphaTable(const uchar *bytes, int width);
    Table keep(std::vector<uint32_t> texels);
    void notSupported(const QString &id);

    float m_relativeScale = 1.0F;
    float m_globalAlpha = 1.0F;
    bool m_settled = false;
    std::vector<Step> m_steps;
    std::vector<std::vector<uint32_t>> m_tables;
    QString m_unsupported;
};

} // namespace ko::imagefx::engine
