#include "ExporterRun.h"
#include "FolderWorkshop.h"
#include "JpegFiles.h"
#include "PictureFiles.h"
#include "ShellRun.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <algorithm>

namespace
{

const QString byGl = QStringLiteral("--engine=gl");
const QString byProcessor = QStringLiteral("--engine=cpu");
const QString verbose = QStringLiteral("--verbose");
const QString sourcePng = QStringLiteral("source.png");
const QString targetPng = QStringLiteral("target.png");
constexpr int usage = 2;

// Both round to 8 bits after every pass, each in its own way.
constexpr int engineTolerance = 2;
// Colours that were divided by alpha, rounded, and multiplied again.
constexpr int translucentTolerance = engineTolerance + 1;

QJsonArray drawnStack()
{
    return {effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), 0.4}})};
}

QJsonObject distanceMask(double location, double value, double endLocation, double endValue)
{
    const auto stop = [](double place, double level) {
        return QJsonObject{{QStringLiteral("location"), place}, {QStringLiteral("value"), level}};
    };
    return {{QStringLiteral("maskId"), QStringLiteral("ko.orvanto.alphamask.Distance")},
            {QStringLiteral("gradientStops"),
             QJsonArray{stop(location, value), stop(endLocation, endValue)}}};
}

QString photograph(const char *name)
{
    return QStringLiteral(EXAMPLE_PHOTOGRAPHS "/") + QLatin1String(name);
}

// The largest difference of a channel of premultiplied pixels; -1 for pictures of different sizes.
int levelsApart(const QImage &one, const QImage &other)
{
    if (one.isNull() || one.size() != other.size()) {
        return -1;
    }
    const QImage a = one.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const QImage b = other.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    int worst = 0;
    for (int y = 0; y < a.height(); ++y) {
        const uchar *left = a.constScanLine(y);
        const uchar *right = b.constScanLine(y);
        for (int i = 0; i < 4 * a.width(); ++i) {
            worst = std::max(worst, std::abs(left[i] - right[i]));
        }
    }
    return worst;
}

// What the dynamic linker tells of the libraries that a call loads.
QByteArray loadedLibraries(const Workshop &workshop, const QString &source, const QStringList &more)
{
    const QString target = QStringLiteral("target.jpg");
    const ToolRun run = workshop.run(source, target, drawnStack(), more,
                                     {{QStringLiteral("LD_DEBUG"), QStringLiteral("files")}});
    return run.exitCode == 0 ? run.errors : QByteArray();
}

bool hasGraphicsDevice()
{
    return !QDir(QStringLiteral("/dev/dri")).isEmpty(QDir::AllEntries | QDir::System) ||
           QFileInfo::exists(QStringLiteral("/dev/nvidia0"));
}

// A folder of devices of whose only graphics device no driver knows, in the place of the real one.
const QByteArray withUnknownDevice =
    "mkdir -p dev/dri && touch dev/null dev/dri/renderD128 && unshare --map-root-user --mount "
    "bash -c 'mount --bind /dev/null dev/null && mount --rbind dev /dev && exec \"$@\"' bash ";

} // namespace

class tst_exporter_engine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anUnknownEngineIsAMistake();
    void aPlatformIsForOpenGl();
    void verboseTellsWhatDrew();
    void aRunOverManyPicturesTellsOnceWhatDraws();
    void nothingDrawnIsDrawnByNobody();
    void withoutAGraphicsDeviceTheProcessorDraws();
    void aDeviceThatNoDriverKnowsLeavesItToTheProcessor_data();
    void aDeviceThatNoDriverKnowsLeavesItToTheProcessor();
    void theProcessorNeedsNoGl();
    void examplesLookTheSame_data();
    void examplesLookTheSame();
    void everyKindOfPictureLooksTheSame_data();
    void everyKindOfPictureLooksTheSame();
    void smallerPicturesLookTheSame();
    void foldersLookTheSame();
    void hiddenEffectsAreHiddenFromBoth_data();
    void hiddenEffectsAreHiddenFromBoth();
    void aSideMayBeLongerThanATexture();
    void theResolutionSurvives_data();
    void theResolutionSurvives();
};

