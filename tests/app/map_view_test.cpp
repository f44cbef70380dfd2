// The world map in the window: clicks and hovering, what each layer shows
// and where, and a window without its images.
#include "app/MainWindow.h"
#include "ui_MainWindow.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "render/StarChartRenderer.h"
#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <memory>

using namespace lunaquill;

namespace {

class MapViewTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
    }

    void Open()
    {
        window = std::make_unique<MainWindow>();
        ui = window->widgets();
        window->resize(1640, 960);
        window->show();
        QApplication::processEvents();
    }

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

    // Every body icon and shade off: only what a test switches on is drawn.
    void LayersOff()
    {
        OverlaySettings &on = overlaySettings;
        on = {};
        on.StarsMagnitude = 6;
    }

    int YellowPixels(const QImage &image)
    {
        int count = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) == qRgb(255, 255, 0))
                    ++count;
        return count;
    }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
};

TEST_F(MapViewTest, LeftClickSetsTheDxStationRightClickOnlyRefreshes)
{
    Open();
    // Map pixel (500, 200) of 1600 x 800: longitude 500 * 0.225 - 180 = -67.5,
    // latitude 90 - 200 * 0.225 = 45; locator FN65ga.
    Mouse(QEvent::MouseButtonPress, MapPixel(500, 200), Qt::LeftButton);
    EXPECT_STREQ(dxStation.grid, "FN65ga");
    EXPECT_DOUBLE_EQ(dxStation.latitude, 45.0);
    EXPECT_DOUBLE_EQ(dxStation.longitude, -67.5);
    EXPECT_EQ(dxStationSet, 1);
    EXPECT_EQ(ui->DxGrid->text(), "FN65ga");
    EXPECT_EQ(ui->DxLatitude->text(), "45.00");
    EXPECT_EQ(ui->DxLongitude->text(), "-67.50");
    EXPECT_TRUE(window->redrawIsRequested());

    // A right click changes no DX value but refreshes the panels.
    ui->SetFrequencyButton->setText("x");
    Mouse(QEvent::MouseButtonPress, MapPixel(1200, 600), Qt::RightButton);
    EXPECT_STREQ(dxStation.grid, "FN65ga");
    EXPECT_EQ(ui->SetFrequencyButton->text(), "1296.00 Mhz"); // the default frequency

    // Below the map: nothing at all.
    ui->SetFrequencyButton->setText("x");
    Mouse(QEvent::MouseButtonPress, MapPixel(500, 805), Qt::LeftButton);
    EXPECT_STREQ(dxStation.grid, "FN65ga");
    EXPECT_EQ(ui->SetFrequencyButton->text(), "x");

    // In the chart view the map takes no clicks.
    overlaySettings.StarChartOverlay = true;
    Mouse(QEvent::MouseButtonPress, MapPixel(100, 100), Qt::LeftButton);
    EXPECT_STREQ(dxStation.grid, "FN65ga");
}

TEST_F(MapViewTest, HoverShowsTheReadOutAndLeavingClearsIt)
{
    Open();
    window->TimerEvent();
    Mouse(QEvent::MouseMove, MapPixel(500, 200), Qt::NoButton);
    ASSERT_TRUE(window->hoverIsVisible());
    EXPECT_STREQ(window->hoverLocator(), "FN65ga");
    // The box sits at the mouse, 35 pixels up; near the right edge it is
    // pulled in to 140 pixels left of the map's right edge.
    const QPoint at = MapPixel(500, 200);
    EXPECT_EQ(window->hoverRect(), QRect(at.x(), at.y() - 35, 125, 35));
    Mouse(QEvent::MouseMove, MapPixel(1590, 200), Qt::NoButton);
    const int mapRight = ui->WorldMap->geometry().right();
    EXPECT_EQ(window->hoverRect().left(), mapRight - 140);

    // The next tick draws it: black box, cyan text.
    window->TimerEvent();
    const QImage shown = ui->WorldMap->pixmap().toImage();
    const QRect box = window->hoverRect();
    EXPECT_EQ(shown.pixel(box.left() + 2, box.top() + 2), qRgb(0, 0, 0));
    int cyan = 0;
    for (int y = box.top(); y <= box.bottom(); ++y)
        for (int x = box.left(); x <= box.right(); ++x) {
            QColor c = shown.pixelColor(x, y);
            cyan += c.green() > 150 && c.blue() > 150 && c.red() < 100;
        }
    EXPECT_GT(cyan, 20);

    // Moving onto the panels below the map clears it.
    Mouse(QEvent::MouseMove, MapPixel(500, 850), Qt::NoButton);
    EXPECT_FALSE(window->hoverIsVisible());
    EXPECT_TRUE(window->redrawIsRequested());
}

