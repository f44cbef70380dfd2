// Station control: the decisions by hand-worked tables, then the real Hamlib
// daemons (rotctld -m 1, rigctld -m 1 on free local ports) driven by the main
// window's clock and read back over their own protocol, then the faults: a
// killed daemon, and fake servers that answer garbage, nothing, or hang up.
#include "app/MainWindow.h"
#include "app/Settings.h"
#include "app/StationControl.h"
#include "app/StationControlDialog.h"
#include "ui_MainWindow.h"
#include "ui_StationControlDialog.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

using namespace lunaquill;

namespace {

TEST(StationControlDecisions, RotatorTargetsAndThresholds)
{
    const struct { double az, el, wantAz, wantEl; } clamps[] = {
        {123.45, 34.5, 123.45, 34.5}, {370.0, 95.0, 10.0, 90.0}, {-10.0, -5.0, 350.0, 0.0},
        {720.0, 90.0, 0.0, 90.0}, {NAN, NAN, 0.0, 0.0},
    };
    for (const auto &c : clamps) {
        const AzEl t = RotatorTarget(c.az, c.el);
        EXPECT_DOUBLE_EQ(t.azimuth, c.wantAz) << c.az;
        EXPECT_DOUBLE_EQ(t.elevation, c.wantEl) << c.el;
    }
    // Last command: 10.0 / 20.0 at t = 100000 ms.
    const RotatorMemory last{true, {10.0, 20.0}, 100000};
    const struct { RotatorMemory memory; double az, el; int64_t now; bool due; } rows[] = {
        {RotatorMemory{}, 10.0, 20.0, 0, true},     // nothing sent yet
        {last, 10.19, 20.0, 101000, false}, {last, 10.2, 20.0, 101000, true},
        {last, 9.8, 20.0, 101000, true},    {last, 10.0, 20.19, 101000, false},
        {last, 10.0, 19.8, 101000, true},   {last, 10.0, 20.0, 129999, false},
        {last, 10.0, 20.0, 130000, true},
        {RotatorMemory{true, {359.9, 20.0}, 0}, 0.05, 20.0, 1000, false}, // 0.15 across north
        {RotatorMemory{true, {359.9, 20.0}, 0}, 0.1, 20.0, 1000, true},   // 0.2 across north
    };
    for (const auto &r : rows)
        EXPECT_EQ(RotatorDue(r.memory, {r.az, r.el}, r.now), r.due) << r.az << " " << r.el << " " << r.now;
}

TEST(StationControlDecisions, DopplerModesAndRigCommands)
{
    // 1296 MHz, own echo +3000 Hz, DX echo -1000 Hz: mutual (3000 - 1000) / 2 = +1000 Hz;
    // constant on the Moon: receive f + 1500, transmit f - 1500.
    const struct { int32_t mode; double mhz; bool home, dx; int64_t rx, tx; } rows[] = {
        {DopplerOff, 1296.0, true, true, -1, -1},
        {DopplerOwnEcho, 1296.0, true, false, 1296003000, 1296000000},
        {DopplerOwnEcho, 1296.0, false, true, -1, -1},
        {DopplerDx, 1296.0, true, true, 1296001000, 1296000000},
        {DopplerDx, 1296.0, true, false, -1, -1},
        {DopplerConstantOnMoon, 1296.0, true, false, 1296001500, 1295998500},
        {DopplerConstantOnMoon, 0.0, true, true, -1, -1},
        {DopplerConstantOnMoon, NAN, true, true, -1, -1},
        {7, 1296.0, true, true, -1, -1},
    };
    for (const auto &r : rows) {
        const auto f = DopplerFrequencies(r.mode, r.mhz, 3000.0, -1000.0, r.home, r.dx);
        EXPECT_EQ(f ? f->receiveHz : -1, r.rx) << r.mode << " " << r.mhz;
        EXPECT_EQ(f ? f->transmitHz : -1, r.tx) << r.mode << " " << r.mhz;
    }

    // Split first, then only what changed by a whole hertz, at most once a second.
    RigMemory memory;
    using Commands = std::vector<QByteArray>;
    EXPECT_EQ(RigCommands(memory, {1296003000, 1296000000}, 5000),
              (Commands{"S 1 VFOB", "F 1296003000", "I 1296000000"}));
    EXPECT_EQ(RigCommands(memory, {1296003010, 1296000000}, 5999), Commands{});
    EXPECT_EQ(RigCommands(memory, {1296003010, 1296000000}, 6000), Commands{"F 1296003010"});
    EXPECT_EQ(RigCommands(memory, {1296003010, 1296000000}, 9000), Commands{});
    EXPECT_EQ(RigCommands(memory, {1296003011, 1295999999}, 10000),
              (Commands{"F 1296003011", "I 1295999999"}));

    const struct { const char *line; int code; } replies[] = {
        {"RPRT 0", 0}, {"RPRT -11\r", -11}, {" RPRT 0 ", 0}, {"RPRT", 99}, {"RPRT x", 99},
        {"123.45", 99}, {"", 99},
    };
    for (const auto &r : replies)
        EXPECT_EQ(ParseReport(r.line).value_or(99), r.code) << r.line;
}

void WriteIni(const QString &text)
{
    QFile file(test::SettingsFolder() + "Lunaquill.ini");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text.toUtf8());
}

