// The settings file: defaults of a first run, what a save writes, round trips,
// damaged files, keys of others kept, and saves that cannot write.
#include "app/Settings.h"

#include "GuiTestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QStringList>
#include <gtest/gtest.h>

#include <csignal>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

using namespace lunaquill;

namespace {

QByteArray ReadBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void WriteBytes(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

// "[GROUP]" and "Key=value" lines read by hand, so the check does not rely on
// the ini reader the program uses. Keys come back as "GROUP/Key".
QMap<QString, QString> IniEntries(const QString &path)
{
    QMap<QString, QString> entries;
    QString group;
    for (const QByteArray &raw : ReadBytes(path).split('\n')) {
        QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith('[') && line.endsWith(']'))
            group = line.mid(1, line.size() - 2);
        else if (int equals = line.indexOf('='); equals > 0)
            entries[group + "/" + line.left(equals).trimmed()] = line.mid(equals + 1).trimmed();
    }
    return entries;
}

// Every test works on its own file, so Qt's cache of parsed files never
// carries one test's contents into another.
std::string FileNameOfThisTest()
{
    const testing::TestInfo *info = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(info->test_suite_name()) + "_" + info->name() + ".ini";
    for (char &c : name)
        if (c == '/')
            c = '_';
    return name;
}

void ExpectDefaultHome(const HomeData &home)
{
    EXPECT_STREQ(home.callsign, "");
    EXPECT_STREQ(home.grid, "JJ00aa");
    EXPECT_STREQ(home.location, "Ocean");
    EXPECT_EQ(home.latitude, 0.0);
    EXPECT_EQ(home.longitude, 0.0);
    EXPECT_EQ(home.frequency, 1296.0);
    EXPECT_EQ(home.trackingSource, 0);
}

void ExpectDefaultOverlays(const OverlaySettings &o)
{
    // Everything on except sun shading, constellations and the star-chart view.
    for (bool on : {o.SunOverlay, o.MoonOverlay, o.MercuryOverlay, o.VenusOverlay, o.MarsOverlay,
                    o.SaturnOverlay, o.JupiterOverlay, o.NeptuneOverlay, o.UranusOverlay,
                    o.PlutoOverlay, o.MoonShadingOverlay, o.SkyNoiseOverlay, o.StarsOverlay,
                    o.LatitudeGridlines, o.LongitudeGridlines, o.FavoriteStationsOverlay})
        EXPECT_TRUE(on);
    EXPECT_FALSE(o.SunShadingOverlay);
    EXPECT_FALSE(o.ConstellationsOverlay);
    EXPECT_FALSE(o.StarChartOverlay);
    EXPECT_EQ(o.StarsMagnitude, 6);
    EXPECT_EQ(o.MapOffset, 0);
}

// Records filled with junk, so a load that forgets a member shows.
HomeData DirtyHome()
{
    HomeData home;
    memset(&home, 0x5a, sizeof home);
    return home;
}

OverlaySettings DirtyOverlays()
{
    OverlaySettings overlays;
    memset(&overlays, 0x01, sizeof overlays);
    overlays.StarsMagnitude = 99;
    overlays.MapOffset = 17;
    return overlays;
}

} // namespace

TEST(Settings, FirstRunGivesDefaultsAndSaveWritesAllHomeKeys)
{
    lunaquill::test::ClearTestHome();
    HomeData home = DirtyHome();
    OverlaySettings overlays = DirtyOverlays();
    EXPECT_EQ(LoadHomeData(kSettingsFileName, home), 0);
    EXPECT_EQ(LoadOverlays(kSettingsFileName, overlays), 0);
    ExpectDefaultHome(home);
    ExpectDefaultOverlays(overlays);
    EXPECT_FALSE(QFile::exists(SettingsPath(kSettingsFileName))) << "loading wrote a file";

    // The folder does not exist yet: the save makes it.
    ASSERT_FALSE(QDir(lunaquill::test::TestHome() + "/AppData").exists());
    EXPECT_EQ(SaveHomeData(kSettingsFileName, home), 0);
    QMap<QString, QString> ini = IniEntries(SettingsPath(kSettingsFileName));
    EXPECT_EQ(ini.size(), 7);
    EXPECT_EQ(ini.value("HOME_DATA/Callsign", "missing"), "");
    EXPECT_EQ(ini.value("HOME_DATA/Grid"), "JJ00aa");
    EXPECT_EQ(ini.value("HOME_DATA/Location"), "Ocean");
    EXPECT_EQ(ini.value("HOME_DATA/TrackingSource"), "0");
    EXPECT_EQ(ini.value("HOME_DATA/Latitude"), "0");
    EXPECT_EQ(ini.value("HOME_DATA/Longitude"), "0");
    EXPECT_EQ(ini.value("HOME_DATA/Frequency").toDouble(), 1296.0);
}