void tst_exporter_engine::anUnknownEngineIsAMistake()
{
    const Workshop workshop;
    const ToolRun run =
        workshop.run(sourcePng, targetPng, drawnStack(), {QStringLiteral("--engine=gpu")});
    VERIFY_FAILURE(run, usage, "did you mean");
    const ToolRun far =
        workshop.run(sourcePng, targetPng, drawnStack(), {QStringLiteral("--engine=quantum")});
    VERIFY_FAILURE(far, usage, "it is one of auto, gl, cpu");
}

void tst_exporter_engine::aPlatformIsForOpenGl()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const QStringList platform{QStringLiteral("-platform"), QStringLiteral("headless")};
    const ToolRun drawn =
        workshop.run(sourcePng, targetPng, drawnStack(), platform + QStringList{verbose});
    QVERIFY2(drawn.errors.contains("note: OpenGL draws, on "), drawn.errors.constData());
    const ToolRun both =
        workshop.run(sourcePng, targetPng, drawnStack(), platform + QStringList{byProcessor});
    VERIFY_FAILURE(both, usage, "-platform and --engine=cpu exclude each other");
}

void tst_exporter_engine::verboseTellsWhatDrew()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    const ToolRun gl = workshop.run(sourcePng, targetPng, drawnStack(), {byGl, verbose});
    QVERIFY2(gl.wroteOneErrorLine() && gl.errors.contains("note: OpenGL draws, on "),
             gl.errors.constData());
    const ToolRun processor = workshop.run(sourcePng, targetPng, drawnStack(),
                                           {byProcessor, verbose, QStringLiteral("--threads=3")});
    const QRegularExpression note(QStringLiteral(
        "note: the processor draws, with (scalar|sse2|sse4.1|avx2|avx512|neon) and up to 3 "
        "threads a picture\n$"));
    QVERIFY2(processor.wroteOneErrorLine() &&
                 note.match(QString::fromUtf8(processor.errors)).hasMatch(),
             processor.errors.constData());
    const ToolRun quiet = workshop.run(sourcePng, targetPng, drawnStack(), {byProcessor});
    QCOMPARE(quiet.errors, QByteArray());
}

void tst_exporter_engine::aRunOverManyPicturesTellsOnceWhatDraws()
{
    const FolderWorkshop workshop;
    for (const char *name : {"photos/a.png", "photos/b.jpg", "photos/c.jpg"}) {
        workshop.picture(QLatin1String(name));
    }
    // Three pictures of which each gets a third of the threads.
    const ToolRun processor = FolderWorkshop::run(
        {byProcessor, verbose, QStringLiteral("--threads=9"), QStringLiteral("photos")});
    QCOMPARE(processor.errors.count("the processor draws"), 1);
    QVERIFY2(processor.errors.contains("up to 3 threads a picture"), processor.errors.constData());
    const ToolRun gl = FolderWorkshop::run({byGl, verbose, QStringLiteral("photos")});
    QCOMPARE(gl.errors.count("OpenGL draws"), 1);
}

void tst_exporter_engine::nothingDrawnIsDrawnByNobody()
{
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    for (const QString &engine : {byGl, byProcessor}) {
        const ToolRun run = workshop.run(sourcePng, targetPng, {}, {engine, verbose}, withoutGl());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.errors, QByteArray());
    }
}

void tst_exporter_engine::withoutAGraphicsDeviceTheProcessorDraws()
{
    if (hasGraphicsDevice()) {
        QSKIP("This machine has a graphics device.");
    }
    const Workshop workshop;
    workshop.write(sourcePng, noise(QSize(3, 3), QImage::Format_RGB32));
    for (const QStringList &options : {QStringList{}, {QStringLiteral("--engine=auto")}}) {
        const ToolRun run =
            workshop.run(sourcePng, targetPng, drawnStack(), options + QStringList{verbose});
        QVERIFY2(run.errors.contains("the processor draws"), run.errors.constData());
        const QByteArray libraries = loadedLibraries(workshop, sourcePng, options);
        QVERIFY(libraries.contains("libQt5Gui"));
        QVERIFY(!libraries.contains("libEGL_"));
    }
}