TEST(StationControlSettingsFile, BadValuesReadAsDefaultsAndSavingKeepsOtherGroups)
{
    test::ResetSharedState();
    const struct { const char *group; bool rotOn; const char *rotHost; int rotPort; double minEl;
                   bool rigOn; int rigPort; int mode; } rows[] = {
        {"", false, "localhost", 4533, 0.0, false, 4532, 0},
        {"RotatorEnabled=true\nRotatorHost=shack\nRotatorPort=14533\nMinimumElevation=-2.5\n"
         "RigEnabled=1\nRigPort=65535\nDopplerMode=3\n", true, "shack", 14533, -2.5, true, 65535, 3},
        {"RotatorEnabled=yes\nRotatorHost=\nRotatorPort=0\nMinimumElevation=91\n"
         "RigEnabled=on\nRigPort=65536\nDopplerMode=4\n", false, "localhost", 4533, 0.0, false, 4532, 0},
        {"RotatorPort=abc\nMinimumElevation=nan\nRigPort=-1\nDopplerMode=-1\n",
         false, "localhost", 4533, 0.0, false, 4532, 0},
    };
    for (const auto &r : rows) {
        WriteIni(QString("[STATION_CONTROL]\n") + r.group);
        StationControlSettings s;
        LoadStationControl(kSettingsFileName, s);
        EXPECT_EQ(s.rotatorEnabled, r.rotOn) << r.group;
        EXPECT_EQ(s.rotatorHost, r.rotHost) << r.group;
        EXPECT_EQ(s.rotatorPort, r.rotPort) << r.group;
        EXPECT_EQ(s.minimumElevation, r.minEl) << r.group;
        EXPECT_EQ(s.rigEnabled, r.rigOn) << r.group;
        EXPECT_EQ(s.rigPort, r.rigPort) << r.group;
        EXPECT_EQ(s.dopplerMode, r.mode) << r.group;
    }
    WriteIni("[HOME_DATA]\nGrid=FN42mm\n[STATION_CONTROL]\nUnknownKey=7\n");
    StationControlSettings chosen;
    chosen.rigEnabled = true;
    chosen.rigHost = "radio.local";
    chosen.dopplerMode = DopplerDx;
    SaveStationControl(kSettingsFileName, chosen);
    QSettings file(test::SettingsFolder() + "Lunaquill.ini", QSettings::IniFormat);
    EXPECT_EQ(file.value("HOME_DATA/Grid").toString(), "FN42mm");
    EXPECT_EQ(file.value("STATION_CONTROL/UnknownKey").toInt(), 7);
    EXPECT_EQ(file.value("STATION_CONTROL/RigHost").toString(), "radio.local");
    StationControlSettings back;
    LoadStationControl(kSettingsFileName, back);
    EXPECT_TRUE(back.rigEnabled && !back.rotatorEnabled && back.dopplerMode == DopplerDx);
    EXPECT_EQ(back.rigHost, "radio.local");
}

