#include "benchmarks/BareFramebuffer.h"

#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <initializer_list>

namespace ko::imagefx::benchmarks
{

BareFramebuffer::BareFramebuffer(int width, int height, unsigned internalFormat, unsigned like)
{
    glGenTextures(1, &m_texture);
    for (const GLenum parameter :
         {GL_TEXTURE_MIN_FILTER, GL_TEXTURE_MAG_FILTER, GL_TEXTURE_WRAP_S, GL_TEXTURE_WRAP_T}) {
        GLint value = 0;
        glBindTexture(GL_TEXTURE_2D, like);
        glGetTexParameteriv(GL_TEXTURE_2D, parameter, &value);
        glBindTexture(GL_TEXTURE_2D, m_texture);
        glTexParameteri(GL_TEXTURE_2D, parameter, value);
    }
    glTexImage2D(GL_TEXTURE_2D, 0, GLint(internalFormat), width, height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, nullptr);
    glGenFramebuffers(1, &m_framebuffer);
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
    glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, m_texture, 0);
    glBindFramebuffer(GL_FRAMEBUFFER, 0);
}

BareFramebuffer::~BareFramebuffer()
{
    glDeleteFramebuffers(1, &m_framebuffer);
    glDeleteTextures(1, &m_texture);
}

void BareFramebuffer::bind() const
{
    glBindFramebuffer(GL_FRAMEBUFFER, m_framebuffer);
}

} // namespace ko::imagefx::benchmarks
