#include "imagefx/effects/LookupTableImageEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>

#include <algorithm>
#include <functional>

using namespace ko::imagefx;

namespace
{

// What a data URL may hold behind its prefix.
constexpr int largestDataUrl = 2048;
// Between neighbouring levels a larger step would show as a band in a clear sky.
constexpr int largestStep = 4;

const QString presetFolder = QStringLiteral(":/imagefx/lib/lut/");

QUrl resourceUrl(const QString &name)
{
    return QUrl(QStringLiteral("qrc") + presetFolder + name);
}

} // namespace

// The preset lookup tables of the resources, and the program that draws them.
class PresetsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void theResourcesHoldTheSixPresets();
    void theProgramDrawsExactlyTheResources();
    void filesAreSmallRgbPng_data() { addPresets(); }
    void filesAreSmallRgbPng();
    void curvesNeitherFallNorLeap_data() { addPresets(); }
    void curvesNeitherFallNorLeap();
    void blackStaysDarkAndWhiteLight_data() { addPresets(); }
    void blackStaysDarkAndWhiteLight();
    void resourceAndDataUrlLoadTheSameTable_data() { addPresets(); }
    void resourceAndDataUrlLoadTheSameTable();
    void greyTakesTheTintOfTheName_data();
    void greyTakesTheTintOfTheName();

private:
    void addPresets() const;

    QTemporaryDir m_drawn;
    const QStringList m_names = {
        QStringLiteral("american-hustle.png"),      QStringLiteral("fargo.png"),
        QStringLiteral("grand-budapest-hotel.png"), QStringLiteral("interstellar.png"),
        QStringLiteral("little-miss-sunshine.png"), QStringLiteral("pulp-fiction.png")};
};

void PresetsTest::initTestCase()
{
    QVERIFY(m_drawn.isValid());
    QCOMPARE(QProcess::execute(QStringLiteral(PRESET_GENERATOR), {m_drawn.path()}), 0);
}

void PresetsTest::addPresets() const
{
    QTest::addColumn<QString>("name");
    for (const QString &name : m_names) {
        QTest::newRow(qPrintable(name)) << name;
    }
}

void PresetsTest::theResourcesHoldTheSixPresets()
{
    QCOMPARE(QDir(presetFolder).entryList(QDir::Files, QDir::Name), m_names);
}

void PresetsTest::theProgramDrawsExactlyTheResources()
{
    QCOMPARE(QDir(m_drawn.path()).entryList(QDir::Files, QDir::Name), m_names);
    for (const QString &name : m_names) {
        const QImage drawn(m_drawn.filePath(name));
        QVERIFY(!drawn.isNull());
        QVERIFY2(drawn == QImage(presetFolder + name), qPrintable(name));
    }
}

void PresetsTest::filesAreSmallRgbPng()
{
    QFETCH(QString, name);
    const QImage image(presetFolder + name);
    QCOMPARE(image.size(), QSize(256, 1));
    QVERIFY(!image.hasAlphaChannel());
    QVERIFY(image.textKeys().isEmpty());
    QFile file(presetFolder + name);
    QVERIFY(file.open(QIODevice::ReadOnly));
    // The header's bit depth and colour type.
    QCOMPARE(file.readAll().mid(24, 2), QByteArray("\x08\x02"));
}

void PresetsTest::curvesNeitherFallNorLeap()
{
    QFETCH(QString, name);
    const QImage image(presetFolder + name);
    QCOMPARE(image.width(), 256);
    for (int level = 1; level < image.width(); ++level) {
        const QColor before = image.pixelColor(level - 1, 0);
        const QColor here = image.pixelColor(level, 0);
        for (const int step : {here.red() - before.red(), here.green() - before.green(),
                               here.blue() - before.blue()}) {
            QVERIFY2(step >= 0 && step <= largestStep,
                     qPrintable(QStringLiteral("a step of %1 at level %2").arg(step).arg(level)));
        }
    }
}

void PresetsTest::blackStaysDarkAndWhiteLight()
{
    QFETCH(QString, name);
    const QImage image(presetFolder + name);
    QVERIFY(qGray(image.pixel(0, 0)) < 64);
    QVERIFY(qGray(image.pixel(255, 0)) > 224);
}

void PresetsTest::resourceAndDataUrlLoadTheSameTable()
{
    QFETCH(QString, name);
    LookupTableImageEffect fromResource;
    fromResource.setTable(resourceUrl(name));
    QVERIFY(!fromResource.isNeutral());
    QCOMPARE(fromResource.lut(),
             QImage(presetFolder + name).convertToFormat(QImage::Format_RGB888));

    LookupTableImageEffect fromDataUrl;
    const QString url =
        fromDataUrl.toDataUrl(QUrl::fromLocalFile(m_drawn.filePath(name))).toString();
    const QString prefix = QStringLiteral("data:image/png;base64,");
    QVERIFY(url.startsWith(prefix));
    QVERIFY(url.size() - prefix.size() <= largestDataUrl);
    fromDataUrl.setTable(QUrl(url));
    QCOMPARE(fromDataUrl.lut(), fromResource.lut());
}

// Gold, cold blue, pink and lilac, steel, yellow, amber: what a grey turns into, the brightest
// channel first.
void PresetsTest::greyTakesTheTintOfTheName_data()
{
    QTest::addColumn<QString>("brightestFirst");
    QTest::newRow("american-hustle.png") << QStringLiteral("rgb");
    QTest::newRow("fargo.png") << QStringLiteral("bgr");
    QTest::newRow("grand-budapest-hotel.png") << QStringLiteral("rbg");
    QTest::newRow("interstellar.png") << QStringLiteral("bgr");
    QTest::newRow("little-miss-sunshine.png") << QStringLiteral("rgb");
    QTest::newRow("pulp-fiction.png") << QStringLiteral("rgb");
}

void PresetsTest::greyTakesTheTintOfTheName()
{
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const QColor grey = QImage(presetFolder + name).pixelColor(128, 0);
    QVector<QPair<int, QString>> channels = {{grey.red(), QStringLiteral("r")},
                                             {grey.green(), QStringLiteral("g")},
                                             {grey.blue(), QStringLiteral("b")}};
    std::sort(channels.begin(), channels.end(), std::greater<>());
    QTEST(channels.at(0).second + channels.at(1).second + channels.at(2).second, "brightestFirst");
}

KORVEL_TEST_MAIN(PresetsTest)
#include "tst_presets.moc"