TEST(Settings, EveryHomeKeyRoundTrips)
{
    const std::string file = FileNameOfThisTest();
    HomeData saved {};
    CopyField(saved.callsign, "VK2/W1ABCD");  // 10 characters
    CopyField(saved.grid, "QF56od");
    CopyField(saved.location, "Sydney, NSW");  // a comma must not split the text
    saved.latitude = -33.8688;
    saved.longitude = -151.2093;
    saved.frequency = 10368.1;
    saved.trackingSource = 23;
    SaveHomeData(file.c_str(), saved);
    // Each value under its own key (the damaged-file rows check the reverse).
    QMap<QString, QString> ini = IniEntries(SettingsPath(file.c_str()));
    EXPECT_EQ(ini.value("HOME_DATA/Latitude"), "-33.8688");
    EXPECT_EQ(ini.value("HOME_DATA/Longitude"), "-151.2093");
    EXPECT_EQ(ini.value("HOME_DATA/Frequency"), "10368.1");
    EXPECT_EQ(ini.value("HOME_DATA/TrackingSource"), "23");
    EXPECT_EQ(ini.value("HOME_DATA/Grid"), "QF56od");

    HomeData loaded = DirtyHome();
    LoadHomeData(file.c_str(), loaded);
    EXPECT_STREQ(loaded.callsign, "VK2/W1ABCD");
    EXPECT_STREQ(loaded.grid, "QF56od");
    EXPECT_STREQ(loaded.location, "Sydney, NSW");
    EXPECT_EQ(loaded.latitude, -33.8688);
    EXPECT_EQ(loaded.longitude, -151.2093);
    EXPECT_EQ(loaded.frequency, 10368.1);
    EXPECT_EQ(loaded.trackingSource, 23);
}

TEST(Settings, EachOverlayKeyIsItsOwnMember)
{
    // Key names and defaults as the file documents them; each switch is set
    // against its default on its own, in a hand-written file and in a save,
    // so a swapped pair (Saturn/Jupiter, Neptune/Uranus ...) cannot pass.
    const struct {
        const char *key;
        bool OverlaySettings::*member;
        bool byDefault;
    } switches[] = {
        {"SunOverlay", &OverlaySettings::SunOverlay, true},
        {"MoonOverlay", &OverlaySettings::MoonOverlay, true},
        {"MercuryOverlay", &OverlaySettings::MercuryOverlay, true},
        {"VenusOverlay", &OverlaySettings::VenusOverlay, true},
        {"MarsOverlay", &OverlaySettings::MarsOverlay, true},
        {"SaturnOverlay", &OverlaySettings::SaturnOverlay, true},
        {"JupiterOverlay", &OverlaySettings::JupiterOverlay, true},
        {"NeptuneOverlay", &OverlaySettings::NeptuneOverlay, true},
        {"UranusOverlay", &OverlaySettings::UranusOverlay, true},
        {"PlutoOverlay", &OverlaySettings::PlutoOverlay, true},
        {"SunShadingOverlay", &OverlaySettings::SunShadingOverlay, false},
        {"MoonShadingOverlay", &OverlaySettings::MoonShadingOverlay, true},
        {"SkyNoiseOverlay", &OverlaySettings::SkyNoiseOverlay, true},
        {"StarsOverlay", &OverlaySettings::StarsOverlay, true},
        {"ConstellationsOverlay", &OverlaySettings::ConstellationsOverlay, false},
        {"LatitudeGridlines", &OverlaySettings::LatitudeGridlines, true},
        {"LongitudeGridlines", &OverlaySettings::LongitudeGridlines, true},
        {"StarChartOverlay", &OverlaySettings::StarChartOverlay, false},
        {"FavoriteStationsOverlay", &OverlaySettings::FavoriteStationsOverlay, true},
    };
    const std::string file = FileNameOfThisTest();
    const QString path = SettingsPath(file.c_str());
    for (const auto &flipped : switches) {
        const char *text = flipped.byDefault ? "false" : "true";
        WriteBytes(path, QByteArray("[OVERLAYS]\n") + flipped.key + "=" + text +
                             "\nStarsMagnitude=11\nMapOffset=13\n");
        OverlaySettings loaded = DirtyOverlays();
        LoadOverlays(file.c_str(), loaded);
        for (const auto &other : switches)
            EXPECT_EQ(loaded.*other.member, other.byDefault != (&other == &flipped))
                << "file sets " << flipped.key << ", member of " << other.key;
        EXPECT_EQ(loaded.StarsMagnitude, 11);
        EXPECT_EQ(loaded.MapOffset, 13);

        QFile::remove(path);
        SaveOverlays(file.c_str(), loaded);
        QMap<QString, QString> ini = IniEntries(path);
        EXPECT_EQ(ini.size(), 21);
        for (const auto &other : switches)
            EXPECT_EQ(ini.value(QString("OVERLAYS/") + other.key),
                      (other.byDefault != (&other == &flipped)) ? "true" : "false")
                << "record flips " << flipped.key << ", key " << other.key;
        EXPECT_EQ(ini.value("OVERLAYS/StarsMagnitude"), "11");
        EXPECT_EQ(ini.value("OVERLAYS/MapOffset"), "13");
    }
}

