// The frequency dialog: what may be typed, Ok only for a frequency the
// program computes with, a cancel that keeps a typed change and an opening
// that changes nothing, and Ok from the main window that saves it or says why
// it could not.
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

QPushButton *Ok(FrequencyDialog &dialog)
{
    return dialog.widgets()->buttonBox->button(QDialogButtonBox::Ok);
}

TEST_F(FrequencyDialogTest, OnlyAFrequencyOfOneTo300000MHzIsTaken)
{
    homeData.frequency = 1296.0;
    FrequencyDialog dialog;
    dialog.show();
    Ui::FrequencyDialog *ui = dialog.widgets();
    EXPECT_EQ(ui->FrequencyEdit->text(), "1296.00"); // two decimals
    EXPECT_TRUE(Ok(dialog)->isEnabled());
    // Keys no number is written with are refused as they are typed, so the
    // comma of "1,296.0" never reaches the field. The rest is read only as a
    // whole number from 1 to 300000 MHz: otherwise Ok is disabled and the
    // frequency stays. A typed change stands after a cancel.
    struct Row { const char *typed, *shown; bool taken; double megahertz; };
    for (const Row &row : {Row{"144.1", "144.1", true, 144.1}, Row{"abc", "", false, 144.1},
                           Row{"", "", false, 144.1}, Row{"1,296.0", "1296.0", true, 1296.0},
                           Row{"1e308", "1e308", false, 1296.0},
                           Row{" 10368.2 ", " 10368.2 ", true, 10368.2},
                           Row{"1296 MHz", "1296 ", true, 1296.0}, Row{"0.5", "0.5", false, 1296.0},
                           Row{"300000.01", "300000.01", false, 1296.0},
                           Row{"-50", "-50", false, 1296.0}, Row{"1.2.3", "1.2.3", false, 1296.0},
                           Row{"300000", "300000", true, 300000.0}, Row{"1", "1", true, 1.0},
                           Row{"+2.4e3", "+2.4e3", true, 2400.0}, Row{"50.2", "50.2", true, 50.2}}) {
        Type(dialog, row.typed);
        EXPECT_EQ(ui->FrequencyEdit->text().toStdString(), row.shown) << row.typed;
        EXPECT_EQ(Ok(dialog)->isEnabled(), row.taken) << row.typed;
        EXPECT_EQ(homeData.frequency, row.megahertz) << row.typed;
    }
    // Text that no key could give (pasted or set) is not taken either.
    for (const char *set : {"1,296.0", "nan", "inf", "0x10"}) {
        dialog.show(); // (Enter on an acceptable frequency has pressed Ok)
        ui->FrequencyEdit->setText(set);
        ui->FrequencyEdit->setModified(true); // as if typed
        QTest::keyClick(ui->FrequencyEdit, Qt::Key_Return);
        EXPECT_FALSE(Ok(dialog)->isEnabled()) << set;
        EXPECT_EQ(homeData.frequency, 50.2) << set;
        EXPECT_TRUE(dialog.isVisible()) << "Enter does not press a disabled Ok";
    }
    dialog.reject();
    EXPECT_EQ(homeData.frequency, 50.2);
}

TEST_F(FrequencyDialogTest, OpeningAndClosingChangesNothingNotEvenTheRounding)
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
}

TEST_F(FrequencyDialogTest, OkFromTheWindowSavesOrSaysWhyNot)
{
    Open(nullptr, false);
    auto enter = [this](const char *typed) {
        WhenOpen<FrequencyDialog>([typed](FrequencyDialog &d) { Type(d, typed); });
        QTest::mouseClick(ui->SetFrequencyButton, Qt::LeftButton);
    };
    enter("432.065"); // Enter presses Ok
    // 432.065 is stored as 432.06499..., so "%7.2f" rounds it down.
    EXPECT_EQ(Text(ui->SetFrequencyButton), " 432.06 Mhz");
    EXPECT_TRUE(ReadIni().contains("Frequency=432.065"));
    EXPECT_EQ(window->findChild<QMessageBox *>(), nullptr);

    // A file that cannot be written: the change holds, and one warning (not
    // one per failure) names the file and the reason without blocking.
    ASSERT_TRUE(QFile::remove(IniPath()) && QDir().mkdir(IniPath()));
    enter("144.1");
    enter("50.2");
    EXPECT_EQ(Text(ui->SetFrequencyButton), "  50.20 Mhz");
    const QList<QMessageBox *> boxes = window->findChildren<QMessageBox *>();
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(boxes[0]->isVisible());
    EXPECT_TRUE(boxes[0]->text().contains(IniPath() + ": file to open is a directory"))
        << boxes[0]->text().toStdString();
}

} // namespace
