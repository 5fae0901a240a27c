#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace ko::exporter::benchmarks
{

// The least that a program can do with libjpeg-turbo: everything as the library
// sets it up, RGB, one thread. Errors end the program with a line on standard
// error.

using Bytes = std::vector<unsigned char>;

// Rows of RGB, 8 bits a channel, from the top. Making it again for a picture of
// the same size or smaller takes no new memory.
class Pixels
{
public:
    void resize(int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }
    std::size_t byteCount() const { return std::size_t(m_width) * std::size_t(m_height) * 3; }
    unsigned char *row(int y) { return m_data.get() + std::size_t(m_width) * std::size_t(y) * 3; }
    unsigned char *pixel(int x, int y) { return row(y) + std::size_t(x) * 3; }
    const unsigned char *data() const { return m_data.get(); }

private:
    int m_width = 0;
    int m_height = 0;
    std::size_t m_capacity = 0;
    std::unique_ptr<unsigned char[]> m_data; // a vector would write zeros first
};

Bytes readFile(const std::string &name);
void writeFile(const std::string &name, const unsigned char *data, std::size_t size);

void decode(const Bytes &file, Pixels *pixels);

// A JPEG in memory, in a buffer that serves again.
class Encoder
{
public:
    ~Encoder();
    Encoder() = default;
    Encoder(const Encoder &) = delete;
    Encoder &operator=(const Encoder &) = delete;

    // Baseline, halved chroma.
    void encode(Pixels *pixels, int quality);

    const unsigned char *data() const { return m_data; }
    std::size_t size() const { return m_size; }

private:
    unsigned char *m_data = nullptr; // from malloc(), as libjpeg wants it
    std::size_t m_capacity = 0;
    unsigned long m_size = 0;
};

} // namespace ko::exporter::benchmarks
