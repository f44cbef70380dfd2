#include "WsjtxLink.h"

#include <QHBoxLayout>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QNetworkDatagram>
#include <QNetworkInterface>
#include <QNetworkProxy>
#include <QStringList>

#include <optional>

// What was heard and ignored: QT_LOGGING_RULES="lunaquill.wsjtx.debug=true".
Q_LOGGING_CATEGORY(lcWsjtx, "lunaquill.wsjtx", QtInfoMsg)

namespace lunaquill {

namespace {

// WSJT-X sends a Heartbeat every 15 s: two missed ones mean it is gone.
constexpr int kSilenceMs = 30000;
// The largest UDP payload; a longer read would only be cut.
constexpr qint64 kLargestDatagram = 65536;
// Datagrams read per turn of the event loop: a flood on the port cannot
// starve the window (the rest are read at the next turn).
constexpr int kDatagramsPerTurn = 100;

} // namespace

WsjtxLink::WsjtxLink(QObject *parent) : QObject(parent)
{
    setObjectName("WsjtxLink");
    socket.setProxy(QNetworkProxy::NoProxy);
    silence.setSingleShot(true);
    silence.setInterval(kSilenceMs);
    connect(&silence, &QTimer::timeout, this,
            [this] { SetState(Silent, QString("nothing heard for %1 s").arg(silence.interval() / 1000.0)); });
    connect(&socket, &QUdpSocket::readyRead, this, &WsjtxLink::ReadDatagrams);

    WsjtxSettings saved;
    LoadWsjtx(kSettingsFileName, saved);
    Apply(saved);
}

WsjtxLink::~WsjtxLink()
{
    socket.disconnect(this);
    socket.abort();
}

void WsjtxLink::Apply(const WsjtxSettings &settings)
{
    const bool elsewhere = settings.enabled != current.enabled ||
                           settings.address != current.address || settings.port != current.port;
    // A switch turned on takes the next Status whatever was taken before.
    if (settings.followDx && !current.followDx)
        followed.dxTaken = false;
    if (settings.followFrequency && !current.followFrequency)
        followed.dialTaken = false;
    current = settings;
    if (elsewhere || linkState == Failed)
        Listen();
}

bool WsjtxLink::SaveAndApply(const WsjtxSettings &settings, QString *error)
{
    const bool saved = SaveWsjtx(kSettingsFileName, settings, error) == 0;
    Apply(settings);
    return saved;
}

void WsjtxLink::Listen()
{
    silence.stop();
    socket.abort();
    followed = {};
    if (!current.enabled) {
        SetState(Off);
        return;
    }
    const QHostAddress address(current.address);
    if (address.isNull()) {
        SetState(Failed, QString("\"%1\" is not an IP address").arg(current.address));
        return;
    }
    // A group is received on the wildcard address and joined on every
    // interface that can carry it, the loopback among them (WSJT-X on the
    // same computer); one join is enough.
    const bool group = address.isMulticast();
    const QHostAddress bindTo = !group ? address
                                : address.protocol() == QAbstractSocket::IPv6Protocol
                                    ? QHostAddress(QHostAddress::AnyIPv6)
                                    : QHostAddress(QHostAddress::AnyIPv4);
    const QString where = QString("%1:%2").arg(current.address).arg(current.port);
    if (!socket.bind(bindTo, (quint16)current.port,
                     QUdpSocket::ShareAddress | QUdpSocket::ReuseAddressHint)) {
        SetState(Failed, QString("cannot listen on %1: %2").arg(where, socket.errorString()));
        socket.abort();
        return;
    }
    if (group) {
        bool joined = socket.joinMulticastGroup(address);
        const QString defaultError = socket.errorString();
        for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
            const auto flags = interface.flags();
            if ((flags & QNetworkInterface::IsUp) && (flags & QNetworkInterface::IsRunning) &&
                (flags & (QNetworkInterface::CanMulticast | QNetworkInterface::IsLoopBack)))
                joined = socket.joinMulticastGroup(address, interface) || joined;
        }
        if (!joined) {
            SetState(Failed, QString("cannot join the group %1: %2").arg(where, defaultError));
            socket.abort();
            return;
        }
    }
    SetState(Silent, "nothing heard yet");
}

