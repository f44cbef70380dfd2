#include "OverlaysDialog.h"
#include "ui_OverlaysDialog.h"

#include "tracking/SharedState.h"

namespace lunaquill {

namespace {

// The combo items are the numbers themselves; the index is the value.
constexpr int kMapOffsetHours = 24;     // 0..23
constexpr int kMagnitudeLimits = 21;    // 0..20

} // namespace

OverlaysDialog::OverlaysDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::OverlaysDialog)
{
    ui->setupUi(this);
    for (int hours = 0; hours < kMapOffsetHours; ++hours)
        ui->MapOffsetComboBox->addItem(QString::number(hours));
    for (int magnitude = 0; magnitude < kMagnitudeLimits; ++magnitude)
        ui->StarsMagnitudeComboBox->addItem(QString::number(magnitude));

    using Slot = void (OverlaysDialog::*)();
    const struct { QCheckBox *box; bool OverlaySettings::*flag; Slot slot; } checks[] = {
        {ui->MoonCheckbox, &OverlaySettings::MoonOverlay, &OverlaysDialog::MoonOverlayChanged},
        {ui->SunCheckbox, &OverlaySettings::SunOverlay, &OverlaysDialog::SunOverlayChanged},
        {ui->VenusCheckbox, &OverlaySettings::VenusOverlay, &OverlaysDialog::VenusOverlayChanged},
        {ui->MercuryCheckbox, &OverlaySettings::MercuryOverlay,
         &OverlaysDialog::MercuryOverlayChanged},
        {ui->MarsCheckbox, &OverlaySettings::MarsOverlay, &OverlaysDialog::MarsOverlayChanged},
        {ui->JupiterCheckbox, &OverlaySettings::JupiterOverlay,
         &OverlaysDialog::JupiterOverlayChanged},
        {ui->NeptuneCheckbox, &OverlaySettings::NeptuneOverlay,
         &OverlaysDialog::NeptuneOverlayChanged},
        {ui->SaturnCheckbox, &OverlaySettings::SaturnOverlay, &OverlaysDialog::SaturnOverlayChanged},
        {ui->UranusCheckbox, &OverlaySettings::UranusOverlay, &OverlaysDialog::UranusOverlayChanged},
        {ui->PlutoCheckbox, &OverlaySettings::PlutoOverlay, &OverlaysDialog::PlutoOverlayChanged},
        {ui->SunShadingCheckbox, &OverlaySettings::SunShadingOverlay,
         &OverlaysDialog::SunShadingOverlayChanged},
        {ui->MoonShadingCheckbox, &OverlaySettings::MoonShadingOverlay,
         &OverlaysDialog::MoonShadingOverlayChanged},
        {ui->SkyNoiseCheckbox, &OverlaySettings::SkyNoiseOverlay,
         &OverlaysDialog::SkyNoiseOverlayChanged},
        {ui->ConstellationsCheckbox, &OverlaySettings::ConstellationsOverlay,
         &OverlaysDialog::ConstellationsOverlayChanged},
        {ui->LatitudeGridlinesCheckbox, &OverlaySettings::LatitudeGridlines,
         &OverlaysDialog::LatitudeGridlinesChanged},
        {ui->LongitudeGridlinesCheckbox, &OverlaySettings::LongitudeGridlines,
         &OverlaysDialog::LongitudeGridlinesChanged},
        {ui->StarsCheckbox, &OverlaySettings::StarsOverlay, &OverlaysDialog::StarsOverlayChanged},
        {ui->StarChartCheckbox, &OverlaySettings::StarChartOverlay,
         &OverlaysDialog::StarChartOverlayChanged},
        {ui->FavoriteStationsCheckbox, &OverlaySettings::FavoriteStationsOverlay,
         &OverlaysDialog::FavoritesOverlayChanged},
    };
    // Every control shows its switch before any is connected, so showing
    // writes nothing back. A stored number outside the items shows no item
    // and keeps its value until the user picks one.
    for (const auto &check : checks)
        check.box->setChecked(overlaySettings.*check.flag);
    ui->MapOffsetComboBox->setCurrentIndex(overlaySettings.MapOffset);
    ui->StarsMagnitudeComboBox->setCurrentIndex(overlaySettings.StarsMagnitude);

    for (const auto &check : checks)
        connect(check.box, &QCheckBox::clicked, this, check.slot);
    connect(ui->MapOffsetComboBox, &QComboBox::currentIndexChanged, this,
            &OverlaysDialog::MapOffsetChanged);
    connect(ui->StarsMagnitudeComboBox, &QComboBox::currentIndexChanged, this,
            &OverlaysDialog::StarsMagnitudeChanged);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

OverlaysDialog::~OverlaysDialog()
{
    delete ui;
}

void OverlaysDialog::MoonOverlayChanged()
{
    overlaySettings.MoonOverlay = ui->MoonCheckbox->isChecked();
}

void OverlaysDialog::SunOverlayChanged()
{
    overlaySettings.SunOverlay = ui->SunCheckbox->isChecked();
}

void OverlaysDialog::VenusOverlayChanged()
{
    overlaySettings.VenusOverlay = ui->VenusCheckbox->isChecked();
}

void OverlaysDialog::MercuryOverlayChanged()
{
    overlaySettings.MercuryOverlay = ui->MercuryCheckbox->isChecked();
}

void OverlaysDialog::MarsOverlayChanged()
{
    overlaySettings.MarsOverlay = ui->MarsCheckbox->isChecked();
}

void OverlaysDialog::JupiterOverlayChanged()
{
    overlaySettings.JupiterOverlay = ui->JupiterCheckbox->isChecked();
}

void OverlaysDialog::NeptuneOverlayChanged()
{
    overlaySettings.NeptuneOverlay = ui->NeptuneCheckbox->isChecked();
}

void OverlaysDialog::SaturnOverlayChanged()
{
    overlaySettings.SaturnOverlay = ui->SaturnCheckbox->isChecked();
}

void OverlaysDialog::UranusOverlayChanged()
{
    overlaySettings.UranusOverlay = ui->UranusCheckbox->isChecked();
}

void OverlaysDialog::PlutoOverlayChanged()
{
    overlaySettings.PlutoOverlay = ui->PlutoCheckbox->isChecked();
}

void OverlaysDialog::SunShadingOverlayChanged()
{
    overlaySettings.SunShadingOverlay = ui->SunShadingCheckbox->isChecked();
}

void OverlaysDialog::MoonShadingOverlayChanged()
{
    overlaySettings.MoonShadingOverlay = ui->MoonShadingCheckbox->isChecked();
}

void OverlaysDialog::SkyNoiseOverlayChanged()
{
    overlaySettings.SkyNoiseOverlay = ui->SkyNoiseCheckbox->isChecked();
}

void OverlaysDialog::ConstellationsOverlayChanged()
{
    overlaySettings.ConstellationsOverlay = ui->ConstellationsCheckbox->isChecked();
}

void OverlaysDialog::LatitudeGridlinesChanged()
{
    overlaySettings.LatitudeGridlines = ui->LatitudeGridlinesCheckbox->isChecked();
}

void OverlaysDialog::LongitudeGridlinesChanged()
{
    overlaySettings.LongitudeGridlines = ui->LongitudeGridlinesCheckbox->isChecked();
}

void OverlaysDialog::StarsOverlayChanged()
{
    overlaySettings.StarsOverlay = ui->StarsCheckbox->isChecked();
}

void OverlaysDialog::MapOffsetChanged(int index)
{
    overlaySettings.MapOffset = index;
}

void OverlaysDialog::StarChartOverlayChanged()
{
    overlaySettings.StarChartOverlay = ui->StarChartCheckbox->isChecked();
}

void OverlaysDialog::StarsMagnitudeChanged(int index)
{
    overlaySettings.StarsMagnitude = index;
}

void OverlaysDialog::FavoritesOverlayChanged()
{
    overlaySettings.FavoriteStationsOverlay = ui->FavoriteStationsCheckbox->isChecked();
}

} // namespace lunaquill
