// The frequency dialog: what may be typed, Ok only for a frequency the program computes with, a
// cancel that keeps a typed change and an opening that changes nothing, and Ok from the main
// window that saves it or says why it could not.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/FrequencyDialog.h"
#include "ui_FrequencyDialog.h"

#include <QMessageBox>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

using FrequencyDialogTest = WindowTest;

// Replaces the text by typing it, key by key, and ends the edit with Enter.
void Type(FrequencyDialog &dialog, const char *typed)
{
    QLineEdit *edit = dialog.widgets()->FrequencyEdit;
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, typed);
    QTest::keyClick(edit, Qt::Key_Return);
}

TEST_F(FrequencyDialogTest, OnlyAFrequencyOfOneTo300000MHzIsTaken)
{
    homeData.frequency = 1296.0;
    FrequencyDialog dialog;
    dialog.show();
    Ui::FrequencyDialog *ui = dialog.widgets();
    QPushButton *ok = ui->buttonBox->button(QDialogButtonBox::Ok);
    EXPECT_TRUE(ui->FrequencyEdit->text() == "1296.00" && ok->isEnabled()); // two decimals
    // Keys no number is written with are refused as they are typed, so the comma of "1,296.0"
    // never reaches the field. The rest is read only as a whole number from 1 to 300000 MHz:
    // otherwise (taken 0) Ok is disabled and the frequency stays. A typed change stands after a cancel.
    const struct { const char *typed, *shown; double taken; } rows[] = {
        {"144.1", "144.1", 144.1},   {"abc", "", 0},          {"", "", 0},
        {"1,296.0", "1296.0", 1296}, {"1e308", "1e308", 0},   {" 10368.2 ", " 10368.2 ", 10368.2},
        {"1296 MHz", "1296 ", 1296}, {"0.5", "0.5", 0},       {"300000.01", "300000.01", 0},
        {"-50", "-50", 0},           {"1.2.3", "1.2.3", 0},   {"300000", "300000", 300000},
        {"1", "1", 1},               {"+2.4e3", "+2.4e3", 2400}, {"50.2", "50.2", 50.2}};
    double held = homeData.frequency;
    for (const auto &row : rows) {
        Type(dialog, row.typed);
        held = row.taken ? row.taken : held;
        EXPECT_EQ(ui->FrequencyEdit->text().toStdString(), row.shown) << row.typed;
        EXPECT_TRUE(ok->isEnabled() == (row.taken != 0) && homeData.frequency == held) << row.typed;
    }
    // Text that no key could give (pasted or set) is not taken either.
    for (const char *set : {"1,296.0", "nan", "inf", "0x10"}) {
        dialog.show(); // (Enter on an acceptable frequency has pressed Ok)
        ui->FrequencyEdit->setText(set);
        ui->FrequencyEdit->setModified(true); // as if typed
        QTest::keyClick(ui->FrequencyEdit, Qt::Key_Return);
        // Enter does not press a disabled Ok.
        EXPECT_TRUE(!ok->isEnabled() && homeData.frequency == 50.2 && dialog.isVisible()) << set;
    }
    dialog.reject();
    EXPECT_EQ(homeData.frequency, 50.2);
}

// From the window: an opening changes nothing, not even the rounding; Ok saves or says why not.
TEST_F(FrequencyDialogTest, FromTheWindowOpeningChangesNothingOkSavesOrSaysWhyNot)
{
    Open(nullptr, false);
    homeData.frequency = 1296.123;
    for (QDialogButtonBox::StandardButton button : {QDialogButtonBox::Cancel, QDialogButtonBox::Ok}) {
        WhenOpen<FrequencyDialog>([](FrequencyDialog &d) {
            // Shown as 1296.12; leaving the field untouched is no change.
            emit d.widgets()->FrequencyEdit->editingFinished();
        }, button);
        QTest::mouseClick(ui->SetFrequencyButton, Qt::LeftButton);
        EXPECT_EQ(homeData.frequency, 1296.123);
        EXPECT_EQ(Text(ui->SetFrequencyButton), "1296.12 Mhz");
    }
    EXPECT_TRUE(ReadIni().contains("Frequency=1296.123")); // saved by Ok as it was

    auto enter = [this](const char *typed) {
        WhenOpen<FrequencyDialog>([typed](FrequencyDialog &d) { Type(d, typed); });
        QTest::mouseClick(ui->SetFrequencyButton, Qt::LeftButton);
    };
    enter("432.065"); // Enter presses Ok
    // 432.065 is stored as 432.06499..., so "%7.2f" rounds it down.
    EXPECT_EQ(Text(ui->SetFrequencyButton), " 432.06 Mhz");
    EXPECT_TRUE(ReadIni().contains("Frequency=432.065"));
    EXPECT_EQ(window->findChild<QMessageBox *>(), nullptr);

    // A file that cannot be written: the change holds, and one warning (not one per failure)
    // names the file and the reason without blocking.
    ASSERT_TRUE(QFile::remove(IniPath()) && QDir().mkdir(IniPath()));
    enter("144.1");
    enter("50.2");
    EXPECT_EQ(Text(ui->SetFrequencyButton), "  50.20 Mhz");
    const QList<QMessageBox *> boxes = window->findChildren<QMessageBox *>();
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(boxes[0]->isVisible() && boxes[0]->text().contains(IniPath() + ": file to open is a directory"))
        << boxes[0]->text().toStdString();
}

} // namespace
