// The clock text, the step buttons' table, the local standard-time offset and
// the date/time dialog, whose entered UTC fields must come out on the clock
// unchanged in any local time zone.
#include "app/Clock.h"
#include "app/TimeConfigDialog.h"
#include "tracking/SharedState.h"
#include "ui_TimeConfigDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <ostream>
#include <string>
#include <tuple>

using namespace lunaquill;

namespace {

struct tm Fields(int weekday, int month0, int day, int hour, int minute, int second, int year)
{
    struct tm t {};
    t.tm_wday = weekday;
    t.tm_mon = month0;
    t.tm_mday = day;
    t.tm_hour = hour;
    t.tm_min = minute;
    t.tm_sec = second;
    t.tm_year = year - 1900;
    return t;
}

// Runs body until it ran within one second of the system clock, so a clock
// tick between two reads of time() cannot make a test flaky.
template <typename Body>
void WithinOneSecond(Body body)
{
    for (int attempt = 0; attempt < 5; ++attempt) {
        time_t before = time(nullptr);
        body();
        if (time(nullptr) == before)
            return;
    }
}

// Sets TZ for the life of the object and puts the old value back after.
class ScopedTimeZone
{
public:
    explicit ScopedTimeZone(const char *zone)
    {
        const char *old = getenv("TZ");
        hadOld = old != nullptr;
        if (old)
            oldValue = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedTimeZone()
    {
        if (hadOld)
            setenv("TZ", oldValue.c_str(), 1);
        else
            unsetenv("TZ");
        tzset();
    }

private:
    bool hadOld = false;
    std::string oldValue;
};

bool ZoneInstalled(const char *zone)
{
    const char *folder = getenv("TZDIR");
    return QFile::exists(QString(folder ? folder : "/usr/share/zoneinfo") + "/" + zone);
}

} // namespace

// ---- clock text ------------------------------------------------------------

struct ClockRow {
    struct tm time;
    const char *text;
};

void PrintTo(const ClockRow &row, std::ostream *out)
{
    *out << row.text;
}

class ClockTextRows : public testing::TestWithParam<ClockRow> {};

TEST_P(ClockTextRows, MatchesHandWrittenText)
{
    EXPECT_STREQ(ClockText(GetParam().time), GetParam().text);
}

// Weekdays checked with `date -u -d`.
INSTANTIATE_TEST_SUITE_P(
    Dates, ClockTextRows,
    testing::Values(ClockRow{Fields(0, 5, 1, 0, 0, 0, 2025), "Sun Jun  1 00:00:00 2025"},
                    ClockRow{Fields(5, 1, 28, 13, 5, 9, 2025), "Fri Feb 28 13:05:09 2025"},
                    ClockRow{Fields(6, 0, 1, 0, 0, 0, 2000), "Sat Jan  1 00:00:00 2000"},
                    ClockRow{Fields(2, 11, 31, 23, 59, 59, 2047), "Tue Dec 31 23:59:59 2047"},
                    ClockRow{Fields(4, 8, 9, 7, 8, 9, 1999), "Thu Sep  9 07:08:09 1999"}));

TEST(ClockText, OutOfRangeFieldsStayInsideTheBuffer)
{
    // Weekday and month outside their tables must not be looked up.
    EXPECT_STREQ(ClockText(Fields(7, 12, 1, 0, 0, 0, 2025)), "??? ???  1 00:00:00 2025");
    EXPECT_STREQ(ClockText(Fields(-1, -1, 1, 0, 0, 0, 2025)), "??? ???  1 00:00:00 2025");

    struct tm extreme = Fields(INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, 0);
    extreme.tm_year = INT_MAX;  // the year itself must not overflow
    const char *text = ClockText(extreme);
    EXPECT_LT(strlen(text), 80u);
    EXPECT_NE(std::string(text).find("2147485547"), std::string::npos) << text;

    // The shared buffer is cleared: a shorter text leaves nothing behind.
    EXPECT_STREQ(ClockText(Fields(0, 5, 1, 0, 0, 0, 2025)), "Sun Jun  1 00:00:00 2025");
}

// ---- step buttons ----------------------------------------------------------

TEST(TimeSteps, EightButtonsTenMinutesHourDayWeek)
{
    const struct { const char *button; int32_t seconds; } expected[] = {
        {"TimeAdjustMinMButton", -600},     {"TimeAdjustMinPButton", 600},
        {"TimeAdjustHourMButton", -3600},   {"TimeAdjustHourPButton", 3600},
        {"TimeAdjustDayMButton", -86400},   {"TimeAdjustDayPButton", 86400},
        {"TimeAdjustWeekMButton", -604800}, {"TimeAdjustWeekPButton", 604800},
    };
    ASSERT_EQ(kTimeStepCount, 8u);
    for (const auto &row : expected)
        EXPECT_EQ(TimeStepSeconds(row.button), row.seconds) << row.button;
    EXPECT_EQ(TimeStepSeconds("TimeAdjustPlayButton"), 0);
    EXPECT_EQ(TimeStepSeconds(""), 0);
    EXPECT_EQ(TimeStepSeconds(nullptr), 0);
}

// ---- time zones --------------------------------------------------------------

struct ZoneRow {
    const char *zone;
    int32_t standardOffset;  // seconds east of UTC, daylight saving ignored
};

void PrintTo(const ZoneRow &row, std::ostream *out)
{
    *out << row.zone;
}

const ZoneRow kZones[] = {
    {"UTC", 0},
    {"Europe/Berlin", 3600},         // CET; CEST in June
    {"America/New_York", -18000},    // EST; EDT in June
    {"Asia/Kolkata", 19800},         // IST, half an hour
    {"Pacific/Auckland", 43200},     // NZST; NZDT in January
    {"America/St_Johns", -12600},    // NST, half an hour west; NDT in June
};

class LocalZone : public testing::TestWithParam<ZoneRow> {};

TEST_P(LocalZone, StandardOffsetEastOfUtc)
{
    if (!ZoneInstalled(GetParam().zone))
        GTEST_SKIP() << GetParam().zone << " is not installed (package tzdata)";
    ScopedTimeZone zone(GetParam().zone);
    EXPECT_EQ(LocalStandardTimeOffset(), GetParam().standardOffset);
}

INSTANTIATE_TEST_SUITE_P(Zones, LocalZone, testing::ValuesIn(kZones),
                         [](const testing::TestParamInfo<ZoneRow> &info) {
                             std::string name = info.param.zone;
                             for (char &c : name)
                                 if (c == '/')
                                     c = '_';
                             return name;
                         });

// ---- the date/time dialog --------------------------------------------------

class TimeConfig : public testing::Test
{
protected:
    void SetUp() override { displayOffset = 0; }
    void TearDown() override { displayOffset = 0; }
};

TEST_F(TimeConfig, TitleSizeLabelsAndItems)
{
    TimeConfigDialog dialog;
    Ui::TimeConfigDialog *ui = dialog.widgets();
    EXPECT_EQ(dialog.windowTitle(), "Time and Date Configuration");
    EXPECT_EQ(dialog.size(), QSize(440, 247));
    EXPECT_TRUE(dialog.isModal());
    EXPECT_EQ(ui->DateLabel->text(), "Date");
    EXPECT_EQ(ui->TimeLabel->text(), "Time");
    ASSERT_NE(ui->buttonBox->button(QDialogButtonBox::Ok), nullptr);
    ASSERT_NE(ui->buttonBox->button(QDialogButtonBox::Cancel), nullptr);

    const QStringList months = {"January", "February", "March",     "April",   "May",      "June",
                                "July",    "August",   "September", "October", "November", "December"};
    QStringList days, years, hours, sixty;
    for (int d = 1; d <= 31; ++d)
        days << QString::number(d);
    for (int y = 2000; y <= 2047; ++y)
        years << QString::number(y);
    for (int n = 0; n < 60; ++n)
        sixty << QString::asprintf("%02d", n);
    hours = sixty.mid(0, 24);

    auto items = [](const QComboBox *box) {
        QStringList texts;
        for (int i = 0; i < box->count(); ++i)
            texts << box->itemText(i);
        return texts;
    };
    EXPECT_EQ(items(ui->MonthComboBox), months);
    EXPECT_EQ(items(ui->DayComboBox), days);
    EXPECT_EQ(items(ui->YearComboBox), years);
    EXPECT_EQ(items(ui->HoursComboBox), hours);
    EXPECT_EQ(items(ui->MinutesComboBox), sixty);
    EXPECT_EQ(items(ui->SecondsComboBox), sixty);
}

namespace {

// What the dialog shows and stores, box by box: month, day, year, hours,
// minutes, seconds.
struct Shown {
    int32_t fields[6];
    int indices[6];
};

Shown WhatTheDialogShows(const TimeConfigDialog &dialog)
{
    Ui::TimeConfigDialog *ui = dialog.widgets();
    return Shown{{dialogMonth, dialogDay, dialogYear, dialogHours, dialogMinutes, dialogSeconds},
                 {ui->MonthComboBox->currentIndex(), ui->DayComboBox->currentIndex(),
                  ui->YearComboBox->currentIndex(), ui->HoursComboBox->currentIndex(),
                  ui->MinutesComboBox->currentIndex(), ui->SecondsComboBox->currentIndex()}};
}

} // namespace

TEST_F(TimeConfig, OpensOnTheDisplayedInstantAsUtc)
{
    // Displayed: 1740747909 = Fri 28 Feb 2025 13:05:09 UTC (`date -u -d @...`).
    // Kolkata's local time then is 18:35, so the fields must be taken as UTC.
    ScopedTimeZone zone(ZoneInstalled("Asia/Kolkata") ? "Asia/Kolkata" : "UTC");
    Shown shown {};
    WithinOneSecond([&] {
        displayOffset = static_cast<int32_t>(1740747909 - time(nullptr));
        TimeConfigDialog dialog;
        shown = WhatTheDialogShows(dialog);
    });
    const int32_t fields[6] = {2, 28, 2025, 13, 5, 9};
    const int indices[6] = {1, 27, 25, 13, 5, 9};
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(shown.fields[i], fields[i]) << "box " << i;
        EXPECT_EQ(shown.indices[i], indices[i]) << "box " << i;
    }
}