TEST_F(MapViewTest, SunIconStandsAtItsSubPoint)
{
    Open();
    CopyField(homeData.grid, "FN42mm");
    homeData.latitude = 42.51;
    homeData.longitude = -70.96;
    LayersOff();
    overlaySettings.SunOverlay = true;
    // Displayed instant 2025-06-21 12:00:00 UTC, the June solstice.
    displayOffset = (int32_t)(1750507200 - time(nullptr));
    window->TimeAdjusted();

    // The rule of SubSourcePoint, worked through (so a check of the icon's
    // placement, not of the rule): the Sun's declination at the solstice is
    // +23.44. Its right ascension, 6.0275 h = 90.41 deg, less the sidereal
    // angle of the day number 9304.5 (4.894961213 + 6.300388099 d rad =
    // 271.42 deg mod 360) gives -181.00; below -180, 180 is added: -1.00.
    // The true sub-solar longitude then is about +0.47 (right ascension of
    // date less Greenwich apparent sidereal time, 89.94 deg).
    EXPECT_NEAR(homeTracks[Sun].subLatitude, 23.44, 0.01);
    EXPECT_NEAR(homeTracks[Sun].subLongitude, -1.00, 0.01);
    // Map pixel trunc((-1.00 + 180) / 0.225) = 795, trunc((90 - 23.44) / 0.225) = 295:
    // the middle of the yellow Sun icon.
    const QColor centre = window->screenOverlayPixmap().toImage().pixelColor(795, 295);
    EXPECT_GT(centre.red(), 200);
    EXPECT_GT(centre.green(), 150);
    EXPECT_LT(centre.blue(), 120);
    // The same spot on the base map is the Sahara, in Algeria: sand.
    const QColor sand = window->baseMapPixmap().toImage().pixelColor(795, 295);
    EXPECT_GT(sand.red(), sand.blue());
}

TEST_F(MapViewTest, RadioSourcesOnlyWithSkyNoiseIconsOnlyForTrackedBodies)
{
    Open();
    CopyField(homeData.grid, "FN42mm");
    homeData.latitude = 42.51;
    homeData.longitude = -70.96;
    window->RecalculateSources();

    LayersOff();
    window->CreateScreenOverlay();
    EXPECT_EQ(YellowPixels(window->screenOverlayPixmap().toImage()), 0);

    // Sky noise on: the twelve radio sources appear, in yellow.
    overlaySettings.SkyNoiseOverlay = true;
    window->CreateScreenOverlay();
    EXPECT_GT(YellowPixels(window->screenOverlayPixmap().toImage()), 12 * 5);

    // A body whose switch is on but that was never computed shows no icon.
    LayersOff();
    overlaySettings.MarsOverlay = true;
    homeTracks[Mars].valid = 0;
    window->CreateScreenOverlay();
    EXPECT_EQ(window->screenOverlayPixmap().toImage(), window->baseMapPixmap().toImage());
    window->RecalculateSources();
    window->CreateScreenOverlay();
    EXPECT_NE(window->screenOverlayPixmap().toImage(), window->baseMapPixmap().toImage());

    // A shading switch for a body never computed draws no shade.
    LayersOff();
    overlaySettings.SunShadingOverlay = true;
    homeTracks[Sun].valid = 0;
    window->CreateScreenOverlay();
    EXPECT_EQ(window->screenOverlayPixmap().toImage(), window->baseMapPixmap().toImage());
}

