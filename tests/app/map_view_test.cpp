// The world map in the window: clicks and hovering, what each layer shows
// and where, and the charts without OpenGL.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"
#include "render/SkyDial.h"
#include "render/StarChartRenderer.h"

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

class MapViewTest : public WindowTest
{
protected:
    // The window position of map pixel (x, y).
    QPoint MapPixel(int x, int y)
    {
        return ui->centralWidget->geometry().topLeft() + ui->WorldMap->geometry().topLeft()
               + QPoint(x, y);
    }

    void Mouse(QEvent::Type type, QPoint at, Qt::MouseButton button)
    {
        QMouseEvent event(type, at, at, button, button, Qt::NoModifier);
        QApplication::sendEvent(window.get(), &event);
    }

    // Rebuilds the screen overlay with every layer off but those given, and
    // counts its pixels that differ from the base map (or are yellow).
    int Shown(std::initializer_list<bool OverlaySettings::*> on, bool yellow = false)
    {
        overlaySettings = {};
        overlaySettings.StarsMagnitude = magnitude;
        for (bool OverlaySettings::*layer : on)
            overlaySettings.*layer = true;
        window->CreateScreenOverlay();
        const QImage shown = window->screenOverlayPixmap().toImage();
        const QImage base = window->baseMapPixmap().toImage();
        int count = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                count += yellow ? shown.pixel(x, y) == qRgb(255, 255, 0)
                                : shown.pixel(x, y) != base.pixel(x, y);
        return count;
    }

    int magnitude = 6;
};

TEST_F(MapViewTest, LeftClickSetsTheDxStationRightClickOnlyRefreshes)
{
    Open(nullptr);
    // Map pixel (500, 200) of 1600 x 800: longitude 500 * 0.225 - 180 = -67.5,
    // latitude 90 - 200 * 0.225 = 45; locator FN65ga.
    Mouse(QEvent::MouseButtonPress, MapPixel(500, 200), Qt::LeftButton);
    EXPECT_EQ(dxStationSet, 1);
    EXPECT_EQ(Texts({ui->DxGrid, ui->DxLatitude, ui->DxLongitude}), "FN65ga|45.00|-67.50");
    EXPECT_TRUE(window->redrawIsRequested());
    // A right click changes no DX value but refreshes the panels; below the
    // map, on its top row, or in the chart view, a click does nothing at all.
    const struct { QPoint at; Qt::MouseButton button; bool charts; const char *shown; } rows[] = {
        {MapPixel(1200, 600), Qt::RightButton, false, "1296.00 Mhz"},
        {MapPixel(500, 805), Qt::LeftButton, false, "x"},
        // The top row lies at latitude 90, in field S beyond the globe: no locator.
        {MapPixel(500, 0), Qt::LeftButton, false, "x"},
        {MapPixel(100, 100), Qt::LeftButton, true, "x"},
    };
    for (const auto &row : rows) {
        ui->SetFrequencyButton->setText("x");
        overlaySettings.StarChartOverlay = row.charts;
        Mouse(QEvent::MouseButtonPress, row.at, row.button);
        EXPECT_STREQ(dxStation.grid, "FN65ga");
        EXPECT_EQ(Text(ui->SetFrequencyButton), row.shown);
    }
}

TEST_F(MapViewTest, HoverShowsTheReadOutLeavingOrFiveSecondsClearIt)
{
    Open(nullptr);
    Tick();
    Mouse(QEvent::MouseMove, MapPixel(500, 200), Qt::NoButton);
    ASSERT_TRUE(window->hoverIsVisible());
    EXPECT_STREQ(window->hoverLocator(), "FN65ga");
    // The box sits at the mouse, 35 pixels up; near the right edge it is
    // pulled in to 140 pixels left of the map's right edge.
    const QPoint at = MapPixel(500, 200);
    EXPECT_EQ(window->hoverRect(), QRect(at.x(), at.y() - 35, 125, 35));
    Mouse(QEvent::MouseMove, MapPixel(1590, 200), Qt::NoButton);
    EXPECT_EQ(window->hoverRect().left(), ui->WorldMap->geometry().right() - 140);

    // The next tick draws it: black box, cyan text.
    Tick();
    const QImage shown = ui->WorldMap->pixmap().toImage().copy(window->hoverRect());
    EXPECT_EQ(shown.pixel(2, 2), qRgb(0, 0, 0));
    int cyan = 0;
    for (int i = 0; i < shown.width() * shown.height(); ++i) {
        const QColor c = shown.pixelColor(i % shown.width(), i / shown.width());
        cyan += c.green() > 150 && c.blue() > 150 && c.red() < 100;
    }
    EXPECT_GT(cyan, 20);

    // Moving onto the panels below the map clears it.
    Mouse(QEvent::MouseMove, MapPixel(500, 850), Qt::NoButton);
    EXPECT_FALSE(window->hoverIsVisible());
    EXPECT_TRUE(window->redrawIsRequested());
    // Left standing, it is gone within five seconds (501 ticks; the hover
    // counter runs from the window's start), and the redraw made.
    Mouse(QEvent::MouseMove, MapPixel(500, 200), Qt::NoButton);
    int ticks = 0;
    for (; window->hoverIsVisible() && ticks < 600; ++ticks)
        Tick();
    EXPECT_LE(ticks, 501);
    EXPECT_FALSE(window->redrawIsRequested());
}

