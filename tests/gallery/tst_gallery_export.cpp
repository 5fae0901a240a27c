#include "imagefx/render/ImageEffectRenderer.h"
#include "tests/gallery/GalleryFixture.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/PictureTester.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtGui/QDesktopServices>
#include <QtGui/QOpenGLFramebufferObject>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

constexpr int longestExport = 30000; // ms, for a machine that does much else

const QByteArray writesItsTarget = "for argument; do\n"
                                   "    case $argument in --target=*) echo picture > "
                                   "\"${argument#--target=}\";; esac\n"
                                   "done\n";

const QString exportButton = QStringLiteral("export");
const QString message = QStringLiteral("export.message");
const QString result = QStringLiteral("export.result");

} // namespace

// The export button, and what is told of the exports.
class GalleryExportTest : public GalleryFixture
{
    Q_OBJECT

public Q_SLOTS:
    void openUrl(const QUrl &url) { m_opened.append(url); }

private Q_SLOTS:
    void init();
    void cleanup();

    void exporterLiesBesideTheGallery();
    void exportIsThePhotographThroughTheEffectAtFullSize();
    void progressIsShownUntilTheFileIsThere();
    void everyExportGetsANameOfItsOwn();
    void resultIsOpenedByClickAndByKey();
    void keyboardExports();
    void failureIsTold();
    void folderThatCannotBeWrittenToIsTold();
    void buttonIsOffWithoutTheExporter();
    void exporterThatGoesAwayIsTold();
    void exporterThatDoesNotStartIsTold();
    void galleryClosedWhileItExportsLeavesNothing();

private:
    QString program() const
    {
        return QCoreApplication::applicationDirPath() + QStringLiteral("/korvel-image-exporter");
    }
    // Puts an executable file in the exporter's place.
    void writeProgram(const QByteArray &content);
    void writeScript(const QByteArray &script) { writeProgram("#!/bin/sh\n" + script); }
    // Lets the script wait for open().
    QByteArray untilOpen() const;
    void open() const { writeFile(gate(), QByteArray()); }
    void restart();

    QDir pictures() const { return QDir(m_home->filePath(QStringLiteral("Pictures"))); }
    QString gate() const { return m_home->filePath(QStringLiteral("gate")); }
    QStringList exports() const { return pictures().entryList(QDir::Files, QDir::Name); }
    static bool writeFile(const QString &path, const QByteArray &content);
    QString text(const QString &item) const;
    QImage throughExporter(const QString &source) const;

    std::unique_ptr<QTemporaryDir> m_home;
    QVector<QUrl> m_opened;
};

