// The program as a desktop gets it: `cmake --install` into a temporary prefix holds every
// file in its place, and the installed program started from an unrelated folder (the other
// Qt tests run in the source folder) finds its images and shows the world map.
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

namespace {

QTemporaryDir prefix;

QString Path(const QString &relative) { return prefix.path() + "/" + relative; }

TEST(InstallTree, HoldsEveryFileInItsPlace)
{
    const QString doc = "share/doc/lunaquill/";
    const QString metainfo = QString("share/metainfo/%1.metainfo.xml").arg(LUNAQUILL_APP_ID);
    const QStringList files = {"bin/lunaquill", "bin/lunaquill-plan",
                               "share/man/man1/lunaquill-plan.1.gz",
                               "share/applications/lunaquill.desktop", metainfo,
                               doc + "copyright", "share/icons/hicolor/scalable/apps/lunaquill.svg",
                               "share/man/man1/lunaquill.1.gz", doc + "changelog.gz",
                               doc + "examples/DxStations.txt"};
    for (const QString &file : files)
        EXPECT_TRUE(QFileInfo(Path(file)).isFile()) << "missing " << qPrintable(file);
    // Every image of pixmaps/.
    const QStringList images = {"*.png", "*.jpg"};
    EXPECT_EQ(QDir(Path("share/lunaquill/pixmaps")).entryList(images).join(" ").toStdString(),
              QDir(LUNAQUILL_SOURCE_DIR "/pixmaps").entryList(images).join(" ").toStdString());
    // Nothing beside bin/ and share/ (no headers or libraries of the test tools).
    const QStringList top = QDir(prefix.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    EXPECT_EQ(top.join(" ").toStdString(), "bin share");
}

// The pixels of the screen blue as the map's ocean and radio sky are (the window's frames and
// panels barely are), or with `any`, all pixels other than the black of an empty screen.
int Pixels(bool any = false)
{
    const QImage shot = QGuiApplication::primaryScreen()->grabWindow(0).toImage();
    int count = 0;
    for (int y = 0; y < shot.height(); ++y)
        for (int x = 0; x < shot.width(); ++x) {
            const QRgb p = shot.pixel(x, y);
            count += any ? (p & 0xffffff) != 0
                         : qBlue(p) >= 60 && qBlue(p) > qRed(p) + 30 && qBlue(p) > qGreen(p);
        }
    return count;
}

// The installed program, started in an empty folder with an empty home: the map is shown
// within a minute.
TEST(InstallTree, InstalledProgramShowsTheMapFromAnyFolder)
{
    if (QGuiApplication::platformName() != "xcb")
        GTEST_SKIP() << "needs an X display (run under xvfb-run)";
    ASSERT_LT(Pixels(true), 1000) << "the screen should be empty before the program starts";
    QTemporaryDir folder, home;
    QProcess lunaquill;
    lunaquill.setWorkingDirectory(folder.path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.remove("XDG_CONFIG_HOME");
    lunaquill.setProcessEnvironment(environment);
    lunaquill.start(Path("bin/lunaquill"), {});
    lunaquill.waitForStarted();
    // The window is 1640 x 960 with a map of 1600 x 800, most of it ocean and radio sky; a
    // blank map (the images not found) gives under a tenth of that.
    constexpr int kMapShown = 400000;
    QElapsedTimer clock;
    clock.start();
    while (Pixels() < kMapShown && clock.elapsed() < 60000
           && lunaquill.state() == QProcess::Running)
        QThread::msleep(300);
    EXPECT_GT(Pixels(), kMapShown) << "no map";
    EXPECT_EQ(lunaquill.state(), QProcess::Running) << "the program did not start or ended";
    lunaquill.kill();
    lunaquill.waitForFinished();
    EXPECT_TRUE(QDir(folder.path()).isEmpty()) << "the program wrote into its start folder";
}

} // namespace

int main(int argc, char **argv)
{
    // xcb under an X display, else offscreen (set by CMake): screenshots need xcb.
    QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    const QStringList install = {"--install", LUNAQUILL_BINARY_DIR, "--prefix", prefix.path()};
    if (QProcess::execute(CMAKE_COMMAND, install) != 0)
        return 1;
    return RUN_ALL_TESTS();
}