TEST_F(MapViewTest, StarsFollowTheMagnitudeLimitOutlinesTheirSwitch)
{
    Open();
    LayersOff();
    auto changedPixels = [&] {
        window->CreateScreenOverlay();
        const QImage shown = window->screenOverlayPixmap().toImage();
        const QImage base = window->baseMapPixmap().toImage();
        int changed = 0;
        for (int y = 0; y < shown.height(); ++y)
            for (int x = 0; x < shown.width(); ++x)
                changed += shown.pixel(x, y) != base.pixel(x, y);
        return changed;
    };
    // No star is brighter than magnitude -2; below -1 there is Sirius (-1.44)
    // alone, a disc of 21 pixels.
    overlaySettings.StarsOverlay = true;
    overlaySettings.StarsMagnitude = -2;
    EXPECT_EQ(changedPixels(), 0);
    overlaySettings.StarsMagnitude = -1;
    EXPECT_EQ(changedPixels(), 21);
    overlaySettings.StarsOverlay = false;
    overlaySettings.ConstellationsOverlay = true;
    EXPECT_GT(changedPixels(), 1542);
}

TEST_F(MapViewTest, SunShadeIsWhiteUnderTheSunAndBlackOppositeIt)
{
    Open();
    CopyField(homeData.grid, "FN42mm");
    homeData.latitude = 42.51;
    homeData.longitude = -70.96;
    overlaySettings.SunShadingOverlay = true;
    displayOffset = (int32_t)(1750507200 - time(nullptr)); // 2025-06-21 12:00 UTC
    window->TimeAdjusted();
    const QImage shade = window->sunShadePixmap().toImage();
    EXPECT_EQ(shade.pixel(795, 295), qRgb(255, 255, 255));
    // The antipode (-23.44, 179.0): night.
    EXPECT_EQ(shade.pixel(1595, 504), qRgb(0, 0, 0));
}

TEST_F(MapViewTest, WithoutOpenGlTheChartsStayThePlainDial)
{
    Open(); // home: a first run's JJ00aa
    ASSERT_FALSE(window->findChild<StarChartRenderer *>()->isReady())
        << "run with QT_QPA_OFFSCREEN_NO_GLX=1: no context is to be had";
    CopyField(dxStation.grid, "QF56og");
    dxStationSet = 1;
    window->ViewModeButtonPressed();
    const QImage dial = QPixmap(QDir::currentPath() + "/pixmaps/dial.png")
                            .scaled(790, 790, Qt::KeepAspectRatio).toImage();
    for (QLabel *chart : {ui->StarChart1, ui->StarChart2})
        EXPECT_EQ(chart->pixmap().toImage().convertToFormat(dial.format()), dial);
    EXPECT_FALSE(ui->WorldMap->isVisible());
}

TEST_F(MapViewTest, MissingOrCorruptImagesLeaveTheMapBlankWithoutACrash)
{
    const QString source = QDir::currentPath();
    for (bool corrupt : {false, true}) {
        QTemporaryDir folder;
        if (corrupt) {
            // Every image the window loads, as junk bytes.
            QDir(folder.path()).mkdir("pixmaps");
            for (const QString &name : QDir(source + "/pixmaps").entryList(QDir::Files)) {
                QFile junk(folder.path() + "/pixmaps/" + name);
                ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
                junk.write(QByteArray(3000, '\x89') + "PNG JFIF junk");
            }
        }
        QDir::setCurrent(folder.path());
        Open();
        for (int i = 0; i < 200; ++i)
            window->TimerEvent();
        window->TimeAdjusted();
        window->ViewModeButtonPressed();
        window->ViewModeButtonPressed();
        Mouse(QEvent::MouseMove, MapPixel(500, 200), Qt::NoButton);
        window->TimerEvent();
        EXPECT_TRUE(window->baseMapPixmap().isNull()) << corrupt;
        EXPECT_TRUE(ui->WorldMap->pixmap().isNull()) << corrupt;
        window.reset();
        QDir::setCurrent(source);
    }
}

} // namespace