// A free local port (free when asked; the daemons take it at once).
quint16 FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// Sends one command to a daemon and returns its reply lines (test side only:
// blocking is fine here, the daemons are other processes).
QList<QByteArray> Query(quint16 port, const char *command, int lines)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(2000))
        return {};
    socket.write(QByteArray(command) + "\n");
    QList<QByteArray> reply;
    while (reply.size() < lines && socket.waitForReadyRead(2000)) {
        while (socket.canReadLine() && reply.size() < lines)
            reply.append(socket.readLine().trimmed());
    }
    return reply;
}

class StationControlLive : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
        rotatorPort = FreePort();
        rigPort = FreePort();
        StartRotator();
        rig = StartDaemon("rigctld", rigPort, false);
        WriteIni(QString("[HOME_DATA]\nCallsign=Q1ABC\nGrid=FN42mm\nLatitude=42.51\n"
                         "Longitude=-70.96\nFrequency=1296\nTrackingSource=0\n"
                         "[STATION_CONTROL]\nRotatorEnabled=true\nRotatorHost=127.0.0.1\n"
                         "RotatorPort=%1\nRigEnabled=true\nRigHost=127.0.0.1\nRigPort=%2\n"
                         "DopplerMode=1\n").arg(rotatorPort).arg(rigPort));
        window = std::make_unique<MainWindow>();
        control = window->findChild<StationControl *>("StationControl");
        ASSERT_NE(control, nullptr);
        control->SetClock([this] { return fakeMs; });
        control->rotator().SetTimings(1000, 500, 200);
        control->rig().SetTimings(1000, 500, 200);
        FindMoonUpAtHome();
        ASSERT_TRUE(QTest::qWaitFor([this] {
            return control->rotator().state() == DaemonLink::Connected &&
                   control->rig().state() == DaemonLink::Connected;
        }, 5000));
    }

    void TearDown() override
    {
        window.reset();
        for (QProcess *p : {rotator.get(), rig.get()}) {
            if (p) {
                p->kill();
                p->waitForFinished();
            }
        }
    }

    // The dummy rotator turns at 6 degrees a second in its own clock: a clock
    // 500 times faster lets it reach any target at once.
    std::unique_ptr<QProcess> StartDaemon(const char *program, quint16 port, bool fastClock)
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        if (fastClock) {
            env.insert("LD_PRELOAD", "/usr/lib/x86_64-linux-gnu/faketime/libfaketime.so.1");
            env.insert("FAKETIME", "+0 x500");
        }
        process->setProcessEnvironment(env);
        process->start(program, {"-m", "1", "-T", "127.0.0.1", "-t", QString::number(port)});
        EXPECT_TRUE(process->waitForStarted(3000)) << program << " (libhamlib-utils)";
        for (int i = 0; i < 100; ++i) {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, port);
            if (probe.waitForConnected(100))
                return process;
            QTest::qWait(20);
        }
        ADD_FAILURE() << program << " does not listen on " << port;
        return process;
    }

    void StartRotator() { rotator = StartDaemon("rotctld", rotatorPort, true); }

    // An instant (a whole number of minutes ahead) when the Moon stands 15..45
    // degrees up at home with a Doppler of some size.
    void FindMoonUpAtHome()
    {
        for (int minutes = 0; minutes < 60 * 24 * 40; minutes += 10) {
            time_t t = time(nullptr) + minutes * 60;
            struct tm utc;
            gmtime_r(&t, &utc);
            SourceTrack moon{};
            ComputeSource(Moon, TrackPosition, utc, 42.51, -70.96, 1296.0, moon);
            if (moon.elevation > 15 && moon.elevation < 45 && std::fabs(moon.doppler) > 500) {
                displayOffset = minutes * 60;
                return;
            }
        }
        FAIL() << "no such instant within 40 days";
    }

    // One panel refresh with the controller's clock moved on; returns the
    // home record it refreshed, once every command has its reply.
    SourceTrack Refresh(int64_t advanceMs, int32_t offsetStep = 0)
    {
        fakeMs += advanceMs;
        AdvanceDisplayOffset(offsetStep);
        window->requestForceRefresh();
        window->TimerEvent();
        const SourceTrack home = homeTracks[Moon];
        dxAtRefresh = dxTracks[Moon];
        EXPECT_TRUE(QTest::qWaitFor(
            [this] { return control->rotator().idle() && control->rig().idle(); }, 3000));
        return home;
    }

    // The daemon's position and frequencies, as it reports them.
    AzEl Position()
    {
        const QList<QByteArray> p = Query(rotatorPort, "p", 2);
        return p.size() == 2 ? AzEl{p[0].toDouble(), p[1].toDouble()} : AzEl{-1, -1};
    }
    int64_t Frequency(const char *command)
    {
        const QList<QByteArray> f = Query(rigPort, command, 1);
        return f.isEmpty() ? -1 : f[0].toLongLong();
    }
    void ExpectPointedAt(const SourceTrack &record, const char *when)
    {
        // Sent with two decimals, reported with two: within half a hundredth and a hair.
        QTest::qWait(50); // the dummy's own 500-fold clock arrives in well under this
        const AzEl p = Position();
        EXPECT_NEAR(p.azimuth, record.azimuth, 0.0051) << when;
        EXPECT_NEAR(p.elevation, record.elevation, 0.0051) << when;
    }

    int64_t fakeMs = 1000000;
    quint16 rotatorPort = 0, rigPort = 0;
    std::unique_ptr<QProcess> rotator, rig;
    std::unique_ptr<MainWindow> window;
    StationControl *control = nullptr;
    SourceTrack dxAtRefresh{};
};

