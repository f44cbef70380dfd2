// Points the dish and tunes the radio through Hamlib's network daemons:
// rotctld gets "P az el" for the tracked source at the home station, rigctld
// the receive ("F") and split transmit ("I") frequencies that the chosen
// Doppler mode asks for at the Moon. The figures are its own, worked out once
// a second for the real current time: the displayed time is for planning and
// never moves the station. Everything runs on the GUI thread's event loop
// without ever blocking it (asynchronous sockets, timeouts, retries).
#pragma once

#include "DopplerModes.h"
#include "Settings.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QLabel>
#include <QList>
#include <QMap>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTcpSocket>
#include <QTimer>

#include <cstdint>
#include <ctime>
#include <deque>
#include <functional>
#include <optional>
#include <vector>

class QAction;
class QMenuBar;

namespace lunaquill {

class WsjtxLink;

// ---- Decisions, free of sockets and clocks ----

struct AzEl {
    double azimuth;
    double elevation;
};

// What a rotator can reach, as its daemon's dump_state reports it (degrees).
// Hamlib's common azimuth ranges are 0..360, -180..180 and overlaps such as
// -180..450 or 0..540.
struct RotatorRange {
    double minimumAzimuth = 0.0;
    double maximumAzimuth = 360.0;
    double minimumElevation = 0.0;
    double maximumElevation = 90.0;
};

// The range in the reply lines of "+\dump_state" ("Minimum Azimuth: -180" or
// "min_az=-180" and the like); whatever is not reported is 0..360, 0..90.
RotatorRange ParseRotatorRange(const QList<QByteArray> &lines);

// Of the azimuths equal to `azimuth` modulo 360 inside the range, the one
// nearest `from` (the last position sent), so the rotator goes the short way
// round. Without `from`, the one in 0..360. A direction the range cannot
// reach gives the end of the range nearer to it.
double ChooseAzimuth(double azimuth, const RotatorRange &range, std::optional<double> from);

// What the rotator is sent: the azimuth chosen as above, the elevation within
// 0..90 and the range.
AzEl RotatorTarget(double azimuth, double elevation, const RotatorRange &range = {},
                   std::optional<double> from = std::nullopt);

// The last command sent to the rotator.
struct RotatorMemory {
    bool sent = false;
    AzEl target{};
    int64_t atMs = 0;
    std::optional<int64_t> refusedAtMs; // the last "P" the daemon refused
};

inline constexpr double kRotatorStepDegrees = 0.2;
inline constexpr int64_t kRotatorRepeatMs = 30000;
// A refused command is tried again after this long, not at every second.
inline constexpr int64_t kRefusedRetryMs = 10000;

// A new target is due when nothing was sent yet, when either axis moved by
// at least 0.2 degrees (azimuth across north counts the short way) or when
// 30 s have passed since the last command; never within 10 s of a refusal.
bool RotatorDue(const RotatorMemory &last, AzEl target, int64_t nowMs);

// The frequencies the radio is to be on, in Hz.
struct RigFrequencies {
    int64_t receiveHz;
    int64_t transmitHz;
};

// What a mode asks for at the operating frequency (MHz), from the home
// station's own-echo Doppler and the DX station's. Nothing (leave the radio
// where it is) when the mode is off or unknown, the home station does not see
// the Moon, in the DX modes the DX station does not, or the frequency is
// unusable.
std::optional<RigFrequencies> DopplerFrequencies(int32_t mode, double frequencyMHz,
                                                 double homeDopplerHz, double dxDopplerHz,
                                                 bool homeSees, bool dxSees);

// What the radio was told and what it answered.
struct RigMemory {
    std::optional<int64_t> receiveHz, transmitHz; // last sent and not refused
    std::optional<int64_t> sentAtMs;              // the last frequency commands
    std::optional<int64_t> receiveRefusedAtMs, transmitRefusedAtMs;
    std::optional<int64_t> splitAskedAtMs;     // the last "S 1 VFOB"
    std::optional<int64_t> splitConfirmedAtMs; // its RPRT 0, or "s" reading split on
    bool splitReadBack = true;                 // the daemon answers "s"
};

inline constexpr int64_t kRigIntervalMs = 1000;
inline constexpr int64_t kSplitConfirmMs = 30000;

// The commands that bring the radio to the wanted frequencies: at most once a
// second, only a frequency that changed (by 1 Hz or more) and was not refused
// in the last 10 s. With them, split is asserted ("S 1 VFOB", read back with
// "s" where the daemon answers it) when it was not confirmed in the last 30 s,
// at most every 10 s. Records what is sent.
std::vector<QByteArray> RigCommands(RigMemory &memory, RigFrequencies wanted, int64_t nowMs);

// Takes in the daemon's answer to one of those commands (code 0 and the data
// lines for a good reply). Returns false when the radio reads back split off
// just after being asked for it.
bool RigReplied(RigMemory &memory, const QByteArray &command, int code,
                const QList<QByteArray> &lines, int64_t nowMs);

// A command's first word ("P", "F", "S"), or all of a one-word command.
QByteArray Verb(const QByteArray &command);

// The code of a daemon's "RPRT n" line; nothing for any other line.
std::optional<int> ParseReport(const QByteArray &line);

// ---- One daemon link ----

// A TCP link to rotctld or rigctld: connects with a timeout, sends one
// command at a time and waits for its reply ("RPRT n", or the data lines of a
// query), reconnects every few seconds while enabled. Garbage, silence or a
// closed connection drop the link. A link with nothing to send for 10 s is
// probed with a read-only command, so a daemon that died shows.
class DaemonLink : public QObject
{
    Q_OBJECT

public:
    enum State { Off, Connecting, Connected, Failed };
    // What the dot shows: grey, amber (connecting, waiting for a first or a
    // fresh good reply, or a refused command standing), green, red.
    enum Health { Idle, Waiting, Good, Refused, Down };

