// The settings file: <settings folder>/<file>, ini format, with
// the groups HOME_DATA (home station, frequency, tracked source) and OVERLAYS
// (what the map and the star charts show), STATION_CONTROL (the rotator and
// radio links). Each load fills the whole record,
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

// Missing file or key: the defaults. A value that does not convert: 0.
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
    int32_t dopplerMode = 0;         // 0 off, 1 own echo, 2 DX, 3 constant on the Moon
};

// A value that is missing or does not make sense (port outside 1..65535,
// unknown mode, elevation outside -90..90, a switch that is not a boolean,
// an empty host) reads as its default.
int LoadStationControl(const char *fileName, StationControlSettings &station);
int SaveStationControl(const char *fileName, const StationControlSettings &station,
                       QString *error = nullptr);

} // namespace lunaquill
