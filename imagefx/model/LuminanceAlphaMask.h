#pragma once

#include "imagefx/model/AlphaMask.h"

namespace ko::imagefx
{

// A mask by brightness: the plain average of red, green and blue, each weighted 0.333.
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
