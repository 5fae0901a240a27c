#pragma once

#include "imagefx/model/AlphaMask.h"

namespace ko::imagefx
{

// A mask by place: 0 at the centre of the picture, 0.7071 in the middle of an edge, 1 in a corner.
class KORVELIMAGEFX_EXPORT DistanceAlphaMask : public AlphaMask
{
    Q_OBJECT

public:
    explicit DistanceAlphaMask(QObject *parent = nullptr);
    ~DistanceAlphaMask() override;

protected:
    AlphaMaskState *createState() const override;
};

} // namespace ko::imagefx
