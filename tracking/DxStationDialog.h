// "DX Station Selections": the stations of DxStations.txt in the settings
// folder, banded by section; a click on a row makes that station the DX
// station (lunaquill::dxStation).
#pragma once

#include <QDialog>

#include <memory>

class QTableWidgetItem;
namespace Ui {
class DxStationDialog;
}

namespace lunaquill {

class DxStationDialog : public QDialog {
    Q_OBJECT

public:
    explicit DxStationDialog(QWidget *parent = nullptr);
    ~DxStationDialog() override;

public slots:
    void DxStationSelected(QTableWidgetItem *item);

private:
    void FillTable();

    std::unique_ptr<Ui::DxStationDialog> ui;
};

} // namespace lunaquill
