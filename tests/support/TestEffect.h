#pragma once

#include "imagefx/model/ImageEffect.h"
#include "imagefx/render/ImageEffectState.h"

#include <utility>

namespace ko::imagefx::test
{

// A state whose piece and variant the test chooses, and which counts its calls.
class TestEffectState : public ImageEffectState
{
public:
    explicit TestEffectState(const QString &id = QStringLiteral("test.Effect"))
        : ImageEffectState(id)
    {
    }

    QByteArray effectShaderCode(const PixelBufferState *) const override { return piece; }
    QString effectVariant(const PixelBufferState *) const override { return variant; }
    void update(const ImageEffect *effect) override
    {
        ImageEffectState::update(effect);
        ++updates;
    }
    void resolveUniforms(const ImageEffectPass *pass) override
    {
        ImageEffectState::resolveUniforms(pass);
        ++resolves;
    }
    void initializePass(ImageEffectPass *pass) override
    {
        ImageEffectState::initializePass(pass);
        ++initializations;
    }

    QByteArray piece;
    QString variant;
    int updates = 0;
    int resolves = 0;
    int initializations = 0;
};

// An effect whose colour is what its piece makes of the input; without a piece, the input.
class TestEffect : public ImageEffect
{
public:
    explicit TestEffect(QByteArray shaderPiece = QByteArray(),
                        const QString &id = QStringLiteral("test.Effect"))
        : ImageEffect(id, nullptr), piece(std::move(shaderPiece))
    {
    }

    bool isNeutral() const override { return neutral; }

    QSharedPointer<TestEffectState> testState()
    {
        return qSharedPointerCast<TestEffectState>(currentState());
    }

    // The piece of an effect with the given GLSL expression as its colour.
    static QByteArray pieceOf(const QByteArray &expression)
    {
        return "lowp vec3 fx_main(sampler2D source, lowp vec3 colorSample, mediump vec2 texCoord, "
               "mediump vec2 vertexCoord)\n{\n    return " +
               expression + ";\n}\n";
    }

    QByteArray piece;
    QString variant;
    bool neutral = false;
    mutable int createdStates = 0;

protected:
    ImageEffectState *createState() const override
    {
        ++createdStates;
        auto *state = new TestEffectState(effectId());
        state->piece = piece;
        state->variant = variant;
        return state;
    }
};

} // namespace ko::imagefx::test
