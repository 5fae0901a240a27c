#pragma once

#include <QtCore/QPointer>
#include <QtGui/QOpenGLContext>
#include <QtGui/qopengl.h>

#include <vector>

namespace ko::imagefx
{

// A texture of one row, read as a table on a unit of its own with nearest filtering. It keeps its
// texels: where the context that is current does not know the texture, since the window that showed
// it has gone, it is made again. Every function needs a current GL context, the destructor apart,
// which leaves the texture to its context when that is not current.
// One render thread at a time.
class TableTexture
{
public:
    // `format` is the layout of the texels and of the texture, GL_ALPHA say, one byte a component.
    TableTexture(int unit, GLenum format, GLenum wrap = GL_CLAMP_TO_EDGE);
    ~TableTexture();

    // Uploads `width` texels and keeps a copy.
    void setTexels(const uchar *texels, int width);
    // Binds the texture on its unit, or on another, which stays active.
    void bind() { bind(m_unit); }
    void bind(int unit);

private:
    Q_DISABLE_COPY(TableTexture)

    bool isOfCurrentGroup() const;
    void generate();
    void upload() const;

    const int m_unit;
    const GLenum m_format;
    const GLenum m_wrap;
    GLuint m_textureId = 0;
    QPointer<QOpenGLContextGroup> m_group;
    std::vector<uchar> m_texels;
    int m_width = 0;
};

} // namespace ko::imagefx
