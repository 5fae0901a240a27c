#pragma once

#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QTemporaryDir>
#include <QtNetwork/QSslCertificate>
#include <QtNetwork/QSslConfiguration>
#include <QtNetwork/QSslKey>
#include <QtNetwork/QSslSocket>

// What a web server for 127.0.0.1 needs for TLS: a fresh key, and a certificate signed with it,
// made by the program openssl. Without a private key when that fails.
inline QSslConfiguration selfSignedServer()
{
    const QTemporaryDir folder;
    const auto read = [&folder](const char *name) {
        QFile file(folder.filePath(QLatin1String(name)));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    QProcess openssl;
    openssl.setWorkingDirectory(folder.path());
    openssl.start(
        QStringLiteral("openssl"),
        QStringLiteral("req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes "
                       "-keyout key.pem -out certificate.pem -days 2 -subj /CN=127.0.0.1 "
                       "-addext subjectAltName=IP:127.0.0.1")
            .split(QLatin1Char(' ')));
    openssl.waitForFinished();
    QSslConfiguration server = QSslConfiguration::defaultConfiguration();
    server.setPrivateKey(QSslKey(read("key.pem"), QSsl::Ec));
    server.setLocalCertificate(QSslCertificate(read("certificate.pem")));
    server.setPeerVerifyMode(QSslSocket::VerifyNone);
    return server;
}
