// The time controls of the main window, clicked for real: step buttons and
// their styles, play mode, back to now, and the date dialog through Ok.
#include "app/MainWindow.h"
#include "app/PanelStyles.h"
#include "app/TimeConfigDialog.h"
#include "ui_MainWindow.h"
#include "ui_TimeConfigDialog.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/EmeFigures.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>

using namespace lunaquill;

namespace {

class TimeControlsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
        window = std::make_unique<MainWindow>();
        ui = window->widgets();
    }

    std::string Style(QWidget *w) { return w->styleSheet().toStdString(); }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
};

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
        QTest::mouseClick(row.button, Qt::LeftButton);
        expected += row.step;
        EXPECT_EQ(displayOffset, expected) << row.button->objectName().toStdString();
        EXPECT_EQ(window->step(), row.step);
        for (const Row &other : rows)
            EXPECT_EQ(Style(other.button), other.button == row.button ? kDarkBlueStyle : kGrayStyle);
    }
    // The sources follow at once: the Moon was recomputed for the new instant.
    EXPECT_EQ(homeTracks[0].valid, 1);
}

// The instant a clock text shows ("Sun Jun  1 00:00:00 2025", UTC).
time_t ClockInstant(const QString &text)
{
    struct tm fields {};
    return strptime(text.toLatin1().constData(), "%a %b %e %H:%M:%S %Y", &fields)
               ? timegm(&fields) : -1;
}

TEST_F(TimeControlsTest, PlayAddsTheStepOnceASecondAndTheClockFollowsTheMap)
{
    QTest::mouseClick(ui->TimeAdjustWeekPButton, Qt::LeftButton);
    ASSERT_EQ(displayOffset, 604800);
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    EXPECT_TRUE(window->isPlaying());
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kDarkBlueStyle);
    EXPECT_EQ(displayOffset, 604800); // nothing moves until the next play step

    // Within 101 ticks the offset moves by one step, then every 101 ticks;
    // the tick after a step shows the clock of the map's instant, the one
    // the sources were computed for: Cygnus A stands still in the sky, so
    // its sub-point moves a degree every four minutes of the clock (a week
    // behind would be 7 degrees off).
    for (int step = 2; step <= 4; ++step) {
        for (int ticks = 0; displayOffset < step * 604800 && ticks < 101; ++ticks)
            window->TimerEvent();
        ASSERT_EQ(displayOffset, step * 604800);
        window->TimerEvent();
        struct tm shown {};
        const time_t instant = ClockInstant(ui->DateTimeButton->text());
        gmtime_r(&instant, &shown);
        const SourceTrack &cygnus = homeTracks[CygnusA];
        double latitude, longitude;
        SubSourcePoint(shown, cygnus.rightAscension, cygnus.declination, latitude, longitude);
        EXPECT_NEAR(std::remainder(longitude - cygnus.subLongitude, 360.0), 0.0, 0.01) << step;
    }

    // Play off: grey again, the step kept, the offset stands still.
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    EXPECT_FALSE(window->isPlaying());
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kGrayStyle);
    EXPECT_EQ(Style(ui->TimeAdjustWeekPButton), kGrayStyle);
    EXPECT_EQ(window->step(), 604800);
    for (int i = 0; i < 202; ++i)
        window->TimerEvent();
    EXPECT_EQ(displayOffset, 4 * 604800);
}

TEST_F(TimeControlsTest, AfterADayStepTheNextTickShowsTheNewDaysFigures)
{
    // The home station is at 0, 0 (first run). An instant a day ahead at
    // which libnova's Moon is below the horizon there, so that its rise and
    // set are those of that day's search (no pass begun the day before).
    ln_lnlat_posn origin{0.0, 0.0};
    for (int hours = 1; displayOffset == 0 && hours < 24 * 40; ++hours) {
        time_t then = time(nullptr) + 86400 + hours * 3600;
        const double jd = ln_get_julian_from_timet(&then);
        ln_equ_posn moon;
        ln_hrz_posn sky;
        ln_get_lunar_equ_coords(jd, &moon);
        ln_get_hrz_from_equ(&moon, &origin, jd, &sky);
        if (sky.alt < -3.0)
            displayOffset = hours * 3600;
    }
    for (uint32_t source : {Moon, Sun}) {
        homeData.trackingSource = int32_t(source);
        window->requestForceRefresh();
        window->TimerEvent(); // the panel counter starts again from 0
        QTest::mouseClick(ui->TimeAdjustDayPButton, Qt::LeftButton);
        window->TimerEvent(); // the next tick, long before the next second's refresh
        time_t shown = ClockInstant(ui->DateTimeButton->text());
        ASSERT_NEAR(double(shown), double(DisplayedTime()), 2.0);
        const double jd = ln_get_julian_from_timet(&shown);
        if (source == Sun) { // its distance is otherwise refreshed at second 00 only
            EXPECT_EQ(ui->Distance->text(),
                      QString::asprintf("%9.6f AU", ln_get_earth_solar_dist(jd)));
            continue;
        }
        ln_rst_time rst;
        ASSERT_EQ(ln_get_lunar_rst(jd, &origin, &rst), 0);
        ln_date rise, set;
        ln_get_date(rst.rise, &rise);
        ln_get_date(rst.set, &set);
        EXPECT_EQ(ui->HomeRiseTime->text(), QString::asprintf("Rise: %02d-%02d %02d:%02d",
                  rise.months, rise.days, rise.hours, rise.minutes));
        EXPECT_EQ(ui->HomeSetTime->text(), QString::asprintf("Set: %02d-%02d %02d:%02d",
                  set.months, set.days, set.hours, set.minutes));
    }
}

