#pragma once

#include "engine/pipeline/PixelMemory.h"
#include "engine/pipeline/RowRing.h"
#include "engine/pipeline/StageGraph.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace ko::imagefx::engine
{

// Makes the rows of stages, with all threads on one band of one stage at a time. All memory is
// taken in the constructor.
class StageRunner
{
public:
    StageRunner(const Kernels &kernels, const StageGraph &graph, const QSize &size, int threads);
    ~StageRunner();

    // The rows that stage number `index` has made; those of the source are filled in by the caller.
    RowRing &rows(size_t index) { return m_rings.at(index); }
    // Makes the rows from `from` to before `to` of the stage; what it reads must be there.
    // Meanwhile this thread runs the errand, if there is one; true when it did, which is when there
    // was anything to make.
    bool run(size_t index, int from, int to, const std::function<void()> &errand);

private:
    Q_DISABLE_COPY(StageRunner)

    struct Scratch;
    class ScratchLoan;
    struct Block;

    void runRows(const Stage &stage, int from, int to, const std::function<void()> &errand);
    void runColumns(const Stage &stage, int from, int to, const std::function<void()> &errand);
    void makeRow(const Stage &stage, int y, Scratch *scratch);
    void convolveRow(const Stage &stage, int y, Scratch *scratch);
    void convolveColumns(const Stage &stage, const Block &block, Scratch *scratch);
    void convolve(const Stage &stage, const Scratch &scratch, int plane, const Pixels &place);
    void applyOps(const Stage &stage, const Pixels &pixels, Scratch *scratch);
    void expand(const Stage &stage, const uint32_t *row, uchar *target, int plane, int count) const;
    Pixels pixelsAt(int x, int y, int count) const;
    const RowRing &ring(int index) const { return m_rings.at(size_t(index)); }
    RowRing &target(const Stage &stage);

    const Kernels &m_kernels;
    const std::vector<Stage> &m_stages;
    const QSize m_size;
    const int m_threads;
    PixelMemory m_pixels;
    std::vector<RowRing> m_rings;
    std::vector<std::unique_ptr<Scratch>> m_scratch;
};

} // namespace ko::imagefx::engine
