// Station control: the decisions by hand-worked tables; Hamlib's dummy daemons
// (rotctld -m 1, rigctld -m 1 on free local ports) driven by the controller and
// read back; small local stand-ins that refuse, fall silent or talk garbage.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/StationControl.h"
#include "app/StationControlDialog.h"
#include "ui_StationControlDialog.h"
#include "tracking/Maidenhead.h"

#include <QMenuBar>
#include <QProcess>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QToolTip>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

// The short way round inside each of Hamlib's common ranges, and what the
// daemons report of them.
TEST(StationControlDecisions, AzimuthChoiceWithinTheRotatorsRange)
{
    const RotatorRange whole, half{-180, 180}, overlap{-180, 450}, wide{0, 540}, part{0, 270};
    const std::optional<double> none;
    // 0 and 360 are both in 0..360: 0 first; from 359.9 to 0.1 the long way round
    // in it; -180..450 crosses north the short way either way, and parked north
    // turns 110 west, not 250 east; -180..180 stops at south and has north in its
    // middle; out of reach is the nearer end.
    const struct { RotatorRange range; std::optional<double> from; double to, sent; } rows[] = {
        {whole, none, 370.0, 10.0}, {whole, none, -10.0, 350.0}, {whole, none, 0.0, 0.0},
        {whole, 359.9, 0.1, 0.1}, {overlap, 359.9, 0.1, 360.1}, {overlap, 0.2, 359.8, -0.2},
        {overlap, 0.0, 250.0, -110.0}, {overlap, 400.0, 10.0, 370.0}, {half, none, 200.0, -160.0},
        {half, 179.9, 180.1, -179.9}, {half, -0.1, 0.1, 0.1}, {wide, 530.0, 175.0, 535.0},
        {wide, 10.0, 175.0, 175.0}, {wide, 359.9, 0.1, 360.1}, {part, none, 300.0, 270.0},
        {part, none, 350.0, 0.0},
    };
    for (const auto &row : rows)
        EXPECT_NEAR(ChooseAzimuth(row.to, row.range, row.from), row.sent, 1e-9)
            << row.range.minimumAzimuth << ".." << row.range.maximumAzimuth << " from "
            << row.from.value_or(NAN) << " to " << row.to;
    const AzEl high = RotatorTarget(370.0, 95.0), low = RotatorTarget(-10.0, -5.0);
    EXPECT_TRUE(high.azimuth == 10.0 && high.elevation == 90.0 && low.azimuth == 350.0 &&
                low.elevation == 0.0);

    // rotctld 4.5's plain and extended dump_state; nothing or nonsense is 0..360.
    const struct { QList<QByteArray> lines; RotatorRange range; } dumps[] = {
        {{"1", "1", "min_az=-180.000000", "max_az=450.000000", "min_el=0.000000",
          "max_el=90.000000", "south_zero=0", "rot_type=AzEl", "done"}, {-180, 450, 0, 90}},
        {{"dump_state:", "rotctld Protocol Ver: 1", "Rotor Model: 1", "Minimum Azimuth: 0.000000",
          "Maximum Azimuth: 540.000000", "Minimum Elevation: 0.000000",
          "Maximum Elevation: 180.000000", "done"}, {0, 540, 0, 180}},
        {{}, {}}, {{"min_az=200", "max_az=100", "max_el=nan"}, {}}};
    for (const auto &[lines, e] : dumps) {
        const RotatorRange r = ParseRotatorRange(lines);
        EXPECT_TRUE(r.minimumAzimuth == e.minimumAzimuth && r.maximumAzimuth == e.maximumAzimuth &&
                    r.minimumElevation == e.minimumElevation &&
                    r.maximumElevation == e.maximumElevation) << lines.join(' ').data();
    }

    // Across north the short way: 359.9 to 0.05 is 0.15 degrees, to 0.1 is 0.2.
    // The same target again only once 30 s have passed; a refusal holds 10 s.
    RotatorMemory north{true, {359.9, 20.0}, 0, {}}, refused{false, {}, 0, 40000};
    EXPECT_FALSE(RotatorDue(north, {0.05, 20.0}, 1000));
    EXPECT_TRUE(RotatorDue(north, {0.1, 20.0}, 1000) && RotatorDue(north, {360.1, 20.0}, 1000));
    EXPECT_FALSE(RotatorDue(north, {359.9, 20.0}, 29999));
    EXPECT_TRUE(RotatorDue(north, {359.9, 20.0}, 30000));
    EXPECT_FALSE(RotatorDue(refused, {10.0, 20.0}, 49999));
    EXPECT_TRUE(RotatorDue(refused, {10.0, 20.0}, 50000));
}

