// The time controls of the main window, clicked for real: step buttons and
// their styles, play mode, back to now, and the date dialog through Ok.
#include "app/MainWindow.h"
#include "app/PanelStyles.h"
#include "app/TimeConfigDialog.h"
#include "ui_MainWindow.h"
#include "ui_TimeConfigDialog.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <cstring>
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

TEST_F(TimeControlsTest, PlayAddsTheStepOnceASecond)
{
    QTest::mouseClick(ui->TimeAdjustHourPButton, Qt::LeftButton);
    ASSERT_EQ(displayOffset, 3600);
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    EXPECT_TRUE(window->isPlaying());
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kDarkBlueStyle);
    EXPECT_EQ(displayOffset, 3600); // nothing moves until the next play step

    // Within 101 ticks the offset moves by one step, and by another step
    // 101 ticks later.
    int ticks = 0;
    while (displayOffset == 3600 && ticks < 102) {
        window->TimerEvent();
        ++ticks;
    }
    EXPECT_EQ(displayOffset, 7200);
    for (int i = 0; i < 101; ++i)
        window->TimerEvent();
    EXPECT_EQ(displayOffset, 10800);

    // Play off: grey again, the step kept, the offset stands still.
    QTest::mouseClick(ui->TimeAdjustPlayButton, Qt::LeftButton);
    EXPECT_FALSE(window->isPlaying());
    EXPECT_EQ(Style(ui->TimeAdjustPlayButton), kGrayStyle);
    EXPECT_EQ(Style(ui->TimeAdjustHourPButton), kGrayStyle);
    EXPECT_EQ(window->step(), 3600);
    for (int i = 0; i < 202; ++i)
        window->TimerEvent();
    EXPECT_EQ(displayOffset, 10800);
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

    // The panels show the entered instant (a second may have passed).
    window->requestForceRefresh();
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
