// Following WSJT-X in the real window: datagrams written with QDataStream, as
// WSJT-X writes them, sent over UDP to the listener on a free local port;
// hostile ones first, then Status messages, and the panels read back. The
// dot's colours, the Station Control section, and a multicast group where
// this machine carries one.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/Settings.h"
#include "app/StationControlDialog.h"
#include "app/WsjtxLink.h"
#include "ui_StationControlDialog.h"

#include <QDataStream>
#include <QSettings>
#include <QUdpSocket>

#include <random>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

quint16 FreeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress::LocalHost, 0);
    return probe.localPort();
}

// A message as WSJT-X writes it: QDataStream, texts as QByteArray (a null one
// is the count 0xffffffff).
QByteArray Message(quint32 type, const std::function<void(QDataStream &)> &fields = {},
                   quint32 schema = 3, quint32 magic = 0xadbccbda)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_4);
    out << magic << schema << type << QByteArray("WSJT-X");
    if (fields)
        fields(out);
    return bytes;
}

QByteArray Status(quint64 dialHz, const QByteArray &call, const QByteArray &grid)
{
    return Message(1, [&](QDataStream &out) {
        out << dialHz << QByteArray("Q65") << call << QByteArray("-21") << QByteArray("Q65")
            << false << false << false << quint32(1500) << quint32(1500) << QByteArray("Q9QQ")
            << QByteArray("FN42mm") << grid << false << QByteArray("A") << false << quint8(0)
            << quint32(0xffffffff) << quint32(60) << QByteArray("Default") << QByteArray("");
    });
}

QByteArray Heartbeat(const QByteArray &version = "2.7.0")
{
    return Message(0, [&](QDataStream &out) { out << quint32(3) << version << QByteArray("a1b2c3"); });
}

class WsjtxLinkTest : public WindowTest
{
protected:
    // The window with the link on a free local port, the home station at
    // FN42mm, the frequency as the file gives it (1296.0 by default).
    void OpenLinked(const char *extra = "")
    {
        port = FreeUdpPort();
        Open(QString("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.52\nLongitude=-71.04\n"
                     "[WSJTX]\nEnabled=true\nPort=%1\n%2").arg(port).arg(extra).toUtf8().constData());
        link = window->findChild<WsjtxLink *>("WsjtxLink");
        ASSERT_NE(link, nullptr);
    }

    // Sends the datagrams and waits until the link has read every one.
    void Send(const QList<QByteArray> &datagrams, const QHostAddress &to = QHostAddress::LocalHost)
    {
        const qint64 expected = link->datagramsRead() + datagrams.size();
        for (const QByteArray &datagram : datagrams)
            ASSERT_EQ(sender.writeDatagram(datagram, to, port), datagram.size());
        ASSERT_TRUE(QTest::qWaitFor([&] { return link->datagramsRead() >= expected; }, 5000))
            << link->datagramsRead() << " of " << expected;
    }

    std::string Dot() const
    {
        const QString text = link->indicator()->text();
        for (const char *colour : {"#00b000", "#e0a000", "#e00000", "#909090"})
            if (text.contains(colour))
                return colour;
        return text.toStdString();
    }

    std::string DxPanels() const
    {
        return Texts({ui->DxCallsign, ui->DxGrid, ui->DxLatitude, ui->DxLongitude,
                      ui->SetFrequencyButton});
    }

    quint16 port = 0;
    QUdpSocket sender;
    WsjtxLink *link = nullptr;
};

std::string Shown(const WsjtxSettings &s)
{
    return QString("%1 %2 %3 %4 %5").arg(s.enabled).arg(s.address).arg(s.port).arg(s.followDx)
        .arg(s.followFrequency).toStdString();
}

// No file: off, 127.0.0.1:2237, both followed. Values out of range or
// garbled read as the defaults; "0" is a boolean, "yes" is not.
TEST(WsjtxSettingsFile, DefaultsAndGarbledValues)
{
    ResetSharedState();
    WsjtxSettings s;
    s.port = 1;
    LoadWsjtx(kSettingsFileName, s);
    EXPECT_EQ(Shown(s), "0 127.0.0.1 2237 1 1");
    WriteIni("[WSJTX]\nEnabled=yes\nAddress= \nPort=70000\nFollowDx=0\nFollowFrequency=maybe\n");
    LoadWsjtx(kSettingsFileName, s);
    EXPECT_EQ(Shown(s), "0 127.0.0.1 2237 0 1");
    WriteIni("[WSJTX]\nEnabled=true\nAddress=239.255.0.1\nPort=2238\nFollowDx=false\n");
    LoadWsjtx(kSettingsFileName, s);
    EXPECT_EQ(Shown(s), "1 239.255.0.1 2238 0 1");
}

