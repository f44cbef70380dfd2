#include "Settings.h"

#include "tracking/StationEntry.h"
#include "DopplerModes.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QMap>
#include <QSaveFile>
#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include <cmath>

namespace lunaquill {

namespace {

// The OVERLAYS keys in the order they are read and written, each with its
// default text (converted like a stored value) and its member.
struct OverlayKey {
    const char *key;
    const char *defaultText;
    bool OverlaySettings::*flag;       // set for the switches
    int32_t OverlaySettings::*number;  // set for the two numbers
};

constexpr OverlayKey kOverlayKeys[] = {
    {"SunOverlay", "true", &OverlaySettings::SunOverlay, nullptr},
    {"MoonOverlay", "true", &OverlaySettings::MoonOverlay, nullptr},
    {"MercuryOverlay", "true", &OverlaySettings::MercuryOverlay, nullptr},
    {"VenusOverlay", "true", &OverlaySettings::VenusOverlay, nullptr},
    {"MarsOverlay", "true", &OverlaySettings::MarsOverlay, nullptr},
    {"SaturnOverlay", "true", &OverlaySettings::SaturnOverlay, nullptr},
    {"JupiterOverlay", "true", &OverlaySettings::JupiterOverlay, nullptr},
    {"NeptuneOverlay", "true", &OverlaySettings::NeptuneOverlay, nullptr},
    {"UranusOverlay", "true", &OverlaySettings::UranusOverlay, nullptr},
    {"PlutoOverlay", "true", &OverlaySettings::PlutoOverlay, nullptr},
    {"SunShadingOverlay", "false", &OverlaySettings::SunShadingOverlay, nullptr},
    {"MoonShadingOverlay", "true", &OverlaySettings::MoonShadingOverlay, nullptr},
    {"SkyNoiseOverlay", "true", &OverlaySettings::SkyNoiseOverlay, nullptr},
    {"StarsOverlay", "true", &OverlaySettings::StarsOverlay, nullptr},
    {"StarsMagnitude", "6", nullptr, &OverlaySettings::StarsMagnitude},
    {"ConstellationsOverlay", "false", &OverlaySettings::ConstellationsOverlay, nullptr},
    {"LatitudeGridlines", "true", &OverlaySettings::LatitudeGridlines, nullptr},
    {"LongitudeGridlines", "true", &OverlaySettings::LongitudeGridlines, nullptr},
    {"MapOffset", "0", nullptr, &OverlaySettings::MapOffset},
    {"StarChartOverlay", "false", &OverlaySettings::StarChartOverlay, nullptr},
    {"FavoriteStationsOverlay", "true", &OverlaySettings::FavoriteStationsOverlay, nullptr},
};

constexpr int32_t kMapOffsetHours = 24;

// How long a save waits for another instance of the program to finish its own.
constexpr int kLockWaitMs = 2000;

// Copies a stored text into its fixed field, cut to fit. An unquoted text
// with commas comes back from the ini reader as a list; it is joined again
// so that a hand-edited "Sydney, NSW" is not lost.
template <size_t N>
void ReadText(QSettings &settings, const char *key, const char *defaultText, char (&field)[N])
{
    QVariant value = settings.value(key, QString::fromLatin1(defaultText));
    QByteArray bytes = value.typeId() == QMetaType::QStringList
                           ? value.toStringList().join(", ").toUtf8()
                           : value.toByteArray();
    CopyField(field, bytes.constData());
}

// A double that does not convert, or is not finite, reads as 0.
double ReadDouble(QSettings &settings, const char *key, const char *defaultText)
{
    double number = settings.value(key, QString::fromLatin1(defaultText)).toDouble();
    return std::isfinite(number) ? number : 0.0;
}

// The field may hold a text cut anywhere (it is never longer than N - 1).
template <size_t N>
QString FieldText(const char (&field)[N])
{
    return QString::fromUtf8(field, static_cast<qsizetype>(strnlen(field, N)));
}

// Everything a settings object sees, each value as text, so that the values
// just set (doubles, bools) compare with the same values read back from text.
QMap<QString, QString> Contents(QSettings &settings)
{
    QMap<QString, QString> contents;
    for (const QString &key : settings.allKeys()) {
        QVariant value = settings.value(key);
        contents[key] = value.typeId() == QMetaType::QStringList
                            ? value.toStringList().join(QChar('\n'))
                            : value.toString();
    }
    return contents;
}

// Writes bytes to a file and reports whether every byte reached it.
template <typename File>
bool WriteAll(File &file, const QByteArray &bytes)
{
    return file.write(bytes) == bytes.size() && file.flush();
}

// Writes one group into the settings file, keeping every other key, and never
// leaves a damaged file behind. QSettings alone is not enough: it renames its
// temporary file into place even when writing that file failed (a full disk),
// and reports success. So the group is merged into a scratch copy, the copy is
// read back and compared, and only a complete copy replaces the file, by a
// checked write through a temporary file and a rename. On any failure the file
// on disk stays as it was and the reason is returned; success returns "".
template <typename WriteGroup>
QString SaveGroup(const char *fileName, WriteGroup writeGroup)
{
    const QString path = SettingsPath(fileName);
    if (!QDir().mkpath(SettingsFolder()))
        return "the folder " + SettingsFolder() + " cannot be made";
    QLockFile lock(path + ".lock");
    if (!lock.tryLock(kLockWaitMs)) {
        const QString lockName = QFileInfo(path).fileName() + ".lock";
        return lock.error() == QLockFile::LockFailedError
                   ? "another program holds its lock file (" + lockName + ")"
                   : "its lock file (" + lockName + ") cannot be made";
    }

    QByteArray current;
    if (QFile file(path); file.exists()) {
        // A file that cannot be read (or a folder in its place) is not replaced.
        if (!file.open(QIODevice::ReadOnly))
            return file.errorString();
        current = file.readAll();
        if (file.error() != QFileDevice::NoError)
            return file.errorString();
    }

    QTemporaryDir scratch(SettingsFolder() + "saving-XXXXXX");
    if (!scratch.isValid())
        return scratch.errorString();
    const QString mergedPath = scratch.filePath("merged.ini");
    const QString checkPath = scratch.filePath("check.ini");
    if (QFile merged(mergedPath); !merged.open(QIODevice::WriteOnly) || !WriteAll(merged, current))
        return merged.errorString();

    const QString incomplete = "the settings did not reach the disk whole (is it full?)";
    QMap<QString, QString> intended;
    {
        QSettings settings(mergedPath, QSettings::IniFormat);
        writeGroup(settings);
        settings.sync();
        // A FormatError only says the old file was damaged; it is rewritten.
        if (settings.status() == QSettings::AccessError)
            return incomplete;
        intended = Contents(settings);
    }
    // Read back under a name QSettings has not cached, so it parses the file.
    if (!QFile::rename(mergedPath, checkPath))
        return incomplete;
    QSettings check(checkPath, QSettings::IniFormat);
    if (check.status() == QSettings::AccessError || Contents(check) != intended)
        return incomplete;

    QFile checked(checkPath);
    if (!checked.open(QIODevice::ReadOnly))
        return checked.errorString();
    const QByteArray bytes = checked.readAll();
    if (checked.error() != QFileDevice::NoError)
        return checked.errorString();
    QSaveFile target(path);
    if (!target.open(QIODevice::WriteOnly) || !WriteAll(target, bytes) || !target.commit())
        return target.errorString();
    return QString();
}

// The result of a save, and its reason for the caller who asked.
int SaveResult(const char *fileName, const QString &reason, QString *error)
{
    if (reason.isEmpty())
        return 0;
    if (error)
        *error = SettingsPath(fileName) + ": " + reason;
    return -1;
}

} // namespace

QString SettingsPath(const char *fileName)
{
    return SettingsFolder() + QString::fromLocal8Bit(fileName ? fileName : "");
}

int LoadHomeData(const char *fileName, HomeData &home)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    home = HomeData{};
    settings.beginGroup("HOME_DATA");
    ReadText(settings, "Callsign", "", home.callsign);
    ReadText(settings, "Grid", "JJ00aa", home.grid);
    ReadText(settings, "Location", "Ocean", home.location);
    home.latitude = ReadDouble(settings, "Latitude", "");
    home.longitude = ReadDouble(settings, "Longitude", "");
    // A frequency outside what the program computes with, or no number,
    // would give infinite figures: the default instead.
    home.frequency = DefaultFrequency;
    ReadNumberWithin(settings.value("Frequency").toString().toStdString(), MinimumFrequency,
                     MaximumFrequency, home.frequency);
    home.trackingSource = settings.value("TrackingSource", "0").toInt();
    settings.endGroup();
    // The source is an index into the result arrays: anything else is the Moon.
    if (home.trackingSource < 0 || home.trackingSource >= static_cast<int32_t>(SourceCount))
        home.trackingSource = 0;
    return 0;
}

