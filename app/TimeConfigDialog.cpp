#include "TimeConfigDialog.h"

#include "tracking/SharedState.h"
#include "ui_TimeConfigDialog.h"

namespace lunaquill {

int32_t dialogMonth;
int32_t dialogDay;
int32_t dialogYear;
int32_t dialogHours;
int32_t dialogMinutes;
int32_t dialogSeconds;

namespace {

// The first year of the year list; its last is 2047.
constexpr int kFirstYear = 2000;

} // namespace

TimeConfigDialog::TimeConfigDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::TimeConfigDialog)
{
    ui->setupUi(this);

    struct tm shown = DisplayedUtc();
    dialogMonth = shown.tm_mon + 1;
    dialogDay = shown.tm_mday;
    dialogYear = shown.tm_year + 1900;
    dialogHours = shown.tm_hour;
    dialogMinutes = shown.tm_min;
    dialogSeconds = shown.tm_sec;

    // A year outside the list leaves its box empty; the field keeps the year.
    ui->MonthComboBox->setCurrentIndex(dialogMonth - 1);
    ui->DayComboBox->setCurrentIndex(dialogDay - 1);
    ui->YearComboBox->setCurrentIndex(dialogYear - kFirstYear);
    ui->HoursComboBox->setCurrentIndex(dialogHours);
    ui->MinutesComboBox->setCurrentIndex(dialogMinutes);
    ui->SecondsComboBox->setCurrentIndex(dialogSeconds);

    connect(ui->MonthComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(MonthChanged(int)));
    connect(ui->DayComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(DayChanged(int)));
    connect(ui->YearComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(YearChanged(int)));
    connect(ui->HoursComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(HoursChanged(int)));
    connect(ui->MinutesComboBox, SIGNAL(currentIndexChanged(int)), this,
            SLOT(MinutesChanged(int)));
    connect(ui->SecondsComboBox, SIGNAL(currentIndexChanged(int)), this,
            SLOT(SecondsChanged(int)));
}

TimeConfigDialog::~TimeConfigDialog()
{
    delete ui;
}

void TimeConfigDialog::MonthChanged(int index)
{
    dialogMonth = index + 1;
}

void TimeConfigDialog::DayChanged(int index)
{
    dialogDay = index + 1;
}

void TimeConfigDialog::YearChanged(int index)
{
    dialogYear = index + kFirstYear;
}

void TimeConfigDialog::HoursChanged(int index)
{
    dialogHours = index;
}

void TimeConfigDialog::MinutesChanged(int index)
{
    dialogMinutes = index;
}

void TimeConfigDialog::SecondsChanged(int index)
{
    dialogSeconds = index;
}

} // namespace lunaquill

// Compiled here rather than with the other classes' meta-object code, so a
// program that uses this dialog links without the rest of the library.
#include "moc_TimeConfigDialog.cpp"
