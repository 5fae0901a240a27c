#include "tests/quick/TestWindow.h"

#include "imagefx/RegisterQml.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/support/EffectRendering.h"

#include <QtCore/QMutex>
#include <QtCore/QUrl>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLDebugLogger>
#include <QtGui/QPainter>
#include <QtQml/QQmlComponent>
#include <QtQuick/QQuickImageProvider>
#include <QtTest/QTest>

namespace ko::imagefx::test
{

namespace
{

// Too wide for the texture atlas, in which a picture would have neighbours.
constexpr QSize pictureSize(300, 30);

QImage maskPicture()
{
    QImage image(pictureSize, QImage::Format_RGBA8888);
    QPainter painter(&image);
    QLinearGradient gradient(0, 0, image.width(), 0);
    gradient.setColorAt(0, Qt::black);
    gradient.setColorAt(1, Qt::red);
    painter.fillRect(image.rect(), gradient);
    return image;
}

class StagePictures : public QQuickImageProvider
{
public:
    StagePictures() : QQuickImageProvider(QQuickImageProvider::Image) {}

    QImage requestImage(const QString &id, QSize *size, const QSize &) override
    {
        *size = pictureSize;
        return id == QLatin1String("mask") ? maskPicture() : opaquePicture(pictureSize);
    }
};

QMutex mutex; // guards what follows
QStringList driverMessages;

void keepErrors(const QOpenGLDebugMessage &message)
{
    if (message.type() == QOpenGLDebugMessage::ErrorType ||
        message.type() == QOpenGLDebugMessage::UndefinedBehaviorType) {
        const QMutexLocker lock(&mutex);
        driverMessages.append(message.message());
    }
}

// The logger lives as long as the context, which may serve several windows.
void startLogging()
{
    QOpenGLContext *context = QOpenGLContext::currentContext();
    if (context->findChild<QOpenGLDebugLogger *>() != nullptr) {
        return;
    }
    auto *logger = new QOpenGLDebugLogger(context);
    if (logger->initialize()) {
        QObject::connect(logger, &QOpenGLDebugLogger::messageLogged, logger, keepErrors,
                         Qt::DirectConnection);
        logger->startLogging(QOpenGLDebugLogger::SynchronousLogging);
    }
}

void registerTypes()
{
    static const bool once = [] {
        ImageEffect::initialize();
        imagefx_register_qml("Korvel.ImageFx");
        return true;
    }();
    Q_UNUSED(once)
}

} // namespace

Stage::Stage()
{
    registerTypes();
    m_engine.addImageProvider(QStringLiteral("test"), new StagePictures);
}

Stage::~Stage() = default;

std::unique_ptr<QQuickItem> Stage::create(const QByteArray &qml)
{
    QQmlComponent component(&m_engine);
    component.setData("import QtQuick 2.15; import Korvel.ImageFx 1.0; import '" +
                          QUrl::fromLocalFile(KORVEL_QUICK_TESTS).toEncoded() + "'\n" + qml,
                      QUrl());
    std::unique_ptr<QObject> object(component.create());
    auto *item = qobject_cast<QQuickItem *>(object.get());
    if (item == nullptr) {
        qWarning() << component.errors();
        return {};
    }
    QQmlEngine::setObjectOwnership(item, QQmlEngine::CppOwnership);
    static_cast<void>(object.release());
    return std::unique_ptr<QQuickItem>(item);
}

TestWindow::TestWindow(const QSize &size) : m_watch(&m_window)
{
    m_window.resize(size);
    m_window.setColor(Qt::white);
    QObject::connect(&m_window, &QQuickWindow::sceneGraphInitialized, &m_context, startLogging,
                     Qt::DirectConnection);
}

// Its render thread is at rest before the watch goes.
TestWindow::~TestWindow()
{
    m_window.setPersistentSceneGraph(false);
    m_window.setPersistentOpenGLContext(false);
    m_window.hide();
}

bool TestWindow::show()
{
    m_window.show();
    return QTest::qWaitForWindowExposed(&m_window) && settle();
}

bool TestWindow::settle()
{
    for (int i = 0; i < 3; ++i) {
        m_window.update();
        if (!m_watch.waitFor(m_watch.frames() + 1)) {
            return false;
        }
    }
    return true;
}

QImage TestWindow::grab()
{
    return settle() ? m_window.grabWindow().convertToFormat(QImage::Format_RGBA8888) : QImage();
}

QImage TestWindow::grab(const QQuickItem *item)
{
    return grab().copy(item->mapRectToScene(item->boundingRect()).toAlignedRect());
}

QString TestWindow::errors() const
{
    const QMutexLocker lock(&mutex);
    return (m_watch.glErrors() + driverMessages).join(QLatin1Char('\n'));
}

} // namespace ko::imagefx::test
