// The frequency dialog: what it shows, what typing does, and that a cancel
// keeps the change while only Ok (through the main window) saves it.
#include "app/FrequencyDialog.h"
#include "app/MainWindow.h"
#include "ui_FrequencyDialog.h"
#include "ui_MainWindow.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

using namespace lunaquill;

namespace {

class FrequencyDialogTest : public testing::Test
{
protected:
    void SetUp() override { test::ResetSharedState(); }
};

TEST_F(FrequencyDialogTest, ShowsTypesAndKeepsTheChangeOnCancel)
{
    homeData.frequency = 1296.0;
    FrequencyDialog dialog;
    Ui::FrequencyDialog *ui = dialog.widgets();
    EXPECT_EQ(dialog.windowTitle(), "Home Station"); // as built
    EXPECT_EQ(dialog.size(), QSize(352, 116));
    EXPECT_EQ(ui->FrequencyLabel->text(), "Frequency");
    EXPECT_EQ(ui->FrequencyEdit->text(), "1296.00");

    // The leading number, as C's atof reads it in the C locale; none gives 0,
    // and so does one that is not finite.
    struct Row { const char *typed; double megahertz; };
    for (const Row &row : {Row{"144.1", 144.1}, Row{"abc", 0.0}, Row{" 10368.2 ", 10368.2},
                           Row{"1296 MHz", 1296.0}, Row{"1296,5", 1296.0}, Row{"-.5e1x", -5.0},
                           Row{"1e400", 0.0}, Row{"nan", 0.0}, Row{"MHz 1296", 0.0}}) {
        ui->FrequencyEdit->setText(row.typed);
        QTest::keyClick(ui->FrequencyEdit, Qt::Key_Return);
        EXPECT_EQ(homeData.frequency, row.megahertz) << row.typed;
    }
    ui->FrequencyEdit->setText("50.2");
    QTest::keyClick(ui->FrequencyEdit, Qt::Key_Return);
    dialog.reject();
    EXPECT_EQ(homeData.frequency, 50.2);
}

TEST_F(FrequencyDialogTest, OkFromTheWindowSavesAndShowsTheFrequency)
{
    MainWindow window;
    QTimer::singleShot(0, [] {
        auto *dialog = qobject_cast<FrequencyDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->widgets()->FrequencyEdit->setText("432.065");
        QTest::keyClick(dialog->widgets()->FrequencyEdit, Qt::Key_Return);
        dialog->widgets()->buttonBox->button(QDialogButtonBox::Ok)->click();
    });
    QTest::mouseClick(window.widgets()->SetFrequencyButton, Qt::LeftButton);
    EXPECT_EQ(homeData.frequency, 432.065);
    // 432.065 is stored as 432.06499..., so "%7.2f" rounds it down.
    EXPECT_EQ(window.widgets()->SetFrequencyButton->text(), " 432.06 Mhz");
    QFile ini(test::SettingsFolder() + "Lunaquill.ini");
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    EXPECT_TRUE(ini.readAll().contains("Frequency=432.065"));
}

} // namespace
