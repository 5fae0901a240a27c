#include "imagefx/render/TableTexture.h"

#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLFunctions>

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
    : m_unit(unit), m_format(format), m_wrap(wrap)
{
    generate();
}

TableTexture::~TableTexture()
{
    if (isOfCurrentGroup()) {
        functions()->glDeleteTextures(1, &m_textureId);
    }
}

void TableTexture::setTexels(const uchar *texels, int width)
{
    const int components = m_format == GL_RGB ? 3 : 1;
    m_texels.assign(texels, texels + qptrdiff(width) * components);
    m_width = width;
    if (isOfCurrentGroup()) {
        bindTexture(m_unit, m_textureId);
        upload();
    } else {
        bind();
    }
}

void TableTexture::bind(int unit)
{
    if (!isOfCurrentGroup()) {
        generate();
        if (m_width > 0) {
            upload();
        }
    }
    bindTexture(unit, m_textureId);
}

bool TableTexture::isOfCurrentGroup() const
{
    const QOpenGLContext *context = QOpenGLContext::currentContext();
    return context != nullptr && m_group != nullptr && context->shareGroup() == m_group;
}

void TableTexture::generate()
{
    m_group = QOpenGLContextGroup::currentContextGroup();
    QOpenGLFunctions *gl = functions();
    gl->glGenTextures(1, &m_textureId);
    bindTexture(m_unit, m_textureId);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GLint(m_wrap));
    gl->glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GLint(m_wrap));
}

void TableTexture::upload() const
{
    functions()->glTexImage2D(GL_TEXTURE_2D, 0, GLint(m_format), m_width, 1, 0, m_format,
                              GL_UNSIGNED_BYTE, m_texels.data());
}

} // namespace ko::imagefx