void tst_exporter_engine::aDeviceThatNoDriverKnowsLeavesItToTheProcessor_data()
{
    QTest::addColumn<Environment>("environment");
    QTest::addColumn<QByteArray>("reason");
    QTest::newRow("software renderer") << Environment() << QByteArray(": in use");
    QTest::newRow("no driver at all") << withoutGl() << QByteArray("no EGL display can be opened");
}

void tst_exporter_engine::aDeviceThatNoDriverKnowsLeavesItToTheProcessor()
{
    QFETCH(Environment, environment);
    QFETCH(QByteArray, reason);
    const Workshop workshop;
    const QString folder = workshop.path(QString());
    if (runShell(withUnknownDevice + "true", folder).exitCode != 0) {
        QSKIP("This user may not mount.");
    }
    workshop.write(sourcePng, noise(QSize(30, 20), QImage::Format_RGB32));
    const QString expected = QStringLiteral("expected.png");
    QCOMPARE(workshop.run(sourcePng, expected, drawnStack(), {byProcessor}).exitCode, 0);
    const QByteArray call = withUnknownDevice + "\"$TOOL\" --source=source.png "
                                                "--target=target.png --effects=stack.json ";
    const ToolRun run = runShell(call + "--verbose", folder, environment);
    QCOMPARE(run.exitCode, 0);
    QVERIFY2(run.wroteOneErrorLine() && run.errors.contains("note: the processor draws, "),
             run.errors.constData());
    QCOMPARE(workshop.read(targetPng), workshop.read(expected));
    environment.append({QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("headless.*=true")});
    const ToolRun asked = runShell(call, folder, environment);
    QVERIFY2(asked.errors.contains(reason), asked.errors.constData());
}

void tst_exporter_engine::theProcessorNeedsNoGl()
{
    const Workshop workshop;
    const QString sourceJpeg = QStringLiteral("source.jpg");
    workshop.write(sourceJpeg, noise(QSize(40, 30), QImage::Format_RGB32));
    const QByteArray processor = loadedLibraries(workshop, sourceJpeg, {byProcessor});
    QVERIFY(processor.contains("libQt5Gui"));
    for (const char *name : {"libEGL_", "libGLX_", "_dri.so", "libgallium", "libLLVM", "libqjpeg",
                             "libqoffscreen", "libqxcb"}) {
        QVERIFY2(!processor.contains(name), name);
    }
    QVERIFY(loadedLibraries(workshop, sourceJpeg, {byGl}).contains("libEGL_"));
}

void tst_exporter_engine::examplesLookTheSame_data()
{
    QTest::addColumn<QString>("stack");
    QTest::addColumn<QString>("source");
    const char *const photographs[] = {"room.jpg", "friends.jpg", "mountains.jpg"};
    const QStringList stacks =
        QDir(QStringLiteral(EXAMPLE_STACKS)).entryList({QStringLiteral("*.json")}, QDir::Files);
    QVERIFY(stacks.size() > 3);
    for (int i = 0; i < stacks.size(); ++i) {
        QTest::newRow(stacks.at(i).toUtf8().constData())
            << stacks.at(i) << photograph(photographs[i % 3]);
    }
}

