#include "AboutDialog.h"

#include "ui_AboutDialog.h"

namespace lunaquill {

// The form holds all texts and connects Ok to accept().
AboutDialog::AboutDialog(QWidget *parent)
    : QDialog(parent), ui(new Ui::AboutDialog)
{
    ui->setupUi(this);
}

AboutDialog::~AboutDialog()
{
    delete ui;
}

} // namespace lunaquill

// Keeps this class's meta-object in its own object file, so linking the About
// box does not pull in the rest of the library's meta-objects.
#include "moc_AboutDialog.cpp"
