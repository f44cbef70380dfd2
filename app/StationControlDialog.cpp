#include "StationControlDialog.h"

#include "StationControl.h"
#include "ui_StationControlDialog.h"

namespace lunaquill {

namespace {

// Which mode suits which use, shown under the mode.
const char *const kModeHelp[] = {
    "The radio is left as it is.",
    "For hearing your own echoes: receive follows your echo Doppler, transmit stays on "
    "the frequency.",
    "For a contact with a DX station that transmits on the frequency: receive follows the "
    "mutual Doppler while both stations see the Moon (otherwise it holds), transmit stays "
    "on the frequency.",
    "For nets, random contacts and the microwave bands: transmit below and receive above "
    "by half your echo Doppler, so every station that does the same meets on the "
    "frequency at the Moon.",
};

} // namespace

StationControlDialog::StationControlDialog(StationControl &control, QWidget *parent)
    : QDialog(parent), control(control), ui(new Ui::StationControlDialog)
{
    ui->setupUi(this);
    const StationControlSettings &s = control.settings();
    ui->RotatorEnabled->setChecked(s.rotatorEnabled);
    ui->RotatorHost->setText(s.rotatorHost);
    ui->RotatorPort->setValue(s.rotatorPort);
    ui->MinimumElevation->setValue(s.minimumElevation);
    ui->RigEnabled->setChecked(s.rigEnabled);
    ui->RigHost->setText(s.rigHost);
    ui->RigPort->setValue(s.rigPort);
    ui->DopplerMode->setCurrentIndex(s.dopplerMode);
    ShowModeHelp(s.dopplerMode);
    connect(ui->DopplerMode, &QComboBox::currentIndexChanged, this,
            &StationControlDialog::ShowModeHelp);
    connect(&control.rotator(), &DaemonLink::Changed, this, &StationControlDialog::ShowStatus);
    connect(&control.rig(), &DaemonLink::Changed, this, &StationControlDialog::ShowStatus);
    ShowStatus();
}

StationControlDialog::~StationControlDialog()
{
    delete ui;
}

StationControlSettings StationControlDialog::chosenSettings() const
{
    StationControlSettings s;
    s.rotatorEnabled = ui->RotatorEnabled->isChecked();
    const QString rotatorHost = ui->RotatorHost->text().trimmed();
    s.rotatorHost = rotatorHost.isEmpty() ? s.rotatorHost : rotatorHost;
    s.rotatorPort = ui->RotatorPort->value();
    s.minimumElevation = ui->MinimumElevation->value();
    s.rigEnabled = ui->RigEnabled->isChecked();
    const QString rigHost = ui->RigHost->text().trimmed();
    s.rigHost = rigHost.isEmpty() ? s.rigHost : rigHost;
    s.rigPort = ui->RigPort->value();
    s.dopplerMode = ui->DopplerMode->currentIndex();
    return s;
}

void StationControlDialog::ShowStatus()
{
    ui->RotatorStatus->setText(control.rotator().status());
    ui->RigStatus->setText(control.rig().status());
}

void StationControlDialog::ShowModeHelp(int mode)
{
    if (mode >= 0 && mode < (int)(sizeof kModeHelp / sizeof kModeHelp[0]))
        ui->ModeHelp->setText(kModeHelp[mode]);
}

} // namespace lunaquill
