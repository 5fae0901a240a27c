#include "engine/pipeline/Pipeline.h"

#include "engine/InstructionSets.h"

#include <exception>
#include <functional>

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
// the picture. The source gives the rows of the next band while this one is made.
bool Pipeline::run(RowSource *source, BandSink *sink)
{
    const std::vector<Stage> &stages = m_graph.stages();
    const int height = m_size.height();
    const auto made = [height](const Stage &stage, qint64 end) {
        return int(qBound(qint64(0), end + stage.lead, qint64(height)));
    };
    qint64 begin = -qint64(stages.front().lead);
    bool isRead = read(source, 0, made(stages.front(), begin + m_graph.bandRows()));
    while (isRead && begin < height) {
        const qint64 end = begin + m_graph.bandRows();
        std::exception_ptr failure;
        std::function<void()> readNext = [&] {
            try {
                isRead = read(source, made(stages.front(), end),
                              made(stages.front(), end + m_graph.bandRows()));
            } catch (...) {
                failure = std::current_exception(); // the others are still at work
            }
        };
        for (size_t i = 0; i < stages.size(); ++i) {
            const Stage &stage = stages.at(i);
            if (m_runner.run(i, made(stage, begin), made(stage, end), readNext)) {
                readNext = nullptr;
            }
        }
        if (readNext) {
            readNext();
        }
        if (failure) {
            std::rethrow_exception(failure);
        }
        if (!write(sink, made(stages.back(), begin), made(stages.back(), end))) {
            return false;
        }
        begin = end;
    }
    return isRead;
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
