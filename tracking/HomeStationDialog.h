// "Home Station": call sign, grid, location, frequency and position of the
// operator's own station, written straight into lunaquill::homeData.
#pragma once

#include <QDialog>

#include <memory>

class QComboBox;
class QLineEdit;
namespace Ui {
class HomeStationDialog;
}

namespace lunaquill {

// The degrees, minutes and seconds fields and the hemisphere combo of one
// latitude or longitude; shared by the home and the DX dialog.
struct PositionEditors {
    QLineEdit *degrees;
    QLineEdit *minutes;
    QLineEdit *seconds;
    QComboBox *hemisphere;

    // Shows a value. Signals are blocked so that showing never writes back.
    void Show(double value) const;
    // Cuts each field to its limit (and shows it cut), then converts. A
    // result that is not a finite number leaves value unchanged.
    void Read(double &value) const;
};

class HomeStationDialog : public QDialog {
    Q_OBJECT

public:
    explicit HomeStationDialog(QWidget *parent = nullptr);
    ~HomeStationDialog() override;

public slots:
    void CallsignChanged();
    void LocationChanged();
    void GridChanged();
    void FrequencyChanged();
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

    std::unique_ptr<Ui::HomeStationDialog> ui;
    PositionEditors latitudeEditors;
    PositionEditors longitudeEditors;
};

} // namespace lunaquill
