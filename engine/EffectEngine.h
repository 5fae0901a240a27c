#pragma once

#include "engine/Export.h"

#include <QtCore/QList>
#include <QtCore/QSize>
#include <QtCore/QString>
#include <QtGui/QImage>

#include <cstddef>
#include <memory>

namespace ko::imagefx
{

class ImageEffect;

// Where a picture comes from, row by row.
class RowSource
{
public:
    virtual ~RowSource() = default;
    // Writes the next `count` rows, the upper ones first, `stride` bytes apart: four bytes a pixel,
    // red first, alpha last, the colour premultiplied. False ends the rendering.
    virtual bool read(uchar *rows, std::ptrdiff_t stride, int count) = 0;
};

// Where a picture goes to, row by row.
class RowSink
{
public:
    virtual ~RowSink() = default;
    // Takes the next row, in the layout that the source had. False ends the rendering.
    virtual bool write(const uchar *row) = 0;
};

// Draws pictures through a list of effects on the processor: without OpenGL, a window or a limit on
// the size, and with the same result as ImageEffectRenderer but for roundings. Like there, every
// effect is drawn, also one that is off or neutral; in a batch those are skipped. An effect whose
// blend mode is none of ImageEffect's leaves the picture as it is. Unlike there, a mask of hue and
// one of luminance are each read as what they are, whatever other effects the stack has.
//
// The effects are read once, in the constructor, on the thread that owns them, and may change or go
// afterwards. All else may be called on any thread, and render() on several at once.
class KORVELIMAGEENGINE_EXPORT EffectEngine
{
public:
    struct Options {
        // Target pixels per pixel of the reference image: pixel-sized parameters are multiplied by
        // it.
        float relativeScale = 1.0F;
        // Multiplies the alpha of every effect.
        float globalAlpha = 1.0F;
        // How many threads work on one picture, the caller among them; 0: as many as the processor
        // has for this process.
        int threads = 0;
        // Whether the effects count as at rest, as after some frames on a screen: a neutral effect
        // with another blend mode than Normal is then drawn also where it is nested in a batch.
        // Otherwise a nested neutral effect is skipped whatever its blend mode is.
        bool settled = false;
    };

    explicit EffectEngine(const QList<ImageEffect *> &effects) : EffectEngine(effects, Options()) {}
    EffectEngine(const QList<ImageEffect *> &effects, const Options &options);
    EffectEngine(EffectEngine &&other) noexcept;
    ~EffectEngine();

    // The id of the first effect or mask that is not one of the library's own kinds, which only
    // know how to draw themselves with OpenGL; empty when there is none. Nothing can be rendered
    // then. A class that derives from one of the library's and lacks Q_OBJECT passes for it.
    QString unsupported() const;

    // The picture drawn at its own size, in Format_RGBA8888_Premultiplied, or Format_RGBX8888 for
    // one without alpha channel. Like ImageEffectRenderer, it takes the colours that the picture
    // has in Format_RGBA8888 for premultiplied ones. So to draw with a translucent result once
    // more, call it reinterpretAsFormat(QImage::Format_RGBA8888) first. Null when the picture is
    // null, something is unsupported(), or memory runs out.
    QImage render(const QImage &picture) const;

    // The same for a picture that is never in memory as a whole: some bands of rows are, and as
    // many more as the blurs of the stack reach. `opaque` promises that every alpha is 255. False
    // when the source or the sink ended it, for the reasons above, or when a row is so wide that
    // its end can hardly be numbered. Source and sink are called on this thread.
    bool render(const QSize &size, bool opaque, RowSource *source, RowSink *sink) const;

    // The set of processor instructions in use: "scalar", "sse2", "sse4.1", "avx2", "avx512",
    // "neon".
    static QString instructionSet();
    // Those that can be used here, the slowest first.
    static QStringList instructionSets();
    // For tests and measurements: the set for all renderings that begin from now on. False when it
    // cannot be used here.
    static bool setInstructionSet(const QString &name);

private:
    Q_DISABLE_COPY(EffectEngine)

    class Private;
    std::unique_ptr<Private> d;
};

} // namespace ko::imagefx
