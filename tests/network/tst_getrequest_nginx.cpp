#include "tests/network/Download.h"
#include "tests/network/HttpServer.h"

#include <QtCore/QBuffer>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>
#include <QtCore/QTemporaryFile>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

#include <memory>

namespace
{

const char configuration[] = R"(
daemon off;
master_process off;
pid %FOLDER%/pid;
error_log %FOLDER%/errors;
events {}
http {
    client_body_temp_path %FOLDER%/body;
    proxy_temp_path %FOLDER%/proxy;
    fastcgi_temp_path %FOLDER%/fastcgi;
    uwsgi_temp_path %FOLDER%/uwsgi;
    scgi_temp_path %FOLDER%/scgi;
    log_format brief "$request_uri $status $sent_http_content_encoding";
    access_log %FOLDER%/accesses brief;
    types { text/html html; }
    default_type application/octet-stream;
    gzip on;
    server {
        listen 127.0.0.1:%PORT%;
        root %FOLDER%/files;
        location = /moved { return 301 /picture; }
        location = /circle { return 302 /circle; }
        location = /unavailable { return 503; }
        location = /hangup { return 444; }
    }
}
)";

quint16 freePort()
{
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    return server.serverPort();
}

// nginx with the files of a temporary folder, in the foreground.
class Nginx
{
public:
    ~Nginx()
    {
        m_process.terminate();
        if (!m_process.waitForFinished(5000)) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    static QString program()
    {
        const QString found = QStandardPaths::findExecutable(QStringLiteral("nginx"));
        return found.isEmpty() ? QStandardPaths::findExecutable(QStringLiteral("nginx"),
                                                                {QStringLiteral("/usr/sbin")})
                               : found;
    }

    void write(const QString &name, const QByteArray &content) const
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("%s", qPrintable(file.errorString()));
        }
    }

    // Another program may take the port in between, which ends this one.
    bool start()
    {
        QDir(m_folder.path()).mkdir(QStringLiteral("files"));
        for (int i = 0; i < 5; ++i) {
            m_port = freePort();
            QByteArray text(configuration);
            text.replace("%FOLDER%", m_folder.path().toLocal8Bit());
            text.replace("%PORT%", QByteArray::number(m_port));
            write(QStringLiteral("configuration"), text);
            m_process.start(program(), {QStringLiteral("-p"), m_folder.path(), QStringLiteral("-e"),
                                        QStringLiteral("errors"), QStringLiteral("-c"),
                                        QStringLiteral("configuration")});
            while (m_process.state() != QProcess::NotRunning) {
                QTcpSocket socket;
                socket.connectToHost(QHostAddress(QHostAddress::LocalHost), m_port);
                if (socket.waitForConnected(1000) && !m_process.waitForFinished(50)) {
                    return true;
                }
            }
        }
        return false;
    }

    QUrl url(const char *path) const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1/%2").arg(m_port).arg(QLatin1String(path)));
    }

    QByteArray read(const QString &name) const
    {
        QFile file(m_folder.filePath(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    const QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

} // namespace

class GetRequestNginxTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (Nginx::program().isEmpty()) {
            QSKIP("nginx is not installed (package nginx-light).");
        }
        m_nginx = std::make_unique<Nginx>();
        QVERIFY2(m_nginx->start(), m_nginx->read(QStringLiteral("errors")).constData());
        m_picture = generatedBytes(0, 5000000);
        m_nginx->write(QStringLiteral("files/picture"), m_picture);
        m_page = QByteArray("A line that packs well.\n").repeated(20000);
        m_nginx->write(QStringLiteral("files/page.html"), m_page);
        m_nginx->write(QStringLiteral("files/empty"), QByteArray());
    }

    void init()
    {
        m_manager = std::make_unique<QNetworkAccessManager>();
        m_sink = std::make_unique<QBuffer>();
        QVERIFY(m_sink->open(QIODevice::WriteOnly));
    }

    void cleanupTestCase() { m_nginx.reset(); }

    void fileArrivesExactly()
    {
        QTemporaryFile sink;
        QVERIFY(sink.open());
        Download download(m_nginx->url("picture"), m_manager.get(), &sink);
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(sink.seek(0));
        QVERIFY(sink.readAll() == m_picture);
    }

    void emptyFileArrives()
    {
        Download download(m_nginx->url("empty"), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QCOMPARE(m_sink->data(), QByteArray());
    }

    void packedPageIsUnpacked()
    {
        Download download(m_nginx->url("page.html"), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == m_page);
        QTRY_VERIFY(m_nginx->read(QStringLiteral("accesses")).contains("/page.html 200 gzip\n"));
    }

    void rangeArrives()
    {
        QNetworkRequest request(m_nginx->url("picture"));
        request.setRawHeader("Range", "bytes=1000-301000");
        Download download(request, m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == m_picture.mid(1000, 300001));
    }

    void redirectIsFollowed()
    {
        Download download(m_nginx->url("moved"), m_manager.get(), m_sink.get());
        QCOMPARE(download.run(), QNetworkReply::NoError);
        QVERIFY(m_sink->data() == m_picture);
    }

    void failureIsAnError_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("range");
        QTest::addColumn<int>("error");
        QTest::addColumn<int>("attempts"); // 0: as many as Qt makes by itself
        QTest::newRow("missing") << QByteArray("missing") << QByteArray()
                                 << int(QNetworkReply::ContentNotFoundError) << 1;
        QTest::newRow("range beyond the end")
            << QByteArray("picture?range") << QByteArray("bytes=5000000-")
            << int(QNetworkReply::UnknownContentError) << 1;
        QTest::newRow("forbidden folder") << QByteArray("?folder") << QByteArray()
                                          << int(QNetworkReply::ContentAccessDenied) << 1;
        QTest::newRow("circle") << QByteArray("circle") << QByteArray()
                                << int(QNetworkReply::TooManyRedirectsError) << 0;
        QTest::newRow("unavailable") << QByteArray("unavailable") << QByteArray()
                                     << int(QNetworkReply::ServiceUnavailableError) << 3;
        QTest::newRow("closes the connection") << QByteArray("hangup") << QByteArray()
                                               << int(QNetworkReply::RemoteHostClosedError) << 0;
    }

    void failureIsAnError()
    {
        QFETCH(const QByteArray, path);
        QFETCH(const QByteArray, range);
        QFETCH(const int, error);
        QFETCH(const int, attempts);
        QNetworkRequest request(m_nginx->url(path.constData()));
        if (!range.isEmpty()) {
            request.setRawHeader("Range", range);
        }
        Download download(request, m_manager.get(), m_sink.get());
        QCOMPARE(int(download.run()), error);
        QVERIFY(!download.errorString().isEmpty());
        QCOMPARE(m_sink->data(), QByteArray());
        if (attempts > 0) {
            QTRY_COMPARE(m_nginx->read(QStringLiteral("accesses")).count("/" + path + " "),
                         attempts);
        }
    }

private:
    std::unique_ptr<Nginx> m_nginx;
    std::unique_ptr<QNetworkAccessManager> m_manager;
    std::unique_ptr<QBuffer> m_sink;
    QByteArray m_picture;
    QByteArray m_page;
};

QTEST_GUILESS_MAIN(GetRequestNginxTest)

#include "tst_getrequest_nginx.moc"
