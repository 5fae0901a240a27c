#include "engine/EffectEngine.h"
#include "imagefx/effects/LookupTableImageEffect.h"
#include "imagefx/model/EffectRegistry.h"
#include "imagefx/model/EffectStackReader.h"
#include "tests/engine/EngineTester.h"
#include "tests/support/EffectTester.h"
#include "tests/support/OffscreenGl.h"
#include "tests/support/RandomStack.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

namespace
{

const QDir examples(QStringLiteral(EXAMPLES_FOLDER));

// Large enough for every taste of colour, small enough for a software rasteriser.
constexpr int width = 240;

QImage photograph(const QString &name)
{
    const QImage whole(examples.filePath(QLatin1String("photographs/") + name));
    return whole.scaledToWidth(width, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGBA8888);
}

} // namespace

// What people draw, through both engines: the example stacks over the example photographs, and the
// preset tables.
class EnginePicturesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void exampleStacks_data();
    void exampleStacks();
    void presetTables_data();
    void presetTables();

private:
    const QStringList m_photographs =
        QDir(examples.filePath(QStringLiteral("photographs"))).entryList({QStringLiteral("*.jpg")});
    std::unique_ptr<EngineTester> m_tester;
};

void EnginePicturesTest::initTestCase()
{
    m_tester = std::make_unique<EngineTester>(EngineTester::aStack);
    QCOMPARE(m_photographs.size(), 3);
}

void EnginePicturesTest::cleanupTestCase()
{
    m_tester.reset();
}

void EnginePicturesTest::exampleStacks_data()
{
    QTest::addColumn<QString>("path");
    const QDir stacks(examples.filePath(QStringLiteral("stacks")));
    const QStringList names = stacks.entryList({QStringLiteral("*.json")});
    QVERIFY(!names.isEmpty());
    for (const QString &name : names) {
        QTest::newRow(qPrintable(name)) << stacks.filePath(name);
    }
}

// At the size that the stack was made for, and scaled down.
void EnginePicturesTest::exampleStacks()
{
    QFETCH(QString, path);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const EffectRegistry registry = EffectRegistry::complete();
    const OwnedEffects effects(
        EffectStackReader(registry).readStack(QJsonDocument::fromJson(file.readAll()).array()));
    QVERIFY(!effects.list().isEmpty());
    QCOMPARE(EffectEngine(effects.list()).unsupported(), QString());
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    for (const QString &name : m_photographs) {
        const QImage source = photograph(name);
        for (const float scale : {1.0F, 0.15F}) {
            RenderSettings settings;
            settings.relativeScale = scale;
            KORVEL_CHECK(m_tester->compare(renderWithEngine(effects.list(), source, settings),
                                           renderTexture(effects.list(), source, settings)));
        }
    }
}

void EnginePicturesTest::presetTables_data()
{
    QTest::addColumn<QUrl>("table");
    const QDir presets(QStringLiteral(":/imagefx/lib/lut"));
    const QStringList names = presets.entryList({QStringLiteral("*.png")});
    QCOMPARE(names.size(), 6);
    for (const QString &name : names) {
        QTest::newRow(qPrintable(name)) << QUrl(QLatin1String("qrc:/imagefx/lib/lut/") + name);
    }
}

void EnginePicturesTest::presetTables()
{
    QFETCH(QUrl, table);
    const OffscreenGl gl;
    QVERIFY(gl.isValid());
    LookupTableImageEffect grade;
    grade.setTable(table);
    QVERIFY(!grade.lut().isNull());
    EngineTester tester(EngineTester::onePass);
    for (const QImage &source :
         {opaquePicture(), translucentPicture(), photograph(m_photographs.first())}) {
        KORVEL_CHECK(
            tester.compare(renderWithEngine({&grade}, source), renderTexture({&grade}, source)));
    }
    // An opaque level is looked up as it is.
    const QImage source = opaquePicture();
    const QImage drawn = renderWithEngine({&grade}, source);
    const QImage lut = grade.lut().convertToFormat(QImage::Format_RGB888);
    for (int i = 0; i < source.width() * source.height(); ++i) {
        const QPoint at(i % source.width(), i / source.width());
        const QRgb level = source.pixel(at);
        QCOMPARE(drawn.pixel(at),
                 qRgb(qRed(lut.pixel(qRed(level), 0)), qGreen(lut.pixel(qGreen(level), 0)),
                      qBlue(lut.pixel(qBlue(level), 0))));
    }
}

KORVEL_TEST_MAIN(EnginePicturesTest)
#include "tst_engine_pictures.moc"
