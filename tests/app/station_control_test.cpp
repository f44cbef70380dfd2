// Station control: the decisions by hand-worked tables; the real Hamlib
// daemons (rotctld -m 1, rigctld -m 1 on free local ports) driven by the main
// window and read back over their own protocol; daemons killed or faked.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/StationControl.h"
#include "app/StationControlDialog.h"
#include "ui_StationControlDialog.h"

#include <QProcess>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

// The decisions by hand: limits, thresholds, Doppler modes and holds, rig commands.
TEST(StationControlDecisions, RotatorLimitsDopplerHoldsAndRigCommands)
{
    const AzEl high = RotatorTarget(370.0, 95.0), low = RotatorTarget(-10.0, -5.0);
    EXPECT_TRUE(high.azimuth == 10.0 && high.elevation == 90.0 && low.azimuth == 350.0 &&
                low.elevation == 0.0);
    // Across north the short way: 359.9 to 0.05 is 0.15 degrees, to 0.1 is 0.2.
    const RotatorMemory north{true, {359.9, 20.0}, 0};
    EXPECT_FALSE(RotatorDue(north, {0.05, 20.0}, 1000));
    EXPECT_TRUE(RotatorDue(north, {0.1, 20.0}, 1000));
    // The same target again only once 30 s have passed.
    EXPECT_FALSE(RotatorDue(north, {359.9, 20.0}, 29999));
    EXPECT_TRUE(RotatorDue(north, {359.9, 20.0}, 30000));

    // 1296 MHz, own echo +3000 Hz, DX -1000 Hz: constant on the Moon f +- 1500 Hz.
    EXPECT_EQ(
        DopplerFrequencies(DopplerConstantOnMoon, 1296.0, 3000, -1000, true, false)->transmitHz,
        1295998500);
    // DX mode: receive f + the mean of both echoes, held while the DX station is below.
    EXPECT_EQ(DopplerFrequencies(DopplerDx, 1296.0, 3000, -1000, true, true)->receiveHz,
              1296001000);
    EXPECT_FALSE(DopplerFrequencies(DopplerDx, 1296.0, 3000, -1000, true, false));
    EXPECT_FALSE(DopplerFrequencies(DopplerOwnEcho, 1296.0, 3000, -1000, false, true));
    EXPECT_FALSE(DopplerFrequencies(DopplerOwnEcho, NAN, 3000, -1000, true, true));
    EXPECT_FALSE(DopplerFrequencies(7, 1296.0, 3000, -1000, true, true));

    // Split first, then only what changed by a whole hertz, at most once a second.
    RigMemory memory;
    using Commands = std::vector<QByteArray>;
    EXPECT_EQ(RigCommands(memory, {1296003000, 1296000000}, 5000),
              (Commands{"S 1 VFOB", "F 1296003000", "I 1296000000"}));
    EXPECT_EQ(RigCommands(memory, {1296003000, 1295999999}, 5999), Commands{});
    EXPECT_EQ(RigCommands(memory, {1296003000, 1295999999}, 6000), Commands{"I 1295999999"});
    EXPECT_EQ(RigCommands(memory, {1296003000, 1295999999}, 9000), Commands{});

    // Values out of range or garbled in the file read as the defaults.
    ResetSharedState();
    WriteIni("[STATION_CONTROL]\nRotatorHost=\nRotatorEnabled=yes\nRotatorPort=0\n"
             "MinimumElevation=nan\nRigPort=65536\nDopplerMode=4\n");
    StationControlSettings s;
    LoadStationControl(kSettingsFileName, s);
    EXPECT_EQ(QString("%1 %2 %3 %4 %5 %6").arg(s.rotatorEnabled).arg(s.rotatorPort)
                  .arg(s.minimumElevation).arg(s.rigPort).arg(s.dopplerMode).arg(s.rotatorHost),
              "0 4533 0 4532 0 localhost");
}

quint16 FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// One command to a daemon, its reply lines (blocking is fine on the test's
// side). Asked again when the daemon hangs up first, as rigctld sometimes
// does with a busy machine.
QList<QByteArray> Query(quint16 port, const char *command, int lines)
{
    QList<QByteArray> reply;
    for (int attempt = 0; attempt < 5 && reply.isEmpty(); ++attempt) {
        QTcpSocket socket;
        socket.connectToHost(QHostAddress::LocalHost, port);
        socket.waitForConnected(2000);
        socket.write(QByteArray(command) + "\n");
        while (reply.size() < lines && socket.waitForReadyRead(2000))
            while (socket.canReadLine() && reply.size() < lines)
                reply.append(socket.readLine().trimmed());
    }
    return reply;
}

