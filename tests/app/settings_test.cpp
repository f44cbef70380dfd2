// The settings file: defaults of a first run, round trips, damaged files,
// keys of others kept, and a save that cannot write.
#include "AppTestSupport.h"
#include "app/Settings.h"

#include <QLocale>
#include <QMap>
#include <QRegularExpression>

#include <csignal>
#include <cstring>
#include <sys/resource.h>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

// "[GROUP]" and "Key=value" lines read by hand, not by the program's ini
// reader. Keys come back as "GROUP/Key".
QMap<QString, QString> IniEntries(const QString &path)
{
    QMap<QString, QString> entries;
    QString group;
    for (const QByteArray &raw : ReadIni(path).split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith('[') && line.endsWith(']'))
            group = line.mid(1, line.size() - 2);
        else if (int equals = line.indexOf('='); equals > 0)
            entries[group + "/" + line.left(equals).trimmed()] = line.mid(equals + 1).trimmed();
    }
    return entries;
}

// A new file name for every use: Qt caches parsed files by name.
std::string FreshFile()
{
    static int count = 0;
    return "settings" + std::to_string(++count) + ".ini";
}

// A record filled with junk, so a load that forgets a member shows.
template <typename Record>
Record Dirty()
{
    Record record;
    memset(&record, 0x01, sizeof record);
    return record;
}

// The home record in one line: call|grid|location|latitude|longitude|MHz|source;
// a text field not ended within its size shows as "<unterminated>".
std::string Line(const HomeData &h)
{
    auto text = [](const char *field, size_t size) {
        return strnlen(field, size) < size ? QString::fromUtf8(field) : QString("<unterminated>");
    };
    auto number = [](double x) { return QString::number(x, 'g', QLocale::FloatingPointShortest); };
    return QStringList{text(h.callsign, sizeof h.callsign), text(h.grid, sizeof h.grid),
                       text(h.location, sizeof h.location), number(h.latitude),
                       number(h.longitude), number(h.frequency), QString::number(h.trackingSource)}
        .join('|').toStdString();
}

// The OVERLAYS switches: key (named as its member), member, default.
#define SWITCH(name, byDefault) {#name, &OverlaySettings::name, byDefault}
const struct { const char *key; bool OverlaySettings::*member; bool byDefault; } kSwitches[] = {
    SWITCH(SunOverlay, true), SWITCH(MoonOverlay, true), SWITCH(MercuryOverlay, true),
    SWITCH(VenusOverlay, true), SWITCH(MarsOverlay, true), SWITCH(SaturnOverlay, true),
    SWITCH(JupiterOverlay, true), SWITCH(NeptuneOverlay, true), SWITCH(UranusOverlay, true),
    SWITCH(PlutoOverlay, true), SWITCH(SunShadingOverlay, false), SWITCH(MoonShadingOverlay, true),
    SWITCH(SkyNoiseOverlay, true), SWITCH(StarsOverlay, true), SWITCH(ConstellationsOverlay, false),
    SWITCH(LatitudeGridlines, true), SWITCH(LongitudeGridlines, true),
    SWITCH(StarChartOverlay, false), SWITCH(FavoriteStationsOverlay, true),
};
#undef SWITCH

const char *const kDefaultHome = "|JJ00aa|Ocean|0|0|1296|0";

} // namespace

TEST(Settings, FirstRunGivesDefaultsAndWritesNothing)
{
    ClearTestHome();
    HomeData home = Dirty<HomeData>();
    OverlaySettings overlays = Dirty<OverlaySettings>();
    EXPECT_EQ(LoadHomeData(kSettingsFileName, home) + LoadOverlays(kSettingsFileName, overlays), 0);
    EXPECT_EQ(Line(home), kDefaultHome);
    for (const auto &entry : kSwitches)
        EXPECT_EQ(overlays.*entry.member, entry.byDefault) << entry.key;
    EXPECT_EQ(overlays.StarsMagnitude * 100 + overlays.MapOffset, 600);
    EXPECT_FALSE(QDir(TestHome() + "/AppData").exists());
    EXPECT_FALSE(QDir(TestHome() + "/.config").exists());
}

