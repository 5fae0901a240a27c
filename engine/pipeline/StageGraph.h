#pragma once

#include "engine/StackProgram.h"
#include "engine/pipeline/PointOps.h"

#include <QtCore/QSize>

#include <vector>

namespace ko::imagefx::engine
{

// What a convolution reads, and how.
struct Neighbours {
    Convolve convolve{};
    bool vertical = false;
    // The places of its taps, see arrangeTaps(), no farther than the picture is large.
    std::vector<int> first;
    std::vector<int> second;
    // How far they reach to either side, both 0 or more.
    int before = 0;
    int after = 0;
};

// Something that makes rows of pixels out of the rows that other stages made.
struct Stage {
    enum class Head {
        Source,      // what the picture's source gives
        Points,      // the rows of `input`
        Batch,       // a batch's pass over `input`, and `second`: what its effects made of that
        Convolution, // neighbours in `input`; with Blur and Sharpen, `second` is the effect's
                     // source
    };

    Head head = Head::Points;
    int input = -1;
    int second = -1;
    Pass batch{};
    Neighbours neighbours;
    // What happens to the pixels before anyone reads them.
    PointOps ops;

    // How many rows it is ahead of the result, and how many it keeps.
    qint64 lead = 0;
    int rows = 0;
};

// A program for pictures of one size, cut into stages: each reads only from stages before it, the
// first is the source, and the last one makes the result. When a band of the result is made, every
// stage makes as many rows, `lead` farther down.
class StageGraph
{
public:
    StageGraph(const Kernels &kernels, const std::vector<Step> &steps, const QSize &size,
               bool opaque, int threads);

    const std::vector<Stage> &stages() const { return m_stages; }
    // The rows of a band.
    int bandRows() const { return m_bandRows; }

private:
    // The stage that makes the chain's result. `isShared`: something else reads the input too.
    int addChain(const std::vector<Step> &steps, int input, bool isShared);
    int addConvolutions(const Step &step, int input);
    int add(Stage stage);
    Neighbours neighbours(Convolution kind, const Step &step) const;
    void chooseBand(int threads);
    void schedule();

    const Kernels &m_kernels;
    const QSize m_size;
    const bool m_opaque;
    int m_bandRows = 0;
    std::vector<Stage> m_stages;
};

} // namespace ko::imagefx::engine
