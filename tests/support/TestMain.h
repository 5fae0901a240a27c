#pragma once

#include "headless/HeadlessImport.h"

#include <QtGui/QGuiApplication>
#include <QtTest/QTest>

// The main function of a test program: it runs on the headless platform unless -platform on its
// command line or QT_QPA_PLATFORM says otherwise.
#define KORVEL_TEST_MAIN(TestClass)                                                                \
    int main(int argc, char **argv)                                                                \
    {                                                                                              \
        if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {                                       \
            qputenv("QT_QPA_PLATFORM", "headless");                                                \
        }                                                                                          \
        const QGuiApplication application(argc, argv);                                             \
        TestClass test;                                                                            \
        QTEST_SET_MAIN_SOURCE_PATH                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
