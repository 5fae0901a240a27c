#include "ExporterRun.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QProcess>
#include <QtCore/QRandomGenerator>
#include <QtGui/QImageReader>
#include <QtGui/QImageWriter>

#include <algorithm>

namespace
{

constexpr int timeLimit = 60000;

int worstChannel(QRgb a, QRgb b)
{
    return std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)),
                     std::abs(qBlue(a) - qBlue(b)), std::abs(qAlpha(a) - qAlpha(b))});
}

} // namespace

bool ToolRun::wroteOneErrorLine() const
{
    return errors.startsWith("korvel-image-exporter: ") && errors.count('\n') == 1 &&
           errors.endsWith('\n');
}

QString toolPath()
{
    return QStringLiteral(EXPORTER_PROGRAM);
}

ToolRun runProgram(const QString &program, const QStringList &arguments,
                   const Environment &environment, const QString &folder)
{
    QProcess process;
    QProcessEnvironment variables = QProcessEnvironment::systemEnvironment();
    for (const auto &variable : environment) {
        variables.insert(variable.first, variable.second);
    }
    process.setProcessEnvironment(variables);
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    ToolRun run;
    if (!process.waitForFinished(timeLimit)) {
        process.kill();
        process.waitForFinished();
        return run;
    }
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    run.output = process.readAllStandardOutput();
    run.errors = process.readAllStandardError();
    return run;
}

ToolRun runTool(const QStringList &arguments, const Environment &environment)
{
    return runProgram(toolPath(), arguments, environment);
}

Environment withoutLeakCheck()
{
    return {{QStringLiteral("ASAN_OPTIONS"),
             qEnvironmentVariable("ASAN_OPTIONS") + QStringLiteral(":detect_leaks=0")}};
}

Environment withoutGl()
{
    return {{QStringLiteral("__EGL_VENDOR_LIBRARY_DIRS"), QStringLiteral("/nonexistent")},
            {QStringLiteral("__EGL_VENDOR_LIBRARY_FILENAMES"), QString()}};
}

// A locale that cannot be loaded counts as C: only its decimal point tells. The C library never
// frees its copy of LOCPATH.
Environment germanLocale()
{
    Environment german = withoutLeakCheck();
    german.append({QStringLiteral("LOCPATH"), QStringLiteral(GERMAN_LOCALE_FOLDER)});
    german.append({QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8")});
    const ToolRun run =
        runProgram(QStringLiteral("locale"), {QStringLiteral("decimal_point")}, german);
    return run.output.trimmed() == "," ? german : Environment();
}

QJsonObject effect(const QString &kind, QJsonObject properties)
{
    properties.insert(QStringLiteral("effectId"), QStringLiteral("ko.orvanto.imageeffect.") + kind);
    return properties;
}

QString Workshop::path(const QString &name) const
{
    return QDir::isAbsolutePath(name) ? name : m_folder.filePath(name);
}

QString Workshop::write(const QString &name, const QByteArray &content) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("%s cannot be written", qPrintable(file.fileName()));
    }
    return file.fileName();
}

QString Workshop::write(const QString &name, const QImage &image) const
{
    QImageWriter writer(path(name));
    if (!name.endsWith(QLatin1String(".png"))) {
        writer.setQuality(100);
    }
    if (!writer.write(image)) {
        qFatal("%s cannot be written", qPrintable(writer.fileName()));
    }
    return writer.fileName();
}

QString Workshop::write(const QString &name, const QJsonArray &stack) const
{
    return write(name, QJsonDocument(stack).toJson());
}

QByteArray Workshop::read(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QImage Workshop::readPicture(const QString &name) const
{
    QImageReader reader(path(name));
    reader.setDecideFormatFromContent(true);
    return reader.read();
}

QStringList Workshop::files() const
{
    return QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden);
}

ToolRun Workshop::runWithEffects(const QString &source, const QString &target,
                                 const QString &effects, const QStringList &more,
                                 const Environment &environment) const
{
    return runTool(QStringList{QStringLiteral("--source=") + path(source),
                               QStringLiteral("--target=") + path(target),
                               QStringLiteral("--effects=") + path(effects)} +
                       more,
                   environment);
}

ToolRun Workshop::run(const QString &source, const QString &target, const QJsonArray &stack,
                      const QStringList &more, const Environment &environment) const
{
    return runWithEffects(source, target, write(QStringLiteral("stack.json"), stack), more,
                          environment);
}

QImage noise(const QSize &size, QImage::Format format, quint32 seed)
{
    QRandomGenerator random(seed);
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            image.setPixel(x, y, random.generate());
        }
    }
    return QImage(image.constBits(), size.width(), size.height(), image.bytesPerLine(),
                  format == QImage::Format_ARGB32 ? format : QImage::Format_RGB32)
        .convertToFormat(format)
        .copy();
}

QString difference(const QImage &actual, const QImage &expected, int tolerance)
{
    if (actual.size() != expected.size()) {
        return QStringLiteral("%1 x %2 pixels instead of %3 x %4")
            .arg(actual.width())
            .arg(actual.height())
            .arg(expected.width())
            .arg(expected.height());
    }
    if (actual.hasAlphaChannel() != expected.hasAlphaChannel()) {
        return actual.hasAlphaChannel() ? QStringLiteral("an alpha channel appeared")
                                        : QStringLiteral("the alpha channel is lost");
    }
    const QImage a = actual.convertToFormat(QImage::Format_ARGB32);
    const QImage b = expected.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (worstChannel(a.pixel(x, y), b.pixel(x, y)) > tolerance) {
                return QStringLiteral("pixel (%1, %2) is %3 instead of %4")
                    .arg(x)
                    .arg(y)
                    .arg(a.pixel(x, y), 8, 16, QLatin1Char('0'))
                    .arg(b.pixel(x, y), 8, 16, QLatin1Char('0'));
            }
        }
    }
    return {};
}
