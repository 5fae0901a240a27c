#include "imagefx/render/TextureUnits.h"

#include <QtGui/QOpenGLContext>
#include <QtGui/QOpenGLFunctions>

namespace ko::imagefx
{

void activateTextureUnit(int unit)
{
    QOpenGLContext::currentContext()->functions()->glActiveTexture(GLenum(GL_TEXTURE0 + unit));
}

void bindTexture(int unit, GLuint textureId)
{
    activateTextureUnit(unit);
    QOpenGLContext::currentContext()->functions()->glBindTexture(GL_TEXTURE_2D, textureId);
}

} // namespace ko::imagefx