// The five modes by hand, split kept on, refusals held back 10 s.
TEST(StationControlDecisions, DopplerModesSplitAndRefusals)
{
    auto pair = [](int32_t mode, double f, double home, double dx, bool dxSees = true) {
        const auto r = DopplerFrequencies(mode, f, home, dx, true, dxSees);
        return r ? QString("%1/%2").arg(r->receiveHz).arg(r->transmitHz).toStdString() : "hold";
    };
    // 1296 MHz, own echo +3000 Hz, DX -1000 Hz: mutual (3000 - 1000) / 2 = 1000 Hz.
    EXPECT_EQ(pair(DopplerConstantOnMoon, 1296.0, 3000, -1000), "1296001500/1295998500");
    EXPECT_EQ(pair(DopplerFullToDx, 1296.0, 3000, -1000), "1296001000/1295999000");
    // 432 MHz, -401 and -200 Hz: m = -300.5 Hz; 431 999 699.5 and 432 000 300.5
    // round half away from zero.
    EXPECT_EQ(pair(DopplerFullToDx, 432.0, -401, -200), "431999700/432000301");
    // Nothing without the Moon at both ends, a frequency, a known mode.
    EXPECT_EQ(pair(DopplerFullToDx, 1296.0, 3000, -1000, false), "hold");
    EXPECT_EQ(pair(DopplerDx, 1296.0, 3000, -1000, false), "hold");
    EXPECT_FALSE(DopplerFrequencies(DopplerFullToDx, 1296.0, 3000, -1000, false, true));
    EXPECT_FALSE(DopplerFrequencies(DopplerOwnEcho, NAN, 3000, -1000, true, true));
    EXPECT_EQ(pair(DopplerModeCount, 1296.0, 3000, -1000), "hold");

    // A radio that takes split: asserted with the first pair, read back, then
    // again once 30 s old; only what changed, at most once a second.
    auto sent = [](RigMemory &memory, int64_t receive, int64_t transmit, int64_t ms) {
        const std::vector<QByteArray> commands = RigCommands(memory, {receive, transmit}, ms);
        return QList<QByteArray>(commands.begin(), commands.end()).join('|').toStdString();
    };
    RigMemory memory;
    EXPECT_EQ(sent(memory, 1296003000, 1296000000, 5000), "S 1 VFOB|s|F 1296003000|I 1296000000");
    RigReplied(memory, "S 1 VFOB", 0, {}, 5000);
    EXPECT_TRUE(RigReplied(memory, "s", 0, {"1", "VFOB"}, 5000));
    EXPECT_EQ(sent(memory, 1296003000, 1295999999, 5999), "");
    EXPECT_EQ(sent(memory, 1296003000, 1295999999, 6000), "I 1295999999");
    EXPECT_EQ(sent(memory, 1296003000, 1295999999, 9000), "");
    EXPECT_EQ(sent(memory, 1296003005, 1295999999, 35000), "S 1 VFOB|s|F 1296003005");
    // Switched out of split meanwhile: it reads back off after RPRT 0.
    RigReplied(memory, "S 1 VFOB", 0, {}, 35000);
    EXPECT_FALSE(RigReplied(memory, "s", 0, {"0", "VFOA"}, 35000));
    EXPECT_EQ(sent(memory, 1296003006, 1295999999, 36000), "F 1296003006");
    EXPECT_EQ(sent(memory, 1296003007, 1295999999, 45000), "S 1 VFOB|s|F 1296003007");

    // A radio that refuses split and one frequency: each is held back 10 s.
    RigMemory refusing;
    EXPECT_EQ(sent(refusing, 1296003000, 1296000000, 0), "S 1 VFOB|s|F 1296003000|I 1296000000");
    RigReplied(refusing, "S 1 VFOB", -11, {}, 0);
    EXPECT_TRUE(RigReplied(refusing, "s", 0, {"0", "VFOA"}, 0));
    RigReplied(refusing, "I 1296000000", -11, {}, 0);
    EXPECT_EQ(sent(refusing, 1296003001, 1296000000, 1000), "F 1296003001");
    EXPECT_EQ(sent(refusing, 1296003001, 1296000000, 9999), "");
    EXPECT_EQ(sent(refusing, 1296003001, 1296000000, 10000), "S 1 VFOB|s|I 1296000000");
    // A daemon that cannot read split back: the S's own RPRT 0 confirms it.
    RigReplied(refusing, "S 1 VFOB", 0, {}, 10000);
    RigReplied(refusing, "s", -11, {}, 10000);
    EXPECT_EQ(sent(refusing, 1296003002, 1296000000, 39000), "F 1296003002");
    EXPECT_EQ(sent(refusing, 1296003003, 1296000000, 40000), "S 1 VFOB|F 1296003003");
}