void WsjtxLink::ReadDatagrams()
{
    // What is waiting is read first; only the last Status counts, so a
    // burst costs at most one change of the station.
    std::optional<State> heard;
    WsjtxMessage lastStatus;
    for (int read = 0; read < kDatagramsPerTurn && socket.hasPendingDatagrams(); ++read) {
        const QByteArray bytes = socket.receiveDatagram(kLargestDatagram).data();
        ++datagramCount;
        const WsjtxMessage message =
            ReadWsjtxMessage(reinterpret_cast<const uint8_t *>(bytes.constData()), (size_t)bytes.size());
        qCDebug(lcWsjtx, "%lld bytes: type %d", (long long)bytes.size(), (int)message.type);
        switch (message.type) {
        case WsjtxType::Heartbeat:
            senderVersion = QString::fromLatin1(message.version);
            [[fallthrough]];
        case WsjtxType::Status:
            senderId = QString::fromLatin1(message.id);
            heard = Hearing;
            if (message.type == WsjtxType::Status)
                lastStatus = message;
            break;
        case WsjtxType::Close:
            heard = Silent;
            break;
        case WsjtxType::Ignored:
            break;
        }
    }
    if (heard == Hearing) {
        silence.start();
        SetState(Hearing);
    } else if (heard == Silent) {
        silence.stop();
        SetState(Silent, "WSJT-X closed");
    }
    if (lastStatus.type == WsjtxType::Status) {
        const WsjtxFollowChange change =
            FollowWsjtxStatus(followed, lastStatus, current.followDx, current.followFrequency);
        if (change.dx || change.frequency)
            emit Follow(change);
    }
}

void WsjtxLink::DxTaken(const char *call, const char *grid)
{
    lastDx = QString("%1 %2").arg(QString::fromLatin1(call), QString::fromLatin1(grid)).trimmed();
    ShowIndicator();
}

QString WsjtxLink::status() const
{
    const QString where = QString("%1:%2").arg(current.address).arg(current.port);
    switch (linkState) {
    case Off:
        return "Off";
    case Failed:
        return reason;
    case Hearing:
        return "Hearing WSJT-X on " + where;
    default:
        return QString("Listening on %1; %2").arg(where, reason);
    }
}

void WsjtxLink::SetState(State state, const QString &why)
{
    linkState = state;
    reason = why;
    ShowIndicator();
    emit Changed();
}

void WsjtxLink::Attach(QMenuBar *menuBar)
{
    auto *corner = new QWidget(menuBar);
    auto *row = new QHBoxLayout(corner);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    if (QWidget *existing = menuBar->cornerWidget(Qt::TopRightCorner))
        row->addWidget(existing);
    indicatorLabel = new QLabel(corner);
    indicatorLabel->setObjectName("WsjtxIndicator");
    indicatorLabel->setContentsMargins(0, 0, 8, 0);
    row->addWidget(indicatorLabel);
    menuBar->setCornerWidget(corner, Qt::TopRightCorner);
    ShowIndicator();
}

void WsjtxLink::ShowIndicator()
{
    if (!indicatorLabel)
        return;
    const char *colour = linkState == Hearing  ? "#00b000"
                         : linkState == Silent ? "#e0a000"
                         : linkState == Failed ? "#e00000"
                                               : "#909090";
    indicatorLabel->setText(QString("WSJT-X <span style=\"color:%1\">&#9679;</span>").arg(colour));
    // Rich text, so that what the network sent is shown as it stands.
    QStringList lines{"WSJT-X: " + status().toHtmlEscaped()};
    if (!senderId.isEmpty())
        lines << QString("Id: %1, version %2").arg(senderId.toHtmlEscaped(),
                                                  senderVersion.isEmpty() ? QString("unknown")
                                                                          : senderVersion.toHtmlEscaped());
    if (!lastDx.isEmpty())
        lines << "Last DX taken: " + lastDx.toHtmlEscaped();
    indicatorLabel->setToolTip("<qt>" + lines.join("<br>") + "</qt>");
}

} // namespace lunaquill
