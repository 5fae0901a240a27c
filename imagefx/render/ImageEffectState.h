#pragma once

#include "imagefx/Export.h"

#include <QtCore/QByteArray>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace ko::imagefx
{

class AlphaMaskState;
class ImageEffect;
class ImageEffectPass;
struct PixelBufferState;

// The render thread's snapshot of one effect: what it shows, and the way to the compiled pass that
// shows it. It belongs to the render thread; update() alone reads the effect, while the effect's
// thread is blocked. Everything but the getters needs a current GL context.
class KORVELIMAGEFX_EXPORT ImageEffectState
{
public:
    explicit ImageEffectState(const QString &effectId);
    virtual ~ImageEffectState();

    // True when drawing the effect would change nothing, or it is switched off. That is recorded
    // here and left to the renderer.
    bool passDisabled() const { return m_passDisabled; }
    // A value of ImageEffect::BlendMode.
    int blendMode() const { return m_blendMode; }
    QString effectId() const { return m_effectId; }

    // The pass for the state's present configuration, from the cache or compiled now, with every
    // uniform set and every table bound; released.
    QSharedPointer<ImageEffectPass> effectPass(const PixelBufferState *pbs);

    // Sets the uniforms and binds the tables of the pass that effectPass() returned last once more,
    // for a pass that lets others draw before it does; to be called from its render() alone.
    void restorePass(const PixelBufferState *pbs);

    // The complete text of the fragment shader.
    QByteArray generateFragmentShader(const PixelBufferState *pbs) const;
    // The mask's piece, also of a mask that is off; empty without a mask.
    QByteArray maskShaderCode() const;
    QByteArray blendShaderCode() const;

    // The piece that defines fx_main(); empty: the effect changes no colour.
    virtual QByteArray effectShaderCode(const PixelBufferState *pbs) const;
    // A new pass, owned by the caller; never null.
    virtual ImageEffectPass *createPass(const PixelBufferState *pbs) const;
    // Once for every new pass, with its program bound: the uniforms that never change. An override
    // of this and of the next three calls its base first.
    virtual void initializePass(ImageEffectPass *pass);
    // Looks up the locations of the state's uniforms, whenever it meets another pass.
    virtual void resolveUniforms(const ImageEffectPass *pass);
    // Before every draw, with the program bound: sets the uniforms and binds the tables.
    virtual void updatePass(const QSharedPointer<ImageEffectPass> &pass,
                            const PixelBufferState *pbs);
    // Tells apart passes of one effect kind whose shader text differs.
    virtual QString effectVariant(const PixelBufferState *pbs) const;
    // Copies what the frames need from the effect. Whether a neutral effect may be skipped is told
    // from the blend mode of the update before: a new mode counts from the next update on.
    virtual void update(const ImageEffect *effect);

private:
    Q_DISABLE_COPY(ImageEffectState)

    bool masked() const;
    QString passKey(const PixelBufferState *pbs) const;
    QSharedPointer<ImageEffectPass> compilePass(const PixelBufferState *pbs);
    void usePass(const QSharedPointer<ImageEffectPass> &pass, const PixelBufferState *pbs);

    bool m_passDisabled = false;
    int m_blendMode = 0;
    float m_alpha = 1.0F;
    const QString m_effectId;
    int m_alphaLocation = -1;
    QSharedPointer<AlphaMaskState> m_maskState;
    QSharedPointer<ImageEffectPass> m_resolvedPass;
};

} // namespace ko::imagefx