void tst_exporter_engine::examplesLookTheSame()
{
    QFETCH(QString, stack);
    QFETCH(QString, source);
    const Workshop workshop;
    const QString effects = QStringLiteral(EXAMPLE_STACKS "/") + stack;
    const QString gl = QStringLiteral("gl.bmp");
    const QString processor = QStringLiteral("cpu.bmp");
    QCOMPARE(workshop.runWithEffects(source, gl, effects, {byGl}).exitCode, 0);
    QCOMPARE(workshop.runWithEffects(source, processor, effects, {byProcessor}).exitCode, 0);
    const QImage drawn = workshop.readPicture(processor);
    QVERIFY(drawn.size() == workshop.readPicture(source).size());
    QVERIFY(levelsApart(drawn, workshop.readPicture(source)) > 10);
    const int levels = levelsApart(drawn, workshop.readPicture(gl));
    QVERIFY2(levels >= 0 && levels <= engineTolerance, qPrintable(QString::number(levels)));
}

void tst_exporter_engine::everyKindOfPictureLooksTheSame_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("file");
    const Workshop workshop;
    const auto row = [&workshop](const char *kind, const char *name, const QImage &image) {
        QTest::newRow(kind) << QString::fromLatin1(name)
                            << workshop.read(workshop.write(QLatin1String(name), image));
    };
    const QSize size(97, 61);
    row("translucent PNG", "source.png", noise(size, QImage::Format_ARGB32));
    row("translucent WebP", "source.webp", noise(size, QImage::Format_ARGB32));
    row("grey PNG", "source.png", noise(size, QImage::Format_Grayscale8));
    row("grey JPEG", "source.jpg", noise(size, QImage::Format_Grayscale8));
    row("palette", "source.png",
        noise(size, QImage::Format_RGB32).convertToFormat(QImage::Format_Indexed8));
    row("16 bits", "source.png", noise(size, QImage::Format_RGBX64));
    row("16 bits with alpha", "source.png", noise(size, QImage::Format_RGBA64));
    row("one pixel", "source.png", noise(QSize(1, 1), QImage::Format_RGB32));
    row("one pixel of JPEG", "source.jpg", noise(QSize(1, 1), QImage::Format_RGB32));
    row("one translucent pixel", "source.png", noise(QSize(1, 1), QImage::Format_ARGB32));
    row("one column", "source.png", noise(QSize(1, 300), QImage::Format_RGB32));
    row("one row", "source.jpg", noise(QSize(300, 1), QImage::Format_RGB32));
    PictureFile turned;
    turned.orientation = 6;
    QTest::newRow("turned JPEG") << QStringLiteral("source.jpg")
                                 << encodePicture(QStringLiteral("jpg"),
                                                  noise(size, QImage::Format_RGB32), turned);
    QTest::newRow("progressive JPEG")
        << QStringLiteral("source.jpg") << encodeProgressive(noise(size, QImage::Format_RGB32));
    QTest::newRow("CMYK") << QStringLiteral("source.jpg")
                          << encodeCmyk(
                                 size,
                                 [](int x, int y) {
                                     return Inks{x % 256, y % 256, (x + y) % 256, (x * y) % 100};
                                 },
                                 {});
}

// A point effect, one that looks at neighbours and one with a mask.
void tst_exporter_engine::everyKindOfPictureLooksTheSame()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, file);
    const QJsonArray stack{effect(QStringLiteral("HSV"), {{QStringLiteral("saturation"), -0.4}}),
                           effect(QStringLiteral("Blur"),
                                  {{QStringLiteral("radius"), 4},
                                   {QStringLiteral("alphaMask"), distanceMask(0.2, 1, 0.9, 0)}})};
    const Workshop workshop;
    workshop.write(name, file);
    const QString gl = QStringLiteral("gl.png");
    const ToolRun glRun = workshop.run(name, gl, stack, {byGl});
    const ToolRun run = workshop.run(name, targetPng, stack, {byProcessor});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.exitCode, glRun.exitCode);
    QCOMPARE(run.errors, glRun.errors);
    const QImage drawn = workshop.readPicture(targetPng);
    const QImage expected = workshop.readPicture(gl);
    QCOMPARE(drawn.format(), expected.format());
    const int levels = levelsApart(drawn, expected);
    const int tolerance = expected.hasAlphaChannel() ? translucentTolerance : engineTolerance;
    QVERIFY2(levels >= 0 && levels <= tolerance, qPrintable(QString::number(levels)));
}