// Entering a date and time and pressing Ok, then turning the fields into the
// display offset as the main window does: the clock must show the entered
// fields as UTC in every local zone, daylight saving or not.
struct EntryRow {
    int monthIndex, dayIndex, yearIndex, hours, minutes, seconds;
    const char *clock;  // weekdays checked with `date -u -d`
};

void PrintTo(const EntryRow &row, std::ostream *out)
{
    *out << row.clock;
}

const EntryRow kEntries[] = {
    {5, 0, 25, 0, 0, 0, "Sun Jun  1 00:00:00 2025"},      // daylight saving in the north
    {0, 14, 26, 6, 30, 0, "Thu Jan 15 06:30:00 2026"},    // daylight saving in the south
    {1, 30, 25, 12, 34, 56, "Mon Mar  3 12:34:56 2025"},  // 31 February runs into March
    {11, 30, 47, 23, 59, 59, "Tue Dec 31 23:59:59 2047"}, // the end of the list
};

class EnteredUtc : public testing::TestWithParam<std::tuple<ZoneRow, EntryRow>>
{
protected:
    void TearDown() override { displayOffset = 0; }
};

TEST_P(EnteredUtc, ClockShowsTheEnteredFields)
{
    const ZoneRow &zoneRow = std::get<0>(GetParam());
    const EntryRow &entry = std::get<1>(GetParam());
    if (!ZoneInstalled(zoneRow.zone))
        GTEST_SKIP() << zoneRow.zone << " is not installed (package tzdata)";
    ScopedTimeZone zone(zoneRow.zone);

    TimeConfigDialog dialog;
    Ui::TimeConfigDialog *ui = dialog.widgets();
    ui->MonthComboBox->setCurrentIndex(entry.monthIndex);
    ui->DayComboBox->setCurrentIndex(entry.dayIndex);
    ui->YearComboBox->setCurrentIndex(entry.yearIndex);
    ui->HoursComboBox->setCurrentIndex(entry.hours);
    ui->MinutesComboBox->setCurrentIndex(entry.minutes);
    ui->SecondsComboBox->setCurrentIndex(entry.seconds);
    QPushButton *ok = ui->buttonBox->button(QDialogButtonBox::Ok);
    QTimer::singleShot(0, ok, [ok] { QTest::mouseClick(ok, Qt::LeftButton); });
    ASSERT_EQ(dialog.exec(), QDialog::Accepted);

    std::string clock;
    WithinOneSecond([&] {
        displayOffset = OffsetForEnteredUtc(dialogMonth, dialogDay, dialogYear,
                                            dialogHours, dialogMinutes, dialogSeconds);
        clock = ClockText(DisplayedUtc());
    });
    EXPECT_EQ(clock, entry.clock);
}

INSTANTIATE_TEST_SUITE_P(
    ZonesAndDates, EnteredUtc, testing::Combine(testing::ValuesIn(kZones), testing::ValuesIn(kEntries)),
    [](const testing::TestParamInfo<std::tuple<ZoneRow, EntryRow>> &info) {
        std::string name = std::get<0>(info.param).zone;
        for (char &c : name)
            if (c == '/')
                c = '_';
        return name + "_" + std::to_string(info.index % std::size(kEntries));
    });