int SaveHomeData(const char *fileName, const HomeData &home, QString *error)
{
    const QString reason = SaveGroup(fileName, [&home](QSettings &settings) {
        settings.beginGroup("HOME_DATA");
        settings.setValue("Callsign", FieldText(home.callsign));
        settings.setValue("Grid", FieldText(home.grid));
        settings.setValue("Location", FieldText(home.location));
        settings.setValue("TrackingSource", home.trackingSource);
        settings.setValue("Latitude", home.latitude);
        settings.setValue("Longitude", home.longitude);
        settings.setValue("Frequency", home.frequency);
        settings.endGroup();
    });
    return SaveResult(fileName, reason, error);
}

int LoadOverlays(const char *fileName, OverlaySettings &overlays)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    overlays = OverlaySettings{};
    settings.beginGroup("OVERLAYS");
    for (const OverlayKey &entry : kOverlayKeys) {
        QVariant value = settings.value(entry.key, QString::fromLatin1(entry.defaultText));
        if (entry.flag)
            overlays.*entry.flag = value.toBool();
        else
            overlays.*entry.number = value.toInt();
    }
    settings.endGroup();
    // The offset rolls the map by whole hours; outside a day it means nothing.
    if (overlays.MapOffset < 0 || overlays.MapOffset >= kMapOffsetHours)
        overlays.MapOffset = 0;
    return 0;
}