void tst_exporter_engine::smallerPicturesLookTheSame()
{
    const Workshop workshop;
    const QJsonArray stack{effect(QStringLiteral("Blur"), {{QStringLiteral("radius"), 40}})};
    const QString source = photograph("room.jpg");
    const QString smaller = QStringLiteral("--max-size=300x300");
    const QString gl = QStringLiteral("gl.png");
    QCOMPARE(workshop.run(source, gl, stack, {byGl, smaller}).exitCode, 0);
    QCOMPARE(workshop.run(source, targetPng, stack, {byProcessor, smaller}).exitCode, 0);
    QCOMPARE(workshop.readPicture(targetPng).height(), 300);
    const int levels = levelsApart(workshop.readPicture(targetPng), workshop.readPicture(gl));
    QVERIFY2(levels >= 0 && levels <= engineTolerance, qPrintable(QString::number(levels)));
}

void tst_exporter_engine::foldersLookTheSame()
{
    const FolderWorkshop workshop;
    const QStringList names{QStringLiteral("a.png"), QStringLiteral("b.jpg"),
                            QStringLiteral("c.jpg"), QStringLiteral("d.tif"),
                            QStringLiteral("e.bmp")};
    for (const QString &name : names) {
        workshop.picture(QStringLiteral("photos/") + name, QSize(200, 150));
    }
    const QStringList toPng{QStringLiteral("--suffix=png"), QStringLiteral("--effects=look.json"),
                            QStringLiteral("--max-size=120x120"), QStringLiteral("--threads=3"),
                            QStringLiteral("photos/")};
    QCOMPARE(runTool(toPng + QStringList{byGl, QStringLiteral("--target-dir=gl")}).exitCode, 0);
    QCOMPARE(runTool(toPng + QStringList{byProcessor, QStringLiteral("--target-dir=cpu")}).exitCode,
             0);
    const QStringList targets = FolderWorkshop::filesBelow(QStringLiteral("cpu"));
    QCOMPARE(targets, FolderWorkshop::filesBelow(QStringLiteral("gl")));
    QCOMPARE(targets.size(), names.size());
    for (const QString &target : targets) {
        const int levels = levelsApart(QImage(QStringLiteral("cpu/") + target),
                                       QImage(QStringLiteral("gl/") + target));
        QVERIFY2(levels >= 0 && levels <= engineTolerance, qPrintable(target));
    }
}

void tst_exporter_engine::hiddenEffectsAreHiddenFromBoth_data()
{
    QTest::addColumn<QJsonObject>("properties");
    QTest::addColumn<bool>("isDrawn");
    const auto row = [](const char *name, bool isDrawn, const QJsonObject &properties) {
        QTest::newRow(name) << properties << isDrawn;
    };
    const QString value = QStringLiteral("value");
    const QString mode = QStringLiteral("blendMode");
    constexpr int multiply = 4;
    row("shown", true, {{value, -0.5}});
    row("neutral", false, {});
    row("neutral with a blend mode", true, {{mode, multiply}});
    row("off", false, {{value, -0.5}, {QStringLiteral("enabled"), false}});
    row("off with a blend mode", false, {{mode, multiply}, {QStringLiteral("enabled"), false}});
    row("invisible", false, {{mode, multiply}, {QStringLiteral("alpha"), 0.001}});
    row("less than invisible", false, {{value, -0.5}, {QStringLiteral("alpha"), -1}});
    row("hardly visible", true, {{value, -1}, {QStringLiteral("alpha"), 0.1}});
}

