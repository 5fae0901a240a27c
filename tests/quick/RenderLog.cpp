#include "tests/quick/RenderLog.h"

#include <QtCore/QLoggingCategory>
#include <QtCore/QMutex>
#include <QtCore/QRegularExpression>

namespace ko::imagefx::test
{

namespace
{

QMutex mutex; // guards what follows
QStringList messages;
QtMessageHandler previousHandler = nullptr;

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (qstrcmp(context.category, "korvel.imageeffect.time") == 0) {
        const QMutexLocker lock(&mutex);
        messages.append(type == QtDebugMsg ? text : QStringLiteral("no debug message: ") + text);
        return;
    }
    previousHandler(type, context, text);
}

// A double as QDebug writes it.
#define KORVEL_TIME "(\\d+(?:\\.\\d+)?(?:e-\\d\\d)?)"

const QRegularExpression &passMessage()
{
    static const QRegularExpression expression(
        QStringLiteral("^Rendering pass (\\d+) took " KORVEL_TIME " msecs$"));
    return expression;
}

const QRegularExpression &frameMessage()
{
    static const QRegularExpression expression(
        QStringLiteral("^Rendering of (\\d+) passes took " KORVEL_TIME " msecs$"));
    return expression;
}

} // namespace

RenderLog::RenderLog(Level level)
{
    messages.clear();
    QLoggingCategory::setFilterRules(
        level == DebugOn ? QStringLiteral("korvel.imageeffect.time.debug=true") : QString());
    previousHandler = qInstallMessageHandler(collect);
}

RenderLog::~RenderLog()
{
    qInstallMessageHandler(previousHandler);
    QLoggingCategory::setFilterRules(QString());
}

QStringList RenderLog::taken()
{
    const QMutexLocker lock(&mutex);
    QStringList result;
    result.swap(messages);
    return result;
}

QStringList RenderLog::takenShort()
{
    QStringList result;
    for (const QString &message : taken()) {
        const QRegularExpressionMatch pass = passMessage().match(message);
        const QRegularExpressionMatch frame = frameMessage().match(message);
        if (pass.hasMatch()) {
            result.append(pass.captured(1));
        } else if (frame.hasMatch()) {
            result.append(QLatin1Char('/') + frame.captured(1));
        } else {
            result.append(message);
        }
    }
    return result;
}

int RenderLog::takenFrames()
{
    return taken().filter(frameMessage()).size();
}

} // namespace ko::imagefx::test