int SaveOverlays(const char *fileName, const OverlaySettings &overlays, QString *error)
{
    const QString reason = SaveGroup(fileName, [&overlays](QSettings &settings) {
        settings.beginGroup("OVERLAYS");
        for (const OverlayKey &entry : kOverlayKeys) {
            if (entry.flag)
                settings.setValue(entry.key, overlays.*entry.flag);
            else
                settings.setValue(entry.key, overlays.*entry.number);
        }
        settings.endGroup();
    });
    return SaveResult(fileName, reason, error);
}

namespace {

// Only a real boolean switches a link on: QVariant would read any text as true.
bool ReadSwitch(QSettings &settings, const char *key, bool defaultValue)
{
    const QString text = settings.value(key).toString().trimmed().toLower();
    if (text == "true" || text == "1")
        return true;
    if (text == "false" || text == "0")
        return false;
    return defaultValue;
}

int32_t ReadNumber(QSettings &settings, const char *key, int32_t low, int32_t high,
                   int32_t defaultValue)
{
    bool ok = false;
    const int number = settings.value(key).toInt(&ok);
    return ok && number >= low && number <= high ? number : defaultValue;
}

// A number within [low, high], else the default (also for NaN).
double ReadBounded(QSettings &settings, const char *key, double low, double high, double fallback)
{
    bool ok = false;
    const double value = settings.value(key).toDouble(&ok);
    return ok && value >= low && value <= high ? value : fallback;
}

QString ReadHost(QSettings &settings, const char *key, const QString &defaultHost)
{
    const QString host = settings.value(key).toString().trimmed();
    return host.isEmpty() ? defaultHost : host;
}

} // namespace

int LoadStationControl(const char *fileName, StationControlSettings &station)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    const StationControlSettings defaults;
    station = defaults;
    settings.beginGroup("STATION_CONTROL");
    station.rotatorEnabled = ReadSwitch(settings, "RotatorEnabled", defaults.rotatorEnabled);
    station.rotatorHost = ReadHost(settings, "RotatorHost", defaults.rotatorHost);
    station.rotatorPort = ReadNumber(settings, "RotatorPort", 1, 65535, defaults.rotatorPort);
    station.minimumElevation =
        ReadBounded(settings, "MinimumElevation", -90.0, 90.0, defaults.minimumElevation);
    station.rigEnabled = ReadSwitch(settings, "RigEnabled", defaults.rigEnabled);
    station.rigHost = ReadHost(settings, "RigHost", defaults.rigHost);
    station.rigPort = ReadNumber(settings, "RigPort", 1, 65535, defaults.rigPort);
    station.dopplerMode =
        ReadNumber(settings, "DopplerMode", 0, DopplerModeCount - 1, defaults.dopplerMode);
    station.rotatorReplyTimeout = ReadNumber(settings, "RotatorReplyTimeout", 1,
                                             kMaximumReplyTimeout, defaults.rotatorReplyTimeout);
    station.rigReplyTimeout = ReadNumber(settings, "RigReplyTimeout", 1, kMaximumReplyTimeout,
                                         defaults.rigReplyTimeout);
    settings.endGroup();
    return 0;
}

