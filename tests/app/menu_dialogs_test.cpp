// Configure -> Overlays, Configure -> Sources and the source button, driven
// from the window: what is saved, and what the map and the panels show.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "render/OverlaysDialog.h"
#include "tracking/SourcesDialog.h"
#include "ui_OverlaysDialog.h"
#include "ui_SourcesDialog.h"

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

void ClickRow(SourcesDialog &dialog, int row)
{
    QTableWidget *table = dialog.widgets()->SourcesTable;
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                      table->visualItemRect(table->item(row, 0)).center());
}

const char *kBoston = "[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n";

using MenuDialogsTest = WindowTest;

TEST_F(MenuDialogsTest, OverlaysCancelKeepsTheSwitchesInMemoryOkSavesThem)
{
    Open(kBoston);
    // 2025-06-21 12:00 UTC, the June solstice: declination +23.44. The right
    // ascension, 90.41 deg, less the sidereal angle of day number 9304.5
    // (4.894961213 + 6.300388099 d rad = 271.42 deg) gives -181.00; below -180,
    // 180 is added, as built: -1.00 (the true sub-solar longitude is +0.47).
    // Icon centred on map pixel trunc(179 / 0.225) = 795, trunc(66.56 / 0.225) = 295.
    displayOffset = (int32_t)(1750507200 - time(nullptr));
    overlaySettings = {}; // nothing but the Sun over the map
    overlaySettings.SunOverlay = true;
    window->TimeAdjusted();
    EXPECT_NEAR(homeTracks[Sun].subLatitude, 23.44, 0.01);
    EXPECT_NEAR(homeTracks[Sun].subLongitude, -1.00, 0.01);
    Tick(); // takes the rebuild the resize asked for
    auto sunShown = [&] {
        return window->screenOverlayPixmap().toImage().pixel(795, 295)
               != window->baseMapPixmap().toImage().pixel(795, 295);
    };
    ASSERT_TRUE(sunShown());
    // Cancelled: nothing saved, but what is in force is shown at once: the Sun
    // goes from the map, and "Star Charts" switches the view (where a click on
    // the map sets no DX station).
    WhenOpen<OverlaysDialog>([](OverlaysDialog &d) { d.widgets()->SunCheckbox->click(); },
                             QDialogButtonBox::Cancel);
    ui->actionOverlays->trigger();
    EXPECT_FALSE(ReadIni().contains("OVERLAYS"));
    EXPECT_FALSE(sunShown());
    for (bool charts : {true, false}) {
        WhenOpen<OverlaysDialog>([](OverlaysDialog &d) { d.widgets()->StarChartCheckbox->click(); },
                                 QDialogButtonBox::Cancel);
        ui->actionOverlays->trigger();
        EXPECT_EQ(ui->WorldMap->isHidden(), charts);
        EXPECT_EQ(ui->StarChart1->isVisible(), charts);
    }
    EXPECT_FALSE(ReadIni().contains("OVERLAYS"));
    window.reset();
    Open((kBoston + QByteArray("[OVERLAYS]\nLongitudeGridlines=false\n")).constData());

    const QImage unrolled = window->baseMapPixmap().toImage();
    WhenOpen<OverlaysDialog>([](OverlaysDialog &d) {
        d.widgets()->MapOffsetComboBox->setCurrentIndex(23);
        d.widgets()->StarsMagnitudeComboBox->setCurrentIndex(0);
        d.widgets()->StarChartCheckbox->click();
    }, QDialogButtonBox::Ok);
    ui->actionOverlays->trigger();
    const QByteArray ini = ReadIni();
    for (const char *saved : {"MapOffset=23", "StarsMagnitude=0", "StarChartOverlay=true",
                              "LongitudeGridlines=false", "SunOverlay=true", "Grid=FN42mm"})
        EXPECT_TRUE(ini.contains(saved)) << saved;
    // Rolled east by 23 of 24 hours of a 1600-pixel map, 66 * 23 = 1518
    // pixels; row 300 lies between two latitude lines (which stay in place).
    const QImage rolled = window->baseMapPixmap().toImage();
    ASSERT_EQ(rolled.width(), 1600);
    for (int x : {0, 81, 82, 700, 1599})
        EXPECT_EQ(rolled.pixel((x + 1518) % 1600, 300), unrolled.pixel(x, 300)) << x;
    EXPECT_TRUE(ui->WorldMap->isHidden() && ui->StarChart1->isVisible()); // the chart view
}

TEST_F(MenuDialogsTest, ChosenSourceDrivesThePanelsAndOnlyOkSavesIt)
{
    Open(kBoston);
    WhenOpen<SourcesDialog>([](SourcesDialog &d) { ClickRow(d, Sun); }, QDialogButtonBox::Ok);
    QTest::mouseClick(ui->SourceButton, Qt::LeftButton);
    EXPECT_EQ(Text(ui->SourceButton), "SUN");
    EXPECT_TRUE(ReadIni().contains("TrackingSource=1"));
    Tick(); // every figure of the Sun at the next tick
    const SourceTrack &sun = homeTracks[Sun];
    EXPECT_EQ(Texts({ui->HomeAzimuth, ui->Distance}),
              Format("%7.2f|", sun.azimuth) + Format("%9.6f AU", sun.distance));

    // Cancelled: the choice holds in memory and the window shows it at once,
    // button and figures; the file keeps the Sun. The same from the menu.
    for (int source : {Mars, Moon}) {
        WhenOpen<SourcesDialog>([source](SourcesDialog &d) { ClickRow(d, source); },
                                QDialogButtonBox::Cancel);
        if (source == Mars)
            QTest::mouseClick(ui->SourceButton, Qt::LeftButton);
        else
            ui->actionSources->trigger();
        EXPECT_EQ(homeData.trackingSource, source);
        const SourceTrack &shown = homeTracks[source];
        EXPECT_EQ(Texts({ui->SourceButton, ui->HomeAzimuth, ui->HomeElevation, ui->Distance}),
                  (source == Mars ? "MARS|" : "MOON|") + Format("%7.2f|", shown.azimuth)
                      + Format("%7.2f|", shown.elevation)
                      + (source == Mars ? Format("%9.6f AU", shown.distance)
                                        : Format("%6.0f km", shown.distance * 1.5e8)));
        EXPECT_TRUE(ReadIni().contains("TrackingSource=1"));
    }
}

} // namespace
