#include "examples/contact-sheet/OffscreenGl.h"

#include "examples/contact-sheet/Error.h"

namespace ko::contactsheet
{

OffscreenGl::OffscreenGl()
{
    m_surface.create();
    if (!m_context.create() || !m_context.makeCurrent(&m_surface)) {
        throw Error{QStringLiteral("OpenGL is not available; QT_LOGGING_RULES=headless.*=true "
                                   "tells more")};
    }
}

} // namespace ko::contactsheet
