// The clock text, and the date/time dialog whose entered fields must come out
// on the clock as UTC in any local time zone.
#include "app/Clock.h"
#include "app/TimeConfigDialog.h"
#include "tracking/SharedState.h"
#include "ui_TimeConfigDialog.h"

#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <climits>
#include <vector>

using namespace lunaquill;

namespace {

struct tm Fields(int weekday, int month0, int day, int hour, int minute, int second, int year)
{
    struct tm t {};
    t.tm_wday = weekday, t.tm_mon = month0, t.tm_mday = day;
    t.tm_hour = hour, t.tm_min = minute, t.tm_sec = second, t.tm_year = year - 1900;
    return t;
}

// Runs body until no clock tick fell inside it, so two reads of time() agree.
template <typename Body>
void WithinOneSecond(Body body)
{
    for (time_t before = 0; before != time(nullptr);) {
        before = time(nullptr);
        body();
    }
}

// Sets TZ, if that zone is installed, for the life of the object.
struct ScopedTimeZone {
    explicit ScopedTimeZone(const char *zone) : had(getenv("TZ")), old(had ? getenv("TZ") : "")
    {
        installed = QFile::exists(QString("/usr/share/zoneinfo/") + zone);
        if (installed)
            setenv("TZ", zone, 1), tzset();
    }
    ~ScopedTimeZone() { had ? setenv("TZ", old.c_str(), 1) : unsetenv("TZ"), tzset(); }
    bool had;
    std::string old;
    bool installed;
};

std::vector<QComboBox *> Boxes(const TimeConfigDialog &dialog)
{
    Ui::TimeConfigDialog *ui = dialog.widgets();
    return {ui->MonthComboBox, ui->DayComboBox, ui->YearComboBox,
            ui->HoursComboBox, ui->MinutesComboBox, ui->SecondsComboBox};
}

} // namespace

TEST(ClockText, DaysInThreePlacesAndFieldsOutOfRangeInsideTheBuffer)
{
    // Weekdays checked with `date -u -d`; a weekday or month outside its table
    // is not looked up.
    const struct { struct tm fields; const char *text; } rows[] = {
        {Fields(0, 5, 1, 0, 0, 0, 2025), "Sun Jun  1 00:00:00 2025"},
        {Fields(4, 8, 9, 7, 8, 9, 1999), "Thu Sep  9 07:08:09 1999"},
        {Fields(5, 1, 28, 13, 5, 9, 2025), "Fri Feb 28 13:05:09 2025"},
        {Fields(7, 12, 1, 0, 0, 0, 2025), "??? ???  1 00:00:00 2025"},
        {Fields(-1, -1, 1, 0, 0, 0, 2025), "??? ???  1 00:00:00 2025"},
    };
    struct tm extreme = Fields(INT_MIN, INT_MAX, INT_MIN, INT_MAX, INT_MIN, INT_MAX, 0);
    extreme.tm_year = INT_MAX; // 2147483647 + 1900 must not overflow
    const std::string text = ClockText(extreme);
    EXPECT_LT(text.size(), 80u);
    EXPECT_NE(text.find("2147485547"), std::string::npos) << text;
    for (const auto &row : rows) // the shared buffer is cleared between uses
        EXPECT_STREQ(ClockText(row.fields), row.text);
}

// The dialog opened, a date entered and Ok pressed, then the fields turned into
// the display offset as the main window does: the clock shows them as UTC.
TEST(TimeConfig, OpensAndEnteredDateShowAsUtcInEveryZone)
{
    // Standard offsets of today; Apia's was -11 until the end of 2011.
    const struct { const char *zone; int32_t standardOffset; } zones[] = {
        {"America/New_York", -18000}, {"Asia/Kolkata", 19800}, {"Pacific/Auckland", 43200},
        {"Pacific/Apia", 46800},
    };
    // Box indices (month, day, year, hours, minutes, seconds), then the clock.
    const struct { int index[6]; const char *clock; } entries[] = {
        {{5, 0, 25, 0, 0, 0}, "Sun Jun  1 00:00:00 2025"},     // daylight saving in the north
        {{0, 14, 26, 6, 30, 0}, "Thu Jan 15 06:30:00 2026"},   // daylight saving in the south
        {{1, 30, 25, 12, 34, 56}, "Mon Mar  3 12:34:56 2025"}, // 31 February runs into March
        {{6, 3, 10, 23, 59, 59}, "Sun Jul  4 23:59:59 2010"},  // before the changes
    };
    for (const auto &zoneRow : zones) {
        ScopedTimeZone zone(zoneRow.zone);
        if (!zone.installed)
            GTEST_SKIP() << zoneRow.zone << " is not installed (package tzdata)";
        EXPECT_EQ(LocalStandardTimeOffset(), zoneRow.standardOffset) << zoneRow.zone;
        // Displayed 1740747909 = Fri 28 Feb 2025 13:05:09 UTC (`date -u -d @...`):
        // the dialog opens on it in UTC, the date fields and the boxes.
        std::vector<int> shown;
        WithinOneSecond([&] {
            displayOffset = static_cast<int32_t>(1740747909 - time(nullptr));
            TimeConfigDialog opened;
            shown = {dialogMonth, dialogDay, dialogYear, dialogHours, dialogMinutes, dialogSeconds};
            for (const QComboBox *box : Boxes(opened))
                shown.push_back(box->currentIndex());
        });
        EXPECT_EQ(shown, (std::vector<int>{2, 28, 2025, 13, 5, 9, 1, 27, 25, 13, 5, 9}));
        for (const auto &entry : entries) {
            TimeConfigDialog dialog;
            for (int b = 0; b < 6; ++b)
                Boxes(dialog)[b]->setCurrentIndex(entry.index[b]);
            QPushButton *ok = dialog.widgets()->buttonBox->button(QDialogButtonBox::Ok);
            QTimer::singleShot(0, ok, [ok] { QTest::mouseClick(ok, Qt::LeftButton); });
            ASSERT_EQ(dialog.exec(), QDialog::Accepted);
            std::string clock;
            WithinOneSecond([&] {
                displayOffset = OffsetForEnteredUtc(dialogMonth, dialogDay, dialogYear,
                                                    dialogHours, dialogMinutes, dialogSeconds);
                clock = ClockText(DisplayedUtc());
            });
            displayOffset = 0;
            EXPECT_EQ(clock, entry.clock) << zoneRow.zone;
        }
    }
}