TEST_F(TimeControlsTest, ThousandsOfWeekStepsStopAtTheOffsetsLimit)
{
    // 3600 weeks are more than the 32-bit offset holds (2^31 s = 3550.6
    // weeks): the clock must climb and then stay at now + 2^31 - 1, never
    // wrap to 1958. No station, a fixed source and no map keep presses cheap.
    window.reset();
    test::ResetSharedState();
    QFile ini(test::SettingsFolder() + "Lunaquill.ini");
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write("[HOME_DATA]\nGrid=\nTrackingSource=12\n");
    ini.close();
    QTemporaryDir noImages;
    const QString source = QDir::currentPath();
    QDir::setCurrent(noImages.path());
    window = std::make_unique<MainWindow>();
    QDir::setCurrent(source);
    time_t last = 0;
    for (int press = 0; press < 3600; ++press) {
        window->TimeAdjustWeekPButtonPressed();
        window->TimerEvent();
        const QString clock = window->widgets()->DateTimeButton->text();
        ASSERT_GE(ClockInstant(clock), last) << press << ": " << clock.toStdString();
        last = ClockInstant(clock);
    }
    EXPECT_EQ(displayOffset, INT32_MAX);
    EXPECT_NEAR(double(last), double(time(nullptr)) + INT32_MAX, 2.0);
}

TEST_F(TimeControlsTest, BackToNowThenPlayRunsWithRealTime)
{
    QTest::mouseClick(ui->TimeAdjustDayMButton, Qt::LeftButton);
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    QTest::mouseClick(ui->DateTimeButton, Qt::LeftButton);
    EXPECT_FALSE(window->isPlaying());
    EXPECT_EQ(displayOffset, 0);
    EXPECT_EQ(window->step(), 0);
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kGrayStyle);
    EXPECT_EQ(Style(ui->TimeAdjustDayMButton), kGrayStyle);

    // Play with step 0: the offset stays 0 while every source is recomputed
    // each second and each refresh asks for every figure (rise and set too).
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    ui->HomeRiseTime->setText("r");
    homeTracks[5].valid = 0; // Jupiter, recomputed only with all sources
    for (int i = 0; i < 102; ++i)
        window->TimerEvent();
    EXPECT_EQ(displayOffset, 0);
    EXPECT_EQ(homeTracks[5].valid, 1);
    EXPECT_NE(ui->HomeRiseTime->text(), "r");
}

TEST_F(TimeControlsTest, DateDialogSetsTheClockInUtc)
{
    // 1 June 2025 00:00:00 entered and accepted.
    QTimer::singleShot(0, [] {
        auto *dialog = qobject_cast<TimeConfigDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        Ui::TimeConfigDialog *d = dialog->widgets();
        d->YearComboBox->setCurrentIndex(25);
        d->MonthComboBox->setCurrentIndex(5);
        d->DayComboBox->setCurrentIndex(0);
        d->HoursComboBox->setCurrentIndex(0);
        d->MinutesComboBox->setCurrentIndex(0);
        d->SecondsComboBox->setCurrentIndex(0);
        QTest::mouseClick(d->buttonBox->button(QDialogButtonBox::Ok), Qt::LeftButton);
    });
    QTest::mouseClick(ui->SetDateTimeButton, Qt::LeftButton);

    // The next tick shows the entered instant (a second may have passed).
    window->TimerEvent();
    const QString clock = ui->DateTimeButton->text();
    EXPECT_TRUE(clock == "Sun Jun  1 00:00:00 2025" || clock == "Sun Jun  1 00:00:01 2025")
        << clock.toStdString();

    // Cancel changes nothing.
    const int32_t offset = displayOffset;
    QTimer::singleShot(0, [] {
        auto *dialog = qobject_cast<TimeConfigDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->widgets()->YearComboBox->setCurrentIndex(40);
        dialog->reject();
    });
    QTest::mouseClick(ui->SetDateTimeButton, Qt::LeftButton);
    EXPECT_EQ(displayOffset, offset);
}

TEST_F(TimeControlsTest, ViewButtonFlipsTheChartViewWithoutSaving)
{
    QTest::mouseClick(ui->ViewModeButton, Qt::LeftButton);
    EXPECT_TRUE(overlaySettings.StarChartOverlay);
    EXPECT_TRUE(ui->WorldMap->isHidden());
    QTest::mouseClick(ui->ViewModeButton, Qt::LeftButton);
    EXPECT_FALSE(overlaySettings.StarChartOverlay);
    EXPECT_FALSE(ui->WorldMap->isHidden());
    EXPECT_FALSE(QFile::exists(test::SettingsFolder() + "Lunaquill.ini"));
}

} // namespace