// Damaged files: each loads without harm, the fixed fields stay terminated
// within their size, and values that do not convert read as 0.
struct DamagedFile {
    const char *name;
    QByteArray contents;
    std::string callsign;
    std::string grid;
    std::string location;
    double latitude;
    double longitude;
    double frequency;
    int32_t trackingSource;
};

void PrintTo(const DamagedFile &row, std::ostream *out)
{
    *out << row.name;
}

class DamagedSettings : public testing::TestWithParam<DamagedFile> {};

TEST_P(DamagedSettings, LoadsBoundedValues)
{
    const DamagedFile &row = GetParam();
    const std::string file = FileNameOfThisTest();
    WriteBytes(SettingsPath(file.c_str()), row.contents);

    HomeData home = DirtyHome();
    LoadHomeData(file.c_str(), home);
    EXPECT_EQ(std::string(home.callsign), row.callsign);
    EXPECT_EQ(std::string(home.grid), row.grid);
    EXPECT_EQ(std::string(home.location), row.location);
    EXPECT_EQ(home.latitude, row.latitude);
    EXPECT_EQ(home.longitude, row.longitude);
    EXPECT_EQ(home.frequency, row.frequency);
    EXPECT_EQ(home.trackingSource, row.trackingSource);

    OverlaySettings overlays = DirtyOverlays();
    LoadOverlays(file.c_str(), overlays);
    EXPECT_GE(overlays.MapOffset, 0);
    EXPECT_LT(overlays.MapOffset, 24);

    // Whatever the file held, a save over it takes.
    CopyField(home.callsign, "N0SAVE");
    SaveHomeData(file.c_str(), home);
    HomeData saved = DirtyHome();
    LoadHomeData(file.c_str(), saved);
    EXPECT_STREQ(saved.callsign, "N0SAVE");
    EXPECT_EQ(std::string(saved.location), row.location);
}

const QByteArray kOverlong =
    "[HOME_DATA]\n"
    "Callsign=ABCDEFGHIJKLMNOPQRSTUVWXYZ\n"
    "Grid=JO62QM12345678\n"
    "Location=" + QByteArray(300, 'x') + "\n"
    "Latitude=52.5\nLongitude=13.4\nFrequency=144.1\nTrackingSource=1\n";

