#pragma once

#include "imagefx/model/AlphaMask.h"

namespace ko::imagefx
{

// A mask by brightness: the plain average of red, green and blue, each weighted 0.333.
//
// With OpenGL, effects of one kind and blend mode share the program that was compiled first whether
// they have a mask of hue or of luminance, and the other one's mask is then read as that: a stack
// should keep to one of the two.
class KORVELIMAGEFX_EXPORT LuminanceAlphaMask : public AlphaMask
{
    Q_OBJECT

public:
    explicit LuminanceAlphaMask(QObject *parent = nullptr);
    ~LuminanceAlphaMask() override;

protected:
    AlphaMaskState *createState() const override;
};

} // namespace ko::imagefx
