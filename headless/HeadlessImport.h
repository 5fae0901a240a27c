#pragma once

// Include this header in exactly one source file of a program that links `headless_static`: it
// makes the platform "headless" available without any plug-in file. The program still has to ask
// for it, before it creates its QGuiApplication, with `-platform headless` or
// `qputenv("QT_QPA_PLATFORM", "headless")`.

#include <QtCore/QtPlugin>

Q_IMPORT_PLUGIN(HeadlessIntegrationPlugin)
