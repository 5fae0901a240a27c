#include "imagefx/model/ImageEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QResource>

using namespace ko::imagefx;

namespace
{

QByteArray repetitiveText()
{
    return QByteArray("// a line that compresses well\n").repeated(40);
}

QResource::Compression compression(const char *name)
{
    return QResource(QLatin1String(":/imagefx/lib/shaders/") + QLatin1String(name))
        .compressionAlgorithm();
}

} // namespace

class ReadShaderTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uncompressedTextIsReadWhole()
    {
        QCOMPARE(compression("test_plain.frag"), QResource::NoCompression);
        QCOMPARE(ImageEffect::readShader(QStringLiteral("test_plain.frag")), repetitiveText());
    }

    void uncompressedTextEndsAtTheFirstNul()
    {
        QCOMPARE(ImageEffect::readShader(QStringLiteral("test_nul.frag")), QByteArray("before"));
    }

    void compressedTextIsReadWhole()
    {
        QVERIFY(compression("test_compressed.frag") != QResource::NoCompression);
        QCOMPARE(ImageEffect::readShader(QStringLiteral("test_compressed.frag")), repetitiveText());
    }

    void unknownNameGivesAnEmptyText()
    {
        QVERIFY(ImageEffect::readShader(QStringLiteral("fx_nothing.frag")).isEmpty());
        QVERIFY(ImageEffect::readShader(QString()).isEmpty());
    }

    void readingTwiceGivesEqualTexts()
    {
        const QByteArray text = ImageEffect::readShader(QStringLiteral("fx_main.frag"));
        QVERIFY(text.contains("void main()"));
        QCOMPARE(ImageEffect::readShader(QStringLiteral("fx_main.frag")), text);
    }

    void everyResourceIsStoredUncompressedAndRead()
    {
        int count = 0;
        QDirIterator files(QStringLiteral(":/imagefx/lib/shaders"));
        while (files.hasNext()) {
            QFile file(files.next());
            if (file.fileName().contains(QLatin1String("/test_"))) {
                continue;
            }
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(QResource(file.fileName()).compressionAlgorithm(), QResource::NoCompression);
            QCOMPARE(ImageEffect::readShader(files.fileInfo().fileName()), file.readAll());
            ++count;
        }
        QVERIFY(count >= 29);
    }

    // The pieces are also read as GLSL ES 1.00, which knows neither versions above it nor default
    // float precision in fragment shaders.
    void noPieceStatesAVersionOrADefaultPrecision()
    {
        QDirIterator files(QStringLiteral(":/imagefx/lib/shaders"));
        while (files.hasNext()) {
            files.next();
            const QByteArray text = ImageEffect::readShader(files.fileInfo().fileName());
            QVERIFY2(!text.contains("#version"), files.fileName().toLatin1().constData());
            QVERIFY2(!text.contains("precision "), files.fileName().toLatin1().constData());
        }
    }
};

KORVEL_TEST_MAIN(ReadShaderTest)

#include "tst_readshader.moc"
