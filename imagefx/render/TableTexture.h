#pragma once

#include <QtCore/QPointer>
#include <QtGui/QOpenGLContext>
#include <QtGui/qopengl.h>

#include <vector>

namespace ko::imagefx
{

// A texture of one row, read as a table on a unit of its own with nearest filtering. It keeps its
// texels, and makes a copy of the texture for every group of contexts that asks for it: another
// window's, or the next one's after the first has gone. Every function needs a current GL context,
// the destructor apart, which leaves to their contexts the copies that the current one does not
// know. One render thread at a time.
class TableTexture
{
public:
    // `format` is the layout of the texels and of the texture, GL_ALPHA say, one byte a component.
    TableTexture(int unit, GLenum format, GLenum wrap = GL_CLAMP_TO_EDGE);
    ~TableTexture();

    // Uploads `width` texels and keeps them.
    void setTexels(const uchar *texels, int width);
    // Binds the texture on its unit, or on another, which stays active.
    void bind() { bind(m_unit); }
    void bind(int unit);

private:
    Q_DISABLE_COPY(TableTexture)

    struct Copy {
        QPointer<QOpenGLContextGroup> group;
        GLuint textureId;
        bool isFilled;
    };

    Copy &copyOfCurrentGroup();
    Copy generate() const;
    void fill(Copy *copy) const;

    const int m_unit;
    const GLenum m_format;
    const GLenum m_wrap;
    std::vector<Copy> m_copies;
    std::vector<uchar> m_texels;
    int m_width = 0;
};

} // namespace ko::imagefx
