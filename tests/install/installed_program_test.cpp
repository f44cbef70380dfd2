// The program as a desktop gets it: `cmake --install` into a temporary prefix
// holds every file in its place, the launcher and the AppStream data agree and
// validate, and the installed program started from an unrelated folder finds
// its images and shows the world map (a blank one once the images are gone).
// (The other Qt tests run in the source folder, where pixmaps/ below it comes first.)
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <vector>

namespace {

// Runs a program to its end: its exit code (-1 when it did not finish), its output in *output.
int RunTool(const QString &program, const QStringList &arguments, QString *output = nullptr)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    const bool finished = process.waitForFinished(120000);
    if (output)
        *output = QString::fromLocal8Bit(process.readAll());
    return finished && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

QString ReadAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

class InstallTree : public testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        prefix = std::make_unique<QTemporaryDir>();
        installResult = RunTool(CMAKE_COMMAND, {"--install", LUNAQUILL_BINARY_DIR, "--prefix",
                                            prefix->path()}, &installLog);
    }
    static void TearDownTestSuite() { prefix.reset(); }

    void SetUp() override { ASSERT_EQ(installResult, 0) << qPrintable(installLog); }

    static QString Path(const QString &relative) { return prefix->path() + "/" + relative; }

    static std::unique_ptr<QTemporaryDir> prefix;
    static int installResult;
    static QString installLog;
};

std::unique_ptr<QTemporaryDir> InstallTree::prefix;
int InstallTree::installResult = -1;
QString InstallTree::installLog;

const QString kMetainfo = QString("share/metainfo/%1.metainfo.xml").arg(LUNAQUILL_APP_ID);

