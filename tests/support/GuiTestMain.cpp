// main() of the Qt tests: an offscreen QApplication in a temporary HOME, so
// no test reads or writes a real user's settings.
#include "GuiTestSupport.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {
QString home; // fixed at the start, whatever HOME says later
}

namespace lunaquill::test {

QString TestHome() { return home; }

QString SettingsFolder()
{
    QDir().mkpath(TestHome() + "/.config/Lunaquill/");
    return TestHome() + "/.config/Lunaquill/";
}

void ClearTestHome()
{
    QDir(TestHome()).removeRecursively();
    QDir().mkpath(TestHome());
}

} // namespace lunaquill::test

int main(int argc, char **argv)
{
    if (!getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);
    QTemporaryDir folder;
    home = folder.path();
    setenv("HOME", home.toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // the settings folder is then <home>/.config/Lunaquill/
    if (const char *source = getenv("LUNAQUILL_SOURCE_DIR"))
        QDir::setCurrent(source);
    QApplication app(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