    // `probe`: the read-only command sent on an idle link ("p", "f").
    DaemonLink(const char *name, const char *probe, QObject *parent = nullptr);
    ~DaemonLink() override;

    // Starts, restarts (new host or port) or stops the link.
    void Configure(bool enabled, const QString &host, int32_t port);
    // Queues a command; a queued, not yet sent command of the same verb is
    // replaced, so a slow daemon never gets a backlog of stale targets.
    void Send(const QByteArray &command);
    // Marks a command as refused though the daemon said RPRT 0 (a radio that
    // reads back split off after being asked for it).
    void NoteRefusal(const QByteArray &command, const QString &why);

    State state() const { return linkState; }
    Health health() const;
    // The state in words, for the dot's tooltip and the dialog.
    QString status() const;
    bool idle() const { return linkState != Connected || (outstanding.isEmpty() && queue.empty()); }

    // Connect and reply timeouts, the pause before reconnecting and the idle
    // time before a probe, in ms.
    void SetTimings(int connectMs, int replyMs, int retryMs, int probeMs = 10000);
    void SetReplyTimeout(int ms) { replyMs = ms; }

signals:
    void Changed();          // state or status text
    void LinkUp();           // a fresh connection: the daemon knows nothing yet
    void LinkDown();         // a dropped link
    // The answer to a command: code 0 and the data lines, or the refusal.
    void Replied(const QByteArray &command, int code, const QList<QByteArray> &lines);

private:
    void Connect();
    void Reset(State state);
    void Fail(const QString &why);
    void SendNext();
    void ReadReplies();
    void Complete(int code);
    QString Where() const;

    const char *name;
    const QByteArray probe;
    QTcpSocket socket;
    QTimer timeout;   // connect or reply
    QTimer retry;
    QTimer probeTimer;
    bool enabled = false;
    QString host;
    int32_t port = 0;
    State linkState = Off;
    QString failure;                       // why the link is down
    QString lastExchange;                  // the last command and its reply
    QMap<QByteArray, QString> refusals;    // verb: the refused command and reply
    QElapsedTimer lastAnswer;              // since the last reply
    QElapsedTimer waiting;                 // since the outstanding command went
    std::deque<QByteArray> queue;
    QByteArray outstanding;
    QList<QByteArray> replyLines;
    QByteArray received;
    int connectMs = 3000;
    int replyMs = 3000;
    int retryMs = 5000;
    int probeMs = 10000;
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

    // Works out the tracked source for the real time and sends what is due;
    // runs once a second by itself.
    void Tick();

    DaemonLink &rotator() { return rotatorLink; }
    DaemonLink &rig() { return rigLink; }
    QLabel *indicator() const { return indicatorLabel; }
    // A link's state in words, or why nothing is sent (no home station).
    QString LinkStatus(const DaemonLink &link) const;

    // A monotonic clock in ms for the intervals, and the real time the
    // figures are for (tests drive both by hand).
    void SetClock(std::function<int64_t()> clock) { now = std::move(clock); }
    void SetUtcClock(std::function<time_t()> clock) { utcNow = std::move(clock); }

    // Runs the dialog; on Ok saves the settings and applies them.
    void RunDialog();

    // The WSJT-X listener, whose settings the dialog shows in a section of
    // their own.
    void AttachWsjtx(WsjtxLink *link) { wsjtxLink = link; }
    WsjtxLink *wsjtx() const { return wsjtxLink; }

signals:
    void StatusChanged(); // a link's state, or only the age of its last reply

private:
    void ConfigureLinks();
    void RotatorReplied(const QByteArray &command, int code, const QList<QByteArray> &lines);
    void ShowIndicator();

    StationControlSettings current;
    bool homeSaved = false;
    DaemonLink rotatorLink;
    DaemonLink rigLink;
    std::optional<RotatorRange> rotatorRange; // known once dump_state answered
    std::optional<double> rotatorAzimuth;     // where it pointed when asked
    RotatorMemory rotatorMemory;
    RigMemory rigMemory;
    std::function<int64_t()> now;
    std::function<time_t()> utcNow;
    QTimer ticker;
    QPointer<QLabel> indicatorLabel; // the menu bar's, gone first at exit
    WsjtxLink *wsjtxLink = nullptr; // the window's, as this is
};

} // namespace lunaquill