TEST_F(StationControlLive, RotatorFollowsTheMoonByItsThresholdsAndHoldsBelowTheMinimum)
{
    const SourceTrack first = Refresh(30000);
    ExpectPointedAt(first, "first refresh");

    // 15 s on the Moon moves less than 0.2 degrees: the rotator stays.
    const SourceTrack near = Refresh(1000, 15);
    ASSERT_LT(std::max(std::fabs(near.azimuth - first.azimuth),
                       std::fabs(near.elevation - first.elevation)), 0.2);
    ASSERT_GT(std::fabs(near.azimuth - first.azimuth), 0.02);
    ExpectPointedAt(first, "moved less than 0.2 degrees");

    // Two more minutes move it well over 0.2 degrees.
    const SourceTrack moved = Refresh(1000, 120);
    ExpectPointedAt(moved, "moved over 0.2 degrees");

    // 30 s after the last command it goes again, however little the Moon moved.
    Refresh(28000, 5);
    ExpectPointedAt(moved, "28 s after");
    const SourceTrack repeated = Refresh(2000);
    ExpectPointedAt(repeated, "30 s after");

    // Below the minimum elevation the rotator is left where it is.
    StationControlSettings s = control->settings();
    s.minimumElevation = repeated.elevation + 5.0;
    control->Apply(s);
    Refresh(31000, 600);
    ExpectPointedAt(repeated, "below the minimum elevation");
}

