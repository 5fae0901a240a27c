#pragma once

#include "imagefx/quick/PixelBuffer.h"
#include "imagefx/render/PassTargets.h"
#include "imagefx/render/PixelBufferState.h"

#include <QtCore/QList>
#include <QtCore/QPointer>
#include <QtCore/QRectF>
#include <QtCore/QSharedPointer>
#include <QtCore/QSize>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtQuick/QSGTexture>

#include <memory>

namespace ko::imagefx
{

class BasePass;
class ImageEffectState;
class MaskGatherPass;
class MaskPass;
class MaskRenderPass;

// The render thread's half of PixelBuffer. synchronize() copies the item's settings while the GUI
// thread is blocked; render() draws the source into the item's framebuffer and runs one pass an
// effect between that and a temporary one. Both leave the scene graph's OpenGL state as it was. It
// never asks for another frame.
class PixelBufferRenderer : public QQuickFramebufferObject::Renderer
{
public:
    // All members need the scene graph's context to be current, the destructor too.
    PixelBufferRenderer();
    ~PixelBufferRenderer() override;

    void render() override;
    // Of the item's render size, whatever the scene graph asks for; transparent.
    QOpenGLFramebufferObject *createFramebufferObject(const QSize &size) override;
    void synchronize(QQuickFramebufferObject *item) override;

private:
    void keepPicture();
    void takeSource(PixelBuffer *item);
    void takeMask(PixelBuffer *item);
    void takeSize(const PixelBuffer *item);
    void takeEffects(const PixelBuffer *item);
    void drawFrame();
    void drawPasses();
    void drawEffects(PassTargets &targets);

    bool m_frozen = false;
    QPointer<QSGTexture> m_sourceTexture;
    std::unique_ptr<QOpenGLFramebufferObject> m_keptPicture; // while frozen
    QRectF m_sourceRect;
    QSize m_size;
    QSharedPointer<BasePass> m_basePass;
    QSharedPointer<MaskRenderPass> m_maskRenderPass;
    QList<QSharedPointer<ImageEffectState>> m_states;
    std::unique_ptr<MaskGatherPass> m_maskGatherPass;
    QSharedPointer<ImageEffectState> m_maskViewState;
    PixelBufferState m_pixelBufferState;
    QPointer<QSGTexture> m_maskTexture;
    QSharedPointer<MaskPass> m_maskPass;
};

} // namespace ko::imagefx