void GalleryExportTest::init()
{
    m_home = std::make_unique<QTemporaryDir>();
    qputenv("HOME", m_home->path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", m_home->path().toLocal8Bit());
    m_opened.clear();
    writeScript(writesItsTarget);
    GalleryFixture::init();
}

void GalleryExportTest::cleanup()
{
    GalleryFixture::cleanup();
    QFile::remove(program());
}

void GalleryExportTest::writeProgram(const QByteArray &content)
{
    QFile::remove(program());
    QVERIFY(writeFile(program(), content));
    QFile::setPermissions(program(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

QByteArray GalleryExportTest::untilOpen() const
{
    return "while [ ! -e " + QFile::encodeName(gate()) + " ]; do sleep 0.02; done\n";
}

// What the gallery looks for when it starts, it finds as it is now.
void GalleryExportTest::restart()
{
    GalleryFixture::cleanup();
    GalleryFixture::init();
}

bool GalleryExportTest::writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QString GalleryExportTest::text(const QString &item) const
{
    const QQuickItem *found = m_gallery->find(item);
    return found ? found->property("text").toString() : QString();
}

// A file as the exporter writes it to JPEG, without any effect.
QImage GalleryExportTest::throughExporter(const QString &source) const
{
    const QString stack = m_home->filePath(QStringLiteral("stack.json"));
    const QString target = m_home->filePath(QStringLiteral("expected.jpg"));
    writeFile(stack, "[]");
    QProcess::execute(QStringLiteral(EXPORTER),
                      {QStringLiteral("--source=") + source, QStringLiteral("--target=") + target,
                       QStringLiteral("--effects=") + stack});
    return QImage(target);
}

void GalleryExportTest::exporterLiesBesideTheGallery()
{
    QVERIFY(QFileInfo(QStringLiteral(GALLERY_FOLDER "/korvel-image-exporter")).isExecutable());
}

void GalleryExportTest::exportIsThePhotographThroughTheEffectAtFullSize()
{
    QFile::remove(program());
    QVERIFY(QFile::link(QStringLiteral(EXPORTER), program()));
    m_gallery->click(QStringLiteral("photograph.room"));
    ImageEffect *effect = m_gallery->chooseEffect(QStringLiteral("ColorFill"));
    m_gallery->click(QStringLiteral("alpha"), {0.8, 0.5});
    m_gallery->find(QStringLiteral("blendMode"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Down);
    chooseMask(QStringLiteral("Distance"));
    QVERIFY(effect->blendMode() != ImageEffect::Normal && effect->alpha() < 1.0F);
    m_gallery->click(exportButton);
    QTRY_COMPARE_WITH_TIMEOUT(text(result), QStringLiteral("room - colour fill.jpg"),
                              longestExport);
    const QImage exported(pictures().filePath(QStringLiteral("room - colour fill.jpg")));

    const QImage photograph(QStringLiteral(":/gallery/photographs/room.jpg"));
    // Of the effect itself, the window's render thread may hold the state.
    const QList<ImageEffect *> effects =
        ImageEffect::unserialize(ImageEffect::serialize(QList<ImageEffect *>{effect}));
    OffscreenGl gl;
    QVERIFY(gl.isValid());
    QOpenGLFramebufferObject target(photograph.size());
    ImageEffectRenderer(effects).render(photograph, &target);
    const QString rendered = m_home->filePath(QStringLiteral("rendered.png"));
    QVERIFY(readBack(&target).save(rendered));
    delete effects.constFirst()->alphaMask();
    qDeleteAll(effects);

    KORVEL_COMPARE_PICTURES(exported, throughExporter(rendered), 1.0);
    QVERIFY(exported != throughExporter(QFINDTESTDATA("../../examples/photographs/room.jpg")));
}

void GalleryExportTest::progressIsShownUntilTheFileIsThere()
{
    writeScript(untilOpen() + writesItsTarget);
    QVERIFY(!m_gallery->find(message));
    QVERIFY(!m_gallery->find(result));
    m_gallery->click(exportButton);
    QCOMPARE(text(message),
             QStringLiteral("Exporting mountains - brightness and contrast.jpg \u2026"));
    QVERIFY(m_gallery->find(QStringLiteral("export.busy")));
    m_gallery->click(exportButton);
    QCOMPARE(text(message), QStringLiteral("Exporting 2 pictures \u2026"));
    QVERIFY(!m_gallery->find(result));
    open();
    QTRY_VERIFY(!m_gallery->find(message));
    QVERIFY(!m_gallery->find(QStringLiteral("export.busy")));
    QVERIFY(exports().contains(text(result)));
}

void GalleryExportTest::everyExportGetsANameOfItsOwn()
{
    m_gallery->chooseEffect(QStringLiteral("Exposure"));
    const QString older = pictures().filePath(QStringLiteral("mountains - exposure.jpg"));
    QVERIFY(QDir().mkpath(pictures().path()));
    QVERIFY(writeFile(older, "older"));
    m_gallery->click(exportButton);
    m_gallery->click(exportButton);
    QTRY_VERIFY(m_gallery->find(result) && !m_gallery->find(message));
    QCOMPARE(exports(), QStringList({QStringLiteral("mountains - exposure 2.jpg"),
                                     QStringLiteral("mountains - exposure 3.jpg"),
                                     QStringLiteral("mountains - exposure.jpg")}));
    QFile file(older);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("older"));
    for (const QString &name : exports()) {
        QVERIFY2(QFileInfo(pictures().filePath(name)).size() > 0, qPrintable(name));
    }
}

void GalleryExportTest::resultIsOpenedByClickAndByKey()
{
    QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "openUrl");
    m_gallery->click(exportButton);
    QTRY_VERIFY(m_gallery->find(result));
    const QUrl file = QUrl::fromLocalFile(pictures().filePath(text(result)));
    m_gallery->click(result);
    QCOMPARE(m_opened, QVector<QUrl>({file}));
    m_gallery->find(QStringLiteral("photograph.friends"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Tab);
    m_gallery->press(Qt::Key_Space);
    QCOMPARE(m_opened, QVector<QUrl>({file, file}));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

void GalleryExportTest::keyboardExports()
{
    m_gallery->find(QStringLiteral("reset"))->forceActiveFocus();
    m_gallery->press(Qt::Key_Tab);
    m_gallery->press(Qt::Key_Space);
    QTRY_VERIFY(m_gallery->find(result));
    QCOMPARE(exports(), QStringList(text(result)));
}

void GalleryExportTest::failureIsTold()
{
    writeScript("exit 1\n");
    m_gallery->click(exportButton);
    QTRY_COMPARE(text(message),
                 QStringLiteral("Could not export mountains - brightness and contrast.jpg"));
    QCOMPARE(takeWarnings(), QStringList(QStringLiteral("Image export failed with code 1")));
    QVERIFY(!m_gallery->find(result));
    QVERIFY(!m_gallery->find(QStringLiteral("export.busy")));
    QCOMPARE(exports(), QStringList());

    writeScript(writesItsTarget);
    m_gallery->click(exportButton);
    QTRY_COMPARE(text(result), QStringLiteral("mountains - brightness and contrast.jpg"));
    QVERIFY(!m_gallery->find(message));
}

void GalleryExportTest::folderThatCannotBeWrittenToIsTold()
{
    // A file in the folder's place stops even the system's administrator.
    QVERIFY(writeFile(pictures().path(), QByteArray()));
    m_gallery->click(exportButton);
    QCOMPARE(text(message), QStringLiteral("There is no writing to ") + pictures().path());
    QVERIFY(!m_gallery->find(QStringLiteral("export.busy")));
}

void GalleryExportTest::buttonIsOffWithoutTheExporter()
{
    QVERIFY(m_gallery->find(exportButton)->isEnabled());
    QFile::remove(program());
    restart();
    QVERIFY(!m_gallery->find(exportButton)->isEnabled());
    // From outside, since it may be where the last window had it.
    QTest::mouseMove(m_gallery->window(), m_gallery->point(QStringLiteral("reset")));
    QTest::mouseMove(m_gallery->window(), m_gallery->point(exportButton));
    QTRY_VERIFY(m_gallery->showsText(QStringLiteral("korvel-image-exporter is missing")));
    m_gallery->click(exportButton);
    QVERIFY(!m_gallery->find(message));
}

void GalleryExportTest::exporterThatGoesAwayIsTold()
{
    QFile::remove(program());
    m_gallery->click(exportButton);
    QCOMPARE(text(message), QStringLiteral("korvel-image-exporter is missing beside this program"));
    QCOMPARE(exports(), QStringList());
}

void GalleryExportTest::exporterThatDoesNotStartIsTold()
{
    writeProgram("neither program nor script");
    auto *exports =
        m_gallery->find(QStringLiteral("export.place"))->property("exports").value<QObject *>();
    exports->setProperty("patience", 500);
    m_gallery->click(exportButton);
    QVERIFY(text(message).startsWith(QStringLiteral("Exporting")));
    QTRY_VERIFY(text(message).startsWith(QStringLiteral("No answer from korvel-image-exporter")));
}

void GalleryExportTest::galleryClosedWhileItExportsLeavesNothing()
{
    const QString sign = m_home->filePath(QStringLiteral("runs"));
    writeScript("touch " + QFile::encodeName(sign) + "\nexec sleep 60\n");
    m_gallery->click(exportButton);
    QCOMPARE(exports().size(), 1);
    QTRY_VERIFY(QFile::exists(sign));
    restart();
    QCOMPARE(exports(), QStringList());
}

KORVEL_TEST_MAIN(GalleryExportTest)

#include "tst_gallery_export.moc"
