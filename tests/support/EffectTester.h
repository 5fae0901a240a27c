#pragma once

#include "tests/support/EffectRendering.h"

#include <QtCore/QByteArray>
#include <QtCore/QVariant>
#include <QtCore/QVector>

namespace ko::imagefx::test
{

// Laws that hold for every effect. Each check gives an empty text, or tells what is wrong. Whatever
// is drawn here is drawn by GL and by the processor's engine, and needs a current GL context.

// Setting `property` to `value` stores `stored`, then signals the property, then asks for an
// update, each once; setting it again does nothing. The stored value must be a new one.
QByteArray checkSetter(ImageEffect *effect, const char *property, const QVariant &value,
                       const QVariant &stored);
// Setting `property` to `value` changes nothing and signals nothing.
QByteArray checkIgnored(ImageEffect *effect, const char *property, const QVariant &value);
// The effect comes back from its JSON form as the same kind with the same value of every property.
QByteArray checkJsonRoundTrip(ImageEffect *effect);
// Either engine draws that picture, and what the other one draws, with so many levels of tolerance.
QByteArray checkPicture(const QList<ImageEffect *> &effects, const QImage &source,
                        const QImage &expected, double tolerance,
                        const RenderSettings &settings = {});
// The effects leave the picture as it is, byte for byte.
QByteArray checkIdentity(const QList<ImageEffect *> &effects, const QImage &source);
// The effect leaves every alpha of a translucent picture, and pixels of alpha 0 clear.
// `mostLevels`: how far the engines may be apart; one pass rounds once, to either of two levels.
QByteArray checkAlphaUntouched(ImageEffect *effect, double mostLevels = 1.0);
// Either engine draws one picture with both lists, byte for byte.
QByteArray checkDrawTheSame(const QList<ImageEffect *> &effects, const QList<ImageEffect *> &others,
                            const QImage &source);

// The picture after one effect, by GL and by the engine, for values that were worked out by hand.
// Fails the running test where the two are more than one level apart.
QVector<QImage> drawnByBoth(ImageEffect *effect, const QImage &source);
// The picture after the effects, for values that were worked out by hand and are far from the
// middle between two levels: fails the running test unless both engines draw it with the very same
// bytes.
QImage drawnAlike(const QList<ImageEffect *> &effects, const QImage &source,
                  const RenderSettings &settings = {});
// The same for one pixel in levels of red, green, blue and alpha, premultiplied.
QVector<int> rendered(ImageEffect *effect, const QVector<int> &pixel);
// The same for what GL alone can draw.
QVector<int> renderedByGl(ImageEffect *effect, const QVector<int> &pixel);

// The components of a uniform of the effect's pass, as last uploaded; needs a current GL context.
QVector<float> uniformOf(ImageEffect *effect, const char *name, int components);
// The piece that the effect's state adds to the shader; needs a current GL context.
QByteArray shaderPieceOf(ImageEffect *effect);

} // namespace ko::imagefx::test

#define KORVEL_CHECK(check)                                                                        \
    do {                                                                                           \
        const QByteArray failure_ = check;                                                         \
        QVERIFY2(failure_.isEmpty(), failure_.constData());                                        \
    } while (false)
