// Station control: the decisions by hand-worked tables; the real Hamlib
// daemons (rotctld -m 1, rigctld -m 1 on free local ports) driven by the main
// window's clock and read back over their own protocol; the faults (a killed
// daemon, fake servers that answer garbage, nothing, or hang up); the dialog.
#include "app/MainWindow.h"
#include "app/StationControl.h"
#include "app/StationControlDialog.h"
#include "ui_MainWindow.h"
#include "ui_StationControlDialog.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
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

// What the daemon tests below do not reach: limits, north, holds, split-only changes.
TEST(StationControlDecisions, RotatorLimitsDopplerHoldsAndRigCommands)
{
    EXPECT_EQ(RotatorTarget(370.0, 95.0).azimuth, 10.0);
    EXPECT_EQ(RotatorTarget(370.0, 95.0).elevation, 90.0);
    EXPECT_EQ(RotatorTarget(-10.0, -5.0).azimuth, 350.0);
    EXPECT_EQ(RotatorTarget(-10.0, -5.0).elevation, 0.0);
    // Across north the short way: 359.9 to 0.05 is 0.15 degrees, to 0.1 is 0.2.
    const RotatorMemory north{true, {359.9, 20.0}, 0};
    EXPECT_FALSE(RotatorDue(north, {0.05, 20.0}, 1000));
    EXPECT_TRUE(RotatorDue(north, {0.1, 20.0}, 1000));

    // 1296 MHz, own echo +3000 Hz, DX -1000 Hz: constant on the Moon f +- 1500 Hz.
    EXPECT_EQ(DopplerFrequencies(DopplerConstantOnMoon, 1296.0, 3000, -1000, true, false)->transmitHz,
              1295998500);
    EXPECT_FALSE(DopplerFrequencies(DopplerOwnEcho, 1296.0, 3000, -1000, false, true));
    EXPECT_FALSE(DopplerFrequencies(DopplerOwnEcho, NAN, 3000, -1000, true, true));
    EXPECT_FALSE(DopplerFrequencies(7, 1296.0, 3000, -1000, true, true));

    // Split first, then only what changed by a whole hertz, at most once a second.
    RigMemory memory;
    using Commands = std::vector<QByteArray>;
    EXPECT_EQ(RigCommands(memory, {1296003000, 1296000000}, 5000),
              (Commands{"S 1 VFOB", "F 1296003000", "I 1296000000"}));
    EXPECT_EQ(RigCommands(memory, {1296003000, 1295999999}, 6000), Commands{"I 1295999999"});
    EXPECT_EQ(RigCommands(memory, {1296003000, 1295999999}, 9000), Commands{});
}

void WriteIni(const QString &text)
{
    QFile file(test::SettingsFolder() + "Lunaquill.ini");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text.toUtf8());
}

TEST(StationControlSettingsFile, BadValuesReadAsDefaultsAndSavingKeepsOtherKeys)
{
    test::ResetSharedState();
    const struct { const char *keys; bool on; int rotPort; double minEl; int rigPort, mode; } rows[] = {
        {"RotatorEnabled=true\nRotatorPort=14533\nMinimumElevation=-2.5\nRigPort=65535\n"
         "DopplerMode=3\n", true, 14533, -2.5, 65535, 3},
        {"RotatorEnabled=yes\nRotatorPort=0\nMinimumElevation=nan\nRigPort=65536\nDopplerMode=4\n",
         false, 4533, 0.0, 4532, 0},
    };
    for (const auto &r : rows) {
        WriteIni(QString("[STATION_CONTROL]\nRotatorHost=\n") + r.keys);
        StationControlSettings s;
        LoadStationControl(kSettingsFileName, s);
        EXPECT_TRUE(s.rotatorEnabled == r.on && s.rotatorPort == r.rotPort && s.rigPort == r.rigPort &&
                    s.minimumElevation == r.minEl && s.dopplerMode == r.mode && !s.rigEnabled &&
                    s.rotatorHost == "localhost") << r.keys;
    }
    WriteIni("[HOME_DATA]\nGrid=FN42mm\n[STATION_CONTROL]\nUnknownKey=7\n");
    StationControlSettings chosen;
    chosen.rigHost = "radio.local";
    SaveStationControl(kSettingsFileName, chosen);
    QSettings file(test::SettingsFolder() + "Lunaquill.ini", QSettings::IniFormat);
    EXPECT_EQ(file.value("HOME_DATA/Grid").toString(), "FN42mm");
    EXPECT_EQ(file.value("STATION_CONTROL/UnknownKey").toInt(), 7);
    EXPECT_EQ(file.value("STATION_CONTROL/RigHost").toString(), "radio.local");
}