TEST_F(StationControlLive, RadioFollowsEachDopplerModeOnceASecond)
{
    const double f = 1296e6;
    // Own echo: receive f + own Doppler, transmit (split) f.
    SourceTrack home = Refresh(1000);
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler));
    EXPECT_EQ(Frequency("i"), 1296000000);
    EXPECT_EQ(Query(rigPort, "s", 2), (QList<QByteArray>{"1", "VFOB"}));

    // A minute later the Doppler has changed, but half a second is too soon.
    const int64_t before = Frequency("f");
    home = Refresh(500, 60);
    ASSERT_NE(std::llround(f + home.doppler), before);
    EXPECT_EQ(Frequency("f"), before);
    home = Refresh(500);
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler));

    // Constant on the Moon: transmit f - own/2, receive f + own/2.
    StationControlSettings s = control->settings();
    s.dopplerMode = DopplerConstantOnMoon;
    control->Apply(s);
    home = Refresh(1000);
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler / 2));
    EXPECT_EQ(Frequency("i"), std::llround(f - home.doppler / 2));

    // DX: receive f + the mutual Doppler while both see the Moon.
    s.dopplerMode = DopplerDx;
    control->Apply(s);
    CopyField(dxStation.grid, "FN20");
    dxStation.latitude = 40.5;
    dxStation.longitude = -75.0;
    window->UpdateDisplay();
    home = Refresh(1000);
    ASSERT_EQ(dxSeesSource, 1);
    const int64_t mutual = std::llround(f + (home.doppler + dxAtRefresh.doppler) / 2);
    EXPECT_EQ(Frequency("f"), mutual);
    EXPECT_EQ(Frequency("i"), 1296000000);

    // ... and holds it when the DX station loses the Moon (on the far side of the Earth).
    CopyField(dxStation.grid, "OE12");
    dxStation.latitude = -42.51;
    dxStation.longitude = 109.04;
    window->UpdateDisplay();
    Refresh(1000, 60);
    ASSERT_EQ(dxSeesSource, 0);
    EXPECT_EQ(Frequency("f"), mutual);

    // Off: the radio is left alone.
    s.dopplerMode = DopplerOff;
    control->Apply(s);
    Query(rigPort, "F 1296000000", 1);
    Refresh(1000, 60);
    EXPECT_EQ(Frequency("f"), 1296000000);
}

TEST_F(StationControlLive, KilledDaemonShowsTheErrorAndTheLinkComesBack)
{
    Refresh(30000);
    rotator->kill();
    rotator->waitForFinished();
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return control->rotator().state() == DaemonLink::Failed; }, 3000));
    EXPECT_TRUE(control->rotator().status().contains("trying again"))
        << control->rotator().status().toStdString();
    EXPECT_TRUE(control->indicator()->toolTip().contains(control->rotator().status()));
    EXPECT_EQ(control->rig().state(), DaemonLink::Connected);

    // The window keeps running: its clock and panels still refresh.
    window->widgets()->DateTimeButton->setText("");
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return !window->widgets()->DateTimeButton->text().isEmpty(); }, 3000));

    StartRotator(); // a new dummy at 0 / 0 on the same port
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return control->rotator().state() == DaemonLink::Connected; }, 3000));
    const SourceTrack home = Refresh(30000);
    ExpectPointedAt(home, "after the daemon came back");
}

