// Following WSJT-X in the real window: datagrams written with QDataStream, as
// WSJT-X writes them, sent over UDP to the listener on a free local port.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/Settings.h"
#include "app/StationControlDialog.h"
#include "app/WsjtxLink.h"
#include "ui_StationControlDialog.h"

#include <QDataStream>
#include <QSettings>
#include <QUdpSocket>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

quint16 FreeUdpPort()
{
    QUdpSocket probe;
    return probe.bind(QHostAddress::LocalHost, 0) ? probe.localPort() : 0;
}

// Texts as QByteArray, as WSJT-X writes them (a null one is the count 0xffffffff).
QByteArray Message(quint32 type, const std::function<void(QDataStream &)> &fields = {},
                   quint32 schema = 3, quint32 magic = 0xadbccbda)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly); // big-endian, as Qt_5_4 and every later version
    out << magic << schema << type << QByteArray("WSJT-X");
    if (fields)
        fields(out);
    return bytes;
}

// A Status as far as the DX grid, where older senders stop.
QByteArray Status(quint64 dialHz, const QByteArray &call = "Q1XYZ", const QByteArray &grid = "JO62qm")
{
    return Message(1, [&](QDataStream &out) {
        out << dialHz << QByteArray("Q65") << call << QByteArray("-21") << QByteArray("Q65") << false
            << false << false << quint32(1500) << quint32(1500) << QByteArray("Q9QQ")
            << QByteArray("FN42mm") << grid;
    });
}

const QByteArray kHeartbeat =
    Message(0, [](QDataStream &out) { out << quint32(3) << QByteArray("2.7.0") << QByteArray("a1b2c3"); });

class WsjtxLinkTest : public WindowTest
{
protected:
    // The link on a free local port, the home station at FN42mm, 1296.0 MHz.
    void OpenLinked(const char *extra = "")
    {
        port = FreeUdpPort();
        Open(QString("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.52\nLongitude=-71.04\n"
                     "[WSJTX]\nEnabled=true\nPort=%1\n%2").arg(port).arg(extra).toUtf8().constData());
        link = window->findChild<WsjtxLink *>("WsjtxLink");
        ASSERT_NE(link, nullptr);
    }

    // Sends the datagrams and waits until the link has read every one.
    void Send(const QList<QByteArray> &datagrams)
    {
        const qint64 expected = link->datagramsRead() + datagrams.size();
        for (const QByteArray &datagram : datagrams)
            ASSERT_EQ(sender.writeDatagram(datagram, QHostAddress::LocalHost, port), datagram.size());
        ASSERT_TRUE(QTest::qWaitFor([&] { return link->datagramsRead() >= expected; }, 5000));
    }

    std::string Dot() const
    {
        for (const char *colour : {"#00b000", "#e0a000", "#e00000", "#909090"})
            if (link->indicator()->text().contains(colour))
                return colour;
        return link->indicator()->text().toStdString();
    }

    std::string DxPanels() const
    {
        return Texts({ui->DxCallsign, ui->DxGrid, ui->DxLatitude, ui->DxLongitude, ui->SetFrequencyButton});
    }

    quint16 port = 0;
    QUdpSocket sender;
    WsjtxLink *link = nullptr;
};

// Garbled reads as the default (off, 127.0.0.1:2237, both followed); "0" is a boolean.
TEST(WsjtxSettingsFile, DefaultsAndGarbledValues)
{
    ResetSharedState();
    auto shown = [](const char *ini) {
        WsjtxSettings s;
        s.port = 1; // not the default, which a garbled value must restore
        WriteIni(ini);
        LoadWsjtx(kSettingsFileName, s);
        return QString("%1 %2 %3 %4 %5").arg(s.enabled).arg(s.address).arg(s.port).arg(s.followDx)
            .arg(s.followFrequency).toStdString();
    };
    EXPECT_EQ(shown("[WSJTX]\nEnabled=yes\nAddress= \nPort=70000\nFollowDx=0\nFollowFrequency=maybe\n"),
              "0 127.0.0.1 2237 0 1");
    EXPECT_EQ(shown("[WSJTX]\nEnabled=true\nAddress=239.255.0.1\nPort=2238\nFollowDx=false\n"),
              "1 239.255.0.1 2238 0 1");
}

