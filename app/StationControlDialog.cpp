#include "StationControlDialog.h"

#include "StationControl.h"
#include "WsjtxLink.h"
#include "ui_StationControlDialog.h"

#include <algorithm>

namespace lunaquill {

StationControlDialog::StationControlDialog(StationControl &control, QWidget *parent)
    : QDialog(parent), control(control), ui(new Ui::StationControlDialog)
{
    ui->setupUi(this);
    // The list is the table's, in its order: the index is the stored mode.
    for (const DopplerModeText &mode : kDopplerModes) {
        ui->DopplerMode->addItem(mode.name);
        ui->DopplerMode->setItemData(ui->DopplerMode->count() - 1, mode.explanation,
                                     Qt::ToolTipRole);
    }
    const StationControlSettings &s = control.settings();
    ui->RotatorEnabled->setChecked(s.rotatorEnabled);
    ui->RotatorHost->setText(s.rotatorHost);
    ui->RotatorPort->setValue(s.rotatorPort);
    ui->RotatorReplyTimeout->setMaximum(kMaximumReplyTimeout);
    ui->RotatorReplyTimeout->setValue(s.rotatorReplyTimeout);
    ui->MinimumElevation->setValue(s.minimumElevation);
    ui->RigEnabled->setChecked(s.rigEnabled);
    ui->RigHost->setText(s.rigHost);
    ui->RigPort->setValue(s.rigPort);
    ui->RigReplyTimeout->setMaximum(kMaximumReplyTimeout);
    ui->RigReplyTimeout->setValue(s.rigReplyTimeout);
    ui->DopplerMode->setCurrentIndex(s.dopplerMode);
    ShowModeHelp(s.dopplerMode);
    connect(ui->DopplerMode, &QComboBox::currentIndexChanged, this,
            &StationControlDialog::ShowModeHelp);
    connect(&control, &StationControl::StatusChanged, this, &StationControlDialog::ShowStatus);
    ShowStatus();
    ShowWsjtx();
    // Tall enough for every wrapped line at the form's width.
    resize(width(), std::max(height(), layout()->heightForWidth(width())));
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
    s.rotatorReplyTimeout = ui->RotatorReplyTimeout->value();
    s.minimumElevation = ui->MinimumElevation->value();
    s.rigEnabled = ui->RigEnabled->isChecked();
    const QString rigHost = ui->RigHost->text().trimmed();
    s.rigHost = rigHost.isEmpty() ? s.rigHost : rigHost;
    s.rigPort = ui->RigPort->value();
    s.rigReplyTimeout = ui->RigReplyTimeout->value();
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
    ui->RotatorStatus->setText(control.LinkStatus(control.rotator()));
    ui->RigStatus->setText(control.LinkStatus(control.rig()));
}

void StationControlDialog::ShowModeHelp(int mode)
{
    if (mode >= 0 && mode < DopplerModeCount)
        ui->ModeHelp->setText(kDopplerModes[mode].explanation);
}

} // namespace lunaquill
