#include "benchmarks/exporter/BareJpeg.h"

#include <cstdio> // in front of jpeglib.h, which needs it
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>

#include <jpeglib.h>

namespace ko::exporter::benchmarks
{

namespace
{

[[noreturn]] void fail(const std::string &what)
{
    std::cerr << what << '\n';
    std::exit(1);
}

} // namespace

void Pixels::resize(int width, int height)
{
    m_width = width;
    m_height = height;
    if (byteCount() > m_capacity) {
        m_capacity = byteCount();
        m_data.reset(new unsigned char[m_capacity]);
    }
}

Bytes readFile(const std::string &name)
{
    std::ifstream file(name, std::ios::binary | std::ios::ate);
    if (!file) {
        fail(name + ": cannot be read");
    }
    Bytes bytes(std::size_t(file.tellg()));
    file.seekg(0);
    file.read(reinterpret_cast<char *>(bytes.data()), std::streamsize(bytes.size()));
    if (!file) {
        fail(name + ": cannot be read");
    }
    return bytes;
}

void writeFile(const std::string &name, const unsigned char *data, std::size_t size)
{
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char *>(data), std::streamsize(size));
    file.close();
    if (!file) {
        fail(name + ": cannot be written");
    }
}

void decode(const Bytes &file, Pixels *pixels)
{
    jpeg_error_mgr errors;
    jpeg_decompress_struct info;
    info.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&info);
    jpeg_mem_src(&info, file.data(), static_cast<unsigned long>(file.size()));
    jpeg_read_header(&info, TRUE);
    info.out_color_space = JCS_RGB;
    jpeg_start_decompress(&info);
    pixels->resize(int(info.output_width), int(info.output_height));
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = pixels->row(int(info.output_scanline));
        jpeg_read_scanlines(&info, &row, 1);
    }
    jpeg_finish_decompress(&info);
    jpeg_destroy_decompress(&info);
}

Encoder::~Encoder()
{
    std::free(m_data);
}

void Encoder::encode(Pixels *pixels, int quality)
{
    // Larger than any JPEG of a photograph, so libjpeg never has to move it.
    const std::size_t enough = pixels->byteCount() + 65536;
    if (enough > m_capacity) {
        std::free(m_data);
        m_data = static_cast<unsigned char *>(std::malloc(enough));
        m_capacity = enough;
    }
    unsigned char *data = m_data;
    m_size = static_cast<unsigned long>(m_capacity);
    jpeg_error_mgr errors;
    jpeg_compress_struct info;
    info.err = jpeg_std_error(&errors);
    jpeg_create_compress(&info);
    jpeg_mem_dest(&info, &data, &m_size);
    info.image_width = JDIMENSION(pixels->width());
    info.image_height = JDIMENSION(pixels->height());
    info.input_components = 3;
    info.in_color_space = JCS_RGB;
    jpeg_set_defaults(&info);
    jpeg_set_quality(&info, quality, TRUE);
    jpeg_start_compress(&info, TRUE);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = pixels->row(int(info.next_scanline));
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    jpeg_destroy_compress(&info);
    if (data != m_data) {
        fail("a JPEG that is larger than its pixels");
    }
}

} // namespace ko::exporter::benchmarks
