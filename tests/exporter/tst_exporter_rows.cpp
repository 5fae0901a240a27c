#include "exporter/JpegRowWriter.h"
#include "exporter/rows/ReadAhead.h"
#include "exporter/rows/WriteBehind.h"

#include <QtTest/QtTest>

#include <algorithm>
#include <atomic>
#include <cstring>
#include <stdexcept>
#include <vector>

using namespace ko::exporter;
using ko::imagefx::RowSink;
using ko::imagefx::RowSource;

namespace
{

uchar byteAt(int row, std::size_t position)
{
    return uchar(row * 7 + int(position) * 3);
}

// Rows of known bytes up to `end`, then a failure.
class CountedRows : public RowSource
{
public:
    CountedRows(std::size_t rowBytes, int end) : m_rowBytes(rowBytes), m_end(end) {}

    bool read(uchar *rows, std::ptrdiff_t stride, int count) override
    {
        for (int i = 0; i < count; ++i, ++given) {
            if (throws && given == m_end) {
                throw std::bad_alloc();
            }
            if (given == m_end) {
                return false;
            }
            for (std::size_t k = 0; k < m_rowBytes; ++k) {
                rows[stride * i + std::ptrdiff_t(k)] = byteAt(given, k);
            }
        }
        return true;
    }

    std::atomic<int> given{0};
    bool throws = false;

private:
    const std::size_t m_rowBytes;
    const int m_end;
};

// Checks the bytes of its rows, up to `end`.
class CheckedRows : public RowSink
{
public:
    CheckedRows(std::size_t rowBytes, int end) : m_rowBytes(rowBytes), m_end(end) {}

    bool write(const uchar *row) override
    {
        if (throws && taken == m_end) {
            throw std::bad_alloc();
        }
        if (taken == m_end) {
            return false;
        }
        for (std::size_t k = 0; k < m_rowBytes; ++k) {
            right = right && row[k] == byteAt(taken, k);
        }
        ++taken;
        return true;
    }

    int taken = 0;
    bool right = true;
    bool throws = false;

private:
    const std::size_t m_rowBytes;
    const int m_end;
};

constexpr std::size_t rowBytes = 40;
constexpr int height = 333;
// More than wait between two threads.
constexpr int many = 100000;

} // namespace

class tst_exporter_rows : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyRowComesInOrder_data();
    void everyRowComesInOrder();
    void neitherGetsFarAhead();
    void aSourceThatEndsIsTold();
    void aSinkThatEndsIsTold();
    void aReaderThatStopsEndsTheThread();
    void whatOneThreadThrowsTheOtherGets();
    void aFileGrowsUpToTheLargestArray();
};

void tst_exporter_rows::everyRowComesInOrder_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("rows");
    QTest::addColumn<int>("step");
    for (const int rows : {1, 15, 16, 17, 64, 65, 200}) {
        for (const int bytes : {1, 4, 400}) {
            QTest::addRow("%d rows of %d bytes", rows, bytes) << bytes << rows << rows % 11 + 1;
        }
    }
    // Bands of less than sixteen rows, and of one.
    QTest::newRow("long rows") << 262000 << 17 << 3;
    QTest::newRow("longer rows") << 1100000 << 7 << 2;
}

void tst_exporter_rows::everyRowComesInOrder()
{
    QFETCH(int, bytes);
    QFETCH(int, rows);
    QFETCH(int, step);
    const auto width = std::size_t(bytes);
    CountedRows source(width, rows);
    CheckedRows sink(width, rows);
    {
        ReadAhead ahead(&source, width, rows);
        WriteBehind behind(&sink, width);
        const std::size_t stride = width + 13;
        std::vector<uchar> band(stride * std::size_t(step));
        for (int y = 0; y < rows; y += step) {
            const int count = std::min(step, rows - y);
            QVERIFY(ahead.read(band.data(), std::ptrdiff_t(stride), count));
            for (int i = 0; i < count; ++i) {
                QVERIFY(behind.write(band.data() + stride * std::size_t(i)));
            }
        }
        ahead.stop();
        behind.finish();
    }
    QCOMPARE(source.given.load(), rows);
    QCOMPARE(sink.taken, rows);
    QVERIFY(sink.right);
}