TEST(StationControlDecisions, SettingsAndTheSavedHomeStation)
{
    // Values out of range or garbled in the file read as the defaults; mode 4 is one.
    ResetSharedState();
    WriteIni("[STATION_CONTROL]\nRotatorHost=\nRotatorEnabled=yes\nRotatorPort=0\n"
             "MinimumElevation=nan\nRigPort=65536\nDopplerMode=5\nRotatorReplyTimeout=31\n"
             "RigReplyTimeout=12\n");
    StationControlSettings s;
    LoadStationControl(kSettingsFileName, s);
    EXPECT_EQ(QString("%1 %2 %3 %4 %5 %6 %7 %8").arg(s.rotatorEnabled).arg(s.rotatorPort)
                  .arg(s.minimumElevation).arg(s.rigPort).arg(s.dopplerMode).arg(s.rotatorHost)
                  .arg(s.rotatorReplyTimeout).arg(s.rigReplyTimeout),
              "0 4533 0 4532 0 localhost 3 12");
    WriteIni("[STATION_CONTROL]\nDopplerMode=4\n");
    LoadStationControl(kSettingsFileName, s);
    EXPECT_EQ(s.dopplerMode, DopplerFullToDx);

    // Only a station the user saved counts, not the first run's JJ00aa at 0, 0
    // that a frequency change writes back.
    const struct { const char *ini; bool saved; } rows[] = {
        {"[STATION_CONTROL]\nRigEnabled=true\n", false},
        {"[HOME_DATA]\nFrequency=144.1\n", false},
        {"[HOME_DATA]\nGrid=JJ00aa\nLatitude=0\nLongitude=0\nFrequency=144.1\n", false},
        {"[HOME_DATA]\nGrid=JJ00aa\nLatitude=0.5\nLongitude=0\n", true},
        {"[HOME_DATA]\nGrid=FN42mm\n", true},
    };
    for (const auto &row : rows) {
        WriteIni(row.ini);
        EXPECT_EQ(HomeStationSaved(kSettingsFileName), row.saved) << row.ini;
    }
}

quint16 FreePort()
{
    QTcpServer probe;
    probe.listen(QHostAddress::LocalHost, 0);
    return probe.serverPort();
}

// One command to a daemon, its reply lines; asked again when the daemon hangs
// up first, as rigctld sometimes does on a busy machine.
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

struct Place { double latitude, longitude; };

SourceTrack MoonAt(time_t t, Place place)
{
    struct tm utc{};
    SourceTrack moon{};
    gmtime_r(&t, &utc);
    ComputeSource(Moon, TrackPosition, utc, place.latitude, place.longitude, 1296.0, moon);
    return moon;
}

// Degrees north and east of the Moon's sub-point, rounded to the four decimals
// the settings file keeps, so the test and the controller see one place.
Place NearTheMoon(time_t t, double north, double east)
{
    const SourceTrack moon = MoonAt(t, {0.0, 0.0});
    const double longitude = std::fmod(moon.subLongitude + east + 540.0, 360.0) - 180.0;
    const double latitude = std::clamp(moon.subLatitude + north, -85.0, 85.0);
    return {std::round(latitude * 1e4) / 1e4, std::round(longitude * 1e4) / 1e4};
}

