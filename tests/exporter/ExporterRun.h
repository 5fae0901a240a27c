#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>
#include <QtCore/QPair>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>
#include <QtCore/QVector>
#include <QtGui/QImage>
#include <QtTest/QtTest>

// How one call of the tool ended. A crash, a kill and a call of more than a minute give -1.
struct ToolRun {
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;

    bool wroteOneErrorLine() const;
};

using Environment = QVector<QPair<QString, QString>>;

// In the folder of this process unless told otherwise.
ToolRun runProgram(const QString &program, const QStringList &arguments,
                   const Environment &environment, const QString &folder = {});
QString toolPath();
ToolRun runTool(const QStringList &arguments, const Environment &environment = {});
// Variables that keep a leak checker, where the tool is built with one, from what others leak.
Environment withoutLeakCheck();
// Variables that leave EGL without any driver.
Environment withoutGl();
// Variables of a locale that writes a comma in numbers; empty when there is none.
Environment germanLocale();

// A JSON effect: its id behind "ko.orvanto.imageeffect.", and its properties.
QJsonObject effect(const QString &kind, QJsonObject properties = {});

// A folder for one test with the files of an export.
class Workshop
{
public:
    // An absolute path in the folder; a name that is one already stays as it is.
    QString path(const QString &name) const;
    QString write(const QString &name, const QByteArray &content) const;
    // Lossless in every format that can be; the format is the suffix.
    QString write(const QString &name, const QImage &image) const;
    QString write(const QString &name, const QJsonArray &stack) const;
    QByteArray read(const QString &name) const;
    // The picture in a file by its content, without EXIF turns.
    QImage readPicture(const QString &name) const;
    QStringList files() const;

    // Exports with files of the folder; run() writes the stack to "stack.json" first.
    ToolRun runWithEffects(const QString &source, const QString &target, const QString &effects,
                           const QStringList &more = {}, const Environment &environment = {}) const;
    ToolRun run(const QString &source, const QString &target, const QJsonArray &stack,
                const QStringList &more = {}, const Environment &environment = {}) const;

private:
    QTemporaryDir m_folder;
};

// Random bits in every channel, the same for the same seed; with an alpha channel or without.
QImage noise(const QSize &size, QImage::Format format, quint32 seed = 1);
// The first difference of size, alpha channel or pixels in words; empty when there is none. Each
// channel, not premultiplied, may differ by `tolerance`.
QString difference(const QImage &actual, const QImage &expected, int tolerance = 0);

// The failure is reported by exactly one line that contains `named`, and by its code.
#define VERIFY_FAILURE(run, code, named)                                                           \
    do {                                                                                           \
        QVERIFY2((run).wroteOneErrorLine(), (run).errors.constData());                             \
        QVERIFY2((run).errors.contains(named), (run).errors.constData());                          \
        QCOMPARE((run).exitCode, int(code));                                                       \
    } while (false)
