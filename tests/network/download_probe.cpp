#include "core/GetRequest.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QUrl>

#include <cstdio>

namespace
{

// The most memory that the process has had so far, in KiB.
long peak()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray text = status.readAll();
    const int start = text.indexOf("VmHWM:") + 6;
    return text.mid(start, text.indexOf("kB", start) - start).trimmed().toLong();
}

} // namespace

// download_probe URL FILE: downloads and prints the growth of its peak memory in KiB.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QFile file(arguments.value(2));
    if (!file.open(QIODevice::WriteOnly)) {
        return 2;
    }
    const long before = peak();
    QNetworkAccessManager manager;
    ko::GetRequest request(QNetworkRequest(QUrl(arguments.value(1))), &manager);
    request.setDataSink(&file);
    QObject::connect(&request, &ko::Request::finished, &application, &QCoreApplication::quit);
    QCoreApplication::exec();
    if (request.error() != QNetworkReply::NoError) {
        std::fprintf(stderr, "%s\n", qPrintable(request.errorString()));
        return 1;
    }
    std::printf("%ld\n", peak() - before);
    return 0;
}