// The home station in the program's memory, and in the settings file's words.
QByteArray SetHome(Place home)
{
    homeData.latitude = home.latitude;
    homeData.longitude = home.longitude;
    char grid[7];
    LatLongToGrid(grid, home.latitude, home.longitude);
    return QString("[HOME_DATA]\nGrid=%1\nLatitude=%2\nLongitude=%3\n")
        .arg(grid).arg(home.latitude, 0, 'f', 4).arg(home.longitude, 0, 'f', 4).toUtf8();
}

// A stand-in radio daemon, a controller of its own with the indicator in a
// menu bar, on clocks the test moves. The stand-in answers each line as told
// (without an answer it hangs up at once) and keeps what it was sent.
struct FakeDaemon {
    explicit FakeDaemon(std::function<QByteArray(const QByteArray &)> answer) : answer(answer)
    {
        server.listen(QHostAddress::LocalHost, 0);
        QObject::connect(&server, &QTcpServer::newConnection, [this] {
            QTcpSocket *peer = server.nextPendingConnection();
            ++connections;
            if (!this->answer)
                peer->close();
            QObject::connect(peer, &QTcpSocket::readyRead, [this, peer] {
                while (peer->canReadLine()) {
                    received << peer->readLine().trimmed();
                    peer->write(this->answer(received.last()));
                }
            });
        });
        control.SetClock([this] { return ms; });
        control.SetUtcClock([this] { return utc; });
        control.Attach(&bar, &entry);
        settings.rigEnabled = true;
        settings.rigHost = "127.0.0.1";
        settings.rigPort = server.serverPort();
        settings.dopplerMode = DopplerOwnEcho;
    }
    void Step(int64_t stepMs)
    {
        ms += stepMs;
        utc += stepMs / 1000;
        control.Tick();
        EXPECT_TRUE(QTest::qWaitFor([this] { return control.rig().idle(); }, 2000));
    }
    int Count(const QByteArray &command) const { return (int)received.count(command); }
    QString Dots() const { return control.indicator()->text(); }
    QString Tip() const { return control.indicator()->toolTip(); }

    QTcpServer server;
    std::function<QByteArray(const QByteArray &)> answer;
    QList<QByteArray> received;
    int connections = 0;
    QMenuBar bar;
    QAction entry;
    StationControl control;
    StationControlSettings settings;
    int64_t ms = 1000000;
    time_t utc = time(nullptr);
};

constexpr const char *kAmber = "#e0a000", *kGreen = "#00b000", *kRed = "#e00000";

// No home station saved: no connection, and the dots say why. Once saved: a
// radio that refuses split is amber with its reply, in the tooltip on show
// too; split retried every 10 s while the frequencies go on every second.
TEST(StationControlFaults, NoHomeStationThenARadioRefusingSplit)
{
    ResetSharedState();
    FakeDaemon c([](const QByteArray &line) -> QByteArray {
        if (line == "S 1 VFOB")
            return "RPRT -11\n";
        return line == "s" ? "0\nVFOA\n" : line == "f" ? "1296000000\n" : "RPRT 0\n";
    });
    homeData.frequency = 1296.0;
    WriteIni("");
    c.control.rig().SetTimings(3000, 3000, 5000, 200);
    c.control.Apply(c.settings);
    for (int i = 0; i < 3; ++i)
        c.Step(1000);
    QTest::qWait(200);
    EXPECT_EQ(c.connections, 0);
    EXPECT_EQ(c.Dots().count(kAmber), 1);
    EXPECT_TRUE(c.Tip().contains("Radio: Nothing is sent until a home station is saved"))
        << c.Tip().toStdString();

    WriteIni(SetHome(NearTheMoon(c.utc, 0.0, 25.0)));
    c.Step(1000);
    ASSERT_TRUE(QTest::qWaitFor([&] { return c.Dots().count(kGreen) == 1; }, 3000))
        << "green after the first good reply (the probe)";
    c.bar.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&c.bar));
    QTest::qWait(50);
    QToolTip::showText(QPoint(10, 10), c.Tip(), c.control.indicator());
    ASSERT_TRUE(QToolTip::isVisible());
    for (int second = 0; second < 25; ++second) {
        c.utc += 9; // the Moon 10 s on at each second: the receive frequency moves every time
        c.Step(1000);
    }
    EXPECT_EQ(c.Count("S 1 VFOB"), 3) << "at 0, 10 and 20 s";
    EXPECT_GE(std::count_if(c.received.begin(), c.received.end(),
                            [](const QByteArray &line) { return line.startsWith("F "); }), 20);
    EXPECT_EQ(c.Dots().count(kAmber), 1);
    EXPECT_TRUE(c.Tip().contains("Radio: Connected to 127.0.0.1:") &&
                c.Tip().contains("refused \"S 1 VFOB\": RPRT -11")) << c.Tip().toStdString();
    EXPECT_EQ(QToolTip::text(), c.Tip()) << "the tooltip on show follows";
    QToolTip::hideText();
}

