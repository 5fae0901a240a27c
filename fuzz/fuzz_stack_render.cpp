// A fuzz target: reads a stack and a picture's size from bytes and draws a small picture with the
// engine. It fails when a rule is broken that holds for every stack.

#include "engine/EffectEngine.h"
#include "fuzz/FuzzStack.h"

#include <QtCore/QtGlobal>

#include <cstdio>
#include <cstdlib>

using namespace ko::fuzz;
using namespace ko::imagefx;

namespace
{

constexpr int largestSide = 40;
// Now and then: more than a strip is wide or a band high.
constexpr int longestSide = 3000;
constexpr int shortestSide = 4;

[[noreturn]] void fail(const char *rule)
{
    std::fprintf(stderr, "broken: %s\n", rule);
    std::abort();
}

QSize makeSize(FuzzBytes *bytes)
{
    if (!bytes->chance(32)) {
        return {1 + bytes->below(largestSide), 1 + bytes->below(largestSide)};
    }
    const QSize size(1 + bytes->below(longestSide), 1 + bytes->below(shortestSide));
    return bytes->chance(2) ? size : size.transposed();
}

QImage makePicture(FuzzBytes *bytes)
{
    const QSize size = makeSize(bytes);
    const bool opaque = bytes->chance(2);
    // Colours that are brighter than their alpha allows, now and then.
    const bool valid = !bytes->chance(4);
    uint32_t state = 0x9e3779b9U + bytes->byte();
    QImage picture(size, opaque ? QImage::Format_RGBX8888 : QImage::Format_RGBA8888);
    for (int y = 0; y < size.height(); ++y) {
        uchar *pixel = picture.scanLine(y);
        for (int x = 0; x < size.width(); ++x, pixel += 4) {
            state = state * 1664525U + 1013904223U;
            pixel[3] = uchar(opaque ? 255U : (state >> 5 & 7) == 0 ? 0U : state >> 24);
            const uint32_t most = opaque || !valid ? 255U : pixel[3];
            pixel[0] = uchar((state >> 16 & 255) * most / 255);
            pixel[1] = uchar((state >> 8 & 255) * most / 255);
            pixel[2] = uchar((state >> 11 & 255) * most / 255);
        }
    }
    return picture;
}

EffectEngine::Options makeOptions(FuzzBytes *bytes)
{
    EffectEngine::Options options;
    options.relativeScale = bytes->chance(2) ? 1.0F : bytes->number();
    options.globalAlpha = bytes->chance(2) ? 1.0F : bytes->number();
    options.threads = 1 + bytes->below(3);
    options.settled = bytes->chance(4);
    return options;
}

void checkAlpha(const QImage &result, const QImage &source)
{
    for (int y = 0; y < source.height(); ++y) {
        const uchar *drawn = result.constScanLine(y);
        const uchar *pixel = source.constScanLine(y);
        for (int x = 0; x < source.width(); ++x, drawn += 4, pixel += 4) {
            if (drawn[3] != pixel[3]) {
                fail("an effect leaves every alpha");
            }
        }
    }
}

bool areSame(const QImage &a, const QImage &b)
{
    bool same = a.size() == b.size();
    for (int y = 0; same && y < a.height(); ++y) {
        same =
            std::memcmp(a.constScanLine(y), b.constScanLine(y), size_t(4) * size_t(a.width())) == 0;
    }
    return same;
}

class Rows : public RowSource, public RowSink
{
public:
    Rows(const QImage &source, QImage *result) : m_source(source), m_result(result) {}

    bool read(uchar *rows, std::ptrdiff_t stride, int count) override
    {
        if (count < 1 || m_read + count > m_source.height()) {
            fail("the source is asked for the picture's rows");
        }
        for (int i = 0; i < count; ++i) {
            std::memcpy(rows + i * stride, m_source.constScanLine(m_read++), rowBytes());
        }
        return true;
    }
    bool write(const uchar *row) override
    {
        if (m_written == m_source.height()) {
            fail("the sink gets the picture's rows");
        }
        std::memcpy(m_result->scanLine(m_written++), row, rowBytes());
        return true;
    }

private:
    size_t rowBytes() const { return size_t(4) * size_t(m_source.width()); }

    const QImage &m_source;
    QImage *const m_result;
    int m_read = 0;
    int m_written = 0;
};

void checkRows(const EffectEngine &engine, const QImage &source, const QImage &expected)
{
    QImage result(source.size(), expected.format());
    Rows rows(source, &result);
    if (!engine.render(source.size(), !source.hasAlphaChannel(), &rows, &rows) ||
        !areSame(result, expected)) {
        fail("rows in and out are the picture");
    }
}

// The same from other instructions and with other threads.
void checkEquals(const QList<ImageEffect *> &effects, EffectEngine::Options options,
                 const QImage &source, const QImage &expected, FuzzBytes *bytes)
{
    const QString set = EffectEngine::instructionSet();
    const QStringList sets = EffectEngine::instructionSets();
    EffectEngine::setInstructionSet(sets.at(bytes->below(sets.size())));
    options.threads = 4 - options.threads;
    const EffectEngine engine(effects, options);
    if (!areSame(engine.render(source), expected)) {
        std::fprintf(stderr, "%s is not %s\n", qPrintable(EffectEngine::instructionSet()),
                     qPrintable(set));
        fail("every set of instructions and every number of threads draws the same");
    }
    checkRows(engine, source, expected);
    EffectEngine::setInstructionSet(set);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QtMessageHandler silent =
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    Q_UNUSED(silent)
    FuzzBytes bytes(data, size);
    const bool isText = bytes.chance(2);
    const bool isChecked = bytes.chance(4);
    const QImage source = makePicture(&bytes);
    const EffectEngine::Options options = makeOptions(&bytes);
    FuzzBytes checkBytes(bytes.rest(), bytes.left());
    const FuzzStack stack = isText ? FuzzStack::fromJson(&bytes) : FuzzStack::fromBytes(&bytes);
    const EffectEngine engine(stack.effects(), options);
    const QImage result = engine.render(source);
    if (result.size() != source.size()) {
        fail("every stack of the library's own kinds is drawn");
    }
    checkAlpha(result, source);
    if (isChecked) {
        checkEquals(stack.effects(), options, source, result, &checkBytes);
    }
    return 0;
}