quint16 FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// One command to a daemon, its reply lines (blocking is fine on the test's side).
QList<QByteArray> Query(quint16 port, const char *command, int lines)
{
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHost, port);
    socket.waitForConnected(2000);
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
        StartDaemon(rotator, "rotctld", rotatorPort);
        StartDaemon(rig, "rigctld", rigPort);
        WriteIni(QString("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n"
                         "[STATION_CONTROL]\nRotatorEnabled=true\nRotatorHost=127.0.0.1\n"
                         "RotatorPort=%1\nRigEnabled=true\nRigHost=127.0.0.1\nRigPort=%2\n"
                         "DopplerMode=1\n").arg(rotatorPort).arg(rigPort));
        window = std::make_unique<MainWindow>();
        control = window->findChild<StationControl *>("StationControl");
        control->SetClock([this] { return fakeMs; });
        control->rotator().SetTimings(1000, 500, 200);
        // An instant, whole minutes ahead, with the Moon 15..45 degrees up at home.
        for (int minutes = 0; minutes < 60 * 24 * 40 && displayOffset == 0; minutes += 10) {
            time_t t = time(nullptr) + minutes * 60;
            struct tm utc;
            gmtime_r(&t, &utc);
            SourceTrack moon{};
            ComputeSource(Moon, TrackPosition, utc, 42.51, -70.96, 1296.0, moon);
            if (moon.elevation > 15 && moon.elevation < 45 && std::fabs(moon.doppler) > 500)
                displayOffset = minutes * 60;
        }
        ASSERT_TRUE(QTest::qWaitFor([this] {
            return control->rotator().state() == DaemonLink::Connected &&
                   control->rig().state() == DaemonLink::Connected;
        }, 5000));
    }

    void TearDown() override
    {
        window.reset();
        for (QProcess *p : {rotator.get(), rig.get()}) {
            if (p)
                p->kill(), p->waitForFinished();
        }
    }

    // The dummy rotator turns 6 degrees a second by its own clock; a clock 500
    // times faster lets it reach any target at once.
    void StartDaemon(std::unique_ptr<QProcess> &process, const char *program, quint16 &port)
    {
        if (!port)
            port = FreePort();
        process = std::make_unique<QProcess>();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const QString &arch : QDir("/usr/lib").entryList(QDir::Dirs)) {
            if (QFile::exists("/usr/lib/" + arch + "/faketime/libfaketime.so.1"))
                env.insert("LD_PRELOAD", "/usr/lib/" + arch + "/faketime/libfaketime.so.1");
        }
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
        window->requestForceRefresh();
        window->TimerEvent();
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
    void ExpectPointedAt(const SourceTrack &record, const char *when)
    {
        QTest::qWait(50); // the dummy's own fast clock arrives well within this
        const QList<QByteArray> p = Query(rotatorPort, "p", 2);
        ASSERT_EQ(p.size(), 2) << when;
        // Sent with two decimals, reported with two.
        EXPECT_NEAR(p[0].toDouble(), record.azimuth, 0.0051) << when;
        EXPECT_NEAR(p[1].toDouble(), record.elevation, 0.0051) << when;
    }

    int64_t fakeMs = 1000000;
    quint16 rotatorPort = 0, rigPort = 0;
    std::unique_ptr<QProcess> rotator, rig;
    std::unique_ptr<MainWindow> window;
    StationControl *control = nullptr;
    SourceTrack dxAtRefresh{};
};

TEST_F(StationControlLive, RotatorFollowsByItsThresholdsAndHoldsBelowTheMinimum)
{
    const SourceTrack first = Refresh(30000);
    ExpectPointedAt(first, "first refresh");

    const SourceTrack near = Refresh(1000, 15); // 15 s: more than 0.02, less than 0.2 degrees
    const double moved = std::fabs(near.azimuth - first.azimuth);
    ASSERT_TRUE(moved > 0.02 && moved < 0.2 && std::fabs(near.elevation - first.elevation) < 0.2);
    ExpectPointedAt(first, "moved less than 0.2 degrees");
    const SourceTrack later = Refresh(1000, 120);
    ExpectPointedAt(later, "moved over 0.2 degrees");
    Refresh(28000, 5);
    ExpectPointedAt(later, "28 s after");
    const SourceTrack repeated = Refresh(2000);
    ExpectPointedAt(repeated, "30 s after");

    StationControlSettings s = control->settings();
    s.minimumElevation = repeated.elevation + 5.0;
    control->Apply(s);
    Refresh(31000, 600);
    ExpectPointedAt(repeated, "below the minimum elevation");
}

