// The About box: version text and short release notes, closed with Ok.
#pragma once

#include <QDialog>

namespace Ui {
class AboutDialog;
}

namespace lunaquill {

class AboutDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AboutDialog(QWidget *parent = nullptr);
    ~AboutDialog() override;

private:
    Ui::AboutDialog *ui;
};

} // namespace lunaquill