void tst_exporter_rows::neitherGetsFarAhead()
{
    CountedRows source(rowBytes, many);
    ReadAhead ahead(&source, rowBytes, many);
    std::vector<uchar> row(rowBytes);
    QVERIFY(ahead.read(row.data(), std::ptrdiff_t(rowBytes), 1));
    QTest::qWait(50);
    QVERIFY(source.given >= 16);
    QVERIFY(source.given <= 64);
    ahead.stop();
}

void tst_exporter_rows::aSourceThatEndsIsTold()
{
    constexpr int end = 100;
    CountedRows source(rowBytes, end);
    ReadAhead ahead(&source, rowBytes, height);
    std::vector<uchar> row(rowBytes);
    int read = 0;
    while (ahead.read(row.data(), std::ptrdiff_t(rowBytes), 1)) {
        QCOMPARE(row[3], byteAt(read, 3));
        ++read;
    }
    // The band that was begun is lost.
    QCOMPARE(read, 96);
    ahead.stop();
}

void tst_exporter_rows::aSinkThatEndsIsTold()
{
    constexpr int end = 100;
    CheckedRows sink(rowBytes, end);
    WriteBehind behind(&sink, rowBytes);
    std::vector<uchar> row(rowBytes);
    int written = 0;
    while (written < many) {
        for (std::size_t k = 0; k < rowBytes; ++k) {
            row[k] = byteAt(written, k);
        }
        if (!behind.write(row.data())) {
            break;
        }
        ++written;
    }
    QVERIFY(written >= end);
    QVERIFY(written < many);
    behind.finish();
    QCOMPARE(sink.taken, end);
    QVERIFY(sink.right);
}

void tst_exporter_rows::aReaderThatStopsEndsTheThread()
{
    CountedRows source(rowBytes, many);
    {
        ReadAhead ahead(&source, rowBytes, many);
        std::vector<uchar> row(rowBytes);
        QVERIFY(ahead.read(row.data(), std::ptrdiff_t(rowBytes), 1));
    }
    QVERIFY(source.given < many);
}

void tst_exporter_rows::whatOneThreadThrowsTheOtherGets()
{
    CountedRows source(rowBytes, 40);
    source.throws = true;
    ReadAhead ahead(&source, rowBytes, height);
    std::vector<uchar> rows(rowBytes * height);
    QVERIFY(!ahead.read(rows.data(), std::ptrdiff_t(rowBytes), height));
    QVERIFY_EXCEPTION_THROWN(ahead.stop(), std::bad_alloc);

    CheckedRows sink(rowBytes, 40);
    sink.throws = true;
    WriteBehind behind(&sink, rowBytes);
    int written = 0;
    while (written < many && behind.write(rows.data())) {
        ++written;
    }
    QVERIFY(written < many);
    QVERIFY_EXCEPTION_THROWN(behind.finish(), std::bad_alloc);
}

// Far fewer steps than there are bytes, and none that an array could not take.
void tst_exporter_rows::aFileGrowsUpToTheLargestArray()
{
    constexpr int mostSteps = 64;
    int size = 0;
    int steps = 0;
    for (int next = JpegRowWriter::grownSize(size); next != size && steps < mostSteps; ++steps) {
        QVERIFY2(next > size, qPrintable(QString::number(next)));
        size = next;
        next = JpegRowWriter::grownSize(size);
    }
    QVERIFY(steps < mostSteps);
    QVERIFY(size > 2147483647 - 4096);
    // Its pages are never touched.
    QByteArray file;
    file.resize(size);
    QCOMPARE(file.size(), size);
}

QTEST_GUILESS_MAIN(tst_exporter_rows)

#include "tst_exporter_rows.moc"
