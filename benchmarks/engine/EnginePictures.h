#pragma once

#include "engine/EffectEngine.h"

#include <QtCore/QSize>
#include <QtGui/QImage>

namespace ko::imagefx::benchmarks
{

// Gradients under noise, premultiplied; every other pixel of a translucent one has an alpha from 64
// to 254. The same picture every time.
QImage noisyPicture(const QSize &size, bool opaque);

// A picture of any height from the rows of another, over and over.
class RepeatedRows : public RowSource
{
public:
    explicit RepeatedRows(const QImage &rows) : m_rows(rows) {}
    bool read(uchar *rows, std::ptrdiff_t stride, int count) override;

private:
    const QImage m_rows;
    int m_next = 0;
};

// Counts rows and forgets them.
class CountedRows : public RowSink
{
public:
    int count() const { return m_count; }
    bool write(const uchar *) override
    {
        ++m_count;
        return true;
    }

private:
    int m_count = 0;
};

} // namespace ko::imagefx::benchmarks