TEST_F(InstallTree, HoldsEveryFileInItsPlace)
{
    QStringList expected = {"bin/lunaquill", "share/applications/lunaquill.desktop", kMetainfo,
                            "share/icons/hicolor/scalable/apps/lunaquill.svg",
                            "share/man/man1/lunaquill.1.gz", "share/doc/lunaquill/copyright",
                            "share/doc/lunaquill/changelog.gz",
                            "share/doc/lunaquill/examples/DxStations.txt",
                            "share/doc/lunaquill/examples/README.md"};
    // Every image the map, the icons and the star charts load.
    for (const char *image : {"menu-icon.png", "dish-icon.png", "moon-icon.png", "sun-icon.png",
                              "mercury-icon.png", "venus-icon.png", "mars-icon.png",
                              "jupiter-icon.png", "saturn-icon.png", "uranus-icon.png",
                              "neptune-icon.png", "pluto-icon.png", "nasa-topo_1600.jpg",
                              "skynoise_1600.png", "dial.png"})
        expected << QString("share/lunaquill/pixmaps/") + image;
    for (const QString &file : expected)
        EXPECT_TRUE(QFileInfo(Path(file)).isFile()) << "missing " << qPrintable(file);
    EXPECT_TRUE(QFileInfo(Path("bin/lunaquill")).isExecutable());

    // Each PNG of the icon theme has the size its folder names.
    for (int size : {16, 24, 32, 48, 64, 128, 256}) {
        const QString icon = Path(QString("share/icons/hicolor/%1x%1/apps/lunaquill.png").arg(size));
        EXPECT_EQ(QImage(icon).size(), QSize(size, size)) << qPrintable(icon);
    }
    // Nothing beside bin/ and share/ (no headers or libraries of the test tools).
    EXPECT_EQ(QDir(prefix->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
              QStringList({"bin", "share"}));
}

TEST_F(InstallTree, LauncherAndAppStreamDataAgreeAndValidate)
{
    // The menu entry and the software centre start the installed program by its name.
    const QString desktop = ReadAll(Path("share/applications/lunaquill.desktop"));
    const QString metainfo = ReadAll(Path(kMetainfo));
    for (const QString &tag : {QString("\nExec=lunaquill\n"), QString("\nIcon=lunaquill\n"),
                               QString("<id>%1</id>").arg(LUNAQUILL_APP_ID),
                               QString(">lunaquill.desktop</launchable>"),
                               QString("<binary>lunaquill</binary>"),
                               QString("<release version=\"%1\"").arg(LUNAQUILL_VERSION)})
        EXPECT_TRUE(desktop.contains(tag) || metainfo.contains(tag)) << qPrintable(tag);

    const struct { const char *tool; QStringList arguments; } validators[] = {
        {"desktop-file-validate", {Path("share/applications/lunaquill.desktop")}},
        {"appstreamcli", {"validate", "--no-net", Path(kMetainfo)}},
    };
    for (const auto &validator : validators) {
        const QString tool = QStandardPaths::findExecutable(validator.tool);
        if (tool.isEmpty()) {
            std::printf("[  NOTE    ] %s is not installed: not run\n", validator.tool);
            continue;
        }
        QString output;
        EXPECT_EQ(RunTool(tool, validator.arguments, &output), 0) << qPrintable(output);
    }
}

// A pixel of the map as it shows: the ocean and the radio sky are blue. The window's frames
// and the panels (black, grey, dark green and red, a few dark blue buttons) barely are.
bool MapBlue(QRgb pixel)
{
    return qBlue(pixel) >= 60 && qBlue(pixel) > qRed(pixel) + 30 && qBlue(pixel) > qGreen(pixel);
}

struct ScreenCount
{
    int blue = 0;       // MapBlue pixels
    int drawn = 0;  // pixels other than the black of the empty screen
};

ScreenCount CountScreen()
{
    const QImage shot = QGuiApplication::primaryScreen()->grabWindow(0).toImage().convertToFormat(
        QImage::Format_RGB32);
    ScreenCount count;
    for (int y = 0; y < shot.height(); ++y) {
        const QRgb *row = reinterpret_cast<const QRgb *>(shot.constScanLine(y));
        for (int x = 0; x < shot.width(); ++x) {
            count.blue += MapBlue(row[x]);
            count.drawn += (row[x] & 0xffffff) != 0;
        }
    }
    return count;
}

// The installed program, started in an empty folder with an empty home: the screen once
// its window has been drawn and has settled (or after a minute).
ScreenCount RunInstalled(const QString &program)
{
    QTemporaryDir folder, home;
    QProcess lunaquill;
    lunaquill.setWorkingDirectory(folder.path());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("QT_QPA_PLATFORM", "xcb");
    lunaquill.setProcessEnvironment(environment);
    lunaquill.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    lunaquill.start(program, {});
    EXPECT_TRUE(lunaquill.waitForStarted()) << qPrintable(lunaquill.errorString());

    ScreenCount count;
    int settled = 0, lastDrawn = -1;
    QElapsedTimer clock;
    clock.start();
    while (settled < 3 && clock.elapsed() < 60000 && lunaquill.state() == QProcess::Running) {
        QThread::msleep(300);
        count = CountScreen();
        settled = count.drawn > 1000000 && count.drawn == lastDrawn ? settled + 1 : 0;
        lastDrawn = count.drawn;
    }
    EXPECT_EQ(lunaquill.state(), QProcess::Running) << "the program ended by itself";
    lunaquill.kill();
    lunaquill.waitForFinished();
    EXPECT_GT(count.drawn, 1000000) << "the window did not open";
    EXPECT_TRUE(QDir(folder.path()).isEmpty()) << "the program wrote into its start folder";
    return count;
}

TEST_F(InstallTree, InstalledProgramShowsTheMapFromAnyFolder)
{
    if (QGuiApplication::platformName() != "xcb")
        GTEST_SKIP() << "needs an X display (run under xvfb-run)";
    const QString program = Path("bin/lunaquill");
    ASSERT_LT(CountScreen().drawn, 1000) << "the screen should be empty before the program starts";
    // The window is 1640 x 960 with a map of 1600 x 800, most of it ocean and radio sky.
    constexpr int kMapShown = 400000;
    const int withImages = RunInstalled(program).blue;
    EXPECT_GT(withImages, kMapShown) << "no map: " << withImages << " blue pixels";

    // Without its images the window still opens, with a blank map.
    ASSERT_TRUE(QDir().rename(Path("share/lunaquill/pixmaps"), Path("share/lunaquill/hidden")));
    const int blank = RunInstalled(program).blue;
    QDir().rename(Path("share/lunaquill/hidden"), Path("share/lunaquill/pixmaps"));
    EXPECT_LT(blank, kMapShown / 10) << "blank map expected";
}

} // namespace

int main(int argc, char **argv)
{
    // Screenshots of the X display need the xcb platform, whatever the suite's default.
    const bool display = !qEnvironmentVariableIsEmpty("DISPLAY");
    static char platform[] = "-platform", xcb[] = "xcb", offscreen[] = "offscreen";
    std::vector<char *> arguments(argv, argv + argc);
    arguments.push_back(platform);
    arguments.push_back(display ? xcb : offscreen);
    int count = int(arguments.size());
    arguments.push_back(nullptr);
    QGuiApplication application(count, arguments.data());
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
