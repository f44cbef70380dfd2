// The frequency dialog: what it shows, what typing does, and that a cancel
// keeps the change while only Ok (through the main window) saves it, or says
// why it could not.
#include "app/FrequencyDialog.h"
#include "app/MainWindow.h"
#include "ui_FrequencyDialog.h"
#include "ui_MainWindow.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"

#include <QApplication>
#include <QDir>
#include <QDialogButtonBox>
#include <QFile>
#include <QMessageBox>
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

// Types a frequency into the dialog that the window opens, and presses Ok.
void EnterFrequency(MainWindow &window, const char *typed)
{
    QTimer::singleShot(0, [typed] {
        auto *dialog = qobject_cast<FrequencyDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        dialog->widgets()->FrequencyEdit->setText(typed);
        QTest::keyClick(dialog->widgets()->FrequencyEdit, Qt::Key_Return);
        dialog->widgets()->buttonBox->button(QDialogButtonBox::Ok)->click();
    });
    QTest::mouseClick(window.widgets()->SetFrequencyButton, Qt::LeftButton);
}

TEST_F(FrequencyDialogTest, OkFromTheWindowSavesOrSaysWhyNot)
{
    MainWindow window;
    EnterFrequency(window, "432.065");
    EXPECT_EQ(homeData.frequency, 432.065);
    // 432.065 is stored as 432.06499..., so "%7.2f" rounds it down.
    EXPECT_EQ(window.widgets()->SetFrequencyButton->text(), " 432.06 Mhz");
    const QString path = test::SettingsFolder() + "Lunaquill.ini";
    QFile ini(path);
    ASSERT_TRUE(ini.open(QIODevice::ReadOnly));
    EXPECT_TRUE(ini.readAll().contains("Frequency=432.065"));
    EXPECT_EQ(window.findChild<QMessageBox *>(), nullptr);

    // A file that cannot be written: the change holds, and one warning (not
    // one per failure) names the file and the reason without blocking.
    ini.close();
    ASSERT_TRUE(QFile::remove(path) && QDir().mkdir(path));
    EnterFrequency(window, "144.1");
    EnterFrequency(window, "50.2");
    EXPECT_EQ(homeData.frequency, 50.2);
    EXPECT_EQ(window.widgets()->SetFrequencyButton->text(), "  50.20 Mhz");
    const QList<QMessageBox *> boxes = window.findChildren<QMessageBox *>();
    ASSERT_EQ(boxes.size(), 1);
    EXPECT_TRUE(boxes[0]->isVisible());
    EXPECT_EQ(boxes[0]->windowTitle(), "Settings not saved");
    EXPECT_TRUE(boxes[0]->text().contains(path + ": file to open is a directory"))
        << boxes[0]->text().toStdString();
    boxes[0]->button(QMessageBox::Ok)->click();
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window.findChild<QMessageBox *>(), nullptr);
}

} // namespace
