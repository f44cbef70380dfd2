#include "FrequencyDialog.h"

#include "PanelText.h"
#include "ui_FrequencyDialog.h"

#include "tracking/SharedState.h"
#include "tracking/StationEntry.h"

#include <QPushButton>
#include <QValidator>

namespace lunaquill {

namespace {

bool ReadFrequency(const QString &text, double &megahertz)
{
    return ReadNumberWithin(text.toStdString(), MinimumFrequency, MaximumFrequency, megahertz);
}

// A frequency the program computes with is Acceptable. A character no number
// is written with is refused as it is typed; anything else ("", "0.5", "1e")
// may still become one, and Ok waits for it.
class FrequencyValidator : public QValidator
{
public:
    using QValidator::QValidator;

    State validate(QString &input, int &) const override
    {
        for (QChar c : input)
            if (!(c >= '0' && c <= '9') && !QStringLiteral(" .+-eE").contains(c))
                return Invalid;
        double megahertz;
        return ReadFrequency(input, megahertz) ? Acceptable : Intermediate;
    }
};

} // namespace

FrequencyDialog::FrequencyDialog(QWidget *parent) : QDialog(parent), ui(new Ui::FrequencyDialog)
{
    ui->setupUi(this);
    QLineEdit *edit = ui->FrequencyEdit;
    edit->setValidator(new FrequencyValidator(edit));
    edit->setText(Printf("%7.2f", homeData.frequency));
    QPushButton *ok = ui->buttonBox->button(QDialogButtonBox::Ok);
    auto allowOk = [edit, ok] { ok->setEnabled(edit->hasAcceptableInput()); };
    allowOk();
    connect(edit, &QLineEdit::textChanged, this, allowOk);
    connect(edit, &QLineEdit::editingFinished, this, &FrequencyDialog::FrequencyChanged);
}

FrequencyDialog::~FrequencyDialog()
{
    // Destroying the focused edit would finish its editing into a dialog
    // that is already half gone.
    disconnect(ui->FrequencyEdit, nullptr, this, nullptr);
    delete ui;
}

void FrequencyDialog::accept()
{
    FrequencyChanged();
    QDialog::accept();
}

void FrequencyDialog::FrequencyChanged()
{
    // Only text the user changed is read: the "%7.2f" shown at opening would
    // round the frequency to two decimals.
    if (ui->FrequencyEdit->isModified())
        ReadFrequency(ui->FrequencyEdit->text(), homeData.frequency);
}

} // namespace lunaquill
