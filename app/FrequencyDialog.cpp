#include "FrequencyDialog.h"

#include "PanelText.h"
#include "ui_FrequencyDialog.h"

#include "tracking/SharedState.h"
#include "tracking/StationEntry.h"

namespace lunaquill {

FrequencyDialog::FrequencyDialog(QWidget *parent) : QDialog(parent), ui(new Ui::FrequencyDialog)
{
    ui->setupUi(this);
    ui->FrequencyEdit->setText(Printf("%7.2f", homeData.frequency));
    connect(ui->FrequencyEdit, &QLineEdit::editingFinished, this, &FrequencyDialog::FrequencyChanged);
}

FrequencyDialog::~FrequencyDialog()
{
    // Destroying the focused edit would finish its editing into a dialog
    // that is already half gone.
    disconnect(ui->FrequencyEdit, nullptr, this, nullptr);
    delete ui;
}

void FrequencyDialog::FrequencyChanged()
{
    homeData.frequency = FrequencyFromText(ui->FrequencyEdit->text().toStdString());
}

} // namespace lunaquill