INSTANTIATE_TEST_SUITE_P(
    Files, DamagedSettings,
    testing::Values(
        DamagedFile{"Empty", "", "", "JJ00aa", "Ocean", 0.0, 0.0, 1296.0, 0},
        DamagedFile{"Binary", QByteArray("\x00\xff\x13[\x01=\x02\n\x80\x81", 10),
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 1296.0, 0},
        DamagedFile{"OtherGroupsOnly", "[general]\nCallsign=K1ABC\n[OVERLAYS]\nGrid=FN42\n",
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 1296.0, 0},
        // 11, 7 and 63 characters are kept, the rest is cut off.
        DamagedFile{"Overlong", kOverlong, "ABCDEFGHIJK", "JO62QM1", std::string(63, 'x'),
                    52.5, 13.4, 144.1, 1},
        // Present but not numbers: 0, not the defaults.
        DamagedFile{"NotNumbers",
                    "[HOME_DATA]\nLatitude=abc\nLongitude=12,5\nFrequency=\n"
                    "TrackingSource=moon\n",
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 0.0, 0},
        DamagedFile{"NotFinite",
                    "[HOME_DATA]\nLatitude=nan\nLongitude=-inf\nFrequency=1e999\n",
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 0.0, 0},
        // Typed values the ini reader knows, in places that want text.
        DamagedFile{"WrongTypes",
                    "[HOME_DATA]\nCallsign=@Rect(1 2 3 4)\nGrid=@ByteArray(FN42ab\\0zz)\n"
                    "Location=@Invalid()\nLatitude=@Size(3 4)\nTrackingSource=@Point(1 2)\n",
                    "", "FN42ab", "", 0.0, 0.0, 1296.0, 0},
        // An index outside the 24 sources, and offsets outside a day.
        DamagedFile{"OutOfRange",
                    "[HOME_DATA]\nTrackingSource=24\n[OVERLAYS]\nMapOffset=24\n",
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 1296.0, 0},
        DamagedFile{"Negative", "[HOME_DATA]\nTrackingSource=-1\n[OVERLAYS]\nMapOffset=-5\n",
                    "", "JJ00aa", "Ocean", 0.0, 0.0, 1296.0, 0},
        DamagedFile{"UnquotedComma", "[HOME_DATA]\nLocation=Sydney, NSW\n",
                    "", "JJ00aa", "Sydney, NSW", 0.0, 0.0, 1296.0, 0}),
    [](const testing::TestParamInfo<DamagedFile> &info) { return std::string(info.param.name); });

TEST(Settings, UnreadableFileGivesDefaults)
{
    // A folder where the file should be cannot be read (whoever runs the test).
    const std::string file = FileNameOfThisTest();
    ASSERT_TRUE(QDir().mkpath(SettingsPath(file.c_str())));
    HomeData home = DirtyHome();
    OverlaySettings overlays = DirtyOverlays();
    LoadHomeData(file.c_str(), home);
    LoadOverlays(file.c_str(), overlays);
    ExpectDefaultHome(home);
    ExpectDefaultOverlays(overlays);
}

TEST(Settings, SavingOneGroupKeepsEverythingElse)
{
    const std::string file = FileNameOfThisTest();
    const QString path = SettingsPath(file.c_str());
    WriteBytes(path, "[HOME_DATA]\nCallsign=OLD\nAntennaNotes=4x 12 el\n"
                     "[OVERLAYS]\nSunOverlay=false\nMapOffset=5\nBrightness=7\n"
                     "[OtherProgram]\nWindow=800x600\n");

    HomeData home {};
    CopyField(home.callsign, "DL1NEW");
    SaveHomeData(file.c_str(), home);
    QMap<QString, QString> ini = IniEntries(path);
    EXPECT_EQ(ini.value("HOME_DATA/Callsign"), "DL1NEW");
    EXPECT_EQ(ini.value("HOME_DATA/AntennaNotes"), "4x 12 el");
    EXPECT_EQ(ini.value("OVERLAYS/SunOverlay"), "false");
    EXPECT_EQ(ini.value("OVERLAYS/MapOffset"), "5");
    EXPECT_EQ(ini.value("OVERLAYS/Brightness"), "7");
    EXPECT_EQ(ini.value("OtherProgram/Window"), "800x600");

    OverlaySettings overlays {};
    overlays.MapOffset = 9;
    SaveOverlays(file.c_str(), overlays);
    ini = IniEntries(path);
    EXPECT_EQ(ini.value("OVERLAYS/MapOffset"), "9");
    EXPECT_EQ(ini.value("OVERLAYS/Brightness"), "7");
    EXPECT_EQ(ini.value("HOME_DATA/Callsign"), "DL1NEW");
    EXPECT_EQ(ini.value("HOME_DATA/AntennaNotes"), "4x 12 el");
    EXPECT_EQ(ini.value("OtherProgram/Window"), "800x600");
}