TEST_F(StationControlLive, RadioFollowsEachDopplerModeOnceASecond)
{
    const double f = 1296e6;
    SourceTrack home = Refresh(1000); // own echo: receive f + own Doppler, transmit f
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler));
    EXPECT_EQ(Frequency("i"), 1296000000);
    EXPECT_EQ(Query(rigPort, "s", 2), (QList<QByteArray>{"1", "VFOB"}));

    const int64_t before = Frequency("f");
    home = Refresh(500, 60); // a minute on: another Doppler, but half a second is too soon
    ASSERT_NE(std::llround(f + home.doppler), before);
    EXPECT_EQ(Frequency("f"), before);
    home = Refresh(500);
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler));

    StationControlSettings s = control->settings();
    s.dopplerMode = DopplerConstantOnMoon;
    control->Apply(s);
    home = Refresh(1000);
    EXPECT_EQ(Frequency("f"), std::llround(f + home.doppler / 2));
    EXPECT_EQ(Frequency("i"), std::llround(f - home.doppler / 2));

    s.dopplerMode = DopplerDx; // a DX station 400 km away sees the Moon too
    control->Apply(s);
    CopyField(dxStation.grid, "FN20");
    dxStation.latitude = 40.5;
    dxStation.longitude = -75.0;
    home = Refresh(1000);
    ASSERT_EQ(dxSeesSource, 1);
    const int64_t mutual = std::llround(f + (home.doppler + dxAtRefresh.doppler) / 2);
    EXPECT_EQ(Frequency("f"), mutual);
    EXPECT_EQ(Frequency("i"), 1296000000);
    dxStation.latitude = -42.51; // at the antipode it does not: the radio holds
    dxStation.longitude = 109.04;
    Refresh(1000, 60);
    ASSERT_EQ(dxSeesSource, 0);
    EXPECT_EQ(Frequency("f"), mutual);

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
    EXPECT_TRUE(control->rotator().status().contains("trying again"));
    EXPECT_TRUE(control->indicator()->toolTip().contains(control->rotator().status()));
    EXPECT_EQ(control->rig().state(), DaemonLink::Connected);
    window->widgets()->DateTimeButton->setText(""); // the window's clock still runs
    EXPECT_TRUE(QTest::qWaitFor(
        [this] { return !window->widgets()->DateTimeButton->text().isEmpty(); }, 3000));

    StartDaemon(rotator, "rotctld", rotatorPort); // a new dummy, at 0 / 0
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return control->rotator().state() == DaemonLink::Connected; }, 3000));
    ExpectPointedAt(Refresh(30000), "after the daemon came back");
}

TEST(StationControlFaults, GarbageSilenceOrHangingUpDropTheLinkAndRetry)
{
    test::ResetSharedState();
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

TEST(StationControlWindow, MenuDialogIndicatorAndLayout)
{
    test::ResetSharedState();
    MainWindow window;
    QMainWindow bare; // the same form without the indicator
    Ui::MainWindow bareUi;
    bareUi.setupUi(&bare);
    for (QMainWindow *w : {(QMainWindow *)&window, &bare})
        w->resize(1640, 960), w->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window) && QTest::qWaitForWindowExposed(&bare));
    Ui::MainWindow *ui = window.widgets();
    auto *control = window.findChild<StationControl *>("StationControl");
    EXPECT_EQ(ui->centralWidget->geometry(), bareUi.centralWidget->geometry());
    EXPECT_EQ(ui->menuBar->cornerWidget(), control->indicator());
    EXPECT_EQ(control->indicator()->text().count("#909090"), 2); // both off

    QTimer::singleShot(0, [] {
        auto *dialog = qobject_cast<StationControlDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        Ui::StationControlDialog *d = dialog->widgets();
        EXPECT_TRUE(d->RotatorHost->text() == "localhost" && d->RotatorPort->value() == 4533 &&
                    d->RotatorStatus->text() == "Off");
        d->DopplerMode->setCurrentIndex(DopplerDx);
        EXPECT_TRUE(d->ModeHelp->text().contains("mutual Doppler"));
        d->RigEnabled->setChecked(true);
        d->RigHost->setText("127.0.0.1");
        d->RigPort->setValue(FreePort()); // nothing listens there
        d->buttonBox->button(QDialogButtonBox::Ok)->click();
    });
    ui->actionStationControl->trigger();
    QSettings file(test::SettingsFolder() + "Lunaquill.ini", QSettings::IniFormat);
    EXPECT_EQ(file.value("STATION_CONTROL/DopplerMode").toInt(), DopplerDx);
    EXPECT_EQ(file.value("STATION_CONTROL/RigEnabled").toString(), "true");
    // The refused connection turns the radio's dot red; the rotator's stays grey.
    EXPECT_TRUE(QTest::qWaitFor(
        [control] { return control->indicator()->text().contains("#e00000"); }, 3000));
    EXPECT_EQ(control->indicator()->text().count("#909090"), 1);
    EXPECT_TRUE(control->indicator()->toolTip().contains("Radio: 127.0.0.1:"));
}

} // namespace
