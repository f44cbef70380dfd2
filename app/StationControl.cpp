#include "StationControl.h"

#include "StationControlDialog.h"
#include "WsjtxLink.h"

#include "tracking/SharedState.h"

#include <QAction>
#include <QLabel>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QMessageBox>
#include <QNetworkProxy>

#include <algorithm>
#include <chrono>
#include <cmath>

// Every command and reply, for operators who want to see what went out:
// QT_LOGGING_RULES="lunaquill.station.debug=true".
Q_LOGGING_CATEGORY(lcStation, "lunaquill.station", QtInfoMsg)

namespace lunaquill {

// ---- Decisions ----

AzEl RotatorTarget(double azimuth, double elevation)
{
    double az = std::isfinite(azimuth) ? std::fmod(azimuth, 360.0) : 0.0;
    if (az < 0.0)
        az += 360.0;
    const double el = std::isfinite(elevation) ? elevation : 0.0;
    return {std::clamp(az, 0.0, 360.0), std::clamp(el, 0.0, 90.0)};
}

bool RotatorDue(const RotatorMemory &last, AzEl target, int64_t nowMs)
{
    if (!last.sent || nowMs - last.atMs >= kRotatorRepeatMs)
        return true;
    double azimuthMove = std::fabs(target.azimuth - last.target.azimuth);
    if (azimuthMove > 180.0)
        azimuthMove = 360.0 - azimuthMove;
    // A hair of tolerance, so that 10.0 to 10.2 (0.19999...) counts as 0.2.
    const double step = kRotatorStepDegrees - 1e-9;
    return azimuthMove >= step || std::fabs(target.elevation - last.target.elevation) >= step;
}

std::optional<RigFrequencies> DopplerFrequencies(int32_t mode, double frequencyMHz,
                                                 double homeDopplerHz, double dxDopplerHz,
                                                 bool homeSees, bool dxSees)
{
    // Up to 1 THz: far above any band, far below where int64 Hz overflow.
    if (!(frequencyMHz > 0.0 && frequencyMHz <= 1e6) || !std::isfinite(homeDopplerHz) ||
        !std::isfinite(dxDopplerHz) || !homeSees)
        return std::nullopt;
    const double f = frequencyMHz * 1e6;
    auto hz = [](double value) { return (int64_t)std::llround(value); };
    switch (mode) {
    case DopplerOwnEcho:
        return RigFrequencies{hz(f + homeDopplerHz), hz(f)};
    case DopplerDx:
        if (!dxSees)
            return std::nullopt;
        return RigFrequencies{hz(f + (homeDopplerHz + dxDopplerHz) * 0.5), hz(f)};
    case DopplerConstantOnMoon:
        return RigFrequencies{hz(f + homeDopplerHz * 0.5), hz(f - homeDopplerHz * 0.5)};
    default:
        return std::nullopt;
    }
}

std::vector<QByteArray> RigCommands(RigMemory &memory, RigFrequencies wanted, int64_t nowMs)
{
    std::vector<QByteArray> commands;
    if (memory.sent && nowMs - memory.atMs < kRigIntervalMs)
        return commands;
    if (!memory.splitOn)
        commands.push_back("S 1 VFOB");
    if (!memory.sent || wanted.receiveHz != memory.frequencies.receiveHz)
        commands.push_back("F " + QByteArray::number((qint64)wanted.receiveHz));
    if (!memory.sent || wanted.transmitHz != memory.frequencies.transmitHz)
        commands.push_back("I " + QByteArray::number((qint64)wanted.transmitHz));
    if (!commands.empty())
        memory = {true, true, wanted, nowMs};
    return commands;
}

std::optional<int> ParseReport(const QByteArray &line)
{
    const QByteArray text = line.trimmed();
    if (!text.startsWith("RPRT "))
        return std::nullopt;
    bool ok = false;
    const int code = text.mid(5).toInt(&ok);
    return ok ? std::optional<int>(code) : std::nullopt;
}

// ---- DaemonLink ----

namespace {

// A reply as it can be shown: printable, short.
QString Excerpt(const QByteArray &bytes)
{
    QString text;
    for (char c : bytes.left(40))
        text += (c >= 32 && c < 127) ? QChar(c) : QChar('?');
    return bytes.size() > 40 ? text + "..." : text;
}

} // namespace

DaemonLink::DaemonLink(const char *name, QObject *parent) : QObject(parent), name(name)
{
    // The daemons sit on the station's own network: never through a proxy.
    socket.setProxy(QNetworkProxy::NoProxy);
    timeout.setSingleShot(true);
    retry.setSingleShot(true);
    connect(&socket, &QTcpSocket::connected, this, [this] {
        timeout.stop();
        linkState = Connected;
        lastRefused = false;
        SetStatus("Connected to " + Where());
        emit LinkUp();
        SendNext();
    });
    connect(&socket, &QTcpSocket::readyRead, this, &DaemonLink::ReadReplies);
    connect(&socket, &QTcpSocket::errorOccurred, this,
            [this](QAbstractSocket::SocketError) { Fail(socket.errorString()); });
    connect(&socket, &QTcpSocket::disconnected, this,
            [this] { Fail("the daemon closed the connection"); });
    connect(&timeout, &QTimer::timeout, this, [this] {
        if (linkState == Connecting)
            Fail(QString("no connection within %1 s").arg(connectMs / 1000.0));
        else
            Fail(QString("no reply to \"%1\" within %2 s")
                     .arg(QString::fromLatin1(outstanding)).arg(replyMs / 1000.0));
    });
    connect(&retry, &QTimer::timeout, this, &DaemonLink::Connect);
}

DaemonLink::~DaemonLink()
{
    // The socket goes after the timers and the queue: let it tell no one.
    linkState = Off;
    socket.disconnect(this);
    socket.abort();
}

void DaemonLink::SetTimings(int connect, int reply, int again)
{
    connectMs = connect;
    replyMs = reply;
    retryMs = again;
}

QString DaemonLink::Where() const
{
    return QString("%1:%2").arg(host).arg(port);
}

void DaemonLink::SetStatus(const QString &text)
{
    statusText = text;
    emit Changed();
}

void DaemonLink::Configure(bool on, const QString &newHost, int32_t newPort)
{
    if (on == enabled && newHost == host && newPort == port && linkState != Off)
        return;
    enabled = on;
    host = newHost;
    port = newPort;
    timeout.stop();
    retry.stop();
    linkState = Off; // the abort's own signals are not failures
    socket.abort();
    queue.clear();
    outstanding.clear();
    received.clear();
    if (enabled)
        Connect();
    else
        SetStatus("Off");
}

void DaemonLink::Connect()
{
    if (!enabled)
        return;
    socket.abort(); // while not Connecting, its signals are no failure
    linkState = Connecting;
    lastRefused = false;
    SetStatus("Connecting to " + Where());
    timeout.start(connectMs);
    socket.connectToHost(host, (quint16)port);
}

void DaemonLink::Fail(const QString &why)
{
    if (linkState != Connecting && linkState != Connected)
        return;
    linkState = Failed;
    timeout.stop();
    queue.clear();
    outstanding.clear();
    received.clear();
    socket.abort();
    qCDebug(lcStation, "%s %s: %s", name, qPrintable(Where()), qPrintable(why));
    SetStatus(QString("%1: %2; trying again every %3 s").arg(Where(), why).arg(retryMs / 1000.0));
    emit CommandFailed();
    retry.start(retryMs);
}

void DaemonLink::Send(const QByteArray &command)
{
    if (linkState != Connected)
        return;
    const QByteArray verb = command.left(command.indexOf(' '));
    for (QByteArray &queued : queue) {
        if (queued.left(queued.indexOf(' ')) == verb) {
            queued = command;
            return;
        }
    }
    queue.push_back(command);
    SendNext();
}

void DaemonLink::SendNext()
{
    if (linkState != Connected || !outstanding.isEmpty() || queue.empty())
        return;
    outstanding = queue.front();
    queue.pop_front();
    qCDebug(lcStation, "%s <- %s", name, outstanding.constData());
    socket.write(outstanding + '\n');
    timeout.start(replyMs);
}

void DaemonLink::ReadReplies()
{
    received += socket.readAll();
    for (qsizetype end; (end = received.indexOf('\n')) >= 0;) {
        const QByteArray line = received.left(end);
        received.remove(0, end + 1);
        const std::optional<int> code = ParseReport(line);
        if (outstanding.isEmpty() || !code) {
            Fail(QString("unexpected reply \"%1\"").arg(Excerpt(line)));
            return;
        }
        timeout.stop();
        qCDebug(lcStation, "%s -> RPRT %d", name, *code);
        lastRefused = *code != 0;
        SetStatus(QString("Connected to %1; sent \"%2\", reply RPRT %3")
                      .arg(Where(), QString::fromLatin1(outstanding))
                      .arg(*code));
        outstanding.clear();
        if (lastRefused)
            emit CommandFailed();
        SendNext();
    }
    // A reply line is a few bytes; a long run without an end is not a daemon.
    if (received.size() > 1024)
        Fail(QString("unexpected reply \"%1\"").arg(Excerpt(received)));
}

// ---- StationControl ----

StationControl::StationControl(QObject *parent)
    : QObject(parent), rotatorLink("rotator"), rigLink("radio")
{
    setObjectName("StationControl");
    now = [] {
        using namespace std::chrono;
        return (int64_t)duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    };
    // A new connection or a failed command: send everything afresh.
    connect(&rotatorLink, &DaemonLink::LinkUp, this, [this] { rotatorMemory = {}; });
    connect(&rotatorLink, &DaemonLink::CommandFailed, this, [this] { rotatorMemory = {}; });
    connect(&rigLink, &DaemonLink::LinkUp, this, [this] { rigMemory = {}; });
    connect(&rigLink, &DaemonLink::CommandFailed, this, [this] { rigMemory = {}; });
    connect(&rotatorLink, &DaemonLink::Changed, this, &StationControl::ShowIndicator);
    connect(&rigLink, &DaemonLink::Changed, this, &StationControl::ShowIndicator);

    StationControlSettings saved;
    LoadStationControl(kSettingsFileName, saved);
    Apply(saved);
}

void StationControl::Apply(const StationControlSettings &settings)
{
    if (settings.dopplerMode != current.dopplerMode)
        rigMemory = {};
    current = settings;
    rotatorLink.Configure(current.rotatorEnabled, current.rotatorHost, current.rotatorPort);
    rigLink.Configure(current.rigEnabled, current.rigHost, current.rigPort);
}

void StationControl::PanelsRefreshed()
{
    const int32_t source = homeData.trackingSource;
    if (!homeStationSet || source < 0 || source >= (int32_t)SourceCount)
        return;
    const SourceTrack &home = homeTracks[source];
    const int64_t nowMs = now();

    // Below the minimum elevation the dish stays where it is.
    if (rotatorLink.state() == DaemonLink::Connected && home.elevation >= current.minimumElevation) {
        const AzEl target = RotatorTarget(home.azimuth, home.elevation);
        if (RotatorDue(rotatorMemory, target, nowMs)) {
            rotatorLink.Send("P " + QByteArray::number(target.azimuth, 'f', 2) + ' ' +
                             QByteArray::number(target.elevation, 'f', 2));
            rotatorMemory = {true, target, nowMs};
        }
    }

    // The Doppler is the Moon's; seen as the panels show it.
    if (rigLink.state() == DaemonLink::Connected && source == Moon) {
        const std::optional<RigFrequencies> wanted = DopplerFrequencies(
            current.dopplerMode, homeData.frequency, home.doppler, dxTracks[Moon].doppler,
            homeSeesSource != 0, dxStationSet != 0 && dxSeesSource != 0);
        if (wanted) {
            for (const QByteArray &command : RigCommands(rigMemory, *wanted, nowMs))
                rigLink.Send(command);
        }
    }
}

void StationControl::Attach(QMenuBar *menuBar, QAction *menuEntry)
{
    indicatorLabel = new QLabel(menuBar);
    indicatorLabel->setObjectName("StationControlIndicator");
    indicatorLabel->setContentsMargins(0, 0, 8, 0);
    menuBar->setCornerWidget(indicatorLabel, Qt::TopRightCorner);
    connect(menuEntry, &QAction::triggered, this, &StationControl::RunDialog);
    ShowIndicator();
}

namespace {

const char *StateColour(const DaemonLink &link)
{
    switch (link.state()) {
    case DaemonLink::Connected:
        return link.healthy() ? "#00b000" : "#e0a000";
    case DaemonLink::Connecting:
        return "#e0a000";
    case DaemonLink::Failed:
        return "#e00000";
    default:
        return "#909090";
    }
}

} // namespace

void StationControl::ShowIndicator()
{
    if (!indicatorLabel)
        return;
    indicatorLabel->setText(QString("Rotator <span style=\"color:%1\">&#9679;</span>&nbsp;&nbsp;"
                                    "Radio <span style=\"color:%2\">&#9679;</span>")
                                .arg(StateColour(rotatorLink), StateColour(rigLink)));
    indicatorLabel->setToolTip("Rotator: " + rotatorLink.status() + "\nRadio: " + rigLink.status());
}

void StationControl::RunDialog()
{
    StationControlDialog dialog(*this);
    if (dialog.exec() == QDialog::Accepted) {
        const StationControlSettings chosen = dialog.chosenSettings();
        QString error;
        if (SaveStationControl(kSettingsFileName, chosen, &error) != 0)
            QMessageBox::warning(qobject_cast<QWidget *>(parent()), "Settings not saved",
                                 "Lunaquill could not save the station control settings to "
                                 + error + ".\n\nThey hold until Lunaquill is closed.");
        Apply(chosen);
        if (wsjtxLink && !wsjtxLink->SaveAndApply(dialog.chosenWsjtxSettings(), &error))
            QMessageBox::warning(qobject_cast<QWidget *>(parent()), "Settings not saved",
                                 "Lunaquill could not save the WSJT-X settings to " + error
                                 + ".\n\nThey hold until Lunaquill is closed.");
    }
}

} // namespace lunaquill
