// "EME Planner": when the home and the DX station both see the Moon over the
// next days (table and chart of both elevations with the mutual windows
// shaded), and the month's EME conditions day by day. Non-modal beside the
// main window; it plans from the displayed instant for the stations and
// frequency of the process-wide records and plans again when they change.
// A double click on a row, or a click on a chart, moves the displayed instant
// there (DisplayedTimeChanged, which the main window takes as TimeAdjusted).
#pragma once

#include "Settings.h"
#include "tracking/EmePlanner.h"

#include <QString>
#include <QTimer>
#include <QWidget>

#include <memory>
#include <vector>

namespace Ui {
class PlannerWindow;
}
QT_BEGIN_NAMESPACE
class QChart;
class QChartView;
QT_END_NAMESPACE

namespace lunaquill {

class PlannerWindow : public QWidget
{
    Q_OBJECT

public:
    explicit PlannerWindow(QWidget *parent = nullptr);
    ~PlannerWindow() override;

    Ui::PlannerWindow *widgets() const { return ui.get(); }
    QChartView *windowsChart() const { return windowsView; }
    QChartView *monthChart() const { return monthView; }
    const std::vector<MutualWindow> &windows() const { return plan; }
    const std::vector<DayConditions> &conditions() const { return month; }
    const PlanRequest &request() const { return planned; }

    // The CSV of the tab shown, as Copy and Save CSV... give it.
    QString CurrentCsv() const;
    // Writes CurrentCsv() to `path`; false (and the reason) when it did not
    // reach the file whole.
    bool SaveCsv(const QString &path, QString *error = nullptr) const;

signals:
    void DisplayedTimeChanged();

public slots:
    // Plans again from the displayed instant.
    void Replan();
    void CopyCsv();
    void SaveCsvChosen();
    // Moves the displayed instant to `t` (seconds since 1970, UTC).
    void ShowInstant(qint64 t);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    std::unique_ptr<Ui::PlannerWindow> ui;
    QChartView *windowsView = nullptr;
    QChartView *monthView = nullptr;
    PlannerSettings choices;
    QTimer followTimer;   // notices new stations and frequency
    QTimer saveTimer;     // saves the choices once they rest
    QTimer replanTimer;   // plans once the choices rest
    PlanRequest planned;
    std::vector<MutualWindow> plan;
    std::vector<DayConditions> month;
    int64_t monthFirst = 0;
    QString lastInputs;   // stations and frequency the plan was made for

    void LoadStationChoices();
    PlanRequest RequestNow() const;
    QString InputsKey() const;
    void FollowChanges();
    void ChoicesChanged();
    void FillWindows();
    void FillMonth();
};

} // namespace lunaquill