TEST_F(MapViewTest, EachLayerOnlyWhenItsSwitchAllowsAndItsBodyWasComputed)
{
    Open("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n"
         "[OVERLAYS]\nSunShadingOverlay=true\n");
    window->TimeAdjusted(); // the Sun's shade made
    EXPECT_EQ(Shown({}), 0);
    // The twelve radio sources show in yellow only with the sky noise.
    EXPECT_GT(Shown({&OverlaySettings::SkyNoiseOverlay}, true), 12 * 5);
    // An icon or a shade whose body was never computed is not drawn.
    EXPECT_GT(Shown({&OverlaySettings::MarsOverlay}), 0);
    EXPECT_GT(Shown({&OverlaySettings::SunShadingOverlay}), 0);
    homeTracks[Mars].valid = homeTracks[Sun].valid = 0;
    EXPECT_EQ(Shown({&OverlaySettings::MarsOverlay, &OverlaySettings::SunShadingOverlay}), 0);
    // No star is brighter than magnitude -2; below -1 there is Sirius (-1.44)
    // alone, a disc of 21 pixels.
    magnitude = -2;
    EXPECT_EQ(Shown({&OverlaySettings::StarsOverlay}), 0);
    magnitude = -1;
    EXPECT_EQ(Shown({&OverlaySettings::StarsOverlay}), 21);
    EXPECT_GT(Shown({&OverlaySettings::ConstellationsOverlay}), 1542);
}

// A time step paints the sky layers and the shades on the worker threads ahead of the
// sources; what it shows is what rebuilding the overlay from the computed records gives,
// over steps of ten minutes and of a day, with the map rolled, and with the home station
// moved between two steps (the pictures made ahead for the old place are not used).
TEST_F(MapViewTest, AStepShowsWhatRebuildingFromTheRecordsShows)
{
    Open("[HOME_DATA]\nGrid=FN42mm\nLatitude=42.51\nLongitude=-70.96\n");
    overlaySettings = {};
    overlaySettings.StarsMagnitude = 6;
    for (bool OverlaySettings::*layer :
         {&OverlaySettings::SunShadingOverlay, &OverlaySettings::MoonShadingOverlay,
          &OverlaySettings::SkyNoiseOverlay, &OverlaySettings::StarsOverlay,
          &OverlaySettings::ConstellationsOverlay, &OverlaySettings::MoonOverlay})
        overlaySettings.*layer = true;
    for (int step = 0; step < 6; ++step) {
        AdvanceDisplayOffset(step < 3 ? 600 : 86400);
        overlaySettings.MapOffset = step == 4 ? 6 : 0;
        // The displayed instant follows the clock: compared within one second.
        for (int attempt = 0; attempt < 5; ++attempt) {
            const time_t shown = DisplayedTime();
            window->TimeAdjusted();
            const QImage stepped = window->screenOverlayPixmap().toImage();
            window->RecalculateSources();
            window->RebuildOverlays();
            if (DisplayedTime() != shown)
                continue;
            EXPECT_TRUE(window->screenOverlayPixmap().toImage() == stepped) << step;
            break;
        }
        if (step == 3) // the next step is made ahead for the old place
            homeData.latitude = -33.9, homeData.longitude = 151.2;
    }
}

TEST_F(MapViewTest, WithoutOpenGlTheChartsStayThePlainDial)
{
    Open(""); // home: a first run's JJ00aa
    ASSERT_FALSE(window->findChild<StarChartRenderer *>()->isReady())
        << "run with QT_QPA_OFFSCREEN_NO_GLX=1: no context is to be had";
    CopyField(dxStation.grid, "QF56og");
    dxStationSet = 1;
    window->ViewModeButtonPressed();
    // The dial as drawn for a 790-pixel chart (pixmaps/dial.png is that drawing at 512).
    const QImage dial = SkyDial(QSize(790, 790), 1.0).toImage();
    for (QLabel *chart : {ui->StarChart1, ui->StarChart2})
        EXPECT_EQ(chart->pixmap().toImage().convertToFormat(dial.format()), dial);
    EXPECT_FALSE(ui->WorldMap->isVisible());
}

} // namespace
