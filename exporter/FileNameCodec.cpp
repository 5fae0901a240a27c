#include "exporter/FileNameCodec.h"

#include <QtCore/QByteArray>
#include <QtCore/QTextCodec>

namespace ko::exporter
{

namespace
{

constexpr ushort firstEscape = 0xdc80;
constexpr ushort lastEscape = 0xdcff;

bool isContinuation(uchar byte)
{
    return (byte & 0xc0) == 0x80;
}

// The length of the one well-formed character that begins here, as RFC 3629 has it; 0 when none
// does.
int characterLength(const uchar *bytes, int left)
{
    const uchar first = bytes[0];
    if (first < 0x80) {
        return 1;
    }
    const int length = first >= 0xc2 && first < 0xe0   ? 2
                       : first >= 0xe0 && first < 0xf0 ? 3
                       : first >= 0xf0 && first < 0xf5 ? 4
                                                       : 0;
    if (length == 0 || length > left) {
        return 0;
    }
    for (int i = 1; i < length; ++i) {
        if (!isContinuation(bytes[i])) {
            return 0;
        }
    }
    const bool overlong = (first == 0xe0 && bytes[1] < 0xa0) || (first == 0xf0 && bytes[1] < 0x90);
    const bool surrogate = first == 0xed && bytes[1] >= 0xa0;
    const bool beyondUnicode = first == 0xf4 && bytes[1] >= 0x90;
    return overlong || surrogate || beyondUnicode ? 0 : length;
}

class LosslessCodec : public QTextCodec
{
public:
    QByteArray name() const override { return "KorvelFileName"; }
    // Outside the range of registered numbers.
    int mibEnum() const override { return -20071; }

protected:
    // No state between calls: names come whole.
    QString convertToUnicode(const char *text, int length, ConverterState *) const override
    {
        const auto *bytes = reinterpret_cast<const uchar *>(text);
        QString result;
        result.reserve(length);
        int wellFormed = 0;
        for (int i = 0; i < length;) {
            const int step = characterLength(bytes + i, length - i);
            if (step > 0) {
                i += step;
                continue;
            }
            result += QString::fromUtf8(text + wellFormed, i - wellFormed);
            result += QChar(ushort(0xdc00 + bytes[i]));
            wellFormed = ++i;
        }
        return result += QString::fromUtf8(text + wellFormed, length - wellFormed);
    }

    QByteArray convertFromUnicode(const QChar *text, int length, ConverterState *) const override
    {
        QByteArray result;
        result.reserve(length);
        int plain = 0;
        for (int i = 0; i < length; ++i) {
            const ushort unit = text[i].unicode();
            const bool paired = i > 0 && text[i - 1].isHighSurrogate();
            if (unit < firstEscape || unit > lastEscape || paired) {
                continue;
            }
            result += QString::fromRawData(text + plain, i - plain).toUtf8();
            result += char(unit - 0xdc00);
            plain = i + 1;
        }
        return result += QString::fromRawData(text + plain, length - plain).toUtf8();
    }
};

} // namespace

void useLosslessFileNames()
{
    // Qt owns and deletes every codec.
    static auto *const codec = new LosslessCodec;
    QTextCodec::setCodecForLocale(codec);
}

} // namespace ko::exporter