// An idle link is probed; silence, garbage or hanging up turn it red with the
// reason, and it tries again. Green only after a good reply.
TEST(StationControlFaults, ProbeSilenceGarbageHangingUp)
{
    const struct { int goodReplies; const char *reply, *shows; } rows[] = {
        {3, "", "no reply to \"f\" within 1 s"},
        {0, "\x01Hello there\n", "unexpected reply \"?Hello there\""},
        {0, nullptr, "closed"},
    };
    for (const auto &row : rows) {
        ResetSharedState();
        WriteIni("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.5\nLongitude=-71\n");
        homeData.trackingSource = Sun; // nothing for the radio to do
        int replies = 0;
        FakeDaemon c(nullptr);
        if (row.reply)
            c.answer = [&](const QByteArray &) {
                return QByteArray(replies++ < row.goodReplies ? "1296000000\n" : row.reply);
            };
        c.control.rig().SetTimings(1000, 3000, 200, 300);
        c.settings.rigReplyTimeout = 1;
        QStringList shown;
        bool green = false, red = false;
        QObject::connect(&c.control.rig(), &DaemonLink::Changed, [&] {
            shown << c.control.rig().status();
            green = green || c.Dots().count(kGreen) == 1;
            red = red || (shown.last().contains(row.shows) && c.Dots().count(kRed) == 1);
        });
        c.control.Apply(c.settings);
        EXPECT_TRUE(QTest::qWaitFor([&] { return shown.filter(row.shows).size() >= 2; }, 5000))
            << shown.join('\n').toStdString();
        EXPECT_TRUE(red && green == (row.goodReplies > 0)) << row.shows;
        EXPECT_EQ(c.received.size(), c.Count("f")) << "only the probe";
    }
}

