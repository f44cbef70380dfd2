// The settings file: <settings folder>/<file>, ini format, with
// the groups HOME_DATA (home station, frequency, tracked source) and OVERLAYS
// (what the map and the star charts show), STATION_CONTROL (the rotator and
// radio links), WSJTX (the listener for WSJT-X's UDP messages). Each load fills the whole record,
// each save writes the whole group back; other keys of the file are kept.
#pragma once

#include "tracking/SettingsFolder.h"
#include "tracking/SharedState.h"

#include <QString>

namespace lunaquill {

// The one file name every caller uses.
inline constexpr const char *kSettingsFileName = "Lunaquill.ini";

// The settings folder followed by the file name.
QString SettingsPath(const char *fileName);

// Missing file or key: the defaults. A value that does not convert: 0, but
// a frequency outside 1..300000 MHz or not a number reads as 1296.0.
// Texts too long for their field are cut to it. Both return 0.
int LoadHomeData(const char *fileName, HomeData &home);
int LoadOverlays(const char *fileName, OverlaySettings &overlays);

// 0 when the whole group reached the file. -1 when it did not: the file then
// keeps its earlier contents, and `error`, if given, names the file and why.
int SaveHomeData(const char *fileName, const HomeData &home, QString *error = nullptr);
int SaveOverlays(const char *fileName, const OverlaySettings &overlays,
                 QString *error = nullptr);

// The rotator (rotctld) and radio (rigctld) links of the station control.
struct StationControlSettings {
    bool rotatorEnabled = false;
    QString rotatorHost = "localhost";
    int32_t rotatorPort = 4533;
    double minimumElevation = 0.0;   // degrees; below it the rotator is left alone
    bool rigEnabled = false;
    QString rigHost = "localhost";
    int32_t rigPort = 4532;
    int32_t dopplerMode = 0;         // a DopplerMode (DopplerModes.h)
    // Seconds a daemon may take to answer a command (slow rotator controllers).
    int32_t rotatorReplyTimeout = 3;
    int32_t rigReplyTimeout = 3;
};

inline constexpr int32_t kMaximumReplyTimeout = 30;

// A value that is missing or does not make sense (port outside 1..65535,
// unknown mode, elevation outside -90..90, a reply timeout outside 1..30 s, a
// switch that is not a boolean, an empty host) reads as its default.
int LoadStationControl(const char *fileName, StationControlSettings &station);
int SaveStationControl(const char *fileName, const StationControlSettings &station,
                       QString *error = nullptr);

// The listener for WSJT-X's UDP messages: where it listens and what it takes.
struct WsjtxSettings {
    bool enabled = false;
    QString address = "127.0.0.1";   // a multicast group (224.0.0.0/4) is joined
    int32_t port = 2237;
    bool followDx = true;            // the DX call and grid
    bool followFrequency = true;     // the dial frequency, in memory only
};

// Like the station control: a value missing or out of range (an empty
// address, a port outside 1..65535, a switch that is not a boolean) reads as
// its default. An address that is not an IP address is kept: the listener
// then shows why it cannot listen.
int LoadWsjtx(const char *fileName, WsjtxSettings &wsjtx);
int SaveWsjtx(const char *fileName, const WsjtxSettings &wsjtx, QString *error = nullptr);

// Whether the user has saved a home station: the file has a HOME_DATA group
// with a grid, other than the first run's placeholder (JJ00aa at 0, 0) that a
// frequency or source change writes back when no station was ever entered.
bool HomeStationSaved(const char *fileName);

// The EME Planner's choices (group PLANNER): days planned, each station's
// minimum elevation, the tab shown. Values out of range read as the defaults.
struct PlannerSettings {
    int32_t days = 3;               // 1..31
    double homeMinElevation = 0.0;  // degrees, -2..90
    double dxMinElevation = 0.0;
    int32_t tab = 0;                // 0 mutual windows, 1 month
};

int LoadPlanner(const char *fileName, PlannerSettings &planner);
int SavePlanner(const char *fileName, const PlannerSettings &planner, QString *error = nullptr);

} // namespace lunaquill
