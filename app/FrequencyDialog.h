// The operating frequency, used for every Doppler figure. The entered value
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

public slots:
    void FrequencyChanged();

private:
    Ui::FrequencyDialog *ui;
};

} // namespace lunaquill
