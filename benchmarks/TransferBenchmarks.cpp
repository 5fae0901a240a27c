#include "benchmarks/TransferBenchmarks.h"

#include "benchmarks/Fixture.h"
#include "benchmarks/Results.h"
#include "benchmarks/Rounds.h"

#include "imagefx/render/BasePass.h"
#include "imagefx/render/ImageEffectRenderer.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFramebufferObject>
#include <QtGui/QOpenGLFunctions>

#include <benchmark/benchmark.h>

#include <cstring>

namespace ko::imagefx::benchmarks
{

namespace
{

QOpenGLFunctions *gl()
{
    return QOpenGLContext::currentContext()->functions();
}

GLuint makeTexture(const QImage &image, GLenum format)
{
    GLuint texture = 0;
    gl()->glGenTextures(1, &texture);
    gl()->glActiveTexture(GL_TEXTURE0);
    gl()->glBindTexture(GL_TEXTURE_2D, texture);
    gl()->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    gl()->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    gl()->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    gl()->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
    gl()->glTexImage2D(GL_TEXTURE_2D, 0, GLint(format), image.width(), image.height(), 0, format,
                       GL_UNSIGNED_BYTE, image.constBits());
    return texture;
}

void copyBytes(std::vector<uchar> *target, const uchar *source)
{
    std::memcpy(target->data(), source, target->size());
    ::benchmark::DoNotOptimize(target->data());
    ::benchmark::ClobberMemory();
}

void addRow(const char *table, std::vector<std::pair<std::string, std::string>> labels,
            const std::vector<std::pair<std::string, double>> &times)
{
    Results::Row row{std::move(labels), {}};
    for (const auto &time : times) {
        row.figures.push_back({time.first, time.second, false});
    }
    Results::instance().add(table, row);
}

// The renderer's own upload cannot be called alone. Without effects and into four by four pixels,
// what it does besides is too little to show.
void upload(::benchmark::State &state, const QSize &size, bool translucent)
{
    const std::string kind = translucent ? "RGBA8" : "RGB8";
    const GLenum format = translucent ? GL_RGBA : GL_RGB;
    const QImage image =
        makePicture(size, translucent ? QImage::Format_RGBA8888 : QImage::Format_RGB888);
    std::vector<uchar> memory(std::size_t(image.sizeInBytes()));
    QOpenGLFramebufferObject target(QSize(4, 4), GL_TEXTURE_2D);
    ImageEffectRenderer renderer({});
    const GLuint reused = makeTexture(image, format);

    const auto asRenderer = [&] { renderer.render(image, &target); };
    const auto plain = [&] {
        const GLuint texture = makeTexture(image, format);
        gl()->glDeleteTextures(1, &texture);
    };
    const auto again = [&] {
        gl()->glBindTexture(GL_TEXTURE_2D, reused);
        gl()->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, image.width(), image.height(), format,
                              GL_UNSIGNED_BYTE, image.constBits());
    };
    const auto inMemory = [&] { copyBytes(&memory, image.constBits()); };
    const std::vector<double> medians = interleave(state, {{"renderer", asRenderer},
                                                           {"texImage", plain},
                                                           {"texSubImage", again},
                                                           {"memcpy", inMemory}});
    gl()->glDeleteTextures(1, &reused);
    addRow("Upload", {{"size", label(size)}, {"image", kind}},
           {{"as ImageEffectRenderer: new texture, mipmaps", medians[0]},
            {"glTexImage2D, new texture", medians[1]},
            {"glTexSubImage2D, reused texture", medians[2]},
            {"memcpy", medians[3]}});
    checkGl("upload " + kind);
}

void readBack(::benchmark::State &state, const QSize &size)
{
    const QImage picture = makePicture(size, QImage::Format_RGBA8888);
    QOpenGLFramebufferObject framebuffer(size, GL_TEXTURE_2D);
    const GLuint texture = makeTexture(picture, GL_RGBA);
    prepareState(size);
    framebuffer.bind();
    BasePass::shared()->draw(texture, QRectF(0, 0, 1, 1));
    gl()->glDeleteTextures(1, &texture);

    std::vector<uchar> buffer(std::size_t(picture.sizeInBytes()));
    std::vector<uchar> memory(buffer.size());
    QImage image;
    const auto readPixels = [&] {
        framebuffer.bind();
        gl()->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE,
                           buffer.data());
    };
    const auto toImage = [&] { image = framebuffer.toImage(); };
    const auto inMemory = [&] { copyBytes(&memory, picture.constBits()); };
    const std::vector<double> medians =
        interleave(state, {{"readPixels", readPixels}, {"toImage", toImage}, {"memcpy", inMemory}});
    framebuffer.release();
    addRow("Read-back", {{"size", label(size)}},
           {{"glReadPixels into a buffer of one's own", medians[0]},
            {"QOpenGLFramebufferObject::toImage", medians[1]},
            {"memcpy", medians[2]}});

    const QImage upright(buffer.data(), size.width(), size.height(),
                         QImage::Format_RGBA8888_Premultiplied);
    if (std::memcmp(buffer.data(), picture.constBits(), buffer.size()) != 0 ||
        image != upright.mirrored().convertToFormat(image.format())) {
        Results::instance().fail("read-back: not the pixels that were drawn");
    }
    checkGl("read-back");
}

} // namespace

void registerTransferBenchmarks(const Plan &plan)
{
    for (const QSize &size : plan.sizes) {
        const auto add = [&](const std::string &name, auto function) {
            ::benchmark::RegisterBenchmark((name + "/" + label(size)).c_str(), function)
                ->Iterations(plan.rounds(size))
                ->UseManualTime()
                ->Unit(::benchmark::kMillisecond);
        };
        for (const bool translucent : {true, false}) {
            add(translucent ? "upload/RGBA8" : "upload/RGB8",
                [size, translucent](::benchmark::State &state) {
                    upload(state, size, translucent);
                });
        }
        add("readback", [size](::benchmark::State &state) { readBack(state, size); });
    }
}

} // namespace ko::imagefx::benchmarks
