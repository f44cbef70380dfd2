// "Dx Select": call sign, grid and position of the station being worked,
// written straight into lunaquill::dxStation. Unlike the home dialog, a grid
// typed here moves the station at once.
#pragma once

#include "HomeStationDialog.h"

#include <QDialog>

#include <memory>

namespace Ui {
class DxSelectDialog;
}

namespace lunaquill {

class DxSelectDialog : public QDialog {
    Q_OBJECT

public:
    explicit DxSelectDialog(QWidget *parent = nullptr);
    ~DxSelectDialog() override;

public slots:
    void CallsignChanged();
    void GridChanged();
    void gridConvertPressed();
    void LatitudeDegEditPressed();
    void LatitudeMinEditPressed();
    void LatitudeSecEditPressed();
    void LongitudeDegEditPressed();
    void LongitudeMinEditPressed();
    void LongitudeSecEditPressed();
    void LatitudeNSChanged(int index);
    void LongitudeEWChanged(int index);

private:
    void ShowPosition();

    std::unique_ptr<Ui::DxSelectDialog> ui;
    PositionEditors latitudeEditors;
    PositionEditors longitudeEditors;
};

} // namespace lunaquill
