#include "imagefx/quick/PixelBufferRenderer.h"

#include "imagefx/model/Logging.h"
#include "imagefx/quick/MaskGatherPass.h"
#include "imagefx/quick/MaskPass.h"
#include "imagefx/quick/MaskRenderPass.h"
#include "imagefx/quick/PixelBufferPrivate.h"
#include "imagefx/quick/SourceGeometry.h"
#include "imagefx/render/AlphaMaskState.h"
#include "imagefx/render/BasePass.h"
#include "imagefx/render/FramebufferCopy.h"
#include "imagefx/render/GlStateGuard.h"
#include "imagefx/render/ImageEffectPass.h"
#include "imagefx/render/ImageEffectState.h"
#include "imagefx/render/TextureUnits.h"

#include <QtCore/QElapsedTimer>
#include <QtCore/QMutex>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>
#include <QtQuick/QSGTextureProvider>

#include <utility>

namespace ko::imagefx
{

namespace
{

const QRectF wholeTexture(0.0, 0.0, 1.0, 1.0);

// Guards the states while they are taken or drawn: an item that moves to another window may be
// drawn once more by the old window's thread while the new one's already takes its effects.
QBasicMutex statesMutex;

void clearBoundFramebuffer()
{
    QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
    gl->glClearColor(0.0F, 0.0F, 0.0F, 0.0F);
    gl->glClear(GL_COLOR_BUFFER_BIT);
}

QSGTextureProvider *providerOf(const QQuickItem *item)
{
    return item != nullptr && item->isTextureProvider() ? item->textureProvider() : nullptr;
}

// Repaints `item` when the provider has a new texture. A connection that exists already gives none,
// and the one that is kept stays.
void listen(QSGTextureProvider *provider, PixelBuffer *item, QMetaObject::Connection &kept)
{
    const QMetaObject::Connection connection =
        QObject::connect(provider, &QSGTextureProvider::textureChanged, item, &QQuickItem::update,
                         Qt::UniqueConnection);
    if (connection) {
        kept = connection;
    }
}

// A layer that no other item shows is painted only when its texture is asked for.
void bringUpToDate(QSGTexture *texture)
{
    if (auto *dynamic = qobject_cast<QSGDynamicTexture *>(texture)) {
        dynamic->updateTexture();
    }
}

// While it lives a texture gives its exact texels. Qt Quick smooths the item's framebuffer for the
// screen; effects that look at the neighbours of a pixel shall see them as the offscreen renderer
// does, in the first frame and in every other.
class NearestFiltering
{
public:
    explicit NearestFiltering(GLuint textureId) : m_textureId(textureId)
    {
        bindTexture(sourceUnit, m_textureId);
        QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
        gl->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &m_minification);
        gl->glGetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, &m_magnification);
        set(GL_NEAREST, GL_NEAREST);
    }
    ~NearestFiltering()
    {
        bindTexture(sourceUnit, m_textureId);
        set(m_minification, m_magnification);
    }

private:
    Q_DISABLE_COPY(NearestFiltering)

    static void set(GLint minification, GLint magnification)
    {
        QOpenGLFunctions *gl = QOpenGLContext::currentContext()->functions();
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, minification);
        gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, magnification);
    }

    const GLuint m_textureId;
    GLint m_minification = 0;
    GLint m_magnification = 0;
};

double milliseconds(const QElapsedTimer &timer)
{
    return double(timer.nsecsElapsed()) / 1e6;
}

} // namespace

PixelBufferRenderer::PixelBufferRenderer()
    : m_basePass(BasePass::shared()), m_maskPass(QSharedPointer<MaskPass>::create())
{
}

PixelBufferRenderer::~PixelBufferRenderer() = default;

QOpenGLFramebufferObject *PixelBufferRenderer::createFramebufferObject(const QSize &size)
{
    Q_UNUSED(size)
    // An item narrower than a pixel still has to have a framebuffer.
    QOpenGLFramebufferObject *framebuffer =
        Renderer::createFramebufferObject(m_size.expandedTo(QSize(1, 1)));
    const GlStateGuard guard;
    if (m_keptPicture) {
        copyFramebuffer(m_keptPicture.get(), framebuffer);
    } else if (framebuffer->bind()) {
        clearBoundFramebuffer();
        framebuffer->release();
    }
    return framebuffer;
}

void PixelBufferRenderer::synchronize(QQuickFramebufferObject *item)
{
    const GlStateGuard guard;
    auto *pixelBuffer = static_cast<PixelBuffer *>(item);
    const PixelBuffer::Private &settings = *pixelBuffer->d;
    m_pixelBufferState.imageEffectAlpha = settings.imageEffectAlpha;
    m_frozen = settings.frozen;
    keepPicture();
    takeSource(pixelBuffer);
    takeMask(pixelBuffer);
    m_states.clear();
    m_maskViewState.clear();
    m_maskGatherPass.reset();
    takeSize(pixelBuffer);
    if (settings.imageEffectsEnabled) {
        takeEffects(pixelBuffer);
    }
}

// The scene graph throws the framebuffer away when the window gets to a screen of another density.
// A frozen item gets its picture back from here.
void PixelBufferRenderer::keepPicture()
{
    if (!m_frozen) {
        m_keptPicture.reset();
    } else if (!m_keptPicture && framebufferObject() != nullptr) {
        m_keptPicture = std::make_unique<QOpenGLFramebufferObject>(framebufferObject()->size());
        copyFramebuffer(framebufferObject(), m_keptPicture.get());
    }
}