int SaveStationControl(const char *fileName, const StationControlSettings &station,
                       QString *error)
{
    const QString reason = SaveGroup(fileName, [&station](QSettings &settings) {
        settings.beginGroup("STATION_CONTROL");
        settings.setValue("RotatorEnabled", station.rotatorEnabled);
        settings.setValue("RotatorHost", station.rotatorHost);
        settings.setValue("RotatorPort", station.rotatorPort);
        settings.setValue("MinimumElevation", station.minimumElevation);
        settings.setValue("RigEnabled", station.rigEnabled);
        settings.setValue("RigHost", station.rigHost);
        settings.setValue("RigPort", station.rigPort);
        settings.setValue("DopplerMode", station.dopplerMode);
        settings.setValue("RotatorReplyTimeout", station.rotatorReplyTimeout);
        settings.setValue("RigReplyTimeout", station.rigReplyTimeout);
        settings.endGroup();
    });
    return SaveResult(fileName, reason, error);
}

int LoadWsjtx(const char *fileName, WsjtxSettings &wsjtx)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    const WsjtxSettings defaults;
    wsjtx = defaults;
    settings.beginGroup("WSJTX");
    wsjtx.enabled = ReadSwitch(settings, "Enabled", defaults.enabled);
    wsjtx.address = ReadHost(settings, "Address", defaults.address);
    wsjtx.port = ReadNumber(settings, "Port", 1, 65535, defaults.port);
    wsjtx.followDx = ReadSwitch(settings, "FollowDx", defaults.followDx);
    wsjtx.followFrequency = ReadSwitch(settings, "FollowFrequency", defaults.followFrequency);
    settings.endGroup();
    return 0;
}

int SaveWsjtx(const char *fileName, const WsjtxSettings &wsjtx, QString *error)
{
    const QString reason = SaveGroup(fileName, [&wsjtx](QSettings &settings) {
        settings.beginGroup("WSJTX");
        settings.setValue("Enabled", wsjtx.enabled);
        settings.setValue("Address", wsjtx.address);
        settings.setValue("Port", wsjtx.port);
        settings.setValue("FollowDx", wsjtx.followDx);
        settings.setValue("FollowFrequency", wsjtx.followFrequency);
        settings.endGroup();
    });
    return SaveResult(fileName, reason, error);
}

bool HomeStationSaved(const char *fileName)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    settings.beginGroup("HOME_DATA");
    const QString grid = settings.value("Grid").toString().trimmed();
    const bool placeholder = grid == "JJ00aa" && settings.value("Latitude").toDouble() == 0.0 &&
                             settings.value("Longitude").toDouble() == 0.0;
    return !grid.isEmpty() && !placeholder;
}

int LoadPlanner(const char *fileName, PlannerSettings &planner)
{
    QSettings settings(SettingsPath(fileName), QSettings::IniFormat);
    const PlannerSettings defaults;
    settings.beginGroup("PLANNER");
    planner.days = ReadNumber(settings, "Days", 1, 31, defaults.days);
    planner.homeMinElevation =
        ReadBounded(settings, "HomeMinElevation", -2.0, 90.0, defaults.homeMinElevation);
    planner.dxMinElevation =
        ReadBounded(settings, "DxMinElevation", -2.0, 90.0, defaults.dxMinElevation);
    planner.tab = ReadNumber(settings, "Tab", 0, 1, defaults.tab);
    settings.endGroup();
    return 0;
}

int SavePlanner(const char *fileName, const PlannerSettings &planner, QString *error)
{
    const QString reason = SaveGroup(fileName, [&planner](QSettings &settings) {
        settings.beginGroup("PLANNER");
        settings.setValue("Days", planner.days);
        settings.setValue("HomeMinElevation", planner.homeMinElevation);
        settings.setValue("DxMinElevation", planner.dxMinElevation);
        settings.setValue("Tab", planner.tab);
        settings.endGroup();
    });
    return SaveResult(fileName, reason, error);
}

} // namespace lunaquill
