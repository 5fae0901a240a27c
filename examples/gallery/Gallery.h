#pragma once

class QQmlApplicationEngine;

// Shows the gallery's window. The QML modules are looked for beside the program first, where the
// build puts them, then where Qt looks by itself.
void loadGallery(QQmlApplicationEngine *engine);
