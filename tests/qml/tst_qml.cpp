#include "core/RegisterQml.h"
#include "headless/HeadlessImport.h"
#include "imagefx/RegisterQml.h"
#include "imagefx/model/ImageEffect.h"
#include "tests/qml/Inspector.h"

#include <QtQml/qqml.h>
#include <QtQuickTest/quicktest.h>

using namespace ko::imagefx;
using namespace ko::imagefx::test;

// What an application does before it loads QML that uses the library.
class Setup : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    void applicationAvailable()
    {
        ImageEffect::initialize();
        korvelcore_register_qml("Korvel.Core");
        imagefx_register_qml("Korvel.ImageFx");
        qmlRegisterSingletonType<Inspector>(
            "Korvel.ImageFx.Tests", 1, 0, "Inspector",
            [](QQmlEngine *, QJSEngine *) -> QObject * { return new Inspector; });
    }
};

int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "headless");
    }
    Setup setup;
    QTEST_SET_MAIN_SOURCE_PATH
    return quick_test_main_with_setup(argc, argv, "qml", QUICK_TEST_SOURCE_DIR, &setup);
}

#include "tst_qml.moc"
