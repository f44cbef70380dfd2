// The Favorites List at 500 stations: one refill of the table (the Moon with
// every figure at each station and every cell written) at a new instant,
// against one ComputeSource(Moon, 15) at a new instant in the same run; the
// table refills every 100 ms while the clock runs ahead. Also the first fill
// (rows and items made) and the favourites drawn on the map, which every
// overlay rebuild does.
#include "app/FavoritesDialog.h"
#include "app/MainWindow.h"
#include "tracking/SettingsFolder.h"

#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <cstdlib>

using namespace lunaquill;

namespace {

MainWindow *window;

// 500 stations on a spread of locators over the whole globe.
void WriteList(const char *name)
{
    QDir().mkpath(SettingsFolder());
    QFile file(SettingsFolder() + name);
    if (!file.open(QIODevice::WriteOnly))
        abort();
    for (int i = 0; i < FavoriteCapacity; ++i) {
        const char grid[7] = {char('A' + i * 7 % 18), char('A' + i * 11 % 18), char('0' + i % 10),
                              char('0' + i * 3 % 10), char('a' + i % 24), char('a' + i * 5 % 24), 0};
        file.write(QString::asprintf("Q%dX,%s,4x 17el yagi,1 kW,Q65-60A,,Station %d\n", i, grid, i)
                       .toLatin1());
    }
}

void BM_MoonAllFiguresAtANewInstant(benchmark::State &state)
{
    SourceTrack record{};
    for (auto _ : state) {
        displayOffset += 60;
        ComputeSource(Moon, TrackAll, DisplayedUtc(), 42.5, -71.0, 144.1, record);
        benchmark::DoNotOptimize(record);
    }
}
BENCHMARK(BM_MoonAllFiguresAtANewInstant)->Unit(benchmark::kMillisecond);

void BM_TableRefillAtANewInstant(benchmark::State &state)
{
    FavoritesDialog dialog("Eme144M.txt", true);
    dialog.show();
    QApplication::processEvents();
    const bool paint = state.range(0) != 0;
    for (auto _ : state) {
        displayOffset += 60;
        dialog.FillTable();
        if (paint) // the repaint that follows in the dialog's event loop
            QApplication::processEvents();
    }
    state.SetLabel(paint ? "with repaint" : "table only");
}
BENCHMARK(BM_TableRefillAtANewInstant)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_OpenTheList(benchmark::State &state)
{
    for (auto _ : state) {
        displayOffset += 60;
        FavoritesDialog dialog("Eme144M.txt", true);
        benchmark::DoNotOptimize(dialog.count());
    }
}
BENCHMARK(BM_OpenTheList)->Unit(benchmark::kMillisecond);

void BM_DrawFavorites(benchmark::State &state)
{
    QPixmap map(1600, 800);
    QPainter painter(&map);
    painter.setPen(Qt::yellow);
    painter.setBrush(QBrush(Qt::yellow, Qt::SolidPattern));
    for (auto _ : state)
        window->DrawFavorites(painter, "Eme144M.txt");
}
BENCHMARK(BM_DrawFavorites)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QTemporaryDir home;
    setenv("HOME", home.path().toLocal8Bit().constData(), 1);
    unsetenv("XDG_CONFIG_HOME"); // settings in <home>/.config/Lunaquill/, not a real profile
    QDir::setCurrent(LUNAQUILL_SOURCE_DIR);
    QApplication application(argc, argv);
    WriteList("Eme144M.txt");
    MainWindow mainWindow;
    mainWindow.resize(1640, 960);
    window = &mainWindow;
    homeData.frequency = 144.1;

    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