class StationControlLive : public WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        StartDaemon(rotator, "rotctld", rotatorPort);
        StartDaemon(rig, "rigctld", rigPort);
        home = NearTheMoon(utc, 0.0, 40.0); // the Moon up, 40 degrees west of the meridian
        Open(SetHome(home) + QString("[STATION_CONTROL]\nRotatorEnabled=true\nRotatorHost="
                     "127.0.0.1\nRotatorPort=%1\nRigEnabled=true\nRigHost=127.0.0.1\n"
                     "RigPort=%2\nDopplerMode=1\n").arg(rotatorPort).arg(rigPort).toUtf8(), false);
        control = window->findChild<StationControl *>("StationControl");
        control->SetClock([this] { return fakeMs; });
        control->SetUtcClock([this] { return utc; });
        // A daemon that hangs up at first (rigctld on a busy machine) is soon back.
        control->rotator().SetTimings(1000, 500, 200);
        control->rig().SetTimings(1000, 3000, 200);
        ASSERT_TRUE(QTest::qWaitFor([this] {
            return control->rotator().health() == DaemonLink::Good &&
                   control->rig().health() == DaemonLink::Good;
        }, 10000));
    }
    void TearDown() override { window.reset(); } // before the daemons' QProcess kills them

    // The dummy rotator turns 6 degrees a second by its own clock; one 500
    // times faster reaches any target at once.
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
        process->start(program, QStringList{"-m", "1", "-T", "127.0.0.1", "-t",
                                            QString::number(port)});
        ASSERT_TRUE(QTest::qWaitFor([port] {
            QTcpSocket probe;
            probe.connectToHost(QHostAddress::LocalHost, port);
            return probe.waitForConnected(100);
        }, 5000)) << program << " (faketime, libhamlib-utils)";
    }

    // One tick of the controller, every command answered; the Moon it saw.
    SourceTrack Step(int64_t advanceMs, time_t advanceUtc = 0)
    {
        auto answered = [this] { return control->rotator().idle() && control->rig().idle(); };
        EXPECT_TRUE(QTest::qWaitFor(answered, 3000));
        fakeMs += advanceMs;
        utc += advanceUtc;
        control->Tick();
        EXPECT_TRUE(QTest::qWaitFor(answered, 3000));
        return MoonAt(utc, home);
    }
    int64_t Frequency(const char *command)
    {
        return Query(rigPort, command, 1).value(0, "-1").toLongLong();
    }
    // Azimuth and elevation once the dummy rotator stands still (its fast clock
    // turns it 75 degrees in the 25 ms between reads).
    std::pair<double, double> Pointed()
    {
        QList<QByteArray> last, now;
        for (int read = 0; read < 40 && (now.size() < 2 || now != last); ++read) {
            QTest::qWait(25);
            last = now;
            now = Query(rotatorPort, "p", 2);
        }
        return {now.value(0, "nan").toDouble(), now.value(1, "nan").toDouble()};
    }
    void ApplyMode(int32_t mode, double minimumElevation = 0.0)
    {
        StationControlSettings s = control->settings();
        s.dopplerMode = mode;
        s.minimumElevation = minimumElevation;
        control->Apply(s);
    }

    int64_t fakeMs = 1000000;
    time_t utc = time(nullptr);
    Place home{};
    quint16 rotatorPort = 0, rigPort = 0;
    std::unique_ptr<QProcess> rotator, rig;
    StationControl *control = nullptr;
};

// The five modes at one instant, with a DX station that sees the Moon too: what
// rigctld is told, from the two echo Dopplers; the last mode chosen in the
// menu's dialog and saved. The dish holds for small moves and below the
// minimum elevation; a killed daemon shows red while the window's clock runs on.
TEST_F(StationControlLive, WhatTheDaemonsAreToldAndADeadLinkShowsRed)
{
    const Place dx = NearTheMoon(utc, -30.0, -20.0);
    CopyField(dxStation.grid, "JJ00aa");
    dxStation.latitude = dx.latitude;
    dxStation.longitude = dx.longitude;
    dxStationSet = 1;
    const SourceTrack moon = MoonAt(utc, home);
    const double f = 1296e6, homeD = moon.doppler, dxD = MoonAt(utc, dx).doppler;
    ASSERT_TRUE(MoonAt(utc, dx).elevation > 10.0 && moon.elevation > 20.0 &&
                std::fabs(homeD) > 300.0);
    const double m = (homeD + dxD) / 2;
    const struct { int32_t mode; double receive, transmit; } rows[] = {
        {DopplerOwnEcho, f + homeD, f},
        {DopplerDx, f + m, f},
        {DopplerConstantOnMoon, f + homeD / 2, f - homeD / 2},
        {DopplerOff, f + homeD / 2, f - homeD / 2}, // left where the last mode put it
        {DopplerFullToDx, f + m, f - m},
    };
    for (const auto &row : rows) {
        if (row.mode == DopplerFullToDx) {
            WhenOpen<StationControlDialog>([](StationControlDialog &dialog) {
                EXPECT_EQ(dialog.widgets()->DopplerMode->count(), 5);
                dialog.widgets()->DopplerMode->setCurrentIndex(DopplerFullToDx);
                dialog.widgets()->RigReplyTimeout->setValue(40); // held to 30
            }, QDialogButtonBox::Ok);
            ui->actionStationControl->trigger();
        } else {
            ApplyMode(row.mode);
        }
        Step(1000);
        EXPECT_EQ(Frequency("f"), std::llround(row.receive)) << kDopplerModes[row.mode].name;
        EXPECT_EQ(Frequency("i"), std::llround(row.transmit)) << kDopplerModes[row.mode].name;
    }
    EXPECT_EQ(Query(rigPort, "s", 2), (QList<QByteArray>{"1", "VFOB"}));
    QSettings file(IniPath(), QSettings::IniFormat);
    EXPECT_EQ(file.value("STATION_CONTROL/DopplerMode").toString() + "|" +
                  file.value("STATION_CONTROL/RigReplyTimeout").toString() + "|" +
                  file.value("HOME_DATA/Latitude").toString(),
              QString("4|30|%1").arg(home.latitude, 0, 'f', 4));

    // 15 s on the Moon moves more than the 0.02 degrees the dish is sent in,
    // less than 0.2: it stays. So it does below the minimum elevation.
    const auto pointed = Pointed();
    const SourceTrack near = Step(1000, 15);
    const double moved = std::max(std::fabs(near.azimuth - moon.azimuth),
                                  std::fabs(near.elevation - moon.elevation));
    ASSERT_TRUE(moved > 0.02 && moved < 0.2) << moved;
    EXPECT_EQ(Pointed(), pointed);
    ApplyMode(DopplerOwnEcho, moon.elevation + 5.0);
    Step(31000, 600);
    EXPECT_EQ(Pointed(), pointed) << "below the minimum elevation";

    rotator->kill();
    rotator->waitForFinished();
    ASSERT_TRUE(QTest::qWaitFor(
        [this] { return control->rotator().state() == DaemonLink::Failed; }, 3000));
    EXPECT_EQ(control->indicator()->text().count(kRed), 1);
    ui->DateTimeButton->setText("");
    EXPECT_TRUE(QTest::qWaitFor([this] { return !ui->DateTimeButton->text().isEmpty(); }, 3000));
}

