#include "engine/pipeline/Pipeline.h"

#include "engine/InstructionSets.h"

namespace ko::imagefx::engine
{

Pipeline::Pipeline(const StackProgram &program, const QSize &size, bool opaque, int threads)
    : m_size(size),
      m_graph(currentKernels(), program.steps(), size, opaque, threads),
      m_runner(currentKernels(), m_graph, size, threads)
{
}

// The result's bands begin so far above the picture that the first stage, which is the farthest
// ahead, makes no more than a band at once; every stage makes only those of its rows that are in
// the picture.
bool Pipeline::run(RowSource *source, BandSink *sink)
{
    const std::vector<Stage> &stages = m_graph.stages();
    const int height = m_size.height();
    const auto made = [height](const Stage &stage, qint64 end) {
        return int(qBound(qint64(0), end + stage.lead, qint64(height)));
    };
    qint64 begin = -qint64(stages.front().lead);
    while (begin < height) {
        const qint64 end = begin + m_graph.bandRows();
        for (size_t i = 0; i < stages.size(); ++i) {
            const int from = made(stages.at(i), begin);
            const int to = made(stages.at(i), end);
            if (from == to) {
                continue;
            }
            if (i == 0 && !read(source, from, to)) {
                return false;
            }
            m_runner.run(i, from, to);
        }
        if (!write(sink, made(stages.back(), begin), made(stages.back(), end))) {
            return false;
        }
        begin = end;
    }
    return true;
}

bool Pipeline::read(RowSource *source, int from, int to)
{
    RowRing &rows = m_runner.rows(0);
    for (int y = from; y < to;) {
        const int count = rows.contiguous(y, to - y);
        if (!source->read(reinterpret_cast<uchar *>(rows.row(y)), rows.strideInBytes(), count)) {
            return false;
        }
        y += count;
    }
    return true;
}

bool Pipeline::write(BandSink *sink, int from, int to)
{
    const RowRing &rows = m_runner.rows(m_graph.stages().size() - 1);
    for (int y = from; y < to;) {
        const int count = rows.contiguous(y, to - y);
        if (!sink->write(reinterpret_cast<const uchar *>(rows.row(y)), rows.strideInBytes(),
                         count)) {
            return false;
        }
        y += count;
    }
    return true;
}

} // namespace ko::imagefx::engine
