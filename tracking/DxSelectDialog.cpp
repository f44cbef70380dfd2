#include "DxSelectDialog.h"
#include "ui_DxSelectDialog.h"

#include "Maidenhead.h"
#include "SharedState.h"

#include <QComboBox>
#include <QLineEdit>

namespace lunaquill {

DxSelectDialog::DxSelectDialog(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::DxSelectDialog>())
{
    ui->setupUi(this);
    latitudeEditors = {ui->LatitudeDegEdit, ui->LatitudeMinEdit, ui->LatitudeSecEdit,
                       ui->LatitudeNSComboBox};
    longitudeEditors = {ui->LongitudeDegEdit, ui->LongitudeMinEdit, ui->LongitudeSecEdit,
                        ui->LongitudeEWComboBox};
    ShowPosition();

    connect(ui->CallsignEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::CallsignChanged);
    connect(ui->GridEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::GridChanged);
    connect(ui->GridConvertButton, &QPushButton::pressed, this, &DxSelectDialog::gridConvertPressed);
    connect(ui->LatitudeDegEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LatitudeDegEditPressed);
    connect(ui->LatitudeMinEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LatitudeMinEditPressed);
    connect(ui->LatitudeSecEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LatitudeSecEditPressed);
    connect(ui->LongitudeDegEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LongitudeDegEditPressed);
    connect(ui->LongitudeMinEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LongitudeMinEditPressed);
    connect(ui->LongitudeSecEdit, &QLineEdit::editingFinished, this, &DxSelectDialog::LongitudeSecEditPressed);
    connect(ui->LatitudeNSComboBox, &QComboBox::currentIndexChanged, this, &DxSelectDialog::LatitudeNSChanged);
    connect(ui->LongitudeEWComboBox, &QComboBox::currentIndexChanged, this, &DxSelectDialog::LongitudeEWChanged);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

DxSelectDialog::~DxSelectDialog()
{
    // The base class destroys the fields after this object is gone, and the
    // field losing focus would still report editingFinished to it.
    for (QWidget *child : findChildren<QWidget *>())
        child->disconnect(this);
}

void DxSelectDialog::ShowPosition()
{
    latitudeEditors.Show(dxStation.latitude);
    longitudeEditors.Show(dxStation.longitude);
}

void DxSelectDialog::CallsignChanged()
{
    CopyField(dxStation.callsign, ui->CallsignEdit->text().toLatin1().constData());
}

// The DX station follows its grid at once; the position only changes when
// the text is a locator.
void DxSelectDialog::GridChanged()
{
    CopyField(dxStation.grid, ui->GridEdit->text().toLatin1().constData());
    if (GridToLatLong(dxStation.grid, dxStation.latitude, dxStation.longitude) == 0)
        ShowPosition();
}

void DxSelectDialog::gridConvertPressed()
{
    GridToLatLong(dxStation.grid, dxStation.latitude, dxStation.longitude);
    ShowPosition();
}

void DxSelectDialog::LatitudeDegEditPressed() { latitudeEditors.Read(dxStation.latitude); }
void DxSelectDialog::LatitudeMinEditPressed() { latitudeEditors.Read(dxStation.latitude); }
void DxSelectDialog::LatitudeSecEditPressed() { latitudeEditors.Read(dxStation.latitude); }
void DxSelectDialog::LongitudeDegEditPressed() { longitudeEditors.Read(dxStation.longitude); }
void DxSelectDialog::LongitudeMinEditPressed() { longitudeEditors.Read(dxStation.longitude); }
void DxSelectDialog::LongitudeSecEditPressed() { longitudeEditors.Read(dxStation.longitude); }
void DxSelectDialog::LatitudeNSChanged(int) { latitudeEditors.Read(dxStation.latitude); }
void DxSelectDialog::LongitudeEWChanged(int) { longitudeEditors.Read(dxStation.longitude); }

} // namespace lunaquill
