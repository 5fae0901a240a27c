#pragma once

#include "engine/EffectEngine.h"
#include "engine/pipeline/StageRunner.h"

namespace ko::imagefx::engine
{

// Takes the result, some rows at a time, in the layout of RowSource.
class BandSink
{
public:
    virtual ~BandSink() = default;
    virtual bool write(const uchar *rows, std::ptrdiff_t stride, int count) = 0;
};

// One picture on its way through a program: pulls rows from the source and hands rows to the sink,
// a band at a time.
class Pipeline
{
public:
    // `size` is not empty. What is `opaque` has no alpha but 255.
    Pipeline(const StackProgram &program, const QSize &size, bool opaque, int threads);

    // Once only. False when the source or the sink ended it.
    bool run(RowSource *source, BandSink *sink);

private:
    bool read(RowSource *source, int from, int to);
    bool write(BandSink *sink, int from, int to);

    const QSize m_size;
    const StageGraph m_graph;
    StageRunner m_runner;
};

} // namespace ko::imagefx::engine