// The folder of the settings file and every list, in its cases: a new user,
// XDG_CONFIG_HOME set (a relative one is invalid and ignored), and the folder
// of earlier versions present, which wins so that nothing is left behind.
// The file a save writes lands in that folder.
TEST(Settings, FolderFollowsXdgUnlessTheEarlierFolderExists)
{
    const QString home = TestHome();
    const struct { const char *xdg; bool earlierFolder; QString folder; } cases[] = {
        {nullptr, false, home + "/.config/Lunaquill/"},
        {"", false, home + "/.config/Lunaquill/"},
        {"/CONFIG", false, home + "/xdg/Lunaquill/"},  // "/CONFIG": <home>/xdg
        {"relative/config", false, home + "/.config/Lunaquill/"},
        {nullptr, true, home + "/AppData/Roaming/Lunaquill/"},
        {"/CONFIG", true, home + "/AppData/Roaming/Lunaquill/"},
    };
    for (const auto &c : cases) {
        ClearTestHome();
        if (c.earlierFolder)
            QDir().mkpath(home + "/AppData/Roaming/Lunaquill");
        const QString xdg = c.xdg && QByteArray(c.xdg) == "/CONFIG" ? home + "/xdg" : c.xdg;
        if (c.xdg)
            qputenv("XDG_CONFIG_HOME", xdg.toLocal8Bit());
        else
            qunsetenv("XDG_CONFIG_HOME");
        const std::string name = c.xdg ? c.xdg : "(unset)";
        EXPECT_EQ(lunaquill::SettingsFolder().toStdString(), c.folder.toStdString())
            << name << (c.earlierFolder ? " with AppData" : "");
        const std::string file = FreshFile();
        HomeData saved{};
        strcpy(saved.grid, "FN42");
        ASSERT_EQ(SaveHomeData(file.c_str(), saved), 0);
        EXPECT_TRUE(QFileInfo(c.folder + file.c_str()).isFile()) << name;
    }
    qunsetenv("XDG_CONFIG_HOME");
    ClearTestHome();
}

TEST(Settings, EachOverlayKeyIsItsOwnMemberBothWays)
{
    // Five files; switch k holds bit b of k + 1 in file b. No two switches
    // share all five bits, so a swapped pair (Saturn/Jupiter ...) shows.
    const std::string file = FreshFile();
    const QString path = SettingsPath(file.c_str());
    for (int b = 0; b < 5; ++b) {
        auto on = [b](const auto &entry) { return (((&entry - kSwitches) + 1) >> b & 1) != 0; };
        QByteArray text = "[OVERLAYS]\nStarsMagnitude=11\nMapOffset=" + QByteArray::number(13 + b);
        for (const auto &entry : kSwitches)
            text += QByteArray("\n") + entry.key + (on(entry) ? "=true" : "=false");
        WriteIni(text, path);
        OverlaySettings loaded = Dirty<OverlaySettings>();
        LoadOverlays(file.c_str(), loaded);
        QFile::remove(path);
        SaveOverlays(file.c_str(), loaded); // and read back by hand
        const QMap<QString, QString> ini = IniEntries(path);
        for (const auto &entry : kSwitches) {
            EXPECT_EQ(loaded.*entry.member, on(entry)) << entry.key << " in file " << b;
            EXPECT_EQ(ini.value(QString("OVERLAYS/") + entry.key), on(entry) ? "true" : "false");
        }
        EXPECT_EQ(loaded.StarsMagnitude * 100 + loaded.MapOffset, 1100 + 13 + b);
    }
}

