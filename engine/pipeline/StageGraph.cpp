#include "engine/pipeline/StageGraph.h"

#include "engine/TapFinder.h"
#include "imagefx/model/ImageEffect.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace ko::imagefx::engine
{

namespace
{

// Pixels of a band for each thread: some stages' worth of them stay in the second cache.
constexpr qint64 bandPixels = 65536;
constexpr qint64 fewestBandRows = 16;
// Bands are at least as high as blurs reach, up to this, since what they reach is prepared anew for
// each band.
constexpr int mostReachingRows = 128;

// Whether an error in `b` stays as it is in fx_blend(a, b), or gets smaller.
bool keepsErrorsSmall(int blendMode)
{
    switch (blendMode) {
    case ImageEffect::Normal:
    case ImageEffect::Add:
    case ImageEffect::Subtract:
    case ImageEffect::Difference:
    case ImageEffect::Multiply:
    case ImageEffect::Screen:
    case ImageEffect::Overlay:
    case ImageEffect::SoftLight:
    case ImageEffect::LinearBurn:
    case ImageEffect::LightenOnly:
    case ImageEffect::DarkenOnly:
        return true;
    default:
        return false;
    }
}

// Whether 16-bit sums stay within a level of the exact result: an error in them grows with
// everything that the sum is multiplied by afterwards.
bool integersSuffice(Convolution kind, const Pass &pass, bool opaque)
{
    const float alpha = std::abs(pass.alpha);
    if (!keepsErrorsSmall(pass.blendMode) || !(alpha <= 1.0F)) {
        return false;
    }
    switch (kind) {
    case Convolution::BlurPre:
    case Convolution::Blur:
        return true;
    case Convolution::SharpenPre:
        return opaque;
    case Convolution::Sharpen:
        return opaque && std::abs(pass.uniforms[0]) * alpha <= 2.0F;
    }
    return false;
}

// Beyond the picture's edge there is only more of the edge.
void limit(std::vector<int> *offsets, int extent)
{
    for (int &offset : *offsets) {
        offset = qBound(1 - extent, offset, extent - 1);
    }
}

int reachBefore(const std::vector<int> &offsets)
{
    return offsets.empty() ? 0 : std::max(0, -*std::min_element(offsets.begin(), offsets.end()));
}

int reachAfter(const std::vector<int> &offsets)
{
    return offsets.empty() ? 0 : std::max(0, *std::max_element(offsets.begin(), offsets.end()));
}

struct Rows {
    int above = 0;
    int below = 0;
};

Rows neighbourRows(const Stage &stage)
{
    return stage.neighbours.vertical ? Rows{stage.neighbours.before, stage.neighbours.after}
                                     : Rows{};
}

} // namespace

StageGraph::StageGraph(const Kernels &kernels, const std::vector<Step> &steps, const QSize &size,
                       bool opaque, int threads)
    : m_kernels(kernels), m_size(size), m_opaque(opaque)
{
    Stage source;
    source.head = Stage::Head::Source;
    addChain(steps, add(std::move(source)), false);
    chooseBand(threads);
    schedule();
}

// Ops go to the stage whose rows they read, unless somebody else reads those too: then a stage of
// their own begins. That is so with the input of a batch.
int StageGraph::addChain(const std::vector<Step> &steps, int input, bool isShared)
{
    int last = input;
    for (const Step &step : steps) {
        if (isPointwise(step)) {
            std::optional<PointOp> op = pointOp(m_kernels, step, m_opaque);
            if (!op) {
                continue;
            }
            if (isShared) {
                Stage points;
                points.input = last;
                last = add(std::move(points));
            }
            appendPointOp(std::move(*op), &m_stages.at(size_t(last)).ops);
        } else if (step.kind == Step::Kind::Batch) {
            Stage batch;
            batch.head = Stage::Head::Batch;
            batch.input = last;
            batch.second = addChain(step.nested, last, true);
            batch.batch = step.pass;
            batch.batch.opaque = m_opaque;
            last = add(std::move(batch));
        } else {
            last = addConvolutions(step, last);
        }
        isShared = false;
    }
    return last;
}

int StageGraph::addConvolutions(const Step &step, int input)
{
    const bool isBlur = step.kind == Step::Kind::Blur;
    Stage pre;
    pre.head = Stage::Head::Convolution;
    pre.input = input;
    pre.neighbours = neighbours(isBlur ? Convolution::BlurPre : Convolution::SharpenPre, step);
    Stage main;
    main.head = Stage::Head::Convolution;
    main.input = add(std::move(pre));
    main.second = input;
    main.neighbours = neighbours(isBlur ? Convolution::Blur : Convolution::Sharpen, step);
    return add(std::move(main));
}

int StageGraph::add(Stage stage)
{
    m_stages.push_back(std::move(stage));
    return int(m_stages.size()) - 1;
}

Neighbours StageGraph::neighbours(Convolution kind, const Step &step) const
{
    Neighbours made;
    made.convolve.kind = kind;
    made.convolve.pass = step.pass;
    made.convolve.pass.opaque = m_opaque;
    arrangeTaps(findTaps(kind, step.radiusInPixels), &made.convolve.sums, &made.first,
                &made.second);
    made.convolve.sums.integers = integersSuffice(kind, step.pass, m_opaque);
    made.vertical = isVertical(kind);
    const int extent = made.vertical ? m_size.height() : m_size.width();
    limit(&made.first, extent);
    limit(&made.second, extent);
    made.before = std::max(reachBefore(made.first), reachBefore(made.second));
    made.after = std::max(reachAfter(made.first), reachAfter(made.second));
    return made;
}

void StageGraph::chooseBand(int threads)
{
    int reach = 0;
    for (const Stage &stage : m_stages) {
        const Rows rows = neighbourRows(stage);
        reach = std::max({reach, rows.above, rows.below});
    }
    // A narrow row has more room behind it than pixels.
    const qint64 rows = bandPixels * threads / (qint64(m_size.width()) + rowSlack);
    const qint64 fewest = std::max(fewestBandRows, qint64(std::min(reach, mostReachingRows)));
    m_bandRows = int(std::min(std::max(rows, fewest), qint64(m_size.height())));
}

// Stages read only from earlier ones, so all readers of a stage are settled before itself.
void StageGraph::schedule()
{
    const auto readAhead = [this](int input, const Stage &reader, int below) {
        if (input >= 0) {
            Stage &stage = m_stages.at(size_t(input));
            stage.lead = std::max(stage.lead, reader.lead + below);
        }
    };
    const auto keep = [this](int input, const Stage &reader, int above) {
        if (input >= 0) {
            Stage &stage = m_stages.at(size_t(input));
            const qint64 rows = m_bandRows + stage.lead - reader.lead + above;
            stage.rows = std::max(stage.rows, int(std::min(rows, qint64(m_size.height()))));
        }
    };
    m_stages.back().rows = m_bandRows;
    for (size_t i = m_stages.size(); i-- > 0;) {
        const Stage &reader = m_stages.at(i);
        readAhead(reader.input, reader, neighbourRows(reader).below);
        readAhead(reader.second, reader, 0);
    }
    for (const Stage &reader : m_stages) {
        keep(reader.input, reader, neighbourRows(reader).above);
        keep(reader.second, reader, 0);
    }
    // While a band is made, the source gives the rows of the next one.
    Stage &source = m_stages.front();
    source.rows = std::min(source.rows + m_bandRows, m_size.height());
}

} // namespace ko::imagefx::engine
