#include "imagefx/render/TableTexture.h"

#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFunctions>

#include <algorithm>

namespace ko::imagefx
{

namespace
{

QOpenGLFunctions *functions()
{
    return QOpenGLContext::currentContext()->functions();
}

} // namespace

TableTexture::TableTexture(int unit, GLenum format, GLenum wrap)
    : m_unit(unit), m_format(format), m_wrap(wrap), m_copies{generate()}
{
}

TableTexture::~TableTexture()
{
    const QOpenGLContext *context = QOpenGLContext::currentContext();
    for (const Copy &copy : m_copies) {
        if (context != nullptr && copy.group == context->shareGroup()) {
            functions()->glDeleteTextures(1, &copy.textureId);
        }
    }
}

void TableTexture::setTexels(const uchar *texels, int width)
{
    const int components = m_format == GL_RGB ? 3 : 1;
    m_texels.assign(texels, texels + qptrdiff(width) * components);
    m_width = width;
    for (Copy &copy : m_copies) {
        copy.isFilled = false;
    }
    bind();
}

void TableTexture::bind(int unit)
{
    Copy &copy = copyOfCurrentGroup();
    bindTexture(unit, copy.textureId);
    if (!copy.isFilled && m_width > 0) {
        fill(&copy);
    }
}

TableTexture::Copy &TableTexture::copyOfCurrentGroup()
{
    m_copies.erase(std::remove_if(m_copies.begin(), m_copies.end(),
                                  [](const Copy &copy) { return copy.group.isNull(); }),
                   m_copies.end());
    const auto copy = std::find_if(m_copies.begin(), m_copies.end(),
                                   [group = QOpenGLContextGroup::currentContextGroup()](
                                       const Copy &other) { return other.group == group; });
    return copy != m_copies.end() ? *copy : m_copies.emplace_back(generate());
}

TableTexture::Copy TableTexture::generate() const
{
    Copy copy{QOpenGLContextGroup::currentContextGroup(), 0, false};
    QOpenGLFunctions *gl = functions();
    gl->glGenTextures(1, &copy.textureId);
    bindTexture(m_unit, copy.textureId);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GLint(m_wrap));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GLint(m_wrap));
    return copy;
}

// The copy is bound.
void TableTexture::fill(Copy *copy) const
{
    functions()->glTexImage2D(GL_TEXTURE_2D, 0, GLint(m_format), m_width, 1, 0, m_format,
                              GL_UNSIGNED_BYTE, m_texels.data());
    copy->isFilled = true;
}

} // namespace ko::imagefx
