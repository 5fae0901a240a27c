#pragma once

#include <QtCore/QSize>
#include <QtCore/QStringList>

// What the user may choose after the platform's name, as in
// `-platform headless:display=surfaceless:size=1280x720`.
struct HeadlessOptions {
    enum class Display {
        Automatic,   // hardware device, surfaceless, any device, default display: first that works
        Device,      // EGL devices only, hardware before software
        Surfaceless, // Mesa's surfaceless platform only
        Default      // EGL_DEFAULT_DISPLAY only
    };

    Display display = Display::Automatic; // display=device|surfaceless|default
    QSize screenSize = QSize(1920, 1080); // size=WIDTHxHEIGHT, in pixels, each 1 to 32768

    // False after an argument that was not understood. OpenGL then stays unavailable, so that
    // nothing is ever drawn with settings other than those that were asked for.
    bool valid = true;

    // Warns about every argument that it does not understand and leaves its default in place.
    static HeadlessOptions parse(const QStringList &arguments);
};
