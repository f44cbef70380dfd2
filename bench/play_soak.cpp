// Long-run soak of play mode: the real window with every layer on and a DX
// station set by a click on the map and the pointer moving over it, driven
// through thousands of +Hour play steps by calling the display cycle directly
// (no waiting for the timer), printing the resident memory as it goes. Not a
// test: read the figures.
// After the warm-up the resident memory should stay flat.
//   play_soak [STEPS] [--charts] [--grab FILE]
// (default 2000 steps in the map view; --grab saves the window at the end)
#include "app/MainWindow.h"
#include "app/Settings.h"
#include "ui_MainWindow.h"

#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMouseEvent>
#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <unistd.h>

using namespace lunaquill;

namespace {

// Ticks of the 10 ms display cycle from one play step to the next.
constexpr int kTicksPerStep = 101;
constexpr int kWarmUpSteps = 200;
constexpr int kReportEvery = 100;

double ResidentMegabytes()
{
    long pages = 0, resident = 0;
    if (FILE *statm = fopen("/proc/self/statm", "r")) {
        if (fscanf(statm, "%ld %ld", &pages, &resident) != 2)
            resident = 0;
        fclose(statm);
    }
    return resident * (double)sysconf(_SC_PAGESIZE) / (1024 * 1024);
}

// Every switch of the OVERLAYS group on; the chart view only when asked for.
void WriteSettings(bool charts)
{
    QDir().mkpath(SettingsFolder());
    QFile ini(SettingsPath(kSettingsFileName));
    if (!ini.open(QIODevice::WriteOnly))
        return;
    ini.write("[HOME_DATA]\nCallsign=Q1ABC\nGrid=FN42mm\nLocation=Boston\nTrackingSource=0\n"
              "Latitude=42.51\nLongitude=-70.96\nFrequency=1296\n\n[OVERLAYS]\n");
    for (const char *key :
         {"SunOverlay", "MoonOverlay", "MercuryOverlay", "VenusOverlay", "MarsOverlay",
          "SaturnOverlay", "JupiterOverlay", "NeptuneOverlay", "UranusOverlay", "PlutoOverlay",
          "SunShadingOverlay", "MoonShadingOverlay", "SkyNoiseOverlay", "StarsOverlay",
          "ConstellationsOverlay", "LatitudeGridlines", "LongitudeGridlines",
          "FavoriteStationsOverlay"})
        ini.write(QByteArray(key) + "=true\n");
    ini.write(QByteArray("StarsMagnitude=6\nMapOffset=0\nStarChartOverlay=") +
              (charts ? "true\n" : "false\n"));
}

} // namespace

int main(int argc, char **argv)
{
    int steps = 2000;
    bool charts = false;
    const char *grab = nullptr;
    for (int i = 1; i < argc; ++i) {
        if (strcmp(argv[i], "--charts") == 0)
            charts = true;
        else if (strcmp(argv[i], "--grab") == 0 && i + 1 < argc)
            grab = argv[++i];
        else
            steps = std::max(1, atoi(argv[i]));
    }

    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // settings in <home>/.config/Lunaquill/, not a real profile
    QDir::setCurrent(LUNAQUILL_SOURCE_DIR); // the images are in pixmaps/ there
    QApplication application(argc, argv);
    WriteSettings(charts);
    QFile::copy(LUNAQUILL_SOURCE_DIR "/examples/Favorites.txt", SettingsFolder() + "Favorites.txt");

    MainWindow window;
    window.resize(1640, 960);
    window.show();
    QApplication::processEvents();
    Ui::MainWindow *ui = window.widgets();

    const QPoint map = ui->centralWidget->geometry().topLeft() + ui->WorldMap->geometry().topLeft();
    auto mouse = [&](QEvent::Type type, QPoint at, Qt::MouseButton button) {
        QMouseEvent event(type, at, at, button, button, Qt::NoModifier);
        QApplication::sendEvent(&window, &event);
    };
    // The DX station: a left click on the map (the map takes clicks in map view only).
    overlaySettings.StarChartOverlay = false;
    mouse(QEvent::MouseButtonPress,
          map + QPoint(ui->WorldMap->width() * 85 / 100, ui->WorldMap->height() * 70 / 100),
          Qt::LeftButton);
    overlaySettings.StarChartOverlay = charts;
    if (!dxStationSet) {
        fprintf(stderr, "the click on the map set no DX station\n");
        return 1;
    }

    window.TimeAdjustHourPButtonPressed();
    window.TimeAdjustPlayButtonPressed();
    const int32_t firstOffset = displayOffset;
    printf("%s view, every layer on, home %s, DX %s at %.2f %.2f; %d play steps of +Hour\n",
           charts ? "star-chart" : "map", homeData.grid, dxStation.grid, dxStation.latitude,
           dxStation.longitude, steps);
    printf("%6s  %-16s  %12s  %9s\n", "step", "displayed UTC", "resident MB", "seconds");

    const auto start = std::chrono::steady_clock::now();
    const int warmUp = std::min(steps, kWarmUpSteps);
    double warmedUp = 0, highest = 0;
    for (int step = 1; step <= steps; ++step) {
        // The pointer wanders over the map: the hover read-out comes and goes.
        mouse(QEvent::MouseMove,
              map + QPoint(step * 37 % ui->WorldMap->width(), step * 17 % ui->WorldMap->height()),
              Qt::NoButton);
        // Posted events (repaints) after every tick, as the event loop would
        // deliver them; no processEvents, so the window's own timer adds no ticks.
        for (int tick = 0; tick < kTicksPerStep; ++tick) {
            window.TimerEvent();
            QApplication::sendPostedEvents();
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        const double resident = ResidentMegabytes();
        if (step == warmUp)
            warmedUp = resident;
        if (step >= warmUp)
            highest = std::max(highest, resident);
        if (step % kReportEvery == 0 || step == 1 || step == steps) {
            const struct tm utc = DisplayedUtc();
            char when[32];
            strftime(when, sizeof when, "%Y-%m-%d %H:%M", &utc);
            const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
            printf("%6d  %-16s  %12.1f  %9.1f\n", step, when, resident, elapsed.count());
            fflush(stdout);
        }
    }

    if (grab)
        window.grab().save(grab);
    const int32_t stepsTaken = (displayOffset - firstOffset) / 3600;
    const double last = ResidentMegabytes();
    printf("play steps taken: %d of %d\n", stepsTaken, steps);
    printf("resident MB: %.1f after %d warm-up steps, %.1f at the end, %.1f at most; "
           "growth after warm-up %.1f MB\n",
           warmedUp, warmUp, last, highest, last - warmedUp);
    return stepsTaken == steps ? 0 : 1;
}
