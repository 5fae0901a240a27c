#pragma once

#include "engine/kernels/Kernels.h"

#include <vector>

namespace ko::imagefx::engine
{

// One texel that a convolution reads.
struct Tap {
    int offset; // from the centre, in pixels along the axis
    float weight;
};

// What a piece that fetches neighbours reads, for a radius in target pixels: found by running the
// very piece with places instead of colours. The centre is among the taps, no offset is there
// twice, and they come in order. Any thread.
std::vector<Tap> findTaps(Convolution kind, float radiusInPixels);

// Whether it reads along a column.
bool isVertical(Convolution kind);

// The taps as convolve() takes them: `first` and `second` get the offsets of its addresses, which
// are `sums->pairs` + `sums->singles` and `sums->pairs` many.
void arrangeTaps(const std::vector<Tap> &taps, Sums *sums, std::vector<int> *first,
                 std::vector<int> *second);

} // namespace ko::imagefx::engine