// Planning ahead moves nothing: two days later on the display, the dish and the
// radio stay on the Moon of the real clock. Then a Moon crossing north for a
// station 30 degrees south of it (it transits due north at about 60 degrees),
// from three minutes before: the -180..450 dummy follows the short way.
TEST_F(StationControlLive, TheRealClockAndTheNorthCrossing)
{
    control->SetUtcClock([] { return time(nullptr); });
    const SourceTrack today = MoonAt(utc, home), later = MoonAt(utc + 2 * 86400, home);
    ASSERT_GT(std::fabs(today.azimuth - later.azimuth) +
                  std::fabs(today.elevation - later.elevation), 3.0);
    for (int press = 0; press < 2; ++press) {
        QTest::mouseClick(ui->TimeAdjustDayPButton, Qt::LeftButton);
        Refresh();
        Step(30000);
    }
    EXPECT_EQ(displayOffset, 2 * 86400);
    const auto [azimuth, elevation] = Pointed();
    const SourceTrack now = MoonAt(time(nullptr), home);
    EXPECT_NEAR(std::fmod(azimuth + 360.0, 360.0), now.azimuth, 0.3);
    EXPECT_NEAR(elevation, now.elevation, 0.3);
    EXPECT_NEAR(Frequency("f"), 1296e6 + now.doppler, 30.0);

    control->SetUtcClock([this] { return utc; });
    home = NearTheMoon(utc, -30.0, 0.0);
    SetHome(home);
    time_t crossing = utc - 7200;
    while (crossing < utc + 7200 && !(MoonAt(crossing, home).azimuth < 90.0 &&
                                      MoonAt(crossing + 30, home).azimuth > 270.0))
        crossing += 30;
    ASSERT_LT(crossing, utc + 7200);
    utc = crossing - 180;
    std::string path;
    bool west = false, east = false;
    double turn = 0.0, last = NAN;
    for (int step = 0; step < 13; ++step) {
        Step(30000, step ? 30 : 0);
        const double azimuth = Pointed().first, north = std::fmod(azimuth + 360.0, 360.0);
        path += QString::asprintf(" %.2f", azimuth).toStdString();
        west = west || north > 350.0;
        east = east || north < 10.0;
        turn = step ? std::max(turn, std::fabs(azimuth - last)) : 0.0;
        last = azimuth;
    }
    EXPECT_TRUE(west && east && turn < 1.0) << path;
}

} // namespace
