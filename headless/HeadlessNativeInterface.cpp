#include "HeadlessNativeInterface.h"

#include "HeadlessContext.h"
#include "HeadlessDisplay.h"

#include <QtGui/QOpenGLContext>

void *HeadlessNativeInterface::nativeResourceForIntegration(const QByteArray &resource)
{
    if (m_display && resource.toLower() == "egldisplay")
        return m_display->handle();
    return nullptr;
}

void *HeadlessNativeInterface::nativeResourceForContext(const QByteArray &resource,
                                                        QOpenGLContext *context)
{
    if (!context || !context->handle())
        return nullptr;
    const auto *handle = static_cast<HeadlessContext *>(context->handle());
    const QByteArray name = resource.toLower();
    if (name == "eglcontext")
        return handle->eglContext();
    if (name == "eglconfig")
        return handle->eglConfig();
    return nativeResourceForIntegration(resource);
}
