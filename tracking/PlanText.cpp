#include "PlanText.h"

#include "Maidenhead.h"

#include <algorithm>
#include <cctype>
#include <clocale>
#include <cmath>
#include <cstdarg>
#include <cstdlib>
#include <cstring>

namespace lunaquill {

namespace {

constexpr int64_t kDay = 86400;

std::string Format(const char *format, ...)
{
    char buffer[128];
    va_list args;
    va_start(args, format);
    const int n = vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    return n < 0 ? std::string() : std::string(buffer, size_t(std::min(n, int(sizeof buffer) - 1)));
}

// A figure with a fixed number of decimals; empty when there is none.
std::string Number(double value, int decimals)
{
    if (!std::isfinite(value))
        return std::string();
    // No "-0.0" for values that round to zero.
    const double scale = std::pow(10.0, decimals);
    if (std::round(value * scale) == 0.0)
        value = 0.0;
    return Format("%.*f", decimals, value);
}

int64_t RoundToMinute(int64_t t) { return (t >= 0 ? t + 30 : t - 29) / 60 * 60; }

std::string Joined(const std::vector<std::string> &cells)
{
    std::string line;
    for (size_t i = 0; i < cells.size(); ++i) {
        if (i)
            line += ',';
        line += cells[i];
    }
    return line + '\n';
}

// Numbers are read whole or not at all, with '.' as the decimal point.
bool ReadNumber(const std::string &text, double &value)
{
    if (text.empty() || text.size() > 32 || isspace((unsigned char)text[0]))
        return false;
    for (char c : text)
        if (!(isdigit((unsigned char)c) || c == '.' || c == '-' || c == '+' || c == 'e' || c == 'E'))
            return false;
    char *end = nullptr;
    const double v = strtod(text.c_str(), &end);
    if (end != text.c_str() + text.size() || !std::isfinite(v))
        return false;
    value = v;
    return true;
}

bool ReadInteger(const std::string &text, int64_t &value)
{
    if (text.empty() || text.size() > 9)
        return false;
    int64_t v = 0;
    for (char c : text) {
        if (!isdigit((unsigned char)c))
            return false;
        v = v * 10 + (c - '0');
    }
    value = v;
    return true;
}

// Days since 1970-01-01 of a proleptic Gregorian date.
int64_t DaysFromCivil(int64_t y, int64_t m, int64_t d)
{
    y -= m <= 2;
    const int64_t era = (y >= 0 ? y : y - 399) / 400;
    const int64_t yoe = y - era * 400;
    const int64_t doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const int64_t doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + doe - 719468;
}

bool IsLeap(int64_t y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

// A terminal table: each column as wide as its widest cell, right-aligned.
std::string Aligned(const std::vector<std::string> &header,
                    const std::vector<std::vector<std::string>> &rows)
{
    std::vector<size_t> width(header.size());
    for (size_t c = 0; c < header.size(); ++c)
        width[c] = header[c].size();
    for (const auto &row : rows)
        for (size_t c = 0; c < row.size() && c < width.size(); ++c)
            width[c] = std::max(width[c], row[c].size());
    auto line = [&](const std::vector<std::string> &cells) {
        std::string text;
        for (size_t c = 0; c < cells.size(); ++c) {
            if (c)
                text += "  ";
            text += std::string(width[c] - std::min(width[c], cells[c].size()), ' ') + cells[c];
        }
        text.erase(text.find_last_not_of(' ') + 1);
        return text + '\n';
    };
    std::string text = line(header);
    for (const auto &row : rows)
        text += line(row);
    return text;
}

// "HH:MM", with the date in front when it is not that of `reference`.
std::string TimeAfter(int64_t t, int64_t reference)
{
    const std::string text = FormatPlanTime(t, false), day = FormatPlanTime(reference, false);
    return text.compare(0, 10, day, 0, 10) == 0 ? text.substr(11) : text;
}

std::string Position(double latitude, double longitude)
{
    return Format("%.4f %c, %.4f %c", std::fabs(latitude), latitude < 0 ? 'S' : 'N',
                  std::fabs(longitude), longitude < 0 ? 'W' : 'E');
}

} // namespace

std::string FormatPlanTime(int64_t t, bool iso)
{
    const time_t rounded = time_t(RoundToMinute(t));
    struct tm utc {};
    if (!gmtime_r(&rounded, &utc))
        return std::string();
    return Format(iso ? "%04d-%02d-%02dT%02d:%02dZ" : "%04d-%02d-%02d %02d:%02d",
                  utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday, utc.tm_hour, utc.tm_min);
}

std::string FormatPlanDate(int64_t t)
{
    const time_t tt = time_t(t);
    struct tm utc {};
    if (!gmtime_r(&tt, &utc))
        return std::string();
    return Format("%04d-%02d-%02d", utc.tm_year + 1900, utc.tm_mon + 1, utc.tm_mday);
}

int64_t PlanMinutes(int64_t start, int64_t end)
{
    return std::max<int64_t>(0, (RoundToMinute(end) - RoundToMinute(start)) / 60);
}

std::vector<std::string> WindowColumns(bool hasDx)
{
    std::vector<std::string> columns = {
        "start_utc", "end_utc", "minutes", "home_az_start", "home_el_start", "home_az_end",
        "home_el_end"};
    if (hasDx)
        columns.insert(columns.end(), {"dx_az_start", "dx_el_start", "dx_az_end", "dx_el_end"});
    columns.insert(columns.end(), {"peak_utc", "peak_el", "doppler_start_hz", "doppler_end_hz",
                                   "home_degradation_db", "home_sky_temp_k",
                                   "home_spatial_offset"});
    if (hasDx)
        columns.insert(columns.end(),
                       {"dx_degradation_db", "dx_sky_temp_k", "dx_spatial_offset",
                        "pol_start_deg", "pol_mid_deg", "pol_end_deg", "pol_loss_start_db",
                        "pol_loss_mid_db", "pol_loss_end_db"});
    return columns;
}

std::vector<std::string> WindowCells(const MutualWindow &w, bool hasDx, bool iso)
{
    std::vector<std::string> cells = {
        FormatPlanTime(w.start, iso), FormatPlanTime(w.end, iso),
        std::to_string(PlanMinutes(w.start, w.end)), Number(w.home.azimuthStart, 1),
        Number(w.home.elevationStart, 1), Number(w.home.azimuthEnd, 1),
        Number(w.home.elevationEnd, 1)};
    if (hasDx)
        cells.insert(cells.end(), {Number(w.dx.azimuthStart, 1), Number(w.dx.elevationStart, 1),
                                   Number(w.dx.azimuthEnd, 1), Number(w.dx.elevationEnd, 1)});
    cells.insert(cells.end(),
                 {FormatPlanTime(w.peakTime, iso), Number(w.peakElevation, 1),
                  Number(w.dopplerStart, 0), Number(w.dopplerEnd, 0),
                  Number(w.home.degradation, 1), Number(w.home.skyTemperature, 0),
                  Number(w.home.spatialOffset, 1)});
    if (hasDx)
        cells.insert(cells.end(),
                     {Number(w.dx.degradation, 1), Number(w.dx.skyTemperature, 0),
                      Number(w.dx.spatialOffset, 1), Number(w.polarisation[0], 1),
                      Number(w.polarisation[1], 1), Number(w.polarisation[2], 1),
                      Number(w.polarisationLoss[0], 1), Number(w.polarisationLoss[1], 1),
                      Number(w.polarisationLoss[2], 1)});
    return cells;
}

std::vector<std::string> ConditionColumns()
{
    return {"date",           "transit_utc", "elevation_deg",  "declination_deg",
            "distance_km",    "path_loss_db", "sky_temp_k",    "degradation_db",
            "sun_moon_deg",   "best",         "sun_near"};
}

std::vector<std::string> ConditionCells(const DayConditions &d, bool iso)
{
    return {FormatPlanDate(d.date),      FormatPlanTime(d.transit, iso),
            Number(d.elevation, 1),      Number(d.declination, 1),
            Number(d.distanceKm, 0),     Number(d.pathLossDb, 2),
            Number(d.skyTemperature, 1), Number(d.degradation, 2),
            Number(d.sunMoonAngle, 1),   d.best ? "yes" : "",
            d.sunNear ? "yes" : ""};
}

std::string WindowsCsv(const std::vector<MutualWindow> &windows, bool hasDx)
{
    std::string text = Joined(WindowColumns(hasDx));
    for (const MutualWindow &w : windows)
        text += Joined(WindowCells(w, hasDx, true));
    return text;
}

std::string ConditionsCsv(const std::vector<DayConditions> &days)
{
    std::string text = Joined(ConditionColumns());
    for (const DayConditions &d : days)
        text += Joined(ConditionCells(d, true));
    return text;
}

bool ParseStation(const std::string &text, double &latitude, double &longitude)
{
    const size_t comma = text.find(',');
    if (comma != std::string::npos) {
        double lat, lon;
        if (!ReadNumber(text.substr(0, comma), lat) || !ReadNumber(text.substr(comma + 1), lon)
            || std::fabs(lat) > 90.0 || std::fabs(lon) > 180.0)
            return false;
        latitude = lat;
        longitude = lon;
        return true;
    }
    if (text.size() != 4 && text.size() != 6)
        return false;
    auto in = [](char c, char first, char last) {
        c = char(toupper((unsigned char)c));
        return c >= first && c <= last;
    };
    if (!in(text[0], 'A', 'R') || !in(text[1], 'A', 'R') || !isdigit((unsigned char)text[2])
        || !isdigit((unsigned char)text[3]))
        return false;
    if (text.size() == 6 && (!in(text[4], 'A', 'X') || !in(text[5], 'A', 'X')))
        return false;
    return GridToLatLong(text.c_str(), latitude, longitude) == 0;
}

bool ParsePlanTime(const std::string &text, int64_t &t)
{
    // YYYY-MM-DDTHH:MMZ
    if (text.size() != 17 || text[4] != '-' || text[7] != '-' || text[10] != 'T'
        || text[13] != ':' || text[16] != 'Z')
        return false;
    int64_t y = 0, mo = 0, d = 0, h = 0, mi = 0;
    if (!ReadInteger(text.substr(0, 4), y) || !ReadInteger(text.substr(5, 2), mo)
        || !ReadInteger(text.substr(8, 2), d) || !ReadInteger(text.substr(11, 2), h)
        || !ReadInteger(text.substr(14, 2), mi))
        return false;
    static const int kMonthDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (y < 1900 || mo < 1 || mo > 12 || d < 1 || h > 23 || mi > 59)
        return false;
    if (d > kMonthDays[mo - 1] + (mo == 2 && IsLeap(y)))
        return false;
    t = DaysFromCivil(y, mo, d) * kDay + h * 3600 + mi * 60;
    return true;
}

namespace {

// The terminal's view of the daily conditions.
std::string ConditionsTable(const PlanRequest &request, const std::vector<DayConditions> &days,
                            const std::string &homeText)
{
    std::string text = Format("EME conditions at %s (%s), %.1f MHz, %d days from %s\n",
                              homeText.substr(0, 40).c_str(),
                              Position(request.home.latitude, request.home.longitude).c_str(),
                              request.frequencyMHz, request.days,
                              days.empty() ? "" : FormatPlanDate(days.front().date).c_str());
    std::vector<std::vector<std::string>> rows;
    for (const DayConditions &d : days) {
        rows.push_back(ConditionCells(d));
        rows.back()[1] = rows.back()[1].substr(11); // the date is in the first column
    }
    return text + Aligned({"Date", "Highest", "El", "Dec", "Distance km", "Loss dB", "Sky K",
                           "Degr dB", "Sun", "Best", "Sun<15"},
                          rows);
}

// The terminal's view of the windows: the figures an operator scans for,
// azimuth/elevation and Doppler paired to keep it within a wide terminal.
std::string WindowsTable(const PlanRequest &request, const std::vector<MutualWindow> &windows,
                         const std::string &homeText, const std::string &dxText)
{
    auto site = [](const std::string &name, const PlanSite &s) {
        return Format("%s (%s, from %.1f deg)", name.substr(0, 40).c_str(),
                      Position(s.latitude, s.longitude).c_str(), s.minElevation);
    };
    std::string text = "Moon windows for " + site(homeText, request.home);
    if (request.hasDx)
        text += " with " + site(dxText, request.dx);
    text += Format("\n%s to %s, %.1f MHz; %zu window%s\n", FormatPlanTime(request.from).c_str(),
                   FormatPlanTime(request.from + int64_t(request.days) * kDay).c_str(),
                   request.frequencyMHz, windows.size(), windows.size() == 1 ? "" : "s");
    if (windows.empty())
        return text;
    auto pair = [](double a, double b, int decimals) {
        return Number(a, decimals) + "/" + Number(b, decimals);
    };
    std::vector<std::vector<std::string>> rows;
    for (const MutualWindow &w : windows) {
        std::vector<std::string> row = {
            FormatPlanTime(w.start, false), TimeAfter(w.end, w.start),
            std::to_string(PlanMinutes(w.start, w.end)),
            pair(w.home.azimuthStart, w.home.elevationStart, 0),
            pair(w.home.azimuthEnd, w.home.elevationEnd, 0)};
        if (request.hasDx)
            row.insert(row.end(), {pair(w.dx.azimuthStart, w.dx.elevationStart, 0),
                                   pair(w.dx.azimuthEnd, w.dx.elevationEnd, 0)});
        row.insert(row.end(),
                   {TimeAfter(w.peakTime, w.start) + " " + Number(w.peakElevation, 1),
                    pair(w.dopplerStart, w.dopplerEnd, 0), Number(w.home.degradation, 1)});
        if (request.hasDx)
            row.insert(row.end(), {Number(w.dx.degradation, 1), Number(w.polarisation[1], 0),
                                   pair(w.polarisationLoss[0], w.polarisationLoss[1], 1) + "/"
                                       + Number(w.polarisationLoss[2], 1)});
        rows.push_back(row);
    }
    std::vector<std::string> header = {"Start UTC", "End", "Min", "Home Az/El", "at end"};
    if (request.hasDx)
        header.insert(header.end(), {"DX Az/El", "at end"});
    header.insert(header.end(), {"Peak of lower", "Doppler Hz", "Home dB"});
    if (request.hasDx)
        header.insert(header.end(), {"DX dB", "Pol", "Pol loss dB"});
    return text + Aligned(header, rows);
}

} // namespace

int RunPlanCommand(int argc, const char *const *argv, const PlanDefaults &defaults, FILE *out,
                   FILE *err)
{
    PlanRequest request;
    request.frequencyMHz = defaults.frequencyMHz;
    request.from = defaults.now;
    request.days = 7;
    request.home = {defaults.homeLatitude, defaults.homeLongitude, 0.0};
    bool homeSet = defaults.homeSet, conditions = false, csv = false, dxMinGiven = false;
    std::string homeText = defaults.homeName ? defaults.homeName : "", dxText;

    // One line naming the argument; the argument itself cut short.
    auto refuse = [&](const std::string &option, const char *why, const std::string &value) {
        std::string shown = value.substr(0, 40);
        for (char &c : shown)
            if (!isprint((unsigned char)c))
                c = '?';
        fprintf(err, "lunaquill-plan: %s: %s%s%s%s\n", option.c_str(), why,
                value.empty() ? "" : " \"", shown.c_str(),
                value.empty() ? "" : (value.size() > 40 ? "...\"" : "\""));
        return 2;
    };

    for (int i = 1; i < argc; ++i) {
        std::string option = argv[i] ? argv[i] : "";
        std::string value;
        bool hasValue = false;
        const size_t equals = option.find('=');
        if (option.compare(0, 2, "--") == 0 && equals != std::string::npos) {
            value = option.substr(equals + 1);
            option = option.substr(0, equals);
            hasValue = true;
        }
        if (option.size() > 40)
            return refuse(option.substr(0, 40) + "...", "unknown option", "");
        auto next = [&]() -> bool {
            if (hasValue)
                return true;
            if (i + 1 >= argc || !argv[i + 1])
                return false;
            value = argv[++i];
            return true;
        };
        const bool flag = option == "--conditions" || option == "--csv" || option == "--help"
                          || option == "--version";
        if (flag && hasValue)
            return refuse(option, "takes no value", value);
        if (option == "--help") {
            fputs("Usage: lunaquill-plan [OPTION]...\n"
                  "When the Moon is up for a home and a DX station (mutual windows), or the\n"
                  "EME conditions day by day at the home station.\n\n"
                  "  --home LOCATOR|LAT,LON   home station (default: the settings file's)\n"
                  "  --dx LOCATOR|LAT,LON     DX station (default: none, the home station alone)\n"
                  "  --from YYYY-MM-DDTHH:MMZ start (default: now)\n"
                  "  --days N                 1 to 366 (default 7)\n"
                  "  --min-elevation DEG      both stations, -2 to 90 (default 0)\n"
                  "  --dx-min-elevation DEG   the DX station's (default: the same)\n"
                  "  --frequency MHZ          (default: the settings file's, else 1296)\n"
                  "  --conditions             daily conditions instead of windows\n"
                  "  --csv                    comma-separated values\n"
                  "  --help, --version\n\n"
                  "Exit status: 0 done, 2 bad input.\n",
                  out);
            return 0;
        }
        if (option == "--version") {
            fprintf(out, "lunaquill-plan %s\n", defaults.version ? defaults.version : "");
            return 0;
        }
        if (option == "--conditions") {
            conditions = true;
        } else if (option == "--csv") {
            csv = true;
        } else if (option == "--home" || option == "--dx") {
            if (!next())
                return refuse(option, "needs a locator or LAT,LON", "");
            double lat = 0, lon = 0;
            if (!ParseStation(value, lat, lon))
                return refuse(option, "not a locator or LAT,LON", value);
            PlanSite &site = option == "--home" ? request.home : request.dx;
            site.latitude = lat;
            site.longitude = lon;
            (option == "--home" ? homeText : dxText) = value;
            if (option == "--home")
                homeSet = true;
            else
                request.hasDx = true;
        } else if (option == "--from") {
            if (!next())
                return refuse(option, "needs YYYY-MM-DDTHH:MMZ", "");
            if (!ParsePlanTime(value, request.from))
                return refuse(option, "not a time YYYY-MM-DDTHH:MMZ", value);
        } else if (option == "--days") {
            int64_t days = 0;
            if (!next())
                return refuse(option, "needs a number of days", "");
            if (!ReadInteger(value, days) || days < 1 || days > kMaxPlanDays)
                return refuse(option, "not a number of days from 1 to 366", value);
            request.days = int32_t(days);
        } else if (option == "--min-elevation" || option == "--dx-min-elevation") {
            double degrees = 0;
            if (!next())
                return refuse(option, "needs degrees", "");
            if (!ReadNumber(value, degrees) || degrees < -2.0 || degrees > 90.0)
                return refuse(option, "not an elevation from -2 to 90 degrees", value);
            if (option == "--min-elevation") {
                request.home.minElevation = degrees;
                if (!dxMinGiven)
                    request.dx.minElevation = degrees;
            } else {
                request.dx.minElevation = degrees;
                dxMinGiven = true;
            }
        } else if (option == "--frequency") {
            double mhz = 0;
            if (!next())
                return refuse(option, "needs MHz", "");
            if (!ReadNumber(value, mhz) || mhz <= 0.0 || mhz > 1e6)
                return refuse(option, "not a frequency in MHz above 0", value);
            request.frequencyMHz = mhz;
        } else {
            return refuse(option, "unknown option (see --help)", "");
        }
    }
    if (!homeSet)
        return refuse("--home", "no home station in the settings file; give one", "");
    if (request.hasDx && !dxMinGiven)
        request.dx.minElevation = request.home.minElevation;
    if (!PlanRequestValid(request))
        return refuse("--home", "cannot be planned", homeText);

    if (conditions) {
        const std::vector<DayConditions> days = PlanConditions(request);
        fputs((csv ? ConditionsCsv(days) : ConditionsTable(request, days, homeText)).c_str(), out);
    } else {
        const std::vector<MutualWindow> windows = PlanMutualWindows(request);
        fputs((csv ? WindowsCsv(windows, request.hasDx)
                   : WindowsTable(request, windows, homeText, dxText))
                  .c_str(),
              out);
    }
    return 0;
}

} // namespace lunaquill
