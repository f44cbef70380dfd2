// Follows WSJT-X: one UDP socket on the GUI thread listens where WSJT-X sends
// its messages (a multicast group is joined, so several programs can follow
// one WSJT-X), reads them with ReadWsjtxMessage and reports a changed DX
// station or dial frequency once per batch of datagrams. It sends nothing.
// A dot "WSJT-X" beside the station control's shows how it goes.
#pragma once

#include "Settings.h"

#include "tracking/WsjtxMessage.h"

#include <QHostAddress>
#include <QLabel>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QUdpSocket>

class QMenuBar;

namespace lunaquill {

class WsjtxLink : public QObject
{
    Q_OBJECT

public:
    enum State {
        Off,        // not enabled: grey
        Silent,     // listening, nothing heard lately (or WSJT-X closed): amber
        Hearing,    // a Heartbeat or Status within the last 30 s: green
        Failed,     // the socket could not be bound or the group joined: red
    };

    // Reads the WSJTX settings and starts listening when enabled.
    explicit WsjtxLink(QObject *parent = nullptr);
    ~WsjtxLink() override;

    const WsjtxSettings &settings() const { return current; }
    // Listens anew when the switch, address or port changed or listening
    // had failed; then, or when a follow switch is turned on, the next
    // Status is taken whatever was taken before.
    void Apply(const WsjtxSettings &settings);
    // Saves the settings and applies them; false, with the reason, when the
    // file could not be written (they apply all the same).
    bool SaveAndApply(const WsjtxSettings &settings, QString *error);

    // Puts the dot after whatever the menu bar shows in its right corner.
    void Attach(QMenuBar *menuBar);

    // The main window has taken this DX station (named in the tooltip).
    void DxTaken(const char *call, const char *grid);

    State state() const { return linkState; }
    QString status() const;
    QLabel *indicator() const { return indicatorLabel; }
    quint16 localPort() const { return socket.localPort(); }
    // Datagrams read since the start, whatever they held (for tests).
    qint64 datagramsRead() const { return datagramCount; }
    // How long after the last Heartbeat or Status the dot stays green.
    void SetSilenceMs(int ms) { silence.setInterval(ms); }

signals:
    // A Status asks for a new DX station, a new frequency or both.
    void Follow(const lunaquill::WsjtxFollowChange &change);
    void Changed(); // state or status text

private:
    void Listen();
    void ReadDatagrams();
    void SetState(State state, const QString &why = QString());
    void ShowIndicator();

    WsjtxSettings current;
    QUdpSocket socket;
    QTimer silence;
    State linkState = Off;
    QString reason;            // why it failed, or what it last heard
    WsjtxFollowMemory followed;
    QString senderId, senderVersion, lastDx;
    qint64 datagramCount = 0;
    QPointer<QLabel> indicatorLabel; // the menu bar's, gone first at exit
};

} // namespace lunaquill
