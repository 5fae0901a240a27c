#pragma once

#include "imagefx/model/AlphaMask.h"

namespace ko::imagefx
{

// A mask by hue: red 0, green 1/3, blue 2/3; greys count as red. Its gradient is cyclic: behind the
// last stop it runs back to the first stop's value, so that reds at both ends of the hue circle are
// treated alike.
class KORVELIMAGEFX_EXPORT HueAlphaMask : public AlphaMask
{
    Q_OBJECT

public:
    explicit HueAlphaMask(QObject *parent = nullptr);
    ~HueAlphaMask() override;

protected:
    AlphaMaskState *createState() const override;
};

} // namespace ko::imagefx
