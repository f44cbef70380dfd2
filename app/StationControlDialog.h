// The rotator and radio links: host, port, reply timeout, enable, minimum
// elevation, Doppler mode, and a live status line for each; the WSJT-X
// listener in a section of its own. Only Ok changes anything.
#pragma once

#include "Settings.h"

#include <QDialog>

namespace Ui {
class StationControlDialog;
}

namespace lunaquill {

class StationControl;

class StationControlDialog : public QDialog
{
    Q_OBJECT

public:
    explicit StationControlDialog(StationControl &control, QWidget *parent = nullptr);
    ~StationControlDialog() override;

    Ui::StationControlDialog *widgets() const { return ui; }
    // The settings as the dialog shows them.
    StationControlSettings chosenSettings() const;
    WsjtxSettings chosenWsjtxSettings() const;

private:
    void ShowStatus();
    void ShowModeHelp(int mode);
    void ShowWsjtx();

    StationControl &control;
    Ui::StationControlDialog *ui;
};

} // namespace lunaquill
