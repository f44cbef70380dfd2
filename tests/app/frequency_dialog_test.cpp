// The frequency dialog: typing, a cancel that keeps the change, and Ok from
// the main window that saves it or says why it could not.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "app/FrequencyDialog.h"
#include "ui_FrequencyDialog.h"

#include <QMessageBox>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

using FrequencyDialogTest = WindowTest;

TEST_F(FrequencyDialogTest, ShowsTypesAndKeepsTheChangeOnCancel)
{
    homeData.frequency = 1296.0;
    FrequencyDialog dialog;
    Ui::FrequencyDialog *ui = dialog.widgets();
    EXPECT_EQ(ui->FrequencyEdit->text(), "1296.00"); // two decimals
    // The leading number, as C's atof reads it in the C locale; none gives 0,
    // and so does one that is not finite. The last stands after a cancel.
    struct Row { const char *typed; double megahertz; };
    for (const Row &row : {Row{"144.1", 144.1}, Row{"abc", 0.0}, Row{" 10368.2 ", 10368.2},
                           Row{"1296 MHz", 1296.0}, Row{"1296,5", 1296.0}, Row{"-.5e1x", -5.0},
                           Row{"1e400", 0.0}, Row{"nan", 0.0}, Row{"MHz 1296", 0.0},
                           Row{"50.2", 50.2}}) {
        ui->FrequencyEdit->setText(row.typed);
        QTest::keyClick(ui->FrequencyEdit, Qt::Key_Return);
        EXPECT_EQ(homeData.frequency, row.megahertz) << row.typed;
    }
    dialog.reject();
    EXPECT_EQ(homeData.frequency, 50.2);
}

TEST_F(FrequencyDialogTest, OkFromTheWindowSavesOrSaysWhyNot)
{
    Open(nullptr, false);
    auto enter = [this](const char *typed) {
        WhenOpen<FrequencyDialog>([typed](FrequencyDialog &d) {
            d.widgets()->FrequencyEdit->setText(typed);
            QTest::keyClick(d.widgets()->FrequencyEdit, Qt::Key_Return);
        }, QDialogButtonBox::Ok);
        QTest::mouseClick(ui->SetFrequencyButton, Qt::LeftButton);
    };
    enter("432.065");
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