// Each file is loaded, then saved with a new call sign and loaded back; the
// rest of the file stays as it was.
TEST(Settings, HomeFilesLoadBoundedValuesAndRoundTrip)
{
    // Texts cut to 11, 7 and 63 characters; values that do not convert, and a
    // source or map offset outside its range, read as 0.
    const struct { QByteArray contents; std::string home; } files[] = {
        {"[HOME_DATA]\nCallsign=VK2/W1ABCD\nGrid=QF56od\nLocation=\"Sydney, NSW\"\n"
         "Latitude=-33.8688\nLongitude=-151.2093\nFrequency=10368.1\nTrackingSource=23\n",
         "VK2/W1ABCD|QF56od|Sydney, NSW|-33.8688|-151.2093|10368.1|23"},
        {QByteArray("\x00\xff\x13[\x01=\x02\n\x80\x81", 10), kDefaultHome},
        {"[HOME_DATA]\nCallsign=ABCDEFGHIJKLMNOPQRSTUVWXYZ\nGrid=JO62QM12345678\nLatitude=52.5\n"
         "Longitude=13.4\nFrequency=144.1\nTrackingSource=1\nLocation=" + QByteArray(300, 'x'),
         "ABCDEFGHIJK|JO62QM1|" + std::string(63, 'x') + "|52.5|13.4|144.1|1"},
        // ... but a frequency outside 1..300000 MHz, or none, reads as 1296.
        {"[HOME_DATA]\nLatitude=abc\nLongitude=12,5\nFrequency=\nTrackingSource=moon\n",
         "|JJ00aa|Ocean|0|0|1296|0"},
        {"[HOME_DATA]\nLatitude=nan\nLongitude=-inf\nFrequency=1e999\n",
         "|JJ00aa|Ocean|0|0|1296|0"},
        {"[HOME_DATA]\nFrequency=1,296.0\n", kDefaultHome},
        {"[HOME_DATA]\nFrequency=abc\n", kDefaultHome},
        {"[HOME_DATA]\nFrequency=0\n", kDefaultHome},
        {"[HOME_DATA]\nFrequency=-144\n", kDefaultHome},
        {"[HOME_DATA]\nFrequency=300000.001\n", kDefaultHome},
        {"[HOME_DATA]\nFrequency=1\n", "|JJ00aa|Ocean|0|0|1|0"},
        {"[HOME_DATA]\nFrequency=300000\n", "|JJ00aa|Ocean|0|0|3e+05|0"},
        // Typed values the ini reader knows, where text is wanted.
        {"[HOME_DATA]\nCallsign=@Rect(1 2 3 4)\nGrid=@ByteArray(FN42ab\\0zz)\n"
         "Location=@Invalid()\nLatitude=@Size(3 4)\nTrackingSource=@Point(1 2)\n",
         "|FN42ab||0|0|1296|0"},
        {"[HOME_DATA]\nTrackingSource=24\n[OVERLAYS]\nMapOffset=24\n", kDefaultHome},
        {"[HOME_DATA]\nTrackingSource=-1\n[OVERLAYS]\nMapOffset=-5\n", kDefaultHome},
        {"[HOME_DATA]\nLocation=Sydney, NSW\nAntennaNotes=4x 12 el\n[OtherProgram]\nSize=8\n",
         "|JJ00aa|Sydney, NSW|0|0|1296|0"},
    };
    for (const auto &row : files) {
        SCOPED_TRACE(row.contents.left(40).toStdString());
        const std::string file = FreshFile();
        const QString path = SettingsPath(file.c_str());
        WriteIni(row.contents, path);
        HomeData home = Dirty<HomeData>();
        LoadHomeData(file.c_str(), home);
        EXPECT_EQ(Line(home), row.home);
        OverlaySettings overlays = Dirty<OverlaySettings>();
        LoadOverlays(file.c_str(), overlays);
        EXPECT_TRUE(overlays.MapOffset >= 0 && overlays.MapOffset < 24) << overlays.MapOffset;

        QMap<QString, QString> others = IniEntries(path);
        const QRegularExpression kept("^(OVERLAYS/|OtherProgram/|HOME_DATA/Antenna)");
        others.removeIf([&kept](auto entry) { return !entry.key().contains(kept); });
        CopyField(home.callsign, "N0SAVE");
        SaveHomeData(file.c_str(), home);
        LoadHomeData(file.c_str(), home);
        EXPECT_EQ(Line(home), "N0SAVE" + row.home.substr(row.home.find('|')));
        const QMap<QString, QString> after = IniEntries(path);
        for (auto entry = others.cbegin(); entry != others.cend(); ++entry)
            EXPECT_EQ(after.value(entry.key()), entry.value()) << entry.key().toStdString();
    }
}

// A save the disk cannot hold (full, made by lowering the largest file this
// process may write, root included) leaves the file as it was.
TEST(Settings, SaveToAFullDiskLeavesTheFileAsItWas)
{
    const std::string file = FreshFile();
    const QByteArray original = "[HOME_DATA]\nCallsign=KEEPME\n";
    WriteIni(original, SettingsPath(file.c_str()));
    HomeData home {};
    CopyField(home.location, std::string(63, 'y').c_str()); // the group is near 190 bytes
    struct rlimit old {};
    getrlimit(RLIMIT_FSIZE, &old);
    struct rlimit lowered = old;
    lowered.rlim_cur = 150; // room for the lock file and the old file, not the new one
    signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &lowered);
    const int result = SaveHomeData(file.c_str(), home);
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(ReadIni(SettingsPath(file.c_str())), original);
}
