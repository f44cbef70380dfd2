// The time controls of the main window, clicked for real: steps and play,
// back to now, the offset's limits, the date dialog and the view button.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/TimeConfigDialog.h"
#include "ui_TimeConfigDialog.h"

#include <QComboBox>
#include <libnova/libnova.h>

#include <climits>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

class TimeControlsTest : public WindowTest
{
protected:
    void SetUp() override
    {
        WindowTest::SetUp();
        Open(nullptr, false);
    }

    void Click(QAbstractButton *button) { QTest::mouseClick(button, Qt::LeftButton); }
};

// The instant a clock text shows ("Sun Jun  1 00:00:00 2025", UTC).
time_t ClockInstant(const QString &text)
{
    struct tm fields {};
    return strptime(text.toLatin1().constData(), "%a %b %e %H:%M:%S %Y", &fields)
               ? timegm(&fields) : -1;
}

TEST_F(TimeControlsTest, StepButtonsMoveTheClockAndMarkTheActiveStep)
{
    struct Row { QPushButton *button; int32_t step; };
    const Row rows[] = {
        {ui->TimeAdjustMinPButton, 600},     {ui->TimeAdjustHourPButton, 3600},
        {ui->TimeAdjustDayPButton, 86400},   {ui->TimeAdjustWeekPButton, 604800},
        {ui->TimeAdjustMinMButton, -600},    {ui->TimeAdjustHourMButton, -3600},
        {ui->TimeAdjustDayMButton, -86400},  {ui->TimeAdjustWeekMButton, -604800},
    };
    int32_t expected = 0;
    for (const Row &row : rows) {
        homeTracks[Moon].valid = 0;
        Click(row.button);
        expected += row.step;
        EXPECT_EQ(displayOffset, expected) << row.button->objectName().toStdString();
        EXPECT_EQ(window->step(), row.step);
        EXPECT_EQ(homeTracks[Moon].valid, 1); // the sources follow at once
        for (const Row &other : rows)
            EXPECT_EQ(Style(other.button),
                      other.button == row.button ? kDarkBlueStyle : kGrayStyle);
    }
}

TEST_F(TimeControlsTest, PlayAddsTheStepOnceASecondUntilBackToNow)
{
    Tick(50); // the play counter, unlike the panels', is not reset by the step below
    Click(ui->TimeAdjustWeekPButton);
    Click(ui->TimeAdjustPlayButton);
    EXPECT_TRUE(window->isPlaying());
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kDarkBlueStyle);
    EXPECT_EQ(displayOffset, 604800); // nothing moves until the next play step

    // Within 101 ticks the offset moves by one step, then every 101 ticks;
    // the tick after a step shows the clock of the instant just computed.
    for (int step = 2; step <= 4; ++step) {
        for (int ticks = 0; displayOffset < step * 604800 && ticks < 101; ++ticks)
            Tick();
        ASSERT_EQ(displayOffset, step * 604800);
        Tick();
        EXPECT_NEAR(double(ClockInstant(ui->DateTimeButton->text())),
                    double(time(nullptr)) + displayOffset, 2.0) << step;
    }

    // A step button changes the step at once, and play goes on with it.
    Click(ui->TimeAdjustDayMButton);
    Tick(101);
    const int32_t played = 4 * 604800 - 2 * 86400;
    EXPECT_EQ(displayOffset, played);
    // Play off: grey again, the step kept, the offset stands still.
    Click(ui->TimeAdjustPlayButton);
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton) + Style(ui->TimeAdjustDayMButton),
              std::string(kGrayStyle) + kGrayStyle);
    EXPECT_EQ(window->step(), -86400);
    Tick(202);
    EXPECT_EQ(displayOffset, played);

    // Back to now stops play and forgets the step and its colour.
    Click(ui->TimeAdjustPlayButton);
    Click(ui->DateTimeButton);
    EXPECT_FALSE(window->isPlaying());
    EXPECT_EQ(displayOffset, 0);
    EXPECT_EQ(window->step(), 0);
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton) + Style(ui->TimeAdjustDayMButton),
              std::string(kGrayStyle) + kGrayStyle);
    // Play with step 0: the offset stays 0 while every source is recomputed
    // each second and each refresh asks for every figure (rise and set too).
    Click(ui->TimeAdjustPlayButton);
    ui->HomeRiseTime->setText("r");
    homeTracks[Jupiter].valid = 0; // recomputed only with all sources
    Tick(102);
    EXPECT_EQ(displayOffset, 0);
    EXPECT_EQ(homeTracks[Jupiter].valid, 1);
    EXPECT_NE(ui->HomeRiseTime->text(), "r");
}

