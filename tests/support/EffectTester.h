#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QVariant>
#include <QtCore/QVector>

namespace ko::imagefx
{
class ImageEffect;
}

namespace ko::imagefx::test
{

// Laws that hold for every effect. Each check gives an empty text, or tells what is wrong.

// Setting `property` to `value` stores `stored`, then signals the property, then asks for an
// update, each once; setting it again does nothing. The stored value must be a new one.
QByteArray checkSetter(ImageEffect *effect, const char *property, const QVariant &value,
                       const QVariant &stored);
// Setting `property` to `value` changes nothing and signals nothing.
QByteArray checkIgnored(ImageEffect *effect, const char *property, const QVariant &value);
// The effect comes back from its JSON form as the same kind with the same value of every property.
QByteArray checkJsonRoundTrip(ImageEffect *effect);
// The effect leaves every alpha of a translucent picture, and pixels of alpha 0 clear. Needs a
// current GL context.
QByteArray checkAlphaUntouched(ImageEffect *effect);

// The components of a uniform of the effect's pass, as last uploaded; needs a current GL context.
QVector<float> uniformOf(ImageEffect *effect, const char *name, int components);
// The piece that the effect's state adds to the shader; needs a current GL context.
QByteArray shaderPieceOf(ImageEffect *effect);
// What a pixel becomes; both in levels of red, green, blue and alpha, premultiplied. Needs a
// current GL context.
QVector<int> rendered(ImageEffect *effect, const QVector<int> &pixel);

} // namespace ko::imagefx::test

#define KORVEL_CHECK(check)                                                                        \
    do {                                                                                           \
        const QByteArray failure_ = check;                                                         \
        QVERIFY2(failure_.isEmpty(), failure_.constData());                                        \
    } while (false)
