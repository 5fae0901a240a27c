#include "imagefx/model/ImageEffect.h"
#include "tests/support/TestMain.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

using namespace ko::imagefx;

namespace
{

// The pieces keep to a dialect that can also be compiled as C++ over SIMD lanes;
// docs/shader-dialect.md says why each rule is there. These tests catch the slips that compile as
// GLSL all the same.

bool isPiece(const QString &name)
{
    static const QStringList others{QStringLiteral("fx_main.frag"), QStringLiteral("fx_defs.frag"),
                                    QStringLiteral("fx_levels.frag")};
    static const QRegularExpression piece(QStringLiteral("^(fx|am|blend)_.*\\.frag$"));
    return piece.match(name).hasMatch() && !name.endsWith(QLatin1String("_pre.frag")) &&
           !others.contains(name);
}

QString withoutComments(const QString &text)
{
    static const QRegularExpression comment(QStringLiteral("//[^\\n]*"));
    return QString(text).remove(comment);
}

QStringList matches(const QString &text, const char *pattern)
{
    QStringList found;
    auto it = QRegularExpression(QLatin1String(pattern)).globalMatch(text);
    while (it.hasNext()) {
        found.append(it.next().captured());
    }
    return found;
}

} // namespace

class ShaderDialectTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void piecesKeepToTheDialect_data()
    {
        QTest::addColumn<QString>("text");
        int count = 0;
        for (const QString &name : QDir(QStringLiteral(":/imagefx/lib/shaders")).entryList()) {
            if (isPiece(name)) {
                QTest::newRow(name.toLatin1().constData())
                    << withoutComments(QString::fromLatin1(ImageEffect::readShader(name)));
                ++count;
            }
        }
        QVERIFY(count >= 23);
    }

    void piecesKeepToTheDialect()
    {
        QFETCH(QString, text);
        const auto none = [&text](const char *pattern) {
            const QStringList found = matches(text, pattern);
            return found.isEmpty() ? QByteArray() : found.join(QLatin1String(" | ")).toLatin1();
        };
        QCOMPARE(none("\\?"), QByteArray());
        QCOMPARE(none("\\bbool\\b"), QByteArray());
        QCOMPARE(none("\\bint\\s*\\("), QByteArray());
        QCOMPARE(none("\\b(inout|out|struct)\\b"), QByteArray());
        QCOMPARE(none("\\bmain\\s*\\("), QByteArray());
        // Branches on uniforms alone.
        QCOMPARE(none("\\bif\\s*\\((?!u_)[^)]*"), QByteArray());
        // Constants are scalars.
        QCOMPARE(none("\\bconst\\s+(lowp|mediump|highp)?\\s*(vec|mat)\\d[^;]*"), QByteArray());
        // Swizzles of more than one component are only read.
        QCOMPARE(none("\\.[rgbaxyzwstpq]{2,4}\\s*([+*/-]?=)(?!=)"), QByteArray());
        // Declarations without a precision; a declaration behind `in` does not occur.
        QCOMPARE(none("(?m)^\\s*(uniform\\s+|varying\\s+|const\\s+)?(float|vec\\d|mat\\d)\\s+\\w+"),
                 QByteArray());
        QCOMPARE(none("[(,]\\s*(float|vec\\d|mat\\d)\\s+\\w+\\s*[,)]"), QByteArray());
        // Variables named like a swizzle; a and b are the parameters of fx_blend, w the weights of
        // the blur.
        QCOMPARE(none("\\b(lowp|mediump|highp)\\s+(float|vec\\d)\\s+"
                      "(?!a\\b|b\\b|w\\b)[rgbaxyzwstpq]{1,4}\\b"),
                 QByteArray());
    }

    void everyPieceDefinesItsOneFunction()
    {
        for (const QString &name : QDir(QStringLiteral(":/imagefx/lib/shaders")).entryList()) {
            if (!isPiece(name)) {
                continue;
            }
            const QString text = QString::fromLatin1(ImageEffect::readShader(name)).simplified();
            const QString signature =
                name.startsWith(QLatin1String("am_"))
                    ? QStringLiteral("lowp float fx_mask(lowp vec3 color, mediump vec2 texCoord, "
                                     "mediump vec2 vertexCoord)")
                : name.startsWith(QLatin1String("blend_"))
                    ? QStringLiteral("lowp vec3 fx_blend(lowp vec3 a, lowp vec3 b)")
                    : QStringLiteral("lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, "
                                     "mediump vec2 texCoord, mediump vec2 vertexCoord)");
            QVERIFY2(text.count(signature) == 1, name.toLatin1().constData());
        }
    }

    void definitionsHoldTheDerivativesAndNothingElse()
    {
        const QString text = withoutComments(
            QString::fromLatin1(ImageEffect::readShader(QStringLiteral("fx_defs.frag"))));
        QCOMPARE(text.simplified(),
                 QStringLiteral("#ifdef GL_ES #extension GL_OES_standard_derivatives : enable "
                                "#endif"));
    }

    void levelsStaysInTheSetWithItsOwnSignature()
    {
        const QByteArray text = ImageEffect::readShader(QStringLiteral("fx_levels.frag"));
        QVERIFY(text.contains(
            "void fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord)"));
        QVERIFY(text.contains("gl_FragColor = texture2D(source, texCoord);"));
    }
};

KORVEL_TEST_MAIN(ShaderDialectTest)

#include "tst_shaderdialect.moc"