TEST_F(WsjtxLinkTest, HostileDatagramsChangeNothingThenAStatusSetsTheDxStationAndFrequency)
{
    OpenLinked();
    EXPECT_EQ(Dot(), "#e0a000") << "listening, nothing heard yet";
    const std::string before = DxPanels();
    EXPECT_EQ(Text(ui->SetFrequencyButton), "1296.00 Mhz");

    const QByteArray good = Status(1296065000, "Q1XYZ", "JO62qm");
    const int gridEnd = good.size() - 31; // the fields after the DX grid take 31 bytes
    QByteArray pastEnd = good, nulInCall = Status(144100000, QByteArray("Q1\0XYZ", 6), "JO62qm");
    pastEnd[37] = 0x7f; // the DX call's count
    QList<QByteArray> hostile = {
        QByteArray(), QByteArray(3, '\xad'),
        Message(1, {}, 3, 0xadbccbdb) + good.mid(22),   // wrong magic
        Message(1, {}, 4) + good.mid(22),              // schema 4
        Message(2) + good.mid(22),                      // a Decode
        good.left(gridEnd - 1), good.left(40), pastEnd, nulInCall,
        Status(0, "Q1XYZ", "ZZ"),                       // not a locator; dial 0
        Status(UINT64_MAX, "Q1XYZ", ""),                // no grid; dial 2^64-1
        Message(1, [](QDataStream &out) { out << quint64(1296065000) << quint32(0xffffffff); }),
    };
    std::mt19937 random(20);
    for (int i = 0; i < 40; ++i) {
        QByteArray bytes(int(random() % 300), '\0');
        for (char &c : bytes)
            c = char(random());
        hostile << (i % 2 ? bytes : Message(1).left(12) + bytes);
    }
    // More than the link reads in one turn of the event loop: the rest come next.
    for (int i = hostile.size(); i < 130; ++i)
        hostile << QByteArray();
    Send(hostile);
    Refresh();
    EXPECT_EQ(DxPanels(), before);
    EXPECT_EQ(dxStationSet, 0);
    EXPECT_EQ(homeData.frequency, 1296.0);
    EXPECT_EQ(Text(ui->DxDoppler), " ");

    // JO62qm by hand: longitude 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375,
    // latitude 10*14 - 90 + 2 + 12.5*2.5/60 = 52.5208.
    Send({Heartbeat(), good});
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38|1296.07 Mhz");
    EXPECT_EQ(dxStationSet, 1);
    EXPECT_EQ(homeData.frequency, 1296.065);
    EXPECT_TRUE(dxTracks[CygnusA].valid) << "every source computed at once";
    Refresh();
    SourceTrack moon{};
    ComputeSource(Moon, TrackAll, DisplayedUtc(), 52.5208333333, 13.375, 1296.065, moon);
    EXPECT_EQ(Text(ui->DxAzimuth), Format("%7.2f", moon.azimuth));
    if (dxSeesSource) {
        EXPECT_EQ(Text(ui->DxDoppler), Format("%7.0f Hz", moon.doppler));
    }
    EXPECT_EQ(Dot(), "#00b000");
    const QString tip = link->indicator()->toolTip();
    EXPECT_TRUE(tip.contains("Id: WSJT-X, version 2.7.0") && tip.contains("Last DX taken: Q1XYZ JO62qm"))
        << tip.toStdString();
}