TEST(StationControlFaults, GarbageSilenceOrHangingUpDropTheLinkWithoutBlocking)
{
    test::ResetSharedState();
    homeStationSet = 1;
    homeTracks[Moon].azimuth = 100.0;
    homeTracks[Moon].elevation = 20.0;

    enum Behaviour { Garbage, Silent, HangUp };
    const struct { Behaviour behaviour; const char *shows; } rows[] = {
        {Garbage, "unexpected reply \"?Hello there\""},
        {Silent, "no reply to \"P 100.00 20.00\""},
        {HangUp, "closed"},
    };
    for (const auto &row : rows) {
        QTcpServer server;
        ASSERT_TRUE(server.listen(QHostAddress::LocalHost, 0));
        QObject::connect(&server, &QTcpServer::newConnection, [&] {
            QTcpSocket *peer = server.nextPendingConnection();
            if (row.behaviour == HangUp)
                peer->close();
            else if (row.behaviour == Garbage)
                QObject::connect(peer, &QTcpSocket::readyRead, [peer] {
                    peer->readAll();
                    peer->write("\x01Hello there\n");
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
        // Every panel refresh offers the target; the link takes it whenever it is up.
        QTimer refresh;
        QObject::connect(&refresh, &QTimer::timeout, [&] { control.PanelsRefreshed(); });
        refresh.start(20);
        // It fails, says why, and tries again.
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown.filter(row.shows).size() >= 2; }, 3000))
            << shown.join('\n').toStdString();
    }
}

TEST(StationControlWindow, MenuDialogIndicatorAndLayout)
{
    test::ResetSharedState();
    MainWindow window;
    window.resize(1640, 960);
    window.show();
    Ui::MainWindow *ui = window.widgets();
    auto *control = window.findChild<StationControl *>("StationControl");
    ASSERT_NE(control, nullptr);

    // The indicator sits in the menu bar's corner: the map and panels do not move.
    QMainWindow bare;
    Ui::MainWindow bareUi;
    bareUi.setupUi(&bare);
    bare.resize(1640, 960);
    bare.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window) && QTest::qWaitForWindowExposed(&bare));
    EXPECT_EQ(ui->centralWidget->geometry(), bareUi.centralWidget->geometry());
    EXPECT_EQ(ui->menuBar->cornerWidget(Qt::TopRightCorner), control->indicator());
    EXPECT_EQ(control->indicator()->text().count("#909090"), 2); // both off

    // Configure > Station Control: shows the settings and the links, Ok saves and applies.
    EXPECT_EQ(ui->menuConfigure->actions().last(), ui->actionStationControl);
    EXPECT_EQ(ui->actionStationControl->text(), "Station Control");
    QTimer::singleShot(0, [] {
        auto *dialog = qobject_cast<StationControlDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        Ui::StationControlDialog *d = dialog->widgets();
        EXPECT_EQ(d->RotatorHost->text(), "localhost");
        EXPECT_EQ(d->RotatorPort->value(), 4533);
        EXPECT_EQ(d->RigPort->value(), 4532);
        EXPECT_EQ(d->RotatorStatus->text(), "Off");
        EXPECT_EQ(d->DopplerMode->count(), 4);
        EXPECT_EQ(d->DopplerMode->itemText(3), "Constant frequency on the Moon");
        d->DopplerMode->setCurrentIndex(DopplerDx);
        EXPECT_TRUE(d->ModeHelp->text().contains("mutual Doppler"));
        d->RigEnabled->setChecked(true);
        d->RigHost->setText("127.0.0.1");
        d->RigPort->setValue(FreePort()); // nothing listens there
        d->buttonBox->button(QDialogButtonBox::Ok)->click();
    });
    ui->actionStationControl->trigger();
    EXPECT_EQ(control->settings().dopplerMode, DopplerDx);
    EXPECT_TRUE(control->settings().rigEnabled);
    QSettings file(test::SettingsFolder() + "Lunaquill.ini", QSettings::IniFormat);
    EXPECT_EQ(file.value("STATION_CONTROL/DopplerMode").toInt(), DopplerDx);
    EXPECT_EQ(file.value("STATION_CONTROL/RigEnabled").toString(), "true");
    // Refused connection: the radio's dot turns red, the rotator's stays grey.
    EXPECT_TRUE(QTest::qWaitFor(
        [control] { return control->indicator()->text().contains("#e00000"); }, 3000));
    EXPECT_EQ(control->indicator()->text().count("#909090"), 1);
    EXPECT_TRUE(control->indicator()->toolTip().contains("Radio: 127.0.0.1:"));
}

} // namespace
