// Following WSJT-X: a Status naming a new DX station or dial frequency is
// taken as if it had been entered in the DX dialog or the frequency dialog
// (the frequency in memory only).
#include "MainWindow.h"

#include "StationControl.h"
#include "WsjtxLink.h"
#include "ui_MainWindow.h"

#include "tracking/SharedState.h"

using namespace lunaquill;

void MainWindow::StartWsjtxLink()
{
    wsjtxLink = new WsjtxLink(this);
    wsjtxLink->Attach(ui->menuBar);
    stationControl->AttachWsjtx(wsjtxLink);
    connect(wsjtxLink, &WsjtxLink::Follow, this,
            [this](const WsjtxFollowChange &change) { FollowWsjtx(change); });
}

void MainWindow::FollowWsjtx(const WsjtxFollowChange &change)
{
    if (change.dx) {
        CopyField(dxStation.callsign, change.dxCall);
        CopyField(dxStation.grid, change.dxGrid);
        dxStation.latitude = change.latitude;
        dxStation.longitude = change.longitude;
        wsjtxLink->DxTaken(change.dxCall, change.dxGrid);
    }
    if (change.frequency)
        homeData.frequency = change.frequencyMHz;
    // As after an accepted DX entry: every source anew and every panel
    // figure at once, the overlays at the next tick.
    ShowChanges();
}