class StationControlLive : public WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        StartDaemon(rotator, "rotctld", rotatorPort);
        StartDaemon(rig, "rigctld", rigPort);
        Open(QString("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n"
                     "[STATION_CONTROL]\nRotatorEnabled=true\nRotatorHost=127.0.0.1\n"
                     "RotatorPort=%1\nRigEnabled=true\nRigHost=127.0.0.1\nRigPort=%2\n"
                     "DopplerMode=1\n").arg(rotatorPort).arg(rigPort).toUtf8().constData(), false);
        control = window->findChild<StationControl *>("StationControl");
        control->SetClock([this] { return fakeMs; });
        control->rotator().SetTimings(1000, 500, 200);
        // An instant, whole minutes ahead, with the Moon 15..45 degrees up at home.
        for (int minutes = 0; minutes < 60 * 24 * 40 && displayOffset == 0; minutes += 10) {
            time_t t = time(nullptr) + minutes * 60;
            SourceTrack moon{};
            ComputeSource(Moon, TrackPosition, *gmtime(&t), 42.51, -70.96, 1296.0, moon);
            if (moon.elevation > 15 && moon.elevation < 45 && std::fabs(moon.doppler) > 500)
                displayOffset = minutes * 60;
        }
        ASSERT_TRUE(QTest::qWaitFor([this] {
            return control->rotator().state() == DaemonLink::Connected &&
                   control->rig().state() == DaemonLink::Connected;
        }, 5000));
    }

    // The daemons are killed by their QProcess, after the window is gone.
    void TearDown() override { window.reset(); }

    // The dummy rotator turns 6 degrees a second by its own clock; a clock 500
    // times faster lets it reach any target at once.
    void StartDaemon(std::unique_ptr<QProcess> &process, const char *program, quint16 &port)
    {
        port = FreePort();
        process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString &arch : QDir("/usr/lib").entryList(QDir::Dirs))
            if (QFile::exists("/usr/lib/" + arch + "/faketime/libfaketime.so.1"))
                env.insert("LD_PRELOAD", "/usr/lib/" + arch + "/faketime/libfaketime.so.1");
        env.insert("FAKETIME", "+0 x500");
        process->setProcessEnvironment(env);
        process->start(program, {"-m", "1", "-T", "127.0.0.1", "-t", QString::number(port)});
        ASSERT_TRUE(process->waitForStarted(3000)) << program << " (libhamlib-utils)";
        ASSERT_TRUE(QTest::qWaitFor([port] {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, port);
            return probe.waitForConnected(100);
        }, 5000)) << program;
    }

    // One panel refresh, the controller's clock moved on; the home record it
    // refreshed, once every command has its reply.
    SourceTrack Refresh(int64_t advanceMs, int32_t offsetStep = 0)
    {
        fakeMs += advanceMs;
        AdvanceDisplayOffset(offsetStep);
        WindowTest::Refresh();
        const SourceTrack home = homeTracks[Moon];
        dxAtRefresh = dxTracks[Moon];
        EXPECT_TRUE(QTest::qWaitFor(
            [this] { return control->rotator().idle() && control->rig().idle(); }, 3000));
        return home;
    }

    int64_t Frequency(const char *command)
    {
        const QList<QByteArray> f = Query(rigPort, command, 1);
        return f.isEmpty() ? -1 : f[0].toLongLong();
    }

    // Where the dummy rotator points once it stands still, to the two decimals
    // it is sent. Its fast clock turns it 75 degrees in the 25 ms between reads.
    std::string Pointed()
    {
        std::string last, now;
        for (int read = 0; read < 40 && (now.empty() || now != last); ++read) {
            QTest::qWait(25);
            last = now;
            const QList<QByteArray> p = Query(rotatorPort, "p", 2);
            now = p.size() < 2 ? "" : At(p[0].toDouble(), p[1].toDouble());
        }
        return now;
    }
    static std::string At(double azimuth, double elevation)
    {
        return QString::asprintf("%.2f %.2f", azimuth, elevation).toStdString();
    }
    static std::string At(const SourceTrack &t) { return At(t.azimuth, t.elevation); }

    void ApplyMode(int32_t mode, double minimumElevation = 0.0)
    {
        StationControlSettings s = control->settings();
        s.dopplerMode = mode;
        s.minimumElevation = minimumElevation;
        control->Apply(s);
    }

    int64_t fakeMs = 1000000;
    quint16 rotatorPort = 0, rigPort = 0;
    std::unique_ptr<QProcess> rotator, rig;
    StationControl *control = nullptr;
    SourceTrack dxAtRefresh{};
};