void tst_exporter_engine::hiddenEffectsAreHiddenFromBoth()
{
    QFETCH(QJsonObject, properties);
    QFETCH(bool, isDrawn);
    const QJsonObject hsv = effect(QStringLiteral("HSV"), properties);
    const auto batch = [](const QJsonObject &nested) {
        return effect(QStringLiteral("Batch"),
                      {{QStringLiteral("imageEffects"), QJsonArray{nested}}});
    };
    const QImage image = noise(QSize(31, 17), QImage::Format_RGB32);
    const Workshop workshop;
    workshop.write(sourcePng, image);
    for (const QJsonObject &shown : {hsv, batch(hsv), batch(batch(hsv))}) {
        const QString gl = QStringLiteral("gl.png");
        QCOMPARE(workshop.run(sourcePng, gl, {shown}, {byGl}).exitCode, 0);
        QCOMPARE(workshop.run(sourcePng, targetPng, {shown}, {byProcessor}).exitCode, 0);
        const QImage drawn = workshop.readPicture(targetPng);
        QCOMPARE(difference(drawn, workshop.readPicture(gl), engineTolerance), QString());
        QCOMPARE(!difference(drawn, image, engineTolerance).isEmpty(), isDrawn);
    }
}

// Black at the ends, untouched in the middle, and the same on both sides.
void tst_exporter_engine::aSideMayBeLongerThanATexture()
{
    constexpr int width = 40000;
    constexpr int height = 3;
    QImage white(width, height, QImage::Format_RGB32);
    white.fill(Qt::white);
    constexpr int linear = 1;
    QJsonObject mask = distanceMask(0, 0, 1, 1);
    mask.insert(QStringLiteral("gradientInterpolation"), linear);
    const QJsonArray stack{
        effect(QStringLiteral("ColorFill"), {{QStringLiteral("color"), QStringLiteral("#000000")},
                                             {QStringLiteral("alphaMask"), mask}})};
    const Workshop workshop;
    for (const char *suffix : {"png", "jpg"}) {
        const QString source = QStringLiteral("source.") + QLatin1String(suffix);
        workshop.write(source, white);
        const ToolRun run = workshop.run(source, targetPng, stack, {byProcessor});
        QVERIFY2(run.exitCode == 0, run.errors.constData());
        const QImage drawn = workshop.readPicture(targetPng);
        QCOMPARE(drawn.size(), white.size());
        QVERIFY(qRed(drawn.pixel(width / 2, 1)) >= 253);
        // 0.7071 of the way to the corner; black has the rest.
        QVERIFY(std::abs(qRed(drawn.pixel(0, 1)) - 75) <= engineTolerance);
        QVERIFY(std::abs(qRed(drawn.pixel(width / 4, 1)) - 165) <= engineTolerance);
        for (int x = 0; x < width / 2; x += 97) {
            QVERIFY(qRed(drawn.pixel(x, 1)) <= qRed(drawn.pixel(x + 97, 1)));
            QVERIFY(std::abs(qRed(drawn.pixel(x, 1)) - qRed(drawn.pixel(width - 1 - x, 1))) <= 1);
        }
    }
}

void tst_exporter_engine::theResolutionSurvives_data()
{
    QTest::addColumn<QString>("engine");
    QTest::addColumn<QSize>("size");
    for (const QString &engine : {byGl, byProcessor}) {
        QTest::newRow(qPrintable(engine)) << engine << QSize(64, 48);
        QTest::newRow(qPrintable(engine + QStringLiteral(" large"))) << engine << QSize(4100, 4100);
    }
}

void tst_exporter_engine::theResolutionSurvives()
{
    QFETCH(QString, engine);
    QFETCH(QSize, size);
    constexpr int dotsPerMeter = 11811; // 300 an inch
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::gray);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    const Workshop workshop;
    const QString source = QStringLiteral("source.jpg");
    workshop.write(source, image);
    for (const char *suffix : {"jpg", "bmp"}) {
        const QString target = QStringLiteral("target.") + QLatin1String(suffix);
        QCOMPARE(workshop.run(source, target, drawnStack(), {engine}).exitCode, 0);
        QCOMPARE(workshop.readPicture(target).dotsPerMeterX(), dotsPerMeter);
        QCOMPARE(workshop.readPicture(target).dotsPerMeterY(), dotsPerMeter);
    }
}

QTEST_GUILESS_MAIN(tst_exporter_engine)

#include "tst_exporter_engine.moc"
