// The operating frequency, used for every Doppler figure: 1 to 300000 MHz,
// Ok disabled while the text is no such number. A value the user enters
// takes effect as soon as editing finishes, even if the dialog is then
// cancelled; only Ok saves it.
#pragma once

#include <QDialog>

namespace Ui {
class FrequencyDialog;
}

namespace lunaquill {

class FrequencyDialog : public QDialog
{
    Q_OBJECT

public:
    explicit FrequencyDialog(QWidget *parent = nullptr);
    ~FrequencyDialog() override;

    Ui::FrequencyDialog *widgets() const { return ui; }

    // Takes what is typed before closing.
    void accept() override;

public slots:
    void FrequencyChanged();

private:
    Ui::FrequencyDialog *ui;
};

} // namespace lunaquill
