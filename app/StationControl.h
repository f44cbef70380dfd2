// Points the dish and tunes the radio through Hamlib's network daemons:
// rotctld gets "P az el" for the tracked source at the home station, rigctld
// the receive ("F") and split transmit ("I") frequencies that the chosen
// Doppler mode asks for at the Moon. The main window calls PanelsRefreshed()
// after each panel refresh; everything else runs on the GUI thread's event
// loop without ever blocking it (asynchronous sockets, timeouts, retries).
#pragma once

#include "Settings.h"

#include <QByteArray>
#include <QLabel>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpSocket>
#include <QTimer>

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

class QAction;
class QMenuBar;

namespace lunaquill {

class WsjtxLink;

// The Doppler modes of the radio, as stored under DopplerMode.
enum DopplerMode : int32_t {
    DopplerOff = 0,
    DopplerOwnEcho = 1,      // receive own echoes, transmit on f
    DopplerDx = 2,           // receive a DX station that transmits on f
    DopplerConstantOnMoon = 3, // every station doing the same meets on f at the Moon
};

// ---- Decisions, free of sockets and clocks ----

struct AzEl {
    double azimuth;
    double elevation;
};

// What the rotator is sent: azimuth into 0..360, elevation into 0..90.
AzEl RotatorTarget(double azimuth, double elevation);

// The last command sent to the rotator.
struct RotatorMemory {
    bool sent = false;
    AzEl target{};
    int64_t atMs = 0;
};

inline constexpr double kRotatorStepDegrees = 0.2;
inline constexpr int64_t kRotatorRepeatMs = 30000;

// A new target is due when nothing was sent yet, when either axis moved by
// at least 0.2 degrees (azimuth across north counts the short way) or when
// 30 s have passed since the last command.
bool RotatorDue(const RotatorMemory &last, AzEl target, int64_t nowMs);

// The frequencies the radio is to be on, in Hz.
struct RigFrequencies {
    int64_t receiveHz;
    int64_t transmitHz;
};

// What a mode asks for at the operating frequency (MHz), from the home
// station's own-echo Doppler and the DX station's. Nothing (hold the radio
// where it is) when the mode is off or unknown, the home station does not see
// the Moon, in DX mode the DX station does not, or the frequency is unusable.
std::optional<RigFrequencies> DopplerFrequencies(int32_t mode, double frequencyMHz,
                                                 double homeDopplerHz, double dxDopplerHz,
                                                 bool homeSees, bool dxSees);

// The last frequencies sent to the radio.
struct RigMemory {
    bool splitOn = false;
    bool sent = false;
    RigFrequencies frequencies{};
    int64_t atMs = 0;
};

inline constexpr int64_t kRigIntervalMs = 1000;

// The commands that bring the radio to the wanted frequencies: at most once a
// second, only a frequency that changed (by 1 Hz or more), split enabled
// first. Updates the memory as if they all succeed.
std::vector<QByteArray> RigCommands(RigMemory &memory, RigFrequencies wanted, int64_t nowMs);

// The code of a daemon's "RPRT n" line; nothing for any other line.
std::optional<int> ParseReport(const QByteArray &line);

// ---- One daemon link ----

// A TCP link to rotctld or rigctld: connects with a timeout, sends one
// command at a time and waits for its "RPRT n", reconnects every few seconds
// while enabled. Garbage, silence or a closed connection drop the link.
class DaemonLink : public QObject
{
    Q_OBJECT

public:
    enum State { Off, Connecting, Connected, Failed };

    DaemonLink(const char *name, QObject *parent = nullptr);
    ~DaemonLink() override;

    // Starts, restarts (new host or port) or stops the link.
    void Configure(bool enabled, const QString &host, int32_t port);
    // Queues a command; a queued, not yet sent command of the same verb is
    // replaced, so a slow daemon never gets a backlog of stale targets.
    void Send(const QByteArray &command);

    State state() const { return linkState; }
    // Connected and the last reply was RPRT 0 (or none yet).
    bool healthy() const { return linkState == Connected && !lastRefused; }
    QString status() const { return statusText; }
    bool idle() const { return linkState != Connected || (outstanding.isEmpty() && queue.empty()); }

    // Connect and reply timeouts and the pause before reconnecting, in ms.
    void SetTimings(int connectMs, int replyMs, int retryMs);

signals:
    void Changed();          // state or status text
    void LinkUp();           // a fresh connection: the daemon knows nothing yet
    void CommandFailed();    // a refused command or a dropped link

private:
    void Connect();
    void Fail(const QString &why);
    void SendNext();
    void ReadReplies();
    void SetStatus(const QString &text);
    QString Where() const;

    const char *name;
    QTcpSocket socket;
    QTimer timeout;   // connect or reply
    QTimer retry;
    bool enabled = false;
    QString host;
    int32_t port = 0;
    State linkState = Off;
    bool lastRefused = false;
    QString statusText = "Off";
    std::deque<QByteArray> queue;
    QByteArray outstanding;
    QByteArray received;
    int connectMs = 3000;
    int replyMs = 3000;
    int retryMs = 5000;
};

// ---- The controller ----

class StationControl : public QObject
{
    Q_OBJECT

public:
    // Reads the STATION_CONTROL settings and starts the enabled links.
    explicit StationControl(QObject *parent = nullptr);

    // The Configure menu entry opens the dialog; a small indicator of both
    // links goes into the menu bar's right corner (the panels stay put).
    void Attach(QMenuBar *menuBar, QAction *menuEntry);

    const StationControlSettings &settings() const { return current; }
    void Apply(const StationControlSettings &settings);

    // Reads the home (and DX) records just refreshed and sends what is due.
    void PanelsRefreshed();

    DaemonLink &rotator() { return rotatorLink; }
    DaemonLink &rig() { return rigLink; }
    QLabel *indicator() const { return indicatorLabel; }

    // A monotonic clock in ms (tests drive it by hand).
    void SetClock(std::function<int64_t()> clock) { now = std::move(clock); }

    // Runs the dialog; on Ok saves the settings and applies them.
    void RunDialog();

    // The WSJT-X listener, whose settings the dialog shows in a section of
    // their own.
    void AttachWsjtx(WsjtxLink *link) { wsjtxLink = link; }
    WsjtxLink *wsjtx() const { return wsjtxLink; }

private:
    void ShowIndicator();

    StationControlSettings current;
    DaemonLink rotatorLink;
    DaemonLink rigLink;
    RotatorMemory rotatorMemory;
    RigMemory rigMemory;
    std::function<int64_t()> now;
    QPointer<QLabel> indicatorLabel; // the menu bar's, gone first at exit
    WsjtxLink *wsjtxLink = nullptr; // the window's, as this is
};

} // namespace lunaquill
