#include "benchmarks/Fixture.h"

#include "benchmarks/Results.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx::benchmarks
{

namespace
{

constexpr double million = 1e6;

QOpenGLFunctions *gl()
{
    return QOpenGLContext::currentContext()->functions();
}

double megapixels(const QSize &size)
{
    return double(size.width()) * double(size.height()) / million;
}

} // namespace

Plan makePlan(bool smoke)
{
    Plan plan;
    plan.smoke = smoke;
    if (smoke) {
        plan.sizes = {QSize(16, 12)};
    } else {
        plan.sizes = {QSize(1152, 864), QSize(2304, 1728), QSize(4000, 3000)};
    }
    return plan;
}

int Plan::rounds(const QSize &size) const
{
    if (smoke) {
        return 1;
    }
    return megapixels(size) < 2 ? 200 : megapixels(size) < 8 ? 100 : 40;
}

int Plan::firstUseRounds() const
{
    return smoke ? 1 : 9;
}

std::string label(const QSize &size)
{
    return QByteArray::number(megapixels(size), 'f', 1).toStdString() + " MP (" +
           std::to_string(size.width()) + " x " + std::to_string(size.height()) + ")";
}

QImage makePicture(const QSize &size, QImage::Format format)
{
    QImage picture(size, QImage::Format_RGBA8888);
    quint32 noise = 1;
    for (int y = 0; y < size.height(); ++y) {
        uchar *pixel = picture.scanLine(y);
        for (int x = 0; x < size.width(); ++x, pixel += 4) {
            noise = noise * 1664525U + 1013904223U;
            const int alpha = y % 4 == 3 ? 64 + int(noise >> 26) : 255;
            const int colors[] = {x * 191 / size.width(), y * 191 / size.height(),
                                  (x + y) * 191 / (size.width() + size.height())};
            for (int channel = 0; channel < 3; ++channel) {
                const int value = colors[channel] + int((noise >> (8 * channel + 2)) & 63U);
                pixel[channel] = uchar(value * alpha / 255);
            }
            pixel[3] = uchar(alpha);
        }
    }
    return picture.convertToFormat(format);
}

void fill(unsigned texture, const QImage &picture)
{
    gl()->glBindTexture(GL_TEXTURE_2D, texture);
    gl()->glTexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, picture.width(), picture.height(), GL_RGBA,
                          GL_UNSIGNED_BYTE, picture.constBits());
}

QImage readBound(const QSize &size)
{
    QImage image(size, QImage::Format_RGBA8888);
    gl()->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, image.bits());
    return image;
}

void prepareState(const QSize &size)
{
    gl()->glViewport(0, 0, size.width(), size.height());
    gl()->glDisable(GL_BLEND);
    gl()->glFrontFace(GL_CW);
    gl()->glCullFace(GL_BACK);
}

bool checkGl(const std::string &where)
{
    bool clean = true;
    while (const GLenum error = gl()->glGetError()) {
        clean = false;
        Results::instance().fail(where + ": GL error 0x" +
                                 QByteArray::number(error, 16).toStdString());
    }
    return clean;
}

} // namespace ko::imagefx::benchmarks
