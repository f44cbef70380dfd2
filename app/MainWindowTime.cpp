// The simulated clock: step buttons, play mode, back to now, the date dialog.
#include "MainWindow.h"

#include "Clock.h"
#include "PanelStyles.h"
#include "TimeConfigDialog.h"
#include "ui_MainWindow.h"

#include "tracking/SharedState.h"

using namespace lunaquill;

void MainWindow::SetStepButtonsGray()
{
    for (QWidget *w : {ui->TimeAdjustMinMButton, ui->TimeAdjustHourMButton,
                       ui->TimeAdjustDayMButton, ui->TimeAdjustWeekMButton,
                       ui->TimeAdjustMinPButton, ui->TimeAdjustHourPButton,
                       ui->TimeAdjustDayPButton, ui->TimeAdjustWeekPButton})
        w->setStyleSheet(kGrayStyle);
}

void MainWindow::StepTime(int32_t step, QWidget *pressed)
{
    SetStepButtonsGray();
    pressed->setStyleSheet(kDarkBlueStyle);
    timeStep = step;
    AdvanceDisplayOffset(step);
    TimeAdjusted();
}

void MainWindow::TimeAdjustMinPButtonPressed() { StepTime(600, ui->TimeAdjustMinPButton); }
void MainWindow::TimeAdjustHourPButtonPressed() { StepTime(3600, ui->TimeAdjustHourPButton); }
void MainWindow::TimeAdjustDayPButtonPressed() { StepTime(86400, ui->TimeAdjustDayPButton); }
void MainWindow::TimeAdjustWeekPButtonPressed() { StepTime(604800, ui->TimeAdjustWeekPButton); }
void MainWindow::TimeAdjustMinMButtonPressed() { StepTime(-600, ui->TimeAdjustMinMButton); }
void MainWindow::TimeAdjustHourMButtonPressed() { StepTime(-3600, ui->TimeAdjustHourMButton); }
void MainWindow::TimeAdjustDayMButtonPressed() { StepTime(-86400, ui->TimeAdjustDayMButton); }
void MainWindow::TimeAdjustWeekMButtonPressed() { StepTime(-604800, ui->TimeAdjustWeekMButton); }

void MainWindow::TimeAdjustPlayButtonPressed()
{
    if (!playing) {
        // The offset moves at the next play step, by the last step chosen
        // (0 after the date/time button: then the clock runs with real time
        // while every source is recomputed each second).
        ui->TimeAdjustPlayButton->setStyleSheet(kDarkBlueStyle);
        playing = true;
    } else {
        ui->TimeAdjustPlayButton->setStyleSheet(kGrayStyle);
        playing = false;
        SetStepButtonsGray();
    }
}

void MainWindow::DateTimeButtonPressed()
{
    playing = false;
    ui->TimeAdjustPlayButton->setStyleSheet(kGrayStyle);
    SetStepButtonsGray();
    displayOffset = 0;
    timeStep = 0;
    TimeAdjusted();
}

bool MainWindow::SetDateTime()
{
    TimeConfigDialog dialog;
    if (dialog.exec() == QDialog::Accepted) {
        displayOffset = OffsetForEnteredUtc(dialogMonth, dialogDay, dialogYear, dialogHours,
                                            dialogMinutes, dialogSeconds);
        TimeAdjusted();
    }
    return true;
}

int MainWindow::GmtTimeOffset()
{
    return LocalStandardTimeOffset();
}

void MainWindow::ViewModeButtonPressed()
{
    // Not saved: the overlays dialog writes the view flag when accepted.
    overlaySettings.StarChartOverlay = !overlaySettings.StarChartOverlay;
    TimeAdjusted();
}