// Saves that cannot reach the disk: what is there must stay as it was, with
// no stray temporary or lock file beside it.
enum class Blocker { ReadOnlyFile, ReadOnlyFolder, FolderInPlaceOfFile, FileSizeLimit };

class UnwritableSave : public testing::TestWithParam<Blocker> {};

namespace {

// False for root and other users whom permission bits do not stop.
bool PermissionsStopWrites(const QString &folder)
{
    QFile probe(folder + "probe");
    if (!probe.open(QIODevice::WriteOnly))
        return true;
    probe.remove();
    return false;
}

// Lowers the largest file this process may write (root included) for its
// lifetime; a write beyond it fails as on a full disk.
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &old);
        oldHandler = signal(SIGXFSZ, SIG_IGN);
        struct rlimit lowered = old;
        lowered.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &lowered);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &old);
        signal(SIGXFSZ, oldHandler);
    }

private:
    struct rlimit old {};
    void (*oldHandler)(int) = SIG_DFL;
};

} // namespace

TEST_P(UnwritableSave, LosesNothingOnDisk)
{
    const std::string file = FileNameOfThisTest();
    const QString folder = SettingsFolder() + QString::fromStdString(file) + ".d/";
    const std::string fileName = file + ".d/Lunaquill.ini";
    const QString path = SettingsPath(fileName.c_str());
    const QByteArray original = "[HOME_DATA]\nCallsign=KEEPME\nGrid=AA00aa\n"
                                "[OVERLAYS]\nSunOverlay=false\n";
    // The file, or in its place a folder holding it.
    const QString kept = GetParam() == Blocker::FolderInPlaceOfFile ? path + "/inside.ini" : path;
    WriteBytes(kept, original);
    const QStringList before = QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries);
    const QByteArray folderName = QFile::encodeName(folder);
    const QByteArray pathName = QFile::encodeName(path);

    HomeData home {};
    CopyField(home.callsign, "LOST");
    CopyField(home.location, std::string(63, 'y').c_str());  // the group is then near 190 bytes
    OverlaySettings overlays {};
    auto save = [&] {
        EXPECT_EQ(SaveHomeData(fileName.c_str(), home), 0);
        EXPECT_EQ(SaveOverlays(fileName.c_str(), overlays), 0);
    };

    switch (GetParam()) {
    case Blocker::ReadOnlyFile:
        chmod(pathName.constData(), 0444);
        if (QFile(path).open(QIODevice::ReadWrite)) {
            chmod(pathName.constData(), 0644);
            GTEST_SKIP() << "permission bits do not stop this user writing";
        }
        save();
        chmod(pathName.constData(), 0644);
        break;
    case Blocker::ReadOnlyFolder:
        chmod(folderName.constData(), 0555);
        if (!PermissionsStopWrites(folder)) {
            chmod(folderName.constData(), 0755);
            GTEST_SKIP() << "permission bits do not stop this user writing";
        }
        save();
        chmod(folderName.constData(), 0755);
        break;
    case Blocker::FolderInPlaceOfFile:
        save();
        break;
    case Blocker::FileSizeLimit: {
        // Room for the lock file (pid, program, host: about 100 bytes) and the
        // copy of the old file, not for the new one.
        FileSizeLimit limit(150);
        save();
        break;
    }
    }

    EXPECT_EQ(ReadBytes(kept), original);
    EXPECT_EQ(QDir(folder).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), before);
}

INSTANTIATE_TEST_SUITE_P(Blockers, UnwritableSave,
                         testing::Values(Blocker::ReadOnlyFile, Blocker::ReadOnlyFolder,
                                         Blocker::FolderInPlaceOfFile, Blocker::FileSizeLimit),
                         [](const testing::TestParamInfo<Blocker> &info) -> std::string {
                             switch (info.param) {
                             case Blocker::ReadOnlyFile: return "ReadOnlyFile";
                             case Blocker::ReadOnlyFolder: return "ReadOnlyFolder";
                             case Blocker::FolderInPlaceOfFile: return "FolderInPlaceOfFile";
                             case Blocker::FileSizeLimit: return "FileSizeLimit";
                             }
                             return "Unknown";
                         });

