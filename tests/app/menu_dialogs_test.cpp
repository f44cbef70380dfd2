// Configure -> Overlays, Configure -> Sources and the source button, driven
// from the window: what is saved, and what the map and the panels show.
#include "app/MainWindow.h"
#include "ui_MainWindow.h"
#include "ui_OverlaysDialog.h"
#include "ui_SourcesDialog.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "render/OverlaysDialog.h"
#include "tracking/SourcesDialog.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>

#include <functional>
#include <memory>

using namespace lunaquill;

namespace {

// Runs `act` on the dialog that the window opens next, then presses `button`.
template <typename Dialog>
void WhenOpen(std::function<void(Dialog &)> act, QDialogButtonBox::StandardButton button)
{
    QTimer::singleShot(0, [=] {
        auto *dialog = qobject_cast<Dialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        act(*dialog);
        dialog->widgets()->buttonBox->button(button)->click();
    });
}

void ClickRow(SourcesDialog &dialog, int row)
{
    QTableWidget *table = dialog.widgets()->SourcesTable;
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualItemRect(table->item(row, 0)).center());
}

const char *kBoston = "[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n";

class MenuDialogsTest : public testing::Test
{
protected:
    void SetUp() override { test::ResetSharedState(); }

    void Open(const QByteArray &ini)
    {
        QFile file(test::SettingsFolder() + "Lunaquill.ini");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(ini);
        file.close();
        window = std::make_unique<MainWindow>();
        ui = window->widgets();
        window->resize(1640, 960);
        window->show();
        QApplication::processEvents();
    }

    QString Ini()
    {
        QFile file(test::SettingsFolder() + "Lunaquill.ini");
        return file.open(QIODevice::ReadOnly) ? QString::fromLatin1(file.readAll()) : QString();
    }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
};

TEST_F(MenuDialogsTest, OverlaysCancelKeepsTheSwitchesInMemoryOkSavesThem)
{
    Open(kBoston);
    // 2025-06-21 12:00 UTC: the Sun's icon is centred on map pixel (795, 295)
    // (sub-point 23.44 N, 1.00 W; worked out in the map view test).
    displayOffset = (int32_t)(1750507200 - time(nullptr));
    overlaySettings = {}; // nothing but the Sun over the map
    overlaySettings.SunOverlay = true;
    window->TimeAdjusted();
    auto sunShown = [&] {
        return window->screenOverlayPixmap().toImage().pixel(795, 295)
               != window->baseMapPixmap().toImage().pixel(795, 295);
    };
    ASSERT_TRUE(sunShown());
    WhenOpen<OverlaysDialog>([](OverlaysDialog &d) { d.widgets()->SunCheckbox->click(); },
                             QDialogButtonBox::Cancel);
    ui->actionOverlays->trigger();
    // Cancelled: the switch holds in memory and shows at the next rebuild of
    // the overlays, which comes by itself every 6001 ticks.
    for (int tick = 0; tick < 6001; ++tick)
        window->TimerEvent();
    EXPECT_FALSE(sunShown());
    EXPECT_FALSE(Ini().contains("OVERLAYS"));
    window.reset(); // the next start reads the file: the Sun is back
    Open(kBoston + QByteArray("[OTHER]\nKeep=1\n[OVERLAYS]\nLongitudeGridlines=false\n"));
    EXPECT_TRUE(overlaySettings.SunOverlay);

    const QImage unrolled = window->baseMapPixmap().toImage();
    WhenOpen<OverlaysDialog>([](OverlaysDialog &d) {
        d.widgets()->MapOffsetComboBox->setCurrentIndex(23);
        d.widgets()->StarsMagnitudeComboBox->setCurrentIndex(0);
        d.widgets()->StarChartCheckbox->click();
    }, QDialogButtonBox::Ok);
    ui->actionOverlays->trigger();
    // All 21 keys (the ini writer sorts them by name), other keys kept.
    const QString ini = Ini();
    EXPECT_EQ(ini.section("[OVERLAYS]\n", 1).section("\n[", 0, 0).split('\n').join(","),
              "ConstellationsOverlay=false,FavoriteStationsOverlay=true,JupiterOverlay=true,"
              "LatitudeGridlines=true,LongitudeGridlines=false,MapOffset=23,MarsOverlay=true,"
              "MercuryOverlay=true,MoonOverlay=true,MoonShadingOverlay=true,NeptuneOverlay=true,"
              "PlutoOverlay=true,SaturnOverlay=true,SkyNoiseOverlay=true,StarChartOverlay=true,"
              "StarsMagnitude=0,StarsOverlay=true,SunOverlay=true,SunShadingOverlay=false,"
              "UranusOverlay=true,VenusOverlay=true,");
    EXPECT_TRUE(ini.contains("Keep=1") && ini.contains("Grid=FN42mm"));
    // Rolled east by 23 of 24 hours of a 1600-pixel map, 66 * 23 = 1518
    // pixels; row 300 lies between two latitude lines (which stay in place).
    const QImage rolled = window->baseMapPixmap().toImage();
    ASSERT_EQ(rolled.width(), 1600);
    for (int x : {0, 81, 82, 700, 1599})
        EXPECT_EQ(rolled.pixel((x + 1518) % 1600, 300), unrolled.pixel(x, 300)) << x;
    // The chart view: no map, and the map takes no clicks.
    EXPECT_TRUE(ui->WorldMap->isHidden() && ui->StarChart1->isVisible());
    QTest::mouseClick(window.get(), Qt::LeftButton, {},
                      ui->centralWidget->geometry().topLeft() + QPoint(500, 200));
    EXPECT_EQ(dxStation.grid[0], '\0');
}

TEST_F(MenuDialogsTest, ChosenSourceDrivesThePanelsAndOnlyOkSavesIt)
{
    Open(kBoston);
    WhenOpen<SourcesDialog>([](SourcesDialog &d) { ClickRow(d, Sun); }, QDialogButtonBox::Ok);
    QTest::mouseClick(ui->SourceButton, Qt::LeftButton);
    EXPECT_EQ(ui->SourceButton->text(), "SUN");
    EXPECT_TRUE(Ini().contains("TrackingSource=1"));
    window->TimerEvent(); // every figure of the Sun at the next tick
    EXPECT_EQ(ui->HomeAzimuth->text(), QString::asprintf("%7.2f", homeTracks[Sun].azimuth));
    EXPECT_EQ(ui->Distance->text(), QString::asprintf("%9.6f AU", homeTracks[Sun].distance));
    EXPECT_NEAR(homeTracks[Sun].distance, 1.0, 0.02);

    // Cancelled: the choice holds in memory, the file keeps the Sun.
    WhenOpen<SourcesDialog>([](SourcesDialog &d) { ClickRow(d, Mars); }, QDialogButtonBox::Cancel);
    ui->actionSources->trigger();
    EXPECT_EQ(homeData.trackingSource, 4);
    EXPECT_TRUE(Ini().contains("TrackingSource=1"));

    // Opened and closed many times, no dialog is left behind (and in the
    // sanitizer build nothing leaks).
    const int windows = QApplication::topLevelWidgets().size();
    for (int i = 0; i < 25; ++i) {
        WhenOpen<OverlaysDialog>([](OverlaysDialog &) {}, QDialogButtonBox::Cancel);
        ui->actionOverlays->trigger();
        WhenOpen<SourcesDialog>([](SourcesDialog &) {}, QDialogButtonBox::Cancel);
        ui->actionSources->trigger();
    }
    EXPECT_EQ(QApplication::topLevelWidgets().size(), windows);
}

} // namespace
