#pragma once

#include "tests/support/EffectRendering.h"
#include "tests/support/PictureModel.h"

namespace ko::imagefx::test
{

// Pictures of whole stacks, drawn by the GPU, against the model on the CPU. Prints at the end how
// many pixels it left out, since the model cannot tell which way they went.
class StackTester
{
public:
    // A case that leaves out more of its pixels is badly chosen.
    static constexpr double mostLeftOut = 0.02;

    StackTester() = default;
    virtual ~StackTester();

    // Empty when the picture is what the model says. Needs a current GL context.
    virtual QByteArray check(const QList<ImageEffect *> &effects, const ModelStack &model,
                             const QImage &source, const RenderSettings &settings = {});
    // One effect under every blend mode with a mask of that kind, on an opaque and on a translucent
    // picture. Its mask and its blend mode are changed.
    QByteArray checkBlendModes(ImageEffect *effect, const PictureEffect &model,
                               ModelMaskKind maskKind);
    // The same as check() for a picture that has been rendered.
    QByteArray compare(const QImage &actual, const StackPicture &expected, const QImage &source);

private:
    Q_DISABLE_COPY(StackTester)

    int m_pictures = 0;
    double m_sum = 0.0;
    double m_most = 0.0;
};

// The rows of a data-driven test: a column "maskKind" with the number of every kind of mask.
void addMaskKinds();

} // namespace ko::imagefx::test
