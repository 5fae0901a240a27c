#include "engine/pipeline/StageRunner.h"

#include "engine/ThreadPool.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace ko::imagefx::engine
{

namespace
{

// Pixels that one call of a worker is worth.
constexpr int taskPixels = 4096;
// Columns are convolved in blocks, since all rows that a block reads, prepared, should stay in the
// nearest cache.
constexpr int blockRows = 16;
constexpr int mostBlockRows = 128;
constexpr size_t colours = 3;
constexpr int narrowestColumn = 64;
constexpr size_t columnBytes = 32768;
// Two cache lines, since processors fetch them in pairs.
constexpr size_t apart = 128;
// A row that is convolved in strips prepares what they reach beyond themselves anew.
constexpr int stripReaches = 4;
constexpr int widestStrip = 8192;

static_assert(narrowestColumn % sumPixels == 0 && narrowestColumn % rowSlack == 0 &&
                  stripPixels % narrowestColumn == 0,
              "kernels read and write whole vectors, and nothing beyond a strip in the middle of a "
              "row");

int pieces(int whole, int part)
{
    return (whole + part - 1) / part;
}

size_t numberBytes(const Neighbours &neighbours)
{
    return neighbours.convolve.sums.integers ? sizeof(uint16_t) : sizeof(float);
}

int rowsPerBlock(const Neighbours &neighbours)
{
    return qBound(blockRows, std::max(neighbours.before, neighbours.after), mostBlockRows);
}

int reachedRows(const Neighbours &neighbours, int rows)
{
    return rows + neighbours.before + neighbours.after;
}

int columnWidth(const Neighbours &neighbours)
{
    const size_t perPixel = colours * numberBytes(neighbours) *
                            size_t(reachedRows(neighbours, rowsPerBlock(neighbours)));
    const auto fitting = int(columnBytes / perPixel) / narrowestColumn * narrowestColumn;
    return qBound(narrowestColumn, fitting, stripPixels);
}

// Wide enough that what is prepared twice does not count.
int stripWidth(const Neighbours &neighbours)
{
    const int reach = std::max(neighbours.before, neighbours.after);
    return std::min(std::max(stripPixels, reach * stripReaches / stripPixels * stripPixels),
                    widestStrip);
}

// How many numbers the colours of a prepared strip are apart.
int stripPlane(const Neighbours &neighbours)
{
    return neighbours.before + stripWidth(neighbours) + neighbours.after;
}

size_t expandedBytes(const Stage &stage)
{
    if (stage.head != Stage::Head::Convolution) {
        return 0;
    }
    const Neighbours &neighbours = stage.neighbours;
    const size_t pixels = neighbours.vertical
                              ? size_t(columnWidth(neighbours)) *
                                    size_t(reachedRows(neighbours, rowsPerBlock(neighbours)))
                              : size_t(stripPlane(neighbours));
    return (colours * pixels + sumPixels) * numberBytes(neighbours);
}

// Of the rings of all stages.
size_t pixelsOf(const std::vector<Stage> &stages, int width)
{
    return std::accumulate(stages.begin(), stages.end(), size_t(0),
                           [width](size_t sum, const Stage &stage) {
                               return sum + RowRing::pixels(width, stage.rows);
                           });
}

// Beyond the edges of the picture there is more of them.
template <class Number>
void repeatEdges(Number *plane, int left, int inside, int right)
{
    std::fill_n(plane, left, plane[left]);
    std::fill_n(plane + left + inside, right, plane[left + inside - 1]);
}

} // namespace

// What one worker needs for one piece of work. Nothing that is written in every row lies beside
// what another worker reads.
struct alignas(apart) StageRunner::Scratch {
    std::vector<uchar> expanded;
    std::vector<uint32_t> strips;
    std::array<const void *, mostTaps> first{};
    std::array<const void *, mostTaps> second{};
    std::atomic<bool> taken{false};

    // The addresses of all taps, where offset 0 is at `centre`.
    void pointTo(const Neighbours &neighbours, const uchar *centre, std::ptrdiff_t step)
    {
        const auto address = [centre, step](int offset) { return centre + offset * step; };
        std::transform(neighbours.first.begin(), neighbours.first.end(), first.begin(), address);
        std::transform(neighbours.second.begin(), neighbours.second.end(), second.begin(), address);
    }

    void move(const Neighbours &neighbours, std::ptrdiff_t step)
    {
        const auto moved = [step](const void *address) {
            return static_cast<const uchar *>(address) + step;
        };
        const auto firstCount = std::ptrdiff_t(neighbours.first.size());
        const auto secondCount = std::ptrdiff_t(neighbours.second.size());
        std::transform(first.begin(), first.begin() + firstCount, first.begin(), moved);
        std::transform(second.begin(), second.begin() + secondCount, second.begin(), moved);
    }
};

// Takes a scratch that is free: there are as many as threads.
class StageRunner::ScratchLoan
{
public:
    explicit ScratchLoan(const std::vector<std::unique_ptr<Scratch>> &all)
    {
        for (size_t i = 0; m_scratch == nullptr; i = (i + 1) % all.size()) {
            if (!all.at(i)->taken.exchange(true, std::memory_order_acquire)) {
                m_scratch = all.at(i).get();
            }
        }
    }
    ~ScratchLoan() { m_scratch->taken.store(false, std::memory_order_release); }

    Scratch *get() const { return m_scratch; }

private:
    Q_DISABLE_COPY(ScratchLoan)

    Scratch *m_scratch = nullptr;
};

// Columns from `x` on of some rows.
struct StageRunner::Block {
    int x;
    int count;
    int from;
    int to;
};

StageRunner::StageRunner(const Kernels &kernels, const StageGraph &graph, const QSize &size,
                         int threads)
    : m_kernels(kernels),
      m_stages(graph.stages()),
      m_size(size),
      m_threads(threads),
      m_pixels(pixelsOf(m_stages, size.width()))
{
    size_t expanded = 0;
    int strips = 0;
    uint32_t *pixels = m_pixels.data();
    m_rings.reserve(m_stages.size());
    for (const Stage &stage : m_stages) {
        m_rings.emplace_back(pixels, size.width(), stage.rows);
        pixels += RowRing::pixels(size.width(), stage.rows);
        expanded = std::max(expanded, expandedBytes(stage));
        strips = std::max(strips, scratchStrips(stage.ops));
    }
    m_scratch.reserve(size_t(threads));
    for (int i = 0; i < threads; ++i) {
        m_scratch.push_back(std::make_unique<Scratch>());
        Scratch &scratch = *m_scratch.back();
        scratch.expanded.resize(expanded);
        scratch.strips.resize(size_t(strips) * (stripPixels + rowSlack));
    }
}

StageRunner::~StageRunner() = default;

bool StageRunner::run(size_t index, int from, int to, const std::function<void()> &errand)
{
    const Stage &stage = m_stages.at(index);
    if (from == to || (stage.head == Stage::Head::Source && stage.ops.empty())) {
        return false;
    }
    if (stage.head == Stage::Head::Convolution && stage.neighbours.vertical) {
        runColumns(stage, from, to, errand);
    } else {
        runRows(stage, from, to, errand);
    }
    return true;
}

void StageRunner::runRows(const Stage &stage, int from, int to, const std::function<void()> &errand)
{
    const int rows = std::max(1, taskPixels / m_size.width());
    const auto makeSome = [this, &stage, from, to, rows](int task) {
        const ScratchLoan scratch(m_scratch);
        const int first = from + task * rows;
        const int end = std::min(to, first + rows);
        for (int y = first; y < end; ++y) {
            makeRow(stage, y, scratch.get());
        }
    };
    runParallel(m_threads, pieces(to - from, rows), makeSome, errand);
}

void StageRunner::runColumns(const Stage &stage, int from, int to,
                             const std::function<void()> &errand)
{
    const int width = columnWidth(stage.neighbours);
    const int rows = rowsPerBlock(stage.neighbours);
    const int columns = pieces(m_size.width(), width);
    const int blocks = pieces(to - from, rows);
    const auto makeBlock = [=, &stage](int task) {
        const ScratchLoan scratch(m_scratch);
        const int x = task % columns * width;
        const int first = from + task / columns * rows;
        convolveColumns(stage,
                        {x, std::min(width, m_size.width() - x), first, std::min(to, first + rows)},
                        scratch.get());
    };
    runParallel(m_threads, columns * blocks, makeBlock, errand);
}

void StageRunner::makeRow(const Stage &stage, int y, Scratch *scratch)
{
    if (stage.head == Stage::Head::Convolution) {
        convolveRow(stage, y, scratch);
        return;
    }
    for (int x = 0; x < m_size.width(); x += stripPixels) {
        Pixels pixels = pixelsAt(x, y, std::min(stripPixels, m_size.width() - x));
        uint32_t *made = target(stage).row(y) + x;
        if (stage.head == Stage::Head::Batch) {
            pixels.source = ring(stage.input).row(y) + x;
            pixels.batch = ring(stage.second).row(y) + x;
            m_kernels.point(stage.batch, pixels, made);
            pixels.batch = nullptr;
            pixels.source = made;
        } else {
            pixels.source = stage.head == Stage::Head::Source ? made : ring(stage.input).row(y) + x;
        }
        applyPointOps(m_kernels, stage.ops, pixels, made, scratch->strips.data());
    }
}

void StageRunner::convolveRow(const Stage &stage, int y, Scratch *scratch)
{
    const Neighbours &neighbours = stage.neighbours;
    const uint32_t *row = ring(stage.input).row(y);
    const size_t size = numberBytes(neighbours);
    const int width = stripWidth(neighbours);
    const int plane = stripPlane(neighbours);
    uchar *expanded = scratch->expanded.data();
    scratch->pointTo(neighbours, expanded + size_t(neighbours.before) * size, std::ptrdiff_t(size));
    for (int x = 0; x < m_size.width(); x += width) {
        const int count = std::min(width, m_size.width() - x);
        const int left = std::max(0, x - neighbours.before);
        const int right = std::min(m_size.width(), x + count + neighbours.after);
        const int outsideLeft = left - (x - neighbours.before);
        const int outsideRight = x + count + neighbours.after - right;
        expand(stage, row + left, expanded + size_t(outsideLeft) * size, plane, right - left);
        for (size_t colour = 0; colour < colours; ++colour) {
            uchar *first = expanded + colour * size_t(plane) * size;
            if (neighbours.convolve.sums.integers) {
                repeatEdges(reinterpret_cast<uint16_t *>(first), outsideLeft, right - left,
                            outsideRight);
            } else {
                repeatEdges(reinterpret_cast<float *>(first), outsideLeft, right - left,
                            outsideRight);
            }
        }
        const Pixels place = pixelsAt(x, y, count);
        convolve(stage, *scratch, plane, place);
        applyOps(stage, place, scratch);
    }
}

void StageRunner::convolveColumns(const Stage &stage, const Block &block, Scratch *scratch)
{
    const Neighbours &neighbours = stage.neighbours;
    const RowRing &input = ring(stage.input);
    const int plane = columnWidth(neighbours);
    const size_t step = colours * size_t(plane) * numberBytes(neighbours);
    uchar *expanded = scratch->expanded.data();
    uchar *next = expanded;
    for (int y = block.from - neighbours.before; y < block.to + neighbours.after; ++y) {
        expand(stage, input.row(qBound(0, y, m_size.height() - 1)) + block.x, next, plane,
               block.count);
        next += step;
    }
    scratch->pointTo(neighbours, expanded + size_t(neighbours.before) * step, std::ptrdiff_t(step));
    for (int y = block.from; y < block.to; ++y) {
        const Pixels place = pixelsAt(block.x, y, block.count);
        convolve(stage, *scratch, plane, place);
        applyOps(stage, place, scratch);
        scratch->move(neighbours, std::ptrdiff_t(step));
    }
}

void StageRunner::convolve(const Stage &stage, const Scratch &scratch, int plane,
                           const Pixels &place)
{
    const uint32_t *centre = ring(stage.input).row(place.y) + place.x;
    Pixels pixels = place;
    pixels.source = stage.second < 0 ? centre : ring(stage.second).row(place.y) + place.x;
    m_kernels.convolve(stage.neighbours.convolve,
                       {scratch.first.data(), scratch.second.data(), plane}, centre, pixels,
                       target(stage).row(place.y) + place.x);
}

// In place.
void StageRunner::applyOps(const Stage &stage, const Pixels &pixels, Scratch *scratch)
{
    if (stage.ops.empty()) {
        return;
    }
    uint32_t *made = target(stage).row(pixels.y) + pixels.x;
    for (int x = 0; x < pixels.count; x += stripPixels) {
        Pixels part = pixels;
        part.source = made + x;
        part.count = std::min(stripPixels, pixels.count - x);
        part.x += x;
        applyPointOps(m_kernels, stage.ops, part, made + x, scratch->strips.data());
    }
}

void StageRunner::expand(const Stage &stage, const uint32_t *row, uchar *target, int plane,
                         int count) const
{
    if (stage.neighbours.convolve.sums.integers) {
        m_kernels.expand16(row, reinterpret_cast<uint16_t *>(target), plane, count);
    } else {
        m_kernels.expandFloat(row, reinterpret_cast<float *>(target), plane, count);
    }
}

Pixels StageRunner::pixelsAt(int x, int y, int count) const
{
    return {nullptr, nullptr, count, x, y, m_size.width(), m_size.height()};
}

RowRing &StageRunner::target(const Stage &stage)
{
    return m_rings.at(size_t(&stage - m_stages.data()));
}

} // namespace ko::imagefx::engine
