#include "StationControlDialog.h"

#include "StationControl.h"
#include "WsjtxLink.h"
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
    ShowWsjtx();
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

// The listener's settings and live status; without a listener the section
// is hidden.
void StationControlDialog::ShowWsjtx()
{
    WsjtxLink *link = control.wsjtx();
    ui->WsjtxGroup->setVisible(link != nullptr);
    if (!link)
        return;
    const WsjtxSettings &s = link->settings();
    ui->WsjtxEnabled->setChecked(s.enabled);
    ui->WsjtxAddress->setText(s.address);
    ui->WsjtxPort->setValue(s.port);
    ui->WsjtxFollowDx->setChecked(s.followDx);
    ui->WsjtxFollowFrequency->setChecked(s.followFrequency);
    auto showStatus = [this, link] { ui->WsjtxStatus->setText(link->status()); };
    connect(link, &WsjtxLink::Changed, this, showStatus);
    showStatus();
}

WsjtxSettings StationControlDialog::chosenWsjtxSettings() const
{
    WsjtxSettings s;
    s.enabled = ui->WsjtxEnabled->isChecked();
    const QString address = ui->WsjtxAddress->text().trimmed();
    s.address = address.isEmpty() ? s.address : address;
    s.port = ui->WsjtxPort->value();
    s.followDx = ui->WsjtxFollowDx->isChecked();
    s.followFrequency = ui->WsjtxFollowFrequency->isChecked();
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
