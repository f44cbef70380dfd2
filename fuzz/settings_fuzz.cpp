// The settings loaders on any ini file: the input is written as
// Lunaquill.ini in a temporary home folder, then every group is loaded, in
// an application object like the program's, so that "@Variant(...)" values
// of images, colours and fonts are read as the program would read them.
#include "FuzzSupport.h"

#include "app/DopplerModes.h"
#include "app/Settings.h"

#include <QByteArray>
#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

using namespace lunaquill;

namespace {

QString iniPath;

// The text is NUL-terminated within its field and zeros follow.
template <size_t N>
void CheckText(const char (&field)[N])
{
    const size_t length = strnlen(field, N);
    FUZZ_CHECK(length < N);
    for (size_t i = length; i < N; ++i)
        FUZZ_CHECK(field[i] == '\0');
}

bool IsBool(const bool &flag)
{
    unsigned char byte;
    memcpy(&byte, &flag, 1);
    return byte <= 1;
}

// Whether the file can name the group: its name appears in any case, or a
// key could spell it with %-escapes.
bool MayName(const std::string &lowerText, const char *lowerGroup)
{
    return lowerText.find(lowerGroup) != std::string::npos ||
           lowerText.find('%') != std::string::npos;
}

// Qt's warnings about odd values ("@Variant(...)" of unknown types) are
// expected here and would only slow the run down.
void QuietMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg) {
        fprintf(stderr, "%s\n", qPrintable(message));
        abort();
    }
}

} // namespace

