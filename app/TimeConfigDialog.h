// The modal dialog in which the operator picks an absolute UTC date and time.
// Its combo boxes write the six dialog date fields below at once; the main
// window's SetDateTime reads them after Ok and turns them into an offset.
#pragma once

#include <QDialog>

#include <cstdint>

namespace Ui {
class TimeConfigDialog;
}

namespace lunaquill {

// month 1..12, day 1..31, year, hours, minutes, seconds (UTC).
extern int32_t dialogMonth;
extern int32_t dialogDay;
extern int32_t dialogYear;
extern int32_t dialogHours;
extern int32_t dialogMinutes;
extern int32_t dialogSeconds;

class TimeConfigDialog : public QDialog
{
    Q_OBJECT

public:
    // Fills the date fields and the combo boxes from the displayed instant.
    explicit TimeConfigDialog(QWidget *parent = nullptr);
    ~TimeConfigDialog() override;

    // The generated widget set, for tests that read and drive the dialog.
    Ui::TimeConfigDialog *widgets() const { return ui; }

public slots:
    void MonthChanged(int index);
    void DayChanged(int index);
    void YearChanged(int index);
    void HoursChanged(int index);
    void MinutesChanged(int index);
    void SecondsChanged(int index);

private:
    Ui::TimeConfigDialog *ui;
};

} // namespace lunaquill