TEST_F(TimeControlsTest, AfterADayStepTheNextTickShowsTheNewDaysFigures)
{
    // Rise, set and the Sun's distance otherwise wait for second 00.
    for (uint32_t source : {Moon, Sun}) {
        homeData.trackingSource = int32_t(source);
        Refresh(); // the panel counter starts again from 0
        Click(ui->TimeAdjustDayPButton);
        Tick(); // the next tick, long before the next second's refresh
        time_t shown = ClockInstant(ui->DateTimeButton->text());
        ASSERT_NEAR(double(shown), double(DisplayedTime()), 2.0);
        const double jd = ln_get_julian_from_timet(&shown);
        const SourceTrack &track = homeTracks[source];
        EXPECT_EQ(Texts({ui->HomeRiseTime, ui->HomeSetTime}),
                  DateText("Rise: ", track.riseTime) + "|" + DateText("Set: ", track.setTime));
        EXPECT_LT(std::fabs(track.riseTime - jd), 1.1); // of the new day, not the last
        if (source == Sun) {
            EXPECT_EQ(Text(ui->Distance), Format("%9.6f AU", ln_get_earth_solar_dist(jd)));
        }
    }
}

TEST_F(TimeControlsTest, WeekStepsStopAtTheOffsetsLimits)
{
    // The offset holds 2^31 s, about 68 years: the clock must stop at its
    // limit, never wrap (to 1958 beyond the upper one).
    for (int32_t limit : {INT32_MAX, INT32_MIN}) {
        displayOffset = limit - (limit > 0 ? 604800 - 5 : -604800 + 5);
        for (int press = 0; press < 2; ++press) {
            Click(limit > 0 ? ui->TimeAdjustWeekPButton : ui->TimeAdjustWeekMButton);
            Tick();
            EXPECT_EQ(displayOffset, limit) << press;
            EXPECT_NEAR(double(ClockInstant(ui->DateTimeButton->text())),
                        double(time(nullptr)) + limit, 2.0);
        }
    }
}

TEST_F(TimeControlsTest, DateDialogSetsTheClockInUtcAndTheViewButtonSavesNothing)
{
    // 1 June 2025 00:00:00 entered; the next tick shows it (a second may have passed).
    WhenOpen<TimeConfigDialog>([](TimeConfigDialog &d) {
        Ui::TimeConfigDialog *boxes = d.widgets();
        boxes->YearComboBox->setCurrentIndex(25);
        boxes->MonthComboBox->setCurrentIndex(5);
        for (QComboBox *box : {boxes->DayComboBox, boxes->HoursComboBox,
                               boxes->MinutesComboBox, boxes->SecondsComboBox})
            box->setCurrentIndex(0);
    }, QDialogButtonBox::Ok);
    Click(ui->SetDateTimeButton);
    Tick();
    EXPECT_TRUE(ui->DateTimeButton->text().startsWith("Sun Jun  1 00:00:0"));

    for (bool charts : {true, false}) {
        Click(ui->ViewModeButton);
        EXPECT_EQ(overlaySettings.StarChartOverlay, charts);
        EXPECT_EQ(ui->WorldMap->isHidden(), charts);
    }
    EXPECT_FALSE(QFile::exists(IniPath()));
}

} // namespace
