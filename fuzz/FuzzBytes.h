#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ko::fuzz
{

// The fuzzer's input, taken from the front; zeros when it is used up.
class FuzzBytes
{
public:
    FuzzBytes(const uint8_t *bytes, size_t count) : m_bytes(bytes), m_left(count) {}

    uint8_t byte()
    {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_bytes++;
    }
    // From 0 to `count` - 1.
    int below(int count) { return byte() % count; }
    bool chance(int oneOutOf) { return below(oneOutOf) == 0; }

    // Any float: ordinary ones, the largest, the smallest, and what is no number at all.
    float number();

    const uint8_t *rest() const { return m_bytes; }
    size_t left() const { return m_left; }

private:
    const uint8_t *m_bytes;
    size_t m_left;
};

} // namespace ko::fuzz
