#include "tests/quick/QuickScene.h"

#include "core/RegisterQml.h"
#include "imagefx/RegisterQml.h"
#include "imagefx/model/ImageEffect.h"

#include <QtCore/QEventLoop>
#include <QtCore/QFileInfo>
#include <QtCore/QMutex>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtCore/QUrl>
#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>
#include <QtQml/QQmlComponent>
#include <QtQml/QQmlEngine>
#include <QtQuick/QQuickImageProvider>
#include <QtTest/QTest>

#include <unistd.h>

namespace ko::imagefx::test
{

namespace
{

// A provider's new texture is noticed by the frame after it, and by its user one frame later.
constexpr int framesUntilSettled = 3;
constexpr int longestWait = 5000; // in milliseconds, for a machine that does much else

constexpr const char *atlasSizeLimit = "QSG_ATLAS_SIZE_LIMIT";

QMutex messageMutex;
QStringList collectedWarnings;
QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtWarningMsg || type == QtCriticalMsg) {
        const QMutexLocker lock(&messageMutex);
        collectedWarnings.append(text);
    }
    if (previousHandler != nullptr) {
        previousHandler(type, context, text);
    }
}

class Pictures : public QQuickImageProvider
{
public:
    explicit Pictures(const QMap<QString, QImage> *pictures)
        : QQuickImageProvider(QQuickImageProvider::Image), m_pictures(pictures)
    {
    }

    QImage requestImage(const QString &id, QSize *size, const QSize &) override
    {
        QImage picture = m_pictures->value(id);
        *size = picture.size();
        return picture;
    }

private:
    const QMap<QString, QImage> *const m_pictures;
};

bool isRunning(long thread)
{
    return QFileInfo::exists(QStringLiteral("/proc/self/task/%1").arg(thread));
}

void registerTypes()
{
    static const bool once = [] {
        ImageEffect::initialize();
        korvelcore_register_qml("Korvel.Core");
        imagefx_register_qml("Korvel.ImageFx");
        return true;
    }();
    Q_UNUSED(once)
}

QObject *findBelow(QQuickItem *item, const QString &objectName)
{
    if (item->objectName() == objectName) {
        return item;
    }
    if (auto *object = item->findChild<QObject *>(objectName)) {
        return object;
    }
    // What a repeater made is nobody's QObject child below the root.
    for (QQuickItem *child : item->childItems()) {
        if (QObject *object = findBelow(child, objectName)) {
            return object;
        }
    }
    return nullptr;
}

} // namespace

WarningCollector::WarningCollector()
{
    collectedWarnings.clear();
    previousHandler = qInstallMessageHandler(collect);
}

WarningCollector::~WarningCollector()
{
    qInstallMessageHandler(previousHandler);
    previousHandler = nullptr;
}

QStringList WarningCollector::warnings() const
{
    const QMutexLocker lock(&messageMutex);
    return collectedWarnings;
}

QImage premultiplied(const QImage &picture)
{
    QImage image = picture;
    if (image.format() == QImage::Format_RGBA8888) {
        image.reinterpretAsFormat(QImage::Format_RGBA8888_Premultiplied);
        return image;
    }
    return image.convertToFormat(QImage::Format_RGBA8888_Premultiplied);
}

QuickScene::QuickScene(const QSize &size, const QColor &background)
    : m_view(std::make_unique<QQuickView>())
{
    registerTypes();
    m_view->engine()->addImageProvider(QStringLiteral("test"), new Pictures(&m_pictures));
    m_view->setColor(background);
    QObject::connect(
        m_view.get(), &QQuickWindow::afterRendering, m_view.get(), [this] { watchFrame(); },
        Qt::DirectConnection);
    m_view->setResizeMode(QQuickView::SizeRootObjectToView);
    m_view->resize(size);
}

QuickScene::~QuickScene()
{
    m_view.reset();
    qunsetenv(atlasSizeLimit);
    const bool threaded = m_renderThread != 0 && m_renderThread != gettid();
    for (int i = 0; threaded && isRunning(m_renderThread) && i < longestWait; ++i) {
        QThread::msleep(1);
    }
}

void QuickScene::watchFrame()
{
    m_renderThread = gettid();
    const GLenum error = QOpenGLContext::currentContext()->functions()->glGetError();
    if (error != GL_NO_ERROR) {
        qWarning("GL error 0x%x is pending", error);
    }
}

void QuickScene::keepOutOfAtlas()
{
    qputenv(atlasSizeLimit, "0");
}

void QuickScene::addPicture(const QString &name, const QImage &picture)
{
    m_pictures.insert(name, premultiplied(picture));
}

QByteArray QuickScene::show(const QByteArray &qml)
{
    auto *component = new QQmlComponent(m_view->engine(), m_view.get());
    component->setData(
        "import QtQuick 2.15; import Korvel.Core 1.0; import Korvel.ImageFx 1.0\n" + qml, QUrl());
    return showComponent(component);
}

QByteArray QuickScene::showFile(const QString &path)
{
    return showComponent(
        new QQmlComponent(m_view->engine(), QUrl::fromLocalFile(path), m_view.get()));
}

QByteArray QuickScene::showComponent(QQmlComponent *component)
{
    QObject *object = component->create();
    if (object == nullptr) {
        return component->errorString().toUtf8();
    }
    m_view->setContent(component->url(), component, object);
    if (root() == nullptr) {
        return "the root is no item";
    }
    m_view->show();
    if (!QTest::qWaitForWindowExposed(m_view.get(), longestWait)) {
        return "the window was not exposed";
    }
    return settle() ? QByteArray() : QByteArray("the window does not draw");
}

QObject *QuickScene::findObject(const QString &objectName) const
{
    return root() != nullptr ? findBelow(root(), objectName) : nullptr;
}

bool QuickScene::settle()
{
    for (int i = 0; i < framesUntilSettled; ++i) {
        // The signal comes from the render thread, where a QSignalSpy would listen.
        QEventLoop loop;
        QObject::connect(m_view.get(), &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit,
                         Qt::QueuedConnection);
        QTimer::singleShot(longestWait, &loop, [&loop] { loop.exit(1); });
        m_view->update();
        if (loop.exec() != 0) {
            return false;
        }
    }
    return true;
}

QImage QuickScene::grab()
{
    if (!settle()) {
        return {};
    }
    return grabNow();
}

QImage QuickScene::grabNow()
{
    return premultiplied(m_view->grabWindow());
}

QImage QuickScene::grab(const QQuickItem *item)
{
    const QImage window = grab();
    const QRectF rect = item->mapRectToScene(item->boundingRect());
    const qreal ratio = window.devicePixelRatio();
    return window.copy(QRectF(rect.topLeft() * ratio, rect.size() * ratio).toAlignedRect());
}

} // namespace ko::imagefx::test
