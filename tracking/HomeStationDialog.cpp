#include "HomeStationDialog.h"
#include "ui_HomeStationDialog.h"

#include "Maidenhead.h"
#include "SharedState.h"
#include "StationEntry.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>

#include <cstring>

namespace lunaquill {

void PositionEditors::Show(double value) const
{
    PositionTexts texts = PositionTextsFromValue(value);
    const QSignalBlocker blockCombo(hemisphere);
    degrees->setText(QString::fromStdString(texts.degrees));
    minutes->setText(QString::fromStdString(texts.minutes));
    seconds->setText(QString::fromStdString(texts.seconds));
    hemisphere->setCurrentIndex(texts.hemisphere);
}

void PositionEditors::Read(double &value) const
{
    std::string texts[3];
    QLineEdit *fields[3] = {degrees, minutes, seconds};
    for (int i = 0; i < 3; ++i) {
        QByteArray cut = fields[i]->text().toLatin1().left((int)PositionFieldLimit);
        fields[i]->setText(QString::fromLatin1(cut));
        texts[i] = cut.toStdString();
    }
    ValueFromPositionFields(texts[0], texts[1], texts[2], hemisphere->currentIndex(), value);
}

HomeStationDialog::HomeStationDialog(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::HomeStationDialog>())
{
    ui->setupUi(this);
    latitudeEditors = {ui->LatitudeDegEdit, ui->LatitudeMinEdit, ui->LatitudeSecEdit,
                       ui->LatitudeNSComboBox};
    longitudeEditors = {ui->LongitudeDegEdit, ui->LongitudeMinEdit, ui->LongitudeSecEdit,
                        ui->LongitudeEWComboBox};

    // The records may come from an ini file: never read past a field.
    ui->CallsignEdit->setText(QString::fromLatin1(
        homeData.callsign, (int)strnlen(homeData.callsign, sizeof homeData.callsign)));
    ui->LocationEdit->setText(QString::fromLatin1(
        homeData.location, (int)strnlen(homeData.location, sizeof homeData.location)));
    ui->GridEdit->setText(
        QString::fromLatin1(homeData.grid, (int)strnlen(homeData.grid, sizeof homeData.grid)));
    ui->FrequencyEdit->setText(QString::fromStdString(FormatFixed(homeData.frequency, 7, 2)));
    ShowPosition();

    connect(ui->CallsignEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::CallsignChanged);
    connect(ui->LocationEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LocationChanged);
    connect(ui->GridEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::GridChanged);
    connect(ui->FrequencyEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::FrequencyChanged);
    connect(ui->GridConvertButton, &QPushButton::pressed, this, &HomeStationDialog::gridConvertPressed);
    connect(ui->LatitudeDegEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LatitudeDegEditPressed);
    connect(ui->LatitudeMinEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LatitudeMinEditPressed);
    connect(ui->LatitudeSecEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LatitudeSecEditPressed);
    connect(ui->LongitudeDegEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LongitudeDegEditPressed);
    connect(ui->LongitudeMinEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LongitudeMinEditPressed);
    connect(ui->LongitudeSecEdit, &QLineEdit::editingFinished, this, &HomeStationDialog::LongitudeSecEditPressed);
    connect(ui->LatitudeNSComboBox, &QComboBox::currentIndexChanged, this, &HomeStationDialog::LatitudeNSChanged);
    connect(ui->LongitudeEWComboBox, &QComboBox::currentIndexChanged, this, &HomeStationDialog::LongitudeEWChanged);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

HomeStationDialog::~HomeStationDialog()
{
    // The base class destroys the fields after this object is gone, and the
    // field losing focus would still report editingFinished to it.
    for (QWidget *child : findChildren<QWidget *>())
        child->disconnect(this);
}

void HomeStationDialog::ShowPosition()
{
    latitudeEditors.Show(homeData.latitude);
    longitudeEditors.Show(homeData.longitude);
}

void HomeStationDialog::CallsignChanged()
{
    CopyField(homeData.callsign, ui->CallsignEdit->text().toLatin1().constData());
}

void HomeStationDialog::LocationChanged()
{
    CopyField(homeData.location, ui->LocationEdit->text().toLatin1().constData());
}

// Only stored here: the home position changes when Grid Convert is pressed.
void HomeStationDialog::GridChanged()
{
    CopyField(homeData.grid, ui->GridEdit->text().toLatin1().constData());
}

void HomeStationDialog::FrequencyChanged()
{
    // Only text the user changed, and only a frequency the program can
    // compute with; anything else shows the frequency in force again.
    QLineEdit *edit = ui->FrequencyEdit;
    if (edit->isModified() && !ReadNumberWithin(edit->text().toStdString(), MinimumFrequency,
                                                MaximumFrequency, homeData.frequency))
        edit->setText(QString::fromStdString(FormatFixed(homeData.frequency, 7, 2)));
}

void HomeStationDialog::gridConvertPressed()
{
    // Leaves the position as it was when the grid is no locator.
    GridToLatLong(homeData.grid, homeData.latitude, homeData.longitude);
    ShowPosition();
}

void HomeStationDialog::LatitudeDegEditPressed() { latitudeEditors.Read(homeData.latitude); }
void HomeStationDialog::LatitudeMinEditPressed() { latitudeEditors.Read(homeData.latitude); }
void HomeStationDialog::LatitudeSecEditPressed() { latitudeEditors.Read(homeData.latitude); }
void HomeStationDialog::LongitudeDegEditPressed() { longitudeEditors.Read(homeData.longitude); }
void HomeStationDialog::LongitudeMinEditPressed() { longitudeEditors.Read(homeData.longitude); }
void HomeStationDialog::LongitudeSecEditPressed() { longitudeEditors.Read(homeData.longitude); }
void HomeStationDialog::LatitudeNSChanged(int) { latitudeEditors.Read(homeData.latitude); }
void HomeStationDialog::LongitudeEWChanged(int) { longitudeEditors.Read(homeData.longitude); }

} // namespace lunaquill
