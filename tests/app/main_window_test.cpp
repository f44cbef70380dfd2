// The main window driven for real: the display cycle's ticks, the panel
// texts and colours, the layout on resize, and what is not saved.
#include "AppTestSupport.h"
#include "ui_MainWindow.h"

#include <QLineEdit>
#include <libnova/libnova.h>

using namespace lunaquill;
using namespace lunaquill::test;

namespace {

const char *kBostonIni = "[HOME_DATA]\nCallsign=Q1ABC\nGrid=FN42mm\nLocation=Boston\n"
                         "TrackingSource=0\nLatitude=42.51\nLongitude=-70.96\nFrequency=1296\n";

class MainWindowTest : public WindowTest
{
protected:
    void Open(const char *ini = kBostonIni)
    {
        WindowTest::Open(ini, false);
        Tick(); // the constructor's stale overlays are rebuilt by the first tick
    }

    // Ticks until the next ordinary panel refresh, at a displayed instant
    // whose second is `second` (a few days ahead); retried if the clock
    // moves on meanwhile. The clock text carries the second refreshed at.
    void RefreshAtSecond(int second)
    {
        for (int attempt = 0; attempt < 20; ++attempt) {
            displayOffset = (int32_t)(3 * 86400 + ((second - time(nullptr) % 60) + 60) % 60);
            ui->DateTimeButton->setText("");
            for (int n = 0; n < 200 && ui->DateTimeButton->text().isEmpty(); ++n)
                Tick();
            if (ui->DateTimeButton->text().mid(17, 2).toInt() == second)
                return;
        }
        FAIL() << "could not refresh at second " << second;
    }
};

TEST_F(MainWindowTest, TitleLinksAndPanelsOnResize)
{
    Open();
    EXPECT_EQ(window->windowTitle(), "Q9QQ Lunaquill v1.05 Feb 28, 2025");
    EXPECT_EQ(window->minimumSize(), QSize(1024, 600));
    // No station control and no WSJT-X set up: the menu bar's corner shows
    // the three links grey.
    QString corner;
    for (const QLabel *label : ui->menuBar->cornerWidget()->findChildren<QLabel *>())
        corner += label->text();
    EXPECT_EQ(corner.count("#909090"), 3);

    window->show();
    for (int width : {1640, 1920}) {
        window->resize(width, 1080);
        QApplication::processEvents();
        ASSERT_EQ(window->width(), width);
        QFrame *frames[] = {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame};
        int total = 0;
        for (QFrame *f : frames)
            total += f->width();
        const int gap = (width - total) / 5;
        for (int i = 0, x = gap; i < 4; x += frames[i++]->width() + gap)
            EXPECT_EQ(frames[i]->x(), x) << i;
        EXPECT_EQ(ui->WorldMap->geometry(), QRect(20, 0, width - 40, 800));
        EXPECT_EQ(window->baseMapPixmap().size(), QSize(width - 40, 800));
    }
    EXPECT_EQ(window->skyColumn(), 441); // trunc(1880 / 1600 * 376)
    // The same size again only asks for a repaint.
    QResizeEvent same(window->size(), window->size());
    QApplication::sendEvent(window.get(), &same);
    EXPECT_TRUE(window->redrawIsRequested());
}

TEST_F(MainWindowTest, PanelsRefreshEvery101TicksWithTheCalculatorsFigures)
{
    Open();
    time_t before;
    struct tm after;
    do { // again if the second changed during the 101st tick, or is 00
        Refresh(); // the counter starts from 0
        ui->HomeAzimuth->setText("stale");
        Tick(100);
        ASSERT_EQ(Text(ui->HomeAzimuth), "stale"); // 100 ticks: 1000 ms, not yet
        before = DisplayedTime();
        Tick(); // the 101st
        after = DisplayedUtc();
    } while (timegm(&after) != before || after.tm_sec == 0);
    // The same figures, computed here for the same instant and station.
    SourceTrack e = homeTracks[Moon];
    ComputeSource(Moon, TrackPosition | TrackDistance, after, 42.51, -70.96, 1296.0, e);
    EXPECT_EQ(Texts({ui->HomeAzimuth, ui->HomeElevation, ui->HomeSpatialOffset, ui->HomeSkyTemp,
                     ui->HomeDegradation, ui->PathLoss, ui->Distance, ui->HomeDoppler}),
              QString::asprintf("%7.2f|%7.2f|%0.1f|%0.1f|%0.1f|%0.1f|%6.0f km|%7.0f Hz", e.azimuth,
                                e.elevation, e.spatialOffset, e.skyTemperature, e.degradation,
                                e.pathLossVsPerigee, e.distance * 1.5e8, e.doppler).toStdString());
    EXPECT_EQ(Texts({ui->SetFrequencyButton, ui->HomeGrid, ui->HomeCallsign, ui->SourceButton,
                     ui->HomeLatitude, ui->HomeLongitude}),
              "1296.00 Mhz|FN42mm|Q1ABC|MOON|42.51|-70.96");
    char clock[64];
    strftime(clock, sizeof clock, "%a %b %e %H:%M:%S %Y", &after);
    EXPECT_EQ(Text(ui->DateTimeButton), clock);
}

// The user's azimuth and elevation are shown as given, so the colour rule
// meets its edges: azimuth exactly 0 counts as not seen, as built.
TEST_F(MainWindowTest, GreenOnlyAboveTheHorizonAndEastOfNorthAtBothStations)
{
    Open("[HOME_DATA]\nGrid=FN42mm\nTrackingSource=22\n");
    CopyField(dxStation.grid, "QF56oc");
    window->UpdateDisplay();
    const struct { double homeAz, homeEl, dxAz, dxEl; bool homeSees, dxSees; } rows[] = {
        {0.0, 30.0, 0.01, 30.0, false, true}, {180.0, 0.0, 359.0, 0.01, false, true},
        {0.01, 0.01, 90.0, -0.01, true, false}, {250.0, 45.0, 10.0, 80.0, true, true},
    };
    for (const auto &row : rows) {
        homeTracks[UserAzEl].azimuth = row.homeAz;
        homeTracks[UserAzEl].elevation = row.homeEl;
        dxTracks[UserAzEl].azimuth = row.dxAz;
        dxTracks[UserAzEl].elevation = row.dxEl;
        Refresh();
        SCOPED_TRACE(row.homeAz);
        for (QWidget *w : {ui->HomeAzimuth, ui->HomeElevation, ui->HomeDoppler,
                           ui->HomeSpatialOffset, ui->HomeSkyTemp, ui->HomeDegradation})
            EXPECT_EQ(Style(w), row.homeSees ? kDarkGreenStyle : kDarkRedStyle);
        for (QWidget *w : {ui->DxAzimuth, ui->DxElevation, ui->DxDoppler, ui->DxSpatialOffset,
                           ui->DxSkyTemp, ui->DxDegradation})
            EXPECT_EQ(Style(w), row.dxSees ? kDarkGreenStyle : kDarkRedStyle);
        const bool both = row.homeSees && row.dxSees;
        EXPECT_EQ(Style(ui->MutualDoppler), both ? kDarkGreenStyle : kDarkRedStyle);
        EXPECT_EQ(Text(ui->MutualDoppler), both ? "      0 Hz" : " ");
    }
}

TEST_F(MainWindowTest, MutualDopplerNeedsBothStationsAndKeepsAStaleDx)
{
    Open();
    // DX station in Sydney: the Moon is up at both only some hours a day.
    CopyField(dxStation.grid, "QF56oc");
    dxStation.latitude = -33.9;
    dxStation.longitude = 151.2;
    window->UpdateDisplay();
    for (int hours = 0; hours < 24 * 60 && homeSeesSource + dxSeesSource < 2; ++hours) {
        displayOffset = hours * 3600; // until the Moon is up at both
        Refresh();
    }
    ASSERT_EQ(homeSeesSource + dxSeesSource, 2);
    const double home = homeTracks[Moon].doppler, dx = dxTracks[Moon].doppler;
    EXPECT_EQ(Texts({ui->HomeDoppler, ui->DxDoppler, ui->MutualDoppler}),
              Format("%7.0f Hz|", home) + Format("%7.0f Hz|", dx) +
                  Format("%7.0f Hz", (home + dx) * 0.5));

    // The DX grid unset: the last DX Doppler still forms the mutual figure.
    dxStation.grid[0] = '\0';
    window->UpdateDisplay();
    EXPECT_EQ(dxStationSet, 0);
    Refresh();
    EXPECT_EQ(Texts({ui->DxDoppler, ui->MutualDoppler}),
              " |" + Format("%7.0f Hz", (homeTracks[Moon].doppler + dx) * 0.5));
}

TEST_F(MainWindowTest, WithoutStationsThePanelsShowTheOriginAndNothingIsSavedAtExit)
{
    // No file: the default grid at 0, 0 (figures there must be finite). An
    // empty grid: no home station, yet the same figures; no Doppler, no DX.
    // A grid emptied later leaves the home station set, as built.
    for (const char *ini : {(const char *)nullptr, "[HOME_DATA]\nGrid=\n"}) {
        ResetSharedState();
        Open(ini);
        for (int pass = 0; pass < 2; ++pass) {
            Refresh();
            const SourceTrack &moon = homeTracks[Moon];
            EXPECT_EQ(homeStationSet, ini ? 0 : 1);
            EXPECT_TRUE(std::isfinite(moon.elevation) && std::isfinite(moon.spatialOffset));
            EXPECT_EQ(Texts({ui->HomeGrid, ui->HomeAzimuth, ui->HomeDoppler}),
                      (ini ? "|" : "JJ00aa|") + Format("%7.2f|", moon.azimuth) +
                          (ini ? " " : Format("%7.0f Hz", moon.doppler)));
            homeData.grid[0] = '\0';
            window->UpdateDisplay();
        }
        EXPECT_EQ(Texts({ui->DxAzimuth, ui->DxRiseTime, ui->DxDoppler}), "|Rise| ");
        // Changed, then closed: the file stays as it was, none is made.
        homeData.frequency = 144.0;
        overlaySettings.StarChartOverlay = true;
        window.reset();
        EXPECT_EQ(ReadIni(), QByteArray(ini));
        EXPECT_EQ(QFile::exists(IniPath()), ini != nullptr);
    }
}

TEST_F(MainWindowTest, RiseSetAndDistanceAtSecondZeroOrAfterTheSourceButton)
{
    // The Sun: its distance, like rise and set, waits for second 00.
    Open("[HOME_DATA]\nGrid=FN42mm\nTrackingSource=1\nLatitude=42.51\nLongitude=-70.96\n");
    RefreshAtSecond(30);
    ui->HomeRiseTime->setText("r");
    ui->Distance->setText("d");
    RefreshAtSecond(31);
    EXPECT_EQ(Texts({ui->HomeRiseTime, ui->Distance}), "r|d");
    RefreshAtSecond(0);
    const SourceTrack &sun = homeTracks[Sun];
    EXPECT_EQ(Texts({ui->HomeRiseTime, ui->HomeSetTime, ui->Distance}),
              DateText("Rise: ", sun.riseTime) + "|" + DateText("Set: ", sun.setTime) + "|" +
                  Format("%9.6f AU", sun.distance));
    EXPECT_NEAR(sun.distance, 1.0, 0.02);

    // The Moon's distance refreshes every second.
    homeData.trackingSource = Moon;
    ui->Distance->setText("d");
    RefreshAtSecond(17);
    EXPECT_EQ(Text(ui->Distance), Format("%6.0f km", homeTracks[Moon].distance * 1.5e8));

    // The source button, even cancelled, asks for every figure once.
    ui->HomeRiseTime->setText("r");
    WhenOpen([](QDialog &d) { d.close(); });
    window->SourceButtonPressed();
    RefreshAtSecond(41);
    EXPECT_EQ(Text(ui->HomeRiseTime), DateText("Rise: ", homeTracks[Moon].riseTime));
    ui->HomeRiseTime->setText("r");
    RefreshAtSecond(43);
    EXPECT_EQ(Text(ui->HomeRiseTime), "r");
}

// Rise and set are shown from the first refresh after start, not only from
// the first second 00; a Sun that stays down or up all day is said in words
// (21 December: polar night at 80° N, midnight sun at 80° S).
TEST_F(MainWindowTest, RiseSetFromTheFirstRefreshAndPolarDaysInWords)
{
    Open();
    Tick(100); // the 101st tick since construction refreshes the panels
    const SourceTrack &moon = homeTracks[Moon];
    ASSERT_EQ(moon.riseSetStatus, 0); // Boston: the Moon rises and sets every day
    EXPECT_EQ(Texts({ui->HomeRiseTime, ui->HomeSetTime}),
              DateText("Rise: ", moon.riseTime) + "|" + DateText("Set: ", moon.setTime));

    homeData.trackingSource = Sun;
    homeData.latitude = 80.0;
    CopyField(dxStation.grid, "JB00aa");
    dxStation.latitude = -80.0;
    window->UpdateDisplay();
    displayOffset = (int32_t)(1797854400 - time(nullptr)); // 2026-12-21 12:00 UTC
    Refresh();
    EXPECT_EQ(Texts({ui->HomeRiseTime, ui->HomeSetTime, ui->DxRiseTime, ui->DxSetTime}),
              "Rise: never up|Set: never up|Rise: always up|Set: always up");
}

TEST_F(MainWindowTest, AcceptedStationDialogsRecomputeEverySource)
{
    // The Sun is not the tracked source, so only a recompute of every source
    // moves its figures to the station just entered. Positions by hand from
    // the locators: QF56od lon 2*5 + 20*16 + 14.5*5/60 - 180 = 151.2083,
    // lat 10*5 - 90 + 6 + 3.5*2.5/60 = -33.8542; JO62qm lon 12 + 180 +
    // 16.5*5/60 - 180 = 13.375, lat 140 - 90 + 2 + 12.5*2.5/60 = 52.5208.
    Open();
    const struct { bool home; const char *grid; double latitude, longitude; } rows[] = {
        {true, "QF56od", -33.8542, 151.2083}, {false, "JO62qm", 52.5208, 13.375}};
    for (const auto &row : rows) {
        WhenOpen([&row](QDialog &dialog) {
            auto *grid = dialog.findChild<QLineEdit *>("GridEdit");
            grid->setText(row.grid);
            QTest::keyClick(grid, Qt::Key_Return);
            if (row.home) // the home dialog converts only on Grid Convert
                dialog.findChild<QPushButton *>("GridConvertButton")->click();
        }, QDialogButtonBox::Ok);
        if (row.home)
            ui->actionHomeStation->trigger();
        else
            QTest::mouseClick(ui->DxGrid, Qt::LeftButton);
        const double latitude = row.home ? homeData.latitude : dxStation.latitude;
        const double longitude = row.home ? homeData.longitude : dxStation.longitude;
        ASSERT_NEAR(latitude, row.latitude, 1e-4) << row.grid;
        ASSERT_NEAR(longitude, row.longitude, 1e-4) << row.grid;

        // The Sun from libnova (referred to J2000, so precessed to the date).
        time_t now = DisplayedTime();
        const double jd = ln_get_julian_from_timet(&now);
        ln_equ_posn j2000, ofDate;
        ln_get_solar_equ_coords(jd, &j2000);
        ln_get_equ_prec(&j2000, jd, &ofDate);
        ln_lnlat_posn at{longitude, latitude};
        ln_hrz_posn sky;
        ln_get_hrz_from_equ(&ofDate, &at, jd, &sky);
        EXPECT_NEAR((row.home ? homeTracks : dxTracks)[Sun].elevation, sky.alt, 0.15) << row.grid;
    }
}

} // namespace
