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
        QStringList names;
        QDirIterator files(QStringLiteral(":/imagefx/lib/shaders"));
        while (files.hasNext()) {
            QFile file(files.next());
            const QString name = files.fileInfo().fileName();
            if (name.startsWith(QLatin1String("test_"))) {
                continue;
            }
            QVERIFY(file.open(QIODevice::ReadOnly));
            QCOMPARE(QResource(file.fileName()).compressionAlgorithm(), QResource::NoCompression);
            QCOMPARE(ImageEffect::readShader(name), file.readAll());
            names.append(name);
        }
        names.sort();
        QCOMPARE(names.join(QLatin1Char(' ')),
                 QStringLiteral("am_distance.frag am_hue.frag am_luminance.frag blend_add.frag "
                                "blend_colorburn.frag blend_colordodge.frag blend_darkenonly.frag "
                                "blend_difference.frag blend_divide.frag blend_hardlight.frag "
                                "blend_lightenonly.frag blend_linearburn.frag "
                                "blend_linearlight.frag blend_multiply.frag blend_overlay.frag "
                                "blend_screen.frag blend_softlight.frag blend_subtract.frag "
                                "fx_batch.frag fx_blur.frag fx_blur_pre.frag "
                                "fx_brightnesscontrast.frag fx_channelshift.frag "
                                "fx_colorfill.frag fx_default.vert fx_defs.frag fx_exposure.frag "
                                "fx_grayscale.frag fx_hsv.frag fx_levels.frag fx_lut.frag "
                                "fx_main.frag fx_selectivesaturation.frag fx_sharpen.frag "
                                "fx_sharpen_pre.frag pb_base.frag pb_base.vert pb_mask.frag "
                                "pb_maskgather.frag pb_maskgather.vert pb_maskrender.frag"));
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
