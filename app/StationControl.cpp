#include "StationControl.h"

#include "StationControlDialog.h"
#include "WsjtxLink.h"

#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QAction>
#include <QCursor>
#include <QLabel>
#include <QLoggingCategory>
#include <QMenuBar>
#include <QMessageBox>
#include <QNetworkProxy>
#include <QToolTip>

#include <algorithm>
#include <chrono>
#include <cmath>

// Every command and reply, for operators who want to see what went out:
// QT_LOGGING_RULES="lunaquill.station.debug=true".
Q_LOGGING_CATEGORY(lcStation, "lunaquill.station", QtInfoMsg)

namespace lunaquill {

// ---- Decisions ----

namespace {

// Ranges beyond two turns either way are no rotator's; they also bound the
// search below.
constexpr double kAzimuthLimit = 1080.0;

// Degrees from `a` to `b` around the circle, 0..180.
double AroundTheCircle(double a, double b)
{
    const double d = std::fmod(std::fabs(a - b), 360.0);
    return std::min(d, 360.0 - d);
}

} // namespace

QByteArray Verb(const QByteArray &command)
{
    const qsizetype space = command.indexOf(' ');
    return space < 0 ? command : command.left(space);
}

RotatorRange ParseRotatorRange(const QList<QByteArray> &lines)
{
    RotatorRange range;
    const struct { const char *names[2]; double RotatorRange::*member; } keys[] = {
        {{"minimum azimuth", "min_az"}, &RotatorRange::minimumAzimuth},
        {{"maximum azimuth", "max_az"}, &RotatorRange::maximumAzimuth},
        {{"minimum elevation", "min_el"}, &RotatorRange::minimumElevation},
        {{"maximum elevation", "max_el"}, &RotatorRange::maximumElevation},
    };
    for (const QByteArray &line : lines) {
        const qsizetype split = line.indexOf(line.contains('=') ? '=' : ':');
        if (split < 0)
            continue;
        const QByteArray key = line.left(split).trimmed().toLower();
        bool ok = false;
        const double value = line.mid(split + 1).trimmed().toDouble(&ok);
        if (!ok || !(std::fabs(value) <= kAzimuthLimit))
            continue;
        for (const auto &entry : keys)
            if (key == entry.names[0] || key == entry.names[1])
                range.*entry.member = value;
    }
    const RotatorRange whole;
    if (!(range.minimumAzimuth < range.maximumAzimuth)) {
        range.minimumAzimuth = whole.minimumAzimuth;
        range.maximumAzimuth = whole.maximumAzimuth;
    }
    if (!(range.minimumElevation < range.maximumElevation)) {
        range.minimumElevation = whole.minimumElevation;
        range.maximumElevation = whole.maximumElevation;
    }
    return range;
}

double ChooseAzimuth(double azimuth, const RotatorRange &range, std::optional<double> from)
{
    double a = std::isfinite(azimuth) ? std::fmod(azimuth, 360.0) : 0.0;
    if (a < 0.0)
        a += 360.0;
    double low = std::max(range.minimumAzimuth, -kAzimuthLimit);
    double high = std::min(range.maximumAzimuth, kAzimuthLimit);
    if (!(low < high)) {
        low = 0.0;
        high = 360.0;
    }
    if (from && !std::isfinite(*from))
        from.reset();
    // Nearest the last position; without one, 0..360 first, then nearest the middle.
    auto cost = [&](double candidate) {
        if (from)
            return std::fabs(candidate - *from);
        return candidate >= 0.0 && candidate < 360.0 ? 0.0 : 1.0 + std::fabs(candidate - 180.0);
    };
    const double tolerance = 1e-9;
    std::optional<double> best;
    for (double candidate = a + 360.0 * std::floor((low - a) / 360.0);
         candidate <= high + tolerance; candidate += 360.0) {
        if (candidate >= low - tolerance && (!best || cost(candidate) < cost(*best)))
            best = candidate;
    }
    if (best)
        return std::clamp(*best, low, high);
    return AroundTheCircle(a, low) <= AroundTheCircle(a, high) ? low : high;
}

AzEl RotatorTarget(double azimuth, double elevation, const RotatorRange &range,
                   std::optional<double> from)
{
    double low = std::max(0.0, range.minimumElevation);
    double high = std::min(90.0, range.maximumElevation);
    if (!(low <= high)) {
        low = 0.0;
        high = 90.0;
    }
    const double el = std::isfinite(elevation) ? elevation : 0.0;
    return {ChooseAzimuth(azimuth, range, from), std::clamp(el, low, high)};
}

namespace {

// A refusal less than 10 s old holds its command back.
bool Held(const std::optional<int64_t> &refusedAtMs, int64_t nowMs)
{
    return refusedAtMs && nowMs - *refusedAtMs < kRefusedRetryMs;
}

} // namespace

bool RotatorDue(const RotatorMemory &last, AzEl target, int64_t nowMs)
{
    if (Held(last.refusedAtMs, nowMs))
        return false;
    if (!last.sent || nowMs - last.atMs >= kRotatorRepeatMs)
        return true;
    const double azimuthMove = AroundTheCircle(target.azimuth, last.target.azimuth);
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
    const double mutual = (homeDopplerHz + dxDopplerHz) * 0.5; // one way, home to DX
    auto hz = [](double value) { return (int64_t)std::llround(value); };
    switch (mode) {
    case DopplerOwnEcho:
        return RigFrequencies{hz(f + homeDopplerHz), hz(f)};
    case DopplerDx:
        if (!dxSees)
            return std::nullopt;
        return RigFrequencies{hz(f + mutual), hz(f)};
    case DopplerConstantOnMoon:
        return RigFrequencies{hz(f + homeDopplerHz * 0.5), hz(f - homeDopplerHz * 0.5)};
    case DopplerFullToDx:
        if (!dxSees)
            return std::nullopt;
        return RigFrequencies{hz(f + mutual), hz(f - mutual)};
    default:
        return std::nullopt;
    }
}

std::vector<QByteArray> RigCommands(RigMemory &memory, RigFrequencies wanted, int64_t nowMs)
{
    std::vector<QByteArray> commands;
    if (memory.sentAtMs && nowMs - *memory.sentAtMs < kRigIntervalMs)
        return commands;
    const bool receive = memory.receiveHz != wanted.receiveHz &&
                         !Held(memory.receiveRefusedAtMs, nowMs);
    const bool transmit = memory.transmitHz != wanted.transmitHz &&
                          !Held(memory.transmitRefusedAtMs, nowMs);
    if (!receive && !transmit)
        return commands;
    const bool splitStale =
        !memory.splitConfirmedAtMs || nowMs - *memory.splitConfirmedAtMs >= kSplitConfirmMs;
    if (splitStale && !Held(memory.splitAskedAtMs, nowMs)) {
        commands.push_back("S 1 VFOB");
        if (memory.splitReadBack)
            commands.push_back("s");
        memory.splitAskedAtMs = nowMs;
    }
    if (receive) {
        commands.push_back("F " + QByteArray::number((qint64)wanted.receiveHz));
        memory.receiveHz = wanted.receiveHz;
    }
    if (transmit) {
        commands.push_back("I " + QByteArray::number((qint64)wanted.transmitHz));
        memory.transmitHz = wanted.transmitHz;
    }
    memory.sentAtMs = nowMs;
    return commands;
}

bool RigReplied(RigMemory &memory, const QByteArray &command, int code,
                const QList<QByteArray> &lines, int64_t nowMs)
{
    const QByteArray verb = Verb(command);
    if (verb == "S") {
        if (code == 0)
            memory.splitConfirmedAtMs = nowMs;
        else
            memory.splitConfirmedAtMs.reset();
    } else if (verb == "s") {
        // A daemon that cannot read split back leaves the S's own reply standing.
        if (code != 0) {
            memory.splitReadBack = false;
        } else if (lines.value(0) == "1") {
            memory.splitConfirmedAtMs = nowMs;
        } else if (lines.value(0) == "0") {
            const bool accepted = memory.splitConfirmedAtMs.has_value();
            memory.splitConfirmedAtMs.reset();
            return !accepted;
        }
    } else if (code != 0 && verb == "F") {
        memory.receiveHz.reset();
        memory.receiveRefusedAtMs = nowMs;
    } else if (code != 0 && verb == "I") {
        memory.transmitHz.reset();
        memory.transmitRefusedAtMs = nowMs;
    }
    return true;
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

// The data lines of a good reply to a query ("p" az and el, "f" the
// frequency, "s" split and VFO); -1 for the extended form ("+\dump_state"),
// whose reply ends with its RPRT line; 0 for a command that sets something.
int DataLines(const QByteArray &command)
{
    if (command.startsWith('+'))
        return -1;
    if (command == "p" || command == "s")
        return 2;
    if (command == "f" || command == "i")
        return 1;
    return 0;
}

// dump_state runs to a dozen short lines; far more is not a daemon.
constexpr qsizetype kMaxReplyLines = 64;
constexpr qsizetype kMaxLineBytes = 256;

bool Printable(const QByteArray &line)
{
    return std::all_of(line.begin(), line.end(),
                       [](char c) { return (c >= 32 && c < 127) || c == '\t' || c == '\r'; });
}

// A refused command and why, as the tooltip shows it.
QString Refusal(const QByteArray &command, const QString &why)
{
    return QString("\"%1\": %2").arg(QString::fromLatin1(command), why);
}

// How long a command may wait for its reply before the dot stops being green.
constexpr qint64 kSlowReplyMs = 2000;

} // namespace

DaemonLink::DaemonLink(const char *name, const char *probe, QObject *parent)
    : QObject(parent), name(name), probe(probe)
{
    // The daemons sit on the station's own network: never through a proxy.
    socket.setProxy(QNetworkProxy::NoProxy);
    timeout.setSingleShot(true);
    retry.setSingleShot(true);
    probeTimer.setSingleShot(true);
    connect(&socket, &QTcpSocket::connected, this, [this] {
        timeout.stop();
        linkState = Connected;
        emit Changed();
        emit LinkUp();
        // A first answer at once: the dot turns green only after one.
        if (queue.empty())
            Send(this->probe);
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
    connect(&probeTimer, &QTimer::timeout, this, [this] { Send(this->probe); });
}

DaemonLink::~DaemonLink()
{
    // The socket goes after the timers and the queue: let it tell no one.
    linkState = Off;
    socket.disconnect(this);
    socket.abort();
}

void DaemonLink::SetTimings(int connect, int reply, int again, int idle)
{
    connectMs = connect;
    replyMs = reply;
    retryMs = again;
    probeMs = idle;
}

QString DaemonLink::Where() const
{
    return QString("%1:%2").arg(host).arg(port);
}

DaemonLink::Health DaemonLink::health() const
{
    switch (linkState) {
    case Off:
        return Idle;
    case Connecting:
        return Waiting;
    case Failed:
        return Down;
    case Connected:
        break;
    }
    if (!refusals.isEmpty())
        return Refused;
    // Green needs an answer lately: an idle link is probed every probeMs.
    if (!lastAnswer.isValid() || lastAnswer.elapsed() > probeMs + replyMs ||
        (!outstanding.isEmpty() && waiting.elapsed() > kSlowReplyMs))
        return Waiting;
    return Good;
}

QString DaemonLink::status() const
{
    switch (health()) {
    case Idle:
        return "Off";
    case Down:
        return failure;
    case Refused:
        return QString("Connected to %1; refused %2")
            .arg(Where(), QStringList(refusals.values()).join(", "));
    case Good:
        return QString("Connected to %1; %2").arg(Where(), lastExchange);
    case Waiting:
        break;
    }
    if (linkState == Connecting)
        return "Connecting to " + Where();
    const QString what =
        !outstanding.isEmpty()
            ? QString("waiting for the reply to \"%1\"").arg(QString::fromLatin1(outstanding))
        : lastAnswer.isValid() ? QString("no reply for %1 s").arg(lastAnswer.elapsed() / 1000)
                             : QString("waiting for a first reply");
    return QString("Connected to %1; %2").arg(Where(), what);
}

void DaemonLink::Reset(State state)
{
    // While Off, the abort's own signals are no failure.
    linkState = Off;
    timeout.stop();
    probeTimer.stop();
    queue.clear();
    outstanding.clear();
    replyLines.clear();
    received.clear();
    refusals.clear();
    lastAnswer.invalidate();
    socket.abort();
    linkState = state;
}

void DaemonLink::Configure(bool on, const QString &newHost, int32_t newPort)
{
    if (on == enabled && newHost == host && newPort == port && linkState != Off)
        return;
    enabled = on;
    host = newHost;
    port = newPort;
    retry.stop();
    Reset(Off);
    if (enabled)
        Connect();
    else
        emit Changed();
}

void DaemonLink::Connect()
{
    if (!enabled)
        return;
    Reset(Connecting);
    emit Changed();
    timeout.start(connectMs);
    socket.connectToHost(host, (quint16)port);
}

void DaemonLink::Fail(const QString &why)
{
    if (linkState != Connecting && linkState != Connected)
        return;
    Reset(Failed);
    qCDebug(lcStation, "%s %s: %s", name, qPrintable(Where()), qPrintable(why));
    failure = QString("%1: %2; trying again every %3 s").arg(Where(), why).arg(retryMs / 1000.0);
    emit Changed();
    emit LinkDown();
    retry.start(retryMs);
}

void DaemonLink::Send(const QByteArray &command)
{
    if (linkState != Connected)
        return;
    const QByteArray verb = Verb(command);
    for (QByteArray &queued : queue) {
        if (Verb(queued) == verb) {
            queued = command;
            return;
        }
    }
    queue.push_back(command);
    SendNext();
}

void DaemonLink::NoteRefusal(const QByteArray &command, const QString &why)
{
    refusals[Verb(command)] = Refusal(command, why);
    emit Changed();
}

void DaemonLink::SendNext()
{
    if (linkState != Connected || !outstanding.isEmpty())
        return;
    if (queue.empty()) {
        probeTimer.start(probeMs);
        return;
    }
    probeTimer.stop();
    outstanding = queue.front();
    queue.pop_front();
    qCDebug(lcStation, "%s <- %s", name, outstanding.constData());
    socket.write(outstanding + '\n');
    waiting.start();
    timeout.start(replyMs);
}

void DaemonLink::ReadReplies()
{
    received += socket.readAll();
    for (qsizetype end; linkState == Connected && (end = received.indexOf('\n')) >= 0;) {
        const QByteArray line = received.left(end).trimmed();
        received.remove(0, end + 1);
        const std::optional<int> code = ParseReport(line);
        const int expected = DataLines(outstanding);
        if (outstanding.isEmpty() ||
            (!code && (expected == 0 || line.size() > kMaxLineBytes || !Printable(line) ||
                       replyLines.size() >= kMaxReplyLines))) {
            Fail(QString("unexpected reply \"%1\"").arg(Excerpt(line)));
            return;
        }
        if (code) {
            Complete(*code);
        } else {
            replyLines.append(line);
            if (replyLines.size() == expected)
                Complete(0);
        }
    }
    // A reply line is a few bytes; a long run without an end is not a daemon.
    if (received.size() > 1024)
        Fail(QString("unexpected reply \"%1\"").arg(Excerpt(received)));
}

void DaemonLink::Complete(int code)
{
    timeout.stop();
    const QByteArray command = outstanding;
    const QList<QByteArray> lines = replyLines;
    outstanding.clear();
    replyLines.clear();
    lastAnswer.start();
    const QString reply = code == 0 && !lines.isEmpty()
                              ? QString::fromLatin1(lines.join(" | "))
                              : QString("RPRT %1").arg(code);
    qCDebug(lcStation, "%s -> %s", name, qPrintable(reply));
    lastExchange = QString("sent \"%1\", reply %2")
                       .arg(QString::fromLatin1(command), Excerpt(reply.toLatin1()));
    // Only a command that sets something is refused: a query the daemon
    // cannot answer is no fault of the station's.
    if (DataLines(command) == 0) {
        if (code != 0)
            refusals[Verb(command)] = Refusal(command, reply);
        else
            refusals.remove(Verb(command));
    }
    emit Replied(command, code, lines);
    emit Changed();
    SendNext();
}

// ---- StationControl ----

StationControl::StationControl(QObject *parent)
    : QObject(parent), rotatorLink("rotator", "p"), rigLink("radio", "f")
{
    setObjectName("StationControl");
    now = [] {
        using namespace std::chrono;
        return (int64_t)duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
    };
    utcNow = [] { return time(nullptr); };
    // A new connection: learn the rotator's position and range before moving
    // it (the range, asked last, lets it move), and send the radio everything
    // afresh.
    connect(&rotatorLink, &DaemonLink::LinkUp, this, [this] {
        rotatorMemory = {};
        rotatorRange.reset();
        rotatorAzimuth.reset();
        rotatorLink.Send("p");
        rotatorLink.Send("+\\dump_state");
    });
    connect(&rotatorLink, &DaemonLink::LinkDown, this, [this] {
        rotatorMemory = {};
        rotatorRange.reset();
    });
    connect(&rotatorLink, &DaemonLink::Replied, this, &StationControl::RotatorReplied);
    connect(&rigLink, &DaemonLink::LinkUp, this, [this] { rigMemory = {}; });
    connect(&rigLink, &DaemonLink::LinkDown, this, [this] { rigMemory = {}; });
    connect(&rigLink, &DaemonLink::Replied, this,
            [this](const QByteArray &command, int code, const QList<QByteArray> &lines) {
                if (!RigReplied(rigMemory, command, code, lines, now()))
                    rigLink.NoteRefusal("S 1 VFOB", "the radio reads back split off");
            });
    connect(&rotatorLink, &DaemonLink::Changed, this, &StationControl::ShowIndicator);
    connect(&rigLink, &DaemonLink::Changed, this, &StationControl::ShowIndicator);

    StationControlSettings saved;
    LoadStationControl(kSettingsFileName, saved);
    homeSaved = HomeStationSaved(kSettingsFileName);
    rotatorLink.SetReplyTimeout(saved.rotatorReplyTimeout * 1000);
    rigLink.SetReplyTimeout(saved.rigReplyTimeout * 1000);
    current = saved;
    ConfigureLinks();

    connect(&ticker, &QTimer::timeout, this, &StationControl::Tick);
    ticker.start(1000);
}

void StationControl::Apply(const StationControlSettings &settings)
{
    if (settings.dopplerMode != current.dopplerMode)
        rigMemory = {};
    // Set only when changed, so that timings a caller gave the link stand.
    if (settings.rotatorReplyTimeout != current.rotatorReplyTimeout)
        rotatorLink.SetReplyTimeout(settings.rotatorReplyTimeout * 1000);
    if (settings.rigReplyTimeout != current.rigReplyTimeout)
        rigLink.SetReplyTimeout(settings.rigReplyTimeout * 1000);
    current = settings;
    ConfigureLinks();
}

void StationControl::ConfigureLinks()
{
    // Without a home station nothing at all goes to the daemons.
    rotatorLink.Configure(homeSaved && current.rotatorEnabled, current.rotatorHost,
                          current.rotatorPort);
    rigLink.Configure(homeSaved && current.rigEnabled, current.rigHost, current.rigPort);
    ShowIndicator();
}

void StationControl::RotatorReplied(const QByteArray &command, int code,
                                    const QList<QByteArray> &lines)
{
    if (command == "+\\dump_state") {
        rotatorRange = ParseRotatorRange(code == 0 ? lines : QList<QByteArray>{});
    } else if (command == "p" && code == 0) {
        bool ok = false;
        const double azimuth = lines.value(0).toDouble(&ok);
        if (ok && std::isfinite(azimuth))
            rotatorAzimuth = azimuth;
    } else if (code != 0 && command.startsWith("P ")) {
        rotatorMemory.sent = false;
        rotatorMemory.refusedAtMs = now();
    }
}

void StationControl::Tick()
{
    if (!homeSaved && HomeStationSaved(kSettingsFileName)) {
        homeSaved = true;
        ConfigureLinks();
    }
    ShowIndicator(); // a reply grows old, a wait grows long
    const int32_t source = homeData.trackingSource;
    if (!homeSaved || source < 0 || source >= (int32_t)SourceCount ||
        (rotatorLink.state() != DaemonLink::Connected && rigLink.state() != DaemonLink::Connected))
        return;
    const int64_t nowMs = now();
    const time_t nowUtc = utcNow();
    struct tm utc{};
    gmtime_r(&nowUtc, &utc);
    SourceTrack home{};
    ComputeSource((uint32_t)source, TrackPosition, utc, homeData.latitude, homeData.longitude,
                  homeData.frequency, home);

    // Below the minimum elevation the dish stays where it is; nothing moves
    // before the rotator's range is known.
    if (rotatorLink.state() == DaemonLink::Connected && rotatorRange &&
        home.elevation >= current.minimumElevation) {
        const std::optional<double> from =
            rotatorMemory.sent ? std::optional<double>(rotatorMemory.target.azimuth)
                               : rotatorAzimuth;
        const AzEl target = RotatorTarget(home.azimuth, home.elevation, *rotatorRange, from);
        if (RotatorDue(rotatorMemory, target, nowMs)) {
            rotatorLink.Send("P " + QByteArray::number(target.azimuth, 'f', 2) + ' ' +
                             QByteArray::number(target.elevation, 'f', 2));
            rotatorMemory.sent = true;
            rotatorMemory.target = target;
            rotatorMemory.atMs = nowMs;
        }
    }

    if (rigLink.state() == DaemonLink::Connected && source == Moon) {
        SourceTrack dx{};
        if (dxStationSet)
            ComputeSource(Moon, TrackPosition, utc, dxStation.latitude, dxStation.longitude,
                          homeData.frequency, dx);
        const std::optional<RigFrequencies> wanted =
            DopplerFrequencies(current.dopplerMode, homeData.frequency, home.doppler, dx.doppler,
                               home.elevation > 0.0, dxStationSet && dx.elevation > 0.0);
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

const char *HealthColour(DaemonLink::Health health)
{
    switch (health) {
    case DaemonLink::Good:
        return "#00b000";
    case DaemonLink::Waiting:
    case DaemonLink::Refused:
        return "#e0a000";
    case DaemonLink::Down:
        return "#e00000";
    default:
        return "#909090";
    }
}

} // namespace

QString StationControl::LinkStatus(const DaemonLink &link) const
{
    const bool wanted = &link == &rotatorLink ? current.rotatorEnabled : current.rigEnabled;
    if (wanted && !homeSaved)
        return "Nothing is sent until a home station is saved (Configure > Home Station)";
    return link.status();
}

void StationControl::ShowIndicator()
{
    emit StatusChanged();
    if (!indicatorLabel)
        return;
    auto colour = [this](const DaemonLink &link, bool wanted) {
        return HealthColour(wanted && !homeSaved ? DaemonLink::Waiting : link.health());
    };
    const QString text =
        QString("Rotator <span style=\"color:%1\">&#9679;</span>&nbsp;&nbsp;"
                "Radio <span style=\"color:%2\">&#9679;</span>")
            .arg(colour(rotatorLink, current.rotatorEnabled), colour(rigLink, current.rigEnabled));
    const QString tip = "Rotator: " + LinkStatus(rotatorLink) + "\nRadio: " + LinkStatus(rigLink);
    if (text != indicatorLabel->text())
        indicatorLabel->setText(text);
    if (tip == indicatorLabel->toolTip())
        return;
    // A tooltip on show keeps its text: show the new one in its place.
    const bool shown = QToolTip::isVisible() && QToolTip::text() == indicatorLabel->toolTip();
    indicatorLabel->setToolTip(tip);
    if (shown)
        QToolTip::showText(QCursor::pos(), tip, indicatorLabel);
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