TEST_F(WsjtxLinkTest, HostileDatagramsNoneAStatusItsRepeatTheSwitchesAndTheDot)
{
    OpenLinked();
    const std::string before = DxPanels();
    const QByteArray good = Status(1296065000);
    // Every kind of hostile datagram is in wsjtx_message_test; here: the window takes none.
    QList<QByteArray> hostile = {QByteArray(), Message(1, {}, 4) + good.mid(22), good.left(good.size() - 1),
                                 Status(0, "Q1XYZ", "ZZ"), Status(UINT64_MAX, "Q1XYZ", "")};
    while (hostile.size() < 130) // more than the link reads in one turn of the event loop
        hostile << QByteArray(3, '\xad');
    Send(hostile);
    Refresh();
    EXPECT_EQ(DxPanels(), before);
    // JO62qm by hand: longitude 2*6 + 20*9 + 16.5*5/60 - 180 = 13.375,
    // latitude 10*14 - 90 + 2 + 12.5*2.5/60 = 52.5208.
    Send({kHeartbeat, good});
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38|1296.07 Mhz");
    EXPECT_EQ(homeData.frequency, 1296.065);
    const QString tip = link->indicator()->toolTip();
    EXPECT_TRUE(tip.contains("Id: WSJT-X, version 2.7.0") && tip.contains("Last DX taken: Q1XYZ JO62qm"));
    // Marks only a full recomputation overwrites (the tick computes the Moon alone).
    dxTracks[CygnusA].azimuth = homeTracks[CygnusA].azimuth = -1234.0;
    Send({Status(1296065000), kHeartbeat, Status(1296065000)});
    Tick(3);
    EXPECT_TRUE(dxTracks[CygnusA].azimuth == -1234.0 && homeTracks[CygnusA].azimuth == -1234.0);
    // A new dial alone: the frequency follows, and every source with it.
    Send({Status(432100000)});
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38| 432.10 Mhz");
    EXPECT_NE(dxTracks[CygnusA].azimuth, -1234.0);
    // The dialog: the frequency switched off and a new port, saved and heard at once.
    const quint16 newPort = FreeUdpPort();
    WhenOpen<StationControlDialog>([newPort](StationControlDialog &dialog) {
        Ui::StationControlDialog *w = dialog.widgets();
        EXPECT_TRUE(w->WsjtxStatus->text().startsWith("Hearing WSJT-X on 127.0.0.1:"));
        w->WsjtxFollowFrequency->setChecked(false);
        w->WsjtxPort->setValue(newPort);
    }, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    QSettings file(IniPath(), QSettings::IniFormat);
    EXPECT_EQ(file.value("WSJTX/Port").toString() + file.value("WSJTX/FollowFrequency").toString(),
              QString("%1false").arg(newPort));
    port = newPort;
    // The listener starts afresh: the same station is taken again, the dial is not.
    dxStation = {};
    Send({Status(144100000)});
    EXPECT_STREQ(dxStation.callsign, "Q1XYZ");
    EXPECT_EQ(homeData.frequency, 432.1);
    // Ok with the frequency on again: the listener goes on (a hand-set station stays), the dial is taken.
    WhenOpen<StationControlDialog>([](StationControlDialog &dialog) {
        dialog.widgets()->WsjtxFollowFrequency->setChecked(true);
    }, QDialogButtonBox::Ok);
    ui->actionStationControl->trigger();
    dxStation = {};
    Send({Status(144100000)});
    EXPECT_STREQ(dxStation.callsign, "");
    EXPECT_EQ(Text(ui->SetFrequencyButton), " 144.10 Mhz");
    // The dot: green while heard, amber when silent or closed, grey off, red failed.
    link->SetSilenceMs(300);
    Send({kHeartbeat});
    EXPECT_EQ(Dot(), "#00b000");
    EXPECT_TRUE(QTest::qWaitFor([&] { return Dot() == "#e0a000"; }, 3000)) << "silent";
    EXPECT_EQ(link->status(), QString("Listening on 127.0.0.1:%1; nothing heard for 0.3 s").arg(port));
    Send({kHeartbeat});
    EXPECT_EQ(Dot(), "#00b000");
    Send({Message(6)});
    EXPECT_EQ(Dot(), "#e0a000");
    EXPECT_TRUE(link->status().endsWith("WSJT-X closed"));
    WsjtxSettings s = link->settings();
    const struct { bool enabled; const char *address, *dot, *status; } rows[] = {
        {false, "127.0.0.1", "#909090", "Off"},
        {true, "no.such.address", "#e00000", "\"no.such.address\" is not an IP address"},
        {true, "192.0.2.1", "#e00000", "cannot listen on 192.0.2.1:"}, // on no interface here
    };
    for (const auto &row : rows) {
        s.enabled = row.enabled, s.address = row.address;
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
    QUdpSocket other; // another of WSJT-X's followers on the same port and group
    ASSERT_TRUE(other.bind(QHostAddress::AnyIPv4, port, QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint));
    other.joinMulticastGroup(QHostAddress("239.255.77.21"));
    sender.bind(QHostAddress::AnyIPv4, 0);
    sender.setSocketOption(QAbstractSocket::MulticastLoopbackOption, 1);
    sender.writeDatagram(Status(10368100000), QHostAddress("239.255.77.21"), port);
    if (!QTest::qWaitFor([&] { return other.hasPendingDatagrams(); }, 2000))
        GTEST_SKIP() << "multicast does not loop back on this machine";
    ASSERT_TRUE(QTest::qWaitFor([&] { return link->datagramsRead() == 1; }, 2000));
    EXPECT_EQ(DxPanels(), "Q1XYZ|JO62qm|52.52|13.38|10368.10 Mhz");
}

} // namespace
