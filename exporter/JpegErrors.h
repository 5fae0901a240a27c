#pragma once

#include <QtCore/QString>

#include <csetjmp>
#include <cstdio> // in front of jpeglib.h, which needs it

#include <jpeglib.h>

#include <jerror.h>

namespace ko::exporter
{

// libjpeg ends the program on an error unless its handler does not return. A
// function that calls libjpeg makes its objects first, then calls
// setjmp(errors.jump).
struct JpegErrors {
    JpegErrors()
    {
        jpeg_std_error(&manager);
        manager.error_exit = [](j_common_ptr info) {
            JpegErrors *self = of(info);
            self->message = textOf(info);
            std::longjmp(self->jump, 1);
        };
        manager.emit_message = [](j_common_ptr info, int level) {
            if (level < 0) {
                of(info)->noteWarning(info);
            }
        };
        manager.output_message = [](j_common_ptr) {};
    }

    static JpegErrors *of(j_common_ptr info) { return reinterpret_cast<JpegErrors *>(info->err); }

    static QString textOf(j_common_ptr info)
    {
        char text[JMSG_LENGTH_MAX];
        info->err->format_message(info, text);
        return QString::fromLatin1(text);
    }

    void noteWarning(j_common_ptr info)
    {
        const int code = info->err->msg_code;
        endsEarly = endsEarly || code == JWRN_JPEG_EOF || code == JWRN_HIT_MARKER;
        isDamaged = isDamaged || code == JWRN_HUFF_BAD_CODE || code == JWRN_ARITH_BAD_CODE;
        if (warning.isEmpty()) {
            warning = textOf(info);
        }
    }

    jpeg_error_mgr manager; // first, so that of() finds the object
    std::jmp_buf jump;
    QString message;
    QString warning; // the first one
    bool endsEarly = false;
    bool isDamaged = false;
};

} // namespace ko::exporter