void PixelBufferRenderer::takeSource(PixelBuffer *item)
{
    m_sourceTexture.clear();
    m_sourceRect = wholeTexture;
    if (QSGTextureProvider *provider = providerOf(item->d->sourceItem)) {
        listen(provider, item, item->d->sourceConnection);
        m_sourceTexture = provider->texture();
    }
    if (m_sourceTexture) {
        m_sourceRect = item->d->sourceRect;
        if (m_sourceRect.isEmpty()) {
            m_sourceRect = centredCrop(m_sourceTexture->textureSize(),
                                       m_sourceTexture->normalizedTextureSubRect(), item->size());
        }
    }
}

void PixelBufferRenderer::takeMask(PixelBuffer *item)
{
    if (QSGTextureProvider *provider = providerOf(item->d->mask)) {
        listen(provider, item, item->d->maskConnection);
        m_maskTexture = provider->texture();
    }
}

void PixelBufferRenderer::takeSize(const PixelBuffer *item)
{
    const QSize size = item->d->renderSize();
    // A frozen item keeps its picture, stretched: a framebuffer of the new size would be empty.
    if (size == m_size || (m_frozen && m_size.isValid())) {
        return;
    }
    m_size = size;
    invalidateFramebufferObject();
}

void PixelBufferRenderer::takeEffects(const PixelBuffer *item)
{
    const QMutexLocker lock(&statesMutex);
    const PixelBuffer::Private &settings = *item->d;
    if (m_sourceTexture) {
        m_pixelBufferState.renderScale =
            renderScale(settings.itemSize(), m_sourceRect, settings.referenceSize,
                        m_sourceTexture->textureSize());
    }
    for (ImageEffect *effect : settings.imageEffects) {
        const QSharedPointer<ImageEffectState> state = effect->currentState();
        m_states.append(state);
        if (effect == settings.maskViewLayer && effect->alphaMask() != nullptr) {
            m_maskViewState = state;
            m_maskGatherPass =
                std::make_unique<MaskGatherPass>(effect->alphaMask()->currentState());
            m_maskRenderPass = QSharedPointer<MaskRenderPass>::create();
        }
    }
}

void PixelBufferRenderer::render()
{
    if (m_frozen) {
        return;
    }
    QElapsedTimer timer;
    timer.start();
    drawFrame();
    qCDebug(lcImageEffectTime) << "Rendering of" << m_states.size() + 1 << "passes took"
                               << milliseconds(timer) << "msecs";
}

void PixelBufferRenderer::drawFrame()
{
    bringUpToDate(m_sourceTexture);
    bringUpToDate(m_maskTexture);

    const GlStateGuard guard;
    QOpenGLFramebufferObject *picture = framebufferObject();
    // One beyond OpenGL's limits has no picture.
    if (!picture->bind()) {
        return;
    }
    QOpenGLContext::currentContext()->functions()->glViewport(0, 0, picture->width(),
                                                              picture->height());
    if (!m_sourceTexture) {
        clearBoundFramebuffer();
        return;
    }
    m_basePass->draw(m_sourceTexture, m_sourceRect);
    if (!m_states.isEmpty() || m_maskTexture) {
        drawPasses();
    }
}

void PixelBufferRenderer::drawPasses()
{
    const QMutexLocker lock(&statesMutex);
    QOpenGLFramebufferObject *picture = framebufferObject();
    const NearestFiltering nearest(picture->texture());
    // Cleared, so that an effect whose program did not link leaves defined colour to the next one.
    QOpenGLFramebufferObject temporary(picture->size(), GL_TEXTURE_2D);
    if (!temporary.bind()) {
        return;
    }
    clearBoundFramebuffer();
    temporary.release();

    PassTargets targets{picture, &temporary};
    drawEffects(targets);
    if (m_maskTexture) {
        m_maskPass->draw(targets, m_maskTexture);
        std::swap(targets.source, targets.target);
    }
    if (targets.source != picture) {
        copyFramebuffer(&temporary, picture);
    }
    if (m_maskViewState && m_maskGatherPass) {
        m_maskRenderPass->draw(picture, m_maskGatherPass.get());
    }
}

// Leaves the picture in the pair's source.
void PixelBufferRenderer::drawEffects(PassTargets &targets)
{
    for (int i = 0; i < m_states.size(); ++i) {
        QElapsedTimer timer;
        timer.start();
        const QSharedPointer<ImageEffectState> &state = m_states.at(i);
        if (state->passDisabled()) {
            continue;
        }
        // First, since it uses texture units on which effectPass() binds the effect's tables.
        if (state == m_maskViewState && m_maskGatherPass) {
            m_maskGatherPass->gather(targets.source);
        }
        const QSharedPointer<ImageEffectPass> pass = state->effectPass(&m_pixelBufferState);
        pass->render(targets, state.data(), &m_pixelBufferState);
        std::swap(targets.source, targets.target);
        qCDebug(lcImageEffectTime)
            << "Rendering pass" << i << "took" << milliseconds(timer) << "msecs";
    }
}

} // namespace ko::imagefx