// The commands arrive and a dead daemon shows: the thresholds themselves are
// the decisions' above.
TEST_F(StationControlLive, CommandsArriveHoldBelowTheMinimumAndADeadLinkShowsRed)
{
    const double f = 1296e6;
    SourceTrack home = Refresh(30000); // own echo: receive f + own Doppler, transmit f
    EXPECT_EQ(Pointed(), At(home));
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler));
    EXPECT_EQ(Frequency("i"), 1296000000);
    EXPECT_EQ(Query(rigPort, "s", 2), (QList<QByteArray>{"1", "VFOB"}));
    const SourceTrack near = Refresh(1000, 15); // 15 s: more than 0.02, less than 0.2 degrees
    const double moved = std::fabs(near.azimuth - home.azimuth);
    ASSERT_TRUE(moved > 0.02 && moved < 0.2 && std::fabs(near.elevation - home.elevation) < 0.2);
    EXPECT_EQ(Pointed(), At(home)) << "moved less than 0.2 degrees";
    ApplyMode(DopplerOwnEcho, home.elevation + 5.0);
    Refresh(31000, 600);
    EXPECT_EQ(Pointed(), At(home)) << "below the minimum elevation";
    ApplyMode(DopplerOwnEcho);

    // The menu's dialog switches to the DX mode and saves it, keeping the other keys.
    WhenOpen<StationControlDialog>([](StationControlDialog &dialog) {
        dialog.widgets()->DopplerMode->setCurrentIndex(DopplerDx);
    }, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    QSettings file(IniPath(), QSettings::IniFormat);
    EXPECT_EQ(file.value("STATION_CONTROL/DopplerMode").toString() + "|" +
                  file.value("HOME_DATA/Grid").toString(), "2|FN42mm");
    CopyField(dxStation.grid, "FN20"); // a DX station 400 km away sees the Moon too
    dxStation.latitude = 40.5;
    dxStation.longitude = -75.0;
    home = Refresh(1000);
    ASSERT_EQ(dxSeesSource, 1);
    EXPECT_EQ(Frequency("f"), std::llround(f + (home.doppler + dxAtRefresh.doppler) / 2));

    // The daemon killed: its dot turns red, and the window's clock runs on.
    rotator->kill();
    rotator->waitForFinished();
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return control->rotator().state() == DaemonLink::Failed; }, 3000));
    EXPECT_EQ(control->indicator()->text().count("#e00000"), 1);
    ui->DateTimeButton->setText("");
    EXPECT_TRUE(QTest::qWaitFor([this] { return !ui->DateTimeButton->text().isEmpty(); }, 3000));
}

TEST(StationControlFaults, GarbageSilenceOrHangingUpDropTheLinkAndRetry)
{
    ResetSharedState();
    homeStationSet = 1;
    homeTracks[Moon].azimuth = 100.0;
    homeTracks[Moon].elevation = 20.0;
    const struct { const char *answer; const char *shows; } rows[] = {
        {"\x01Hello there\n", "unexpected reply \"?Hello there\""},
        {"", "no reply to \"P 100.00 20.00\""},
        {nullptr, "closed"},
    };
    for (const auto &row : rows) {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
        QObject::connect(&server, &QTcpServer::newConnection, [&] {
            QTcpSocket *peer = server.nextPendingConnection();
            if (!row.answer)
                peer->close();
            QObject::connect(peer, &QTcpSocket::readyRead, [&, peer] {
                peer->readAll();
                peer->write(row.answer);
            });
        });
        StationControl control;
        control.rotator().SetTimings(500, 300, 100);
        QStringList shown;
        QObject::connect(&control.rotator(), &DaemonLink::Changed,
                         [&] { shown << control.rotator().status(); });
        StationControlSettings s;
        s.rotatorEnabled = true;
        s.rotatorHost = "127.0.0.1";
        s.rotatorPort = server.serverPort();
        control.Apply(s);
        // Offered the target every 20 ms, it fails, says why, and tries again.
        EXPECT_TRUE(QTest::qWaitFor([&] {
            control.PanelsRefreshed();
            return shown.filter(row.shows).size() >= 2;
        }, 3000)) << shown.join('\n').toStdString();
    }
}

} // namespace