TEST_F(WsjtxLinkTest, ARepeatedStatusRecomputesNothingAndTheSwitchesHold)
{
    OpenLinked();
    Send({Status(1296065000, "Q1XYZ", "JO62qm")});
    ASSERT_EQ(Text(ui->DxCallsign), "Q1XYZ");
    // Marks in records only a full recomputation writes (the tick computes the
    // tracked source, the Moon, alone).
    dxTracks[CygnusA].azimuth = homeTracks[CygnusA].azimuth = -1234.0;
    Send({Status(1296065000, "Q1XYZ", "JO62qm"), Heartbeat(), Status(1296065000, "Q1XYZ", "JO62qm")});
    Tick(3);
    EXPECT_EQ(dxTracks[CygnusA].azimuth, -1234.0);
    EXPECT_EQ(homeTracks[CygnusA].azimuth, -1234.0);

    // A new dial alone: the frequency follows, and every source with it.
    Send({Status(432100000, "Q1XYZ", "JO62qm")});
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38| 432.10 Mhz");
    EXPECT_NE(dxTracks[CygnusA].azimuth, -1234.0);

    // The menu's dialog shows the section; the frequency switched off and a
    // new port: saved, and listening there at once.
    const quint16 newPort = FreeUdpPort();
    WhenOpen<StationControlDialog>([newPort](StationControlDialog &dialog) {
        Ui::StationControlDialog *w = dialog.widgets();
        EXPECT_TRUE(w->WsjtxGroup->isVisible() && w->WsjtxEnabled->isChecked() &&
                    w->WsjtxFollowDx->isChecked() && w->WsjtxFollowFrequency->isChecked());
        EXPECT_EQ(w->WsjtxAddress->text().toStdString(), "127.0.0.1");
        EXPECT_TRUE(w->WsjtxStatus->text().startsWith("Hearing WSJT-X on 127.0.0.1:"));
        w->WsjtxFollowFrequency->setChecked(false);
        w->WsjtxPort->setValue(newPort);
    }, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    QSettings file(IniPath(), QSettings::IniFormat);
    EXPECT_EQ(file.value("WSJTX/Port").toInt(), newPort);
    EXPECT_EQ(file.value("WSJTX/FollowFrequency").toString(), "false");
    EXPECT_EQ(link->localPort(), newPort);
    port = newPort;
    // The listener starts afresh: the same station is taken again, the dial is not.
    dxStation = {};
    Send({Status(144100000, "Q1XYZ", "JO62qm")});
    EXPECT_STREQ(dxStation.callsign, "Q1XYZ");
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38| 432.10 Mhz");
    EXPECT_EQ(homeData.frequency, 432.1);

    // Ok with nothing changed keeps what was taken: a station set by hand
    // stays. The frequency switched on again takes the next dial.
    WhenOpen<StationControlDialog>([](StationControlDialog &) {}, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    dxStation = {};
    Send({Status(144100000, "Q1XYZ", "JO62qm")});
    EXPECT_STREQ(dxStation.callsign, "");
    WhenOpen<StationControlDialog>([](StationControlDialog &dialog) {
        dialog.widgets()->WsjtxFollowFrequency->setChecked(true);
    }, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    Send({Status(144100000, "Q1XYZ", "JO62qm")});
    EXPECT_STREQ(dxStation.callsign, "");
    EXPECT_EQ(Text(ui->SetFrequencyButton), " 144.10 Mhz");
}

TEST_F(WsjtxLinkTest, TheDotGreyAmberGreenRed)
{
    OpenLinked();
    link->SetSilenceMs(300);
    Send({Heartbeat()});
    EXPECT_EQ(Dot(), "#00b000");
    EXPECT_TRUE(QTest::qWaitFor([&] { return Dot() == "#e0a000"; }, 3000)) << "silent";
    EXPECT_EQ(link->status().toStdString(), QString("Listening on 127.0.0.1:%1; nothing heard for 0.3 s").arg(port).toStdString());
    Send({Heartbeat()});
    EXPECT_EQ(Dot(), "#00b000");
    Send({Message(6)});
    EXPECT_EQ(Dot(), "#e0a000");
    EXPECT_TRUE(link->status().endsWith("WSJT-X closed"));

    WsjtxSettings s = link->settings();
    const struct { bool enabled; const char *address; const char *dot, *status; } rows[] = {
        {false, "127.0.0.1", "#909090", "Off"},
        {true, "no.such.address", "#e00000", "\"no.such.address\" is not an IP address"},
        // A documentation address no interface of this machine has.
        {true, "192.0.2.1", "#e00000", "cannot listen on 192.0.2.1:"},
    };
    for (const auto &row : rows) {
        s.enabled = row.enabled;
        s.address = row.address;
        link->Apply(s);
        EXPECT_EQ(Dot(), row.dot) << row.address;
        EXPECT_TRUE(link->status().startsWith(row.status)) << link->status().toStdString();
        EXPECT_TRUE(link->indicator()->toolTip().contains(QString(row.status).toHtmlEscaped()));
    }
}

TEST_F(WsjtxLinkTest, AMulticastGroupIsSharedWithAnotherListener)
{
    OpenLinked("Address=239.255.77.21\n");
    if (link->state() == WsjtxLink::Failed)
        GTEST_SKIP() << "no multicast here: " << link->status().toStdString();
    // Another program on the same port and group, as WSJT-X's other followers.
    QUdpSocket other;
    ASSERT_TRUE(other.bind(QHostAddress::AnyIPv4, port,
                           QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint));
    other.joinMulticastGroup(QHostAddress("239.255.77.21"));
    sender.bind(QHostAddress::AnyIPv4, 0);
    sender.setSocketOption(QAbstractSocket::MulticastLoopbackOption, 1);
    const QByteArray status = Status(10368100000, "Q1XYZ", "JO62qm");
    sender.writeDatagram(status, QHostAddress("239.255.77.21"), port);
    if (!QTest::qWaitFor([&] { return other.hasPendingDatagrams(); }, 2000))
        GTEST_SKIP() << "multicast does not loop back on this machine";
    ASSERT_TRUE(QTest::qWaitFor([&] { return link->datagramsRead() == 1; }, 2000));
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38|10368.10 Mhz");
}

} // namespace