// A "@Variant(...)" value is read by Qt's stream reader, which asks for as
// much memory as a length in the file claims and goes on when it does not get
// it. Without the sanitizer such a request costs nothing (the pages are never
// touched) or fails; under it, it would stop the run or fill the memory with
// its bookkeeping. So ASan's allocator says no to it, and Qt's way of going on
// is what runs.
extern "C" const char *__asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=256";
}

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    qInstallMessageHandler(QuietMessages);
    static QTemporaryDir home(
        QString::fromStdString(fuzz::ScratchFolder() + "/lunaquill-home-XXXXXX"));
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // settings in <home>/.config/Lunaquill/, not a real profile
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    static QApplication application(*argc, *argv);
    QDir().mkpath(SettingsFolder());
    iniPath = SettingsPath(kSettingsFileName);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray path = iniPath.toLocal8Bit();
    FILE *file = fopen(path.constData(), "wb");
    FUZZ_CHECK(file && fwrite(data, 1, size, file) == size && fclose(file) == 0);
    // A new modification time for every input: the settings object keeps a
    // parsed file while its size and time stay the same.
    static time_t stamp = 1000000000;
    const struct timespec times[2] = {{stamp, 0}, {stamp, 0}};
    ++stamp;
    FUZZ_CHECK(utimensat(AT_FDCWD, path.constData(), times, 0) == 0);

    std::string lower(reinterpret_cast<const char *>(data), size);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return (char)tolower(c); });

    HomeData home;
    memset(&home, 0x5a, sizeof home); // whatever was there before is replaced
    FUZZ_CHECK(LoadHomeData(kSettingsFileName, home) == 0);
    CheckText(home.callsign);
    CheckText(home.grid);
    CheckText(home.location);
    FUZZ_CHECK(home.trackingSource >= 0 && home.trackingSource < (int32_t)SourceCount);
    FUZZ_CHECK(std::isfinite(home.latitude) && std::isfinite(home.longitude) &&
               std::isfinite(home.frequency));
    if (!MayName(lower, "home_data")) {
        FUZZ_CHECK(home.callsign[0] == '\0' && strcmp(home.grid, "JJ00aa") == 0 &&
                   strcmp(home.location, "Ocean") == 0);
        FUZZ_CHECK(home.latitude == 0 && home.longitude == 0 && home.frequency == 1296.0 &&
                   home.trackingSource == 0);
    }

    OverlaySettings overlays;
    memset(&overlays, 0x5a, sizeof overlays);
    FUZZ_CHECK(LoadOverlays(kSettingsFileName, overlays) == 0);
    const bool *flags[] = {
        &overlays.SunOverlay, &overlays.MoonOverlay, &overlays.MercuryOverlay,
        &overlays.VenusOverlay, &overlays.MarsOverlay, &overlays.SaturnOverlay,
        &overlays.JupiterOverlay, &overlays.NeptuneOverlay, &overlays.UranusOverlay,
        &overlays.PlutoOverlay, &overlays.SunShadingOverlay, &overlays.MoonShadingOverlay,
        &overlays.SkyNoiseOverlay, &overlays.StarsOverlay, &overlays.ConstellationsOverlay,
        &overlays.LatitudeGridlines, &overlays.LongitudeGridlines, &overlays.StarChartOverlay,
        &overlays.FavoriteStationsOverlay,
    };
    for (const bool *flag : flags)
        FUZZ_CHECK(IsBool(*flag));
    FUZZ_CHECK(overlays.MapOffset >= 0 && overlays.MapOffset < 24);
    if (!MayName(lower, "overlays")) {
        // Every switch on but sun shading, constellations and the chart view.
        for (const bool *flag : flags)
            FUZZ_CHECK(*flag == (flag != &overlays.SunShadingOverlay &&
                                 flag != &overlays.ConstellationsOverlay &&
                                 flag != &overlays.StarChartOverlay));
        FUZZ_CHECK(overlays.StarsMagnitude == 6 && overlays.MapOffset == 0);
    }

    WsjtxSettings wsjtx;
    FUZZ_CHECK(LoadWsjtx(kSettingsFileName, wsjtx) == 0);
    FUZZ_CHECK(wsjtx.port >= 1 && wsjtx.port <= 65535 && !wsjtx.address.trimmed().isEmpty());
    if (!MayName(lower, "wsjtx")) {
        const WsjtxSettings defaults;
        FUZZ_CHECK(!wsjtx.enabled && wsjtx.address == defaults.address && wsjtx.port == 2237 &&
                   wsjtx.followDx && wsjtx.followFrequency);
    }

    // Station control: every value within its range, whatever the file says.
    StationControlSettings station;
    FUZZ_CHECK(LoadStationControl(kSettingsFileName, station) == 0);
    FUZZ_CHECK(!station.rotatorHost.isEmpty() && !station.rigHost.isEmpty());
    for (int32_t port : {station.rotatorPort, station.rigPort})
        FUZZ_CHECK(port >= 1 && port <= 65535);
    for (int32_t seconds : {station.rotatorReplyTimeout, station.rigReplyTimeout})
        FUZZ_CHECK(seconds >= 1 && seconds <= kMaximumReplyTimeout);
    FUZZ_CHECK(station.minimumElevation >= -90.0 && station.minimumElevation <= 90.0);
    FUZZ_CHECK(station.dopplerMode >= 0 && station.dopplerMode < DopplerModeCount);
    if (!MayName(lower, "station_control"))
        FUZZ_CHECK(!station.rotatorEnabled && !station.rigEnabled && station.dopplerMode == 0);
    // No home station without a grid in its group.
    if (HomeStationSaved(kSettingsFileName))
        FUZZ_CHECK(MayName(lower, "home_data") && MayName(lower, "grid"));

    // The planner's choices: always within their ranges, the defaults when
    // the file cannot name the group.
    PlannerSettings planner;
    planner.days = -5;
    planner.homeMinElevation = planner.dxMinElevation = std::nan("");
    planner.tab = 7;
    FUZZ_CHECK(LoadPlanner(kSettingsFileName, planner) == 0);
    FUZZ_CHECK(planner.days >= 1 && planner.days <= 31 && planner.tab >= 0 && planner.tab <= 1);
    for (double elevation : {planner.homeMinElevation, planner.dxMinElevation})
        FUZZ_CHECK(elevation >= -2.0 && elevation <= 90.0);
    if (!MayName(lower, "planner"))
        FUZZ_CHECK(planner.days == 3 && planner.homeMinElevation == 0.0 &&
                   planner.dxMinElevation == 0.0 && planner.tab == 0);
    return 0;
}
