// Hashes of the screen overlay and of every figure of every record over 60
// steps of the window with every layer on (a minute apart, then hours apart,
// some with the map rolled), for showing that a change leaves every pixel
// and every figure as it was: build it on both commits and compare the
// output. The displayed instant follows the system clock, so run it with the
// clock frozen (Debian's faketime):
//   faketime -f '2026-11-20 12:00:00' build-release/bench/step_hashes
// (-f: without it faketime's clock runs on from that instant).
#include "app/MainWindow.h"
#include "BenchWindow.h"

#include "tracking/SharedState.h"

#include <QApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <ctime>

using namespace lunaquill;

namespace {

template <typename Value>
void Add(QCryptographicHash &hash, const Value &value)
{
    hash.addData(QByteArrayView(reinterpret_cast<const char *>(&value), sizeof value));
}

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home;
    UseScratchHome(home);
    QApplication application(argc, argv);
    MainWindow window;
    ShowAtFormSize(window);
    EveryLayerOn();

    const time_t start = 1795478400; // 2026-11-24 00:00 UTC
    const int steps = 60;
    QCryptographicHash all(QCryptographicHash::Sha256);
    for (int i = 0; i < steps; ++i) {
        const time_t target = i < steps / 2 ? start + 60 * i : start + 26000 * i + 7 * 3600;
        overlaySettings.MapOffset = (i / 7) % 5 == 4 ? 6 : 0;
        displayOffset = int32_t(target - time(nullptr)); // the clock is frozen
        window.TimeAdjusted();
        const QImage image =
            window.screenOverlayPixmap().toImage().convertToFormat(QImage::Format_RGB32);
        QCryptographicHash step(QCryptographicHash::Sha256);
        step.addData(QByteArrayView(reinterpret_cast<const char *>(image.constBits()),
                                    image.sizeInBytes()));
        for (const SourceTrack *tracks : {homeTracks, dxTracks}) {
            for (int s = 0; s < int(SourceCount); ++s) {
                const SourceTrack &r = tracks[s];
                for (double v : {r.azimuth, r.elevation, r.doppler, r.spatialOffset,
                                 r.skyTemperature, r.degradation, r.pathLossVsPerigee,
                                 r.subLatitude, r.subLongitude, r.riseTime, r.setTime,
                                 r.transitTime, r.phase, r.distance, r.rightAscension,
                                 r.declination})
                    Add(step, v);
                Add(step, r.riseSetStatus);
            }
        }
        const QByteArray digest = step.result().toHex().left(16);
        all.addData(digest);
        printf("%3d %s\n", i, digest.constData());
        if (i == 3 && argc > 1)
            image.save(QString::fromLocal8Bit(argv[1])); // one overlay to look at
    }
    printf("all %s\n", all.result().toHex().left(16).constData());
    return 0;
}
