// The main window driven for real: the display cycle's ticks, the panel
// texts against the calculator's figures, colours, counters, the layout on
// resize, the slots' order, and what is (not) saved.
#include "app/MainWindow.h"
#include "app/PanelStyles.h"
#include "ui_MainWindow.h"

#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/ComputeSource.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileInfo>
#include <QLineEdit>
#include <QMetaMethod>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <string>

using namespace lunaquill;

namespace {

std::string Format(const char *format, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string RiseSet(const char *prefix, double jd)
{
    ln_date d;
    ln_get_date(jd, &d);
    char text[64];
    std::snprintf(text, sizeof text, "%s%02d-%02d %02d:%02d", prefix, d.months, d.days, d.hours,
                  d.minutes);
    return text;
}

std::string Text(QAbstractButton *button) { return button->text().toStdString(); }

void WriteIni(const char *text)
{
    QFile file(test::SettingsFolder() + "Lunaquill.ini");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(text);
}

const char *kBostonIni = "[HOME_DATA]\nCallsign=Q1ABC\nGrid=FN42mm\nLocation=Boston\n"
                         "TrackingSource=0\nLatitude=42.51\nLongitude=-70.96\nFrequency=1296\n";

class MainWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        test::ResetSharedState();
    }

    void Open(const char *ini = kBostonIni)
    {
        if (ini)
            WriteIni(ini);
        window = std::make_unique<MainWindow>();
        ui = window->widgets();
        // The constructor's first tick rebuilds the overlays; take it.
        window->TimerEvent();
    }

    void Tick(int count)
    {
        for (int i = 0; i < count; ++i)
            window->TimerEvent();
    }

    // Ticks until the next ordinary panel refresh, at a displayed instant
    // whose second is `second` (a few days ahead); retried if the clock
    // moves on meanwhile. The clock text carries the second refreshed at.
    void RefreshAtSecond(int second)
    {
        for (int attempt = 0; attempt < 20; ++attempt) {
            time_t now = time(nullptr);
            displayOffset = (int32_t)(3 * 86400 + ((second - now % 60) + 60) % 60);
            ui->DateTimeButton->setText("");
            for (int n = 0; n < 200 && ui->DateTimeButton->text().isEmpty(); ++n)
                window->TimerEvent();
            if (ui->DateTimeButton->text().mid(17, 2).toInt() == second)
                return;
        }
        FAIL() << "could not refresh at second " << second;
    }

    // A displayed instant at which the predicate holds for the Moon, seen
    // from the home station, searched hour by hour.
    void FindOffset(const std::function<bool(const SourceTrack &, const SourceTrack &)> &wanted)
    {
        for (int hours = 0; hours < 24 * 60; ++hours) {
            time_t t = time(nullptr) + hours * 3600 + 1800;
            struct tm utc;
            gmtime_r(&t, &utc);
            SourceTrack home{}, dx{};
            ComputeSource(Moon, TrackPosition, utc, homeData.latitude, homeData.longitude, 1296, home);
            ComputeSource(Moon, TrackPosition, utc, dxStation.latitude, dxStation.longitude, 1296, dx);
            if (wanted(home, dx)) {
                displayOffset = hours * 3600 + 1800;
                return;
            }
        }
        FAIL() << "no such instant within 60 days";
    }

    std::unique_ptr<MainWindow> window;
    Ui::MainWindow *ui = nullptr;
};

TEST_F(MainWindowTest, TitleSizeAndSlotOrder)
{
    Open();
    EXPECT_EQ(window->windowTitle(), "Q9QQ Lunaquill v1.05 Feb 28, 2025");
    EXPECT_EQ(window->minimumSize(), QSize(1640, 960));

    const char *const expectedSlots[61] = {
        "About()", "UpdateDisplay()", "HomeStation()", "SourcesDisplay()", "DxStation()",
        "Favorites(QString)", "Eme50M()", "Eme144M()", "Eme432M()", "Eme900M()", "Eme1296M()",
        "Eme2304M()", "Eme3400M()", "Eme5760M()", "Eme10G()", "Eme47G()", "EmeFavorites()",
        "SetOverlays()", "SourceButtonPressed()", "SetDxStation()", "SetFrequency()",
        "SetDateTime()", "GmtTimeOffset()", "DateTimeButtonPressed()",
        "TimeAdjustPlayButtonPressed()", "ViewModeButtonPressed()", "TimeAdjusted()",
        "TimeAdjustMinPButtonPressed()", "TimeAdjustHourPButtonPressed()",
        "TimeAdjustDayPButtonPressed()", "TimeAdjustWeekPButtonPressed()",
        "TimeAdjustMinMButtonPressed()", "TimeAdjustHourMButtonPressed()",
        "TimeAdjustDayMButtonPressed()", "TimeAdjustWeekMButtonPressed()",
        "RecalculateSources()", "StarAttributes(double,double,QColor&,int&)",
        "LatLongToPoint(double,double,QPoint&)", "AzAltToDial(QRect,double,double)",
        "MapPixelToDialPixel(QPoint,int,int,int&,int&)",
        "worldToSpherical(int,int,int,double&,double&)", "cart2pol(int,int,double&,double&)",
        "pol2cart(double,double,int&,int&)", "mousePressEvent(QMouseEvent*)",
        "mouseMoveEvent(QMouseEvent*)", "resizeEvent(QResizeEvent*)", "LoadPixmaps()",
        "CreateShadeOverlay(QPixmap&,double,double,double)",
        "CreateSkyOverlay(QPixmap&,QPixmap,int)", "CreateScreenOverlay()", "DrawMapOverlay()",
        "DrawOverlay(QPainter&,QPixmap)", "DrawMap()", "DrawLatitudeLabels()",
        "DrawLongitudeLabels()", "DrawMapConstellation(QPainter&,int)",
        "DrawMapStars(QPainter&,int)", "DrawStarChart1()", "DrawStarChart2()",
        "DrawFavorites(QPainter&,QString)", "TimerEvent()",
    };
    const QMetaObject *meta = window->metaObject();
    ASSERT_EQ(meta->methodCount() - meta->methodOffset(), 61);
    for (int i = 0; i < 61; ++i) {
        QMetaMethod method = meta->method(meta->methodOffset() + i);
        EXPECT_EQ(method.methodSignature().toStdString(), expectedSlots[i]) << i;
        EXPECT_EQ(method.methodType(), QMetaMethod::Slot);
    }
    // The slots are reachable through the meta-object, as the charts use them.
    double radius = -1, angle = -1;
    ASSERT_TRUE(QMetaObject::invokeMethod(window.get(), "cart2pol", Q_ARG(int, 0), Q_ARG(int, 5),
                                          Q_ARG(double &, radius), Q_ARG(double &, angle)));
    EXPECT_EQ(radius, 5.0);
    EXPECT_EQ(angle, 0.0);
}

TEST_F(MainWindowTest, PanelsRefreshEvery101TicksWithTheCalculatorsFigures)
{
    Open();
    window->requestForceRefresh();
    window->TimerEvent(); // refresh now, counter to 0
    ui->HomeAzimuth->setText("stale");
    Tick(100);
    EXPECT_EQ(Text(ui->HomeAzimuth), "stale"); // 100 ticks: 1000 ms, not yet

    for (;;) {
        struct tm before = DisplayedUtc();
        window->TimerEvent(); // the 101st
        struct tm after = DisplayedUtc();
        if (before.tm_sec != after.tm_sec || after.tm_sec == 0) {
            Tick(100);
            continue;
        }
        // The same figures, computed here for the same instant.
        SourceTrack expected = homeTracks[Moon];
        ComputeSource(Moon, TrackPosition | TrackDistance, after, 42.51, -70.96, 1296.0, expected);
        EXPECT_EQ(Text(ui->HomeAzimuth), Format("%7.2f", expected.azimuth));
        EXPECT_EQ(Text(ui->HomeElevation), Format("%7.2f", expected.elevation));
        EXPECT_EQ(Text(ui->HomeSpatialOffset), Format("%0.1f", expected.spatialOffset));
        EXPECT_EQ(Text(ui->HomeSkyTemp), Format("%0.1f", expected.skyTemperature));
        EXPECT_EQ(Text(ui->HomeDegradation), Format("%0.1f", expected.degradation));
        EXPECT_EQ(Text(ui->PathLoss), Format("%0.1f", expected.pathLossVsPerigee));
        EXPECT_EQ(Text(ui->Distance), Format("%6.0f km", expected.distance * 1.5e8));
        EXPECT_EQ(Text(ui->HomeDoppler), Format("%7.0f Hz", expected.doppler));
        EXPECT_EQ(Text(ui->SetFrequencyButton), "1296.00 Mhz");
        EXPECT_EQ(Text(ui->HomeGrid), "FN42mm");
        EXPECT_EQ(Text(ui->HomeCallsign), "Q1ABC");
        EXPECT_EQ(Text(ui->HomeLatitude), "42.51");
        EXPECT_EQ(Text(ui->SourceButton), "MOON");
        char clock[64];
        strftime(clock, sizeof clock, "%a %b %e %H:%M:%S %Y", &after);
        EXPECT_EQ(Text(ui->DateTimeButton), clock);
        break;
    }
}

TEST_F(MainWindowTest, StationThatSeesTheMoonIsGreenOtherwiseRed)
{
    Open();
    FindOffset([](const SourceTrack &h, const SourceTrack &) { return h.elevation > 5 && h.azimuth > 0; });
    window->requestForceRefresh();
    window->TimerEvent();
    EXPECT_EQ(homeSeesSource, 1);
    for (QWidget *w : {ui->HomeAzimuth, ui->HomeElevation, ui->HomeDoppler, ui->HomeSpatialOffset,
                       ui->HomeSkyTemp, ui->HomeDegradation})
        EXPECT_EQ(w->styleSheet().toStdString(), kDarkGreenStyle);
    EXPECT_NE(Text(ui->HomeDoppler), "      0 Hz");

    FindOffset([](const SourceTrack &h, const SourceTrack &) { return h.elevation < -5; });
    window->requestForceRefresh();
    window->TimerEvent();
    EXPECT_EQ(homeSeesSource, 0);
    for (QWidget *w : {ui->HomeAzimuth, ui->HomeElevation, ui->HomeDoppler, ui->HomeSpatialOffset,
                       ui->HomeSkyTemp, ui->HomeDegradation})
        EXPECT_EQ(w->styleSheet().toStdString(), kDarkRedStyle);
    // Below the horizon the Doppler is cleared to 0; with a home station the
    // field shows that figure.
    EXPECT_EQ(Text(ui->HomeDoppler), "      0 Hz");
    EXPECT_EQ(Text(ui->DxDoppler), " "); // no DX station
}

TEST_F(MainWindowTest, MutualDopplerNeedsBothStationsAndKeepsAStaleDx)
{
    Open();
    // DX station in Sydney: the Moon is up at both only some hours a day.
    CopyField(dxStation.grid, "QF56oc");
    dxStation.latitude = -33.9;
    dxStation.longitude = 151.2;
    window->UpdateDisplay();
    ASSERT_EQ(dxStationSet, 1);

    FindOffset([](const SourceTrack &h, const SourceTrack &d) {
        return h.elevation > 3 && d.elevation > 3 && h.azimuth > 0 && d.azimuth > 0;
    });
    window->requestForceRefresh();
    window->TimerEvent();
    ASSERT_EQ(homeSeesSource, 1);
    ASSERT_EQ(dxSeesSource, 1);
    EXPECT_EQ(Text(ui->MutualDoppler),
              Format("%7.0f Hz", (homeTracks[Moon].doppler + dxTracks[Moon].doppler) * 0.5));
    EXPECT_EQ(ui->MutualDoppler->styleSheet().toStdString(), kDarkGreenStyle);
    EXPECT_EQ(Text(ui->DxDoppler), Format("%7.0f Hz", dxTracks[Moon].doppler));

    // The DX grid unset: the last DX Doppler still forms the mutual figure.
    const double staleDx = dxTracks[Moon].doppler;
    dxStation.grid[0] = '\0';
    window->UpdateDisplay();
    EXPECT_EQ(dxStationSet, 0);
    window->requestForceRefresh();
    window->TimerEvent();
    EXPECT_EQ(Text(ui->DxDoppler), " ");
    EXPECT_EQ(Text(ui->MutualDoppler), Format("%7.0f Hz", (homeTracks[Moon].doppler + staleDx) * 0.5));

    // Only one sees it: no mutual figure.
    CopyField(dxStation.grid, "QF56oc");
    window->UpdateDisplay();
    FindOffset([](const SourceTrack &h, const SourceTrack &d) { return h.elevation > 3 && d.elevation < -3; });
    window->requestForceRefresh();
    window->TimerEvent();
    EXPECT_EQ(Text(ui->MutualDoppler), " ");
    EXPECT_EQ(ui->MutualDoppler->styleSheet().toStdString(), kDarkRedStyle);
}

TEST_F(MainWindowTest, RiseSetAndDistanceRefreshAtSecondZeroOnly)
{
    // The Sun: its distance, like rise and set, waits for second 00.
    Open("[HOME_DATA]\nGrid=FN42mm\nTrackingSource=1\nLatitude=42.51\nLongitude=-70.96\n");
    RefreshAtSecond(30);
    ui->HomeRiseTime->setText("r");
    ui->Distance->setText("d");
    RefreshAtSecond(31);
    EXPECT_EQ(Text(ui->HomeRiseTime), "r");
    EXPECT_EQ(Text(ui->Distance), "d");
    RefreshAtSecond(0);
    EXPECT_EQ(Text(ui->HomeRiseTime), RiseSet("Rise: ", homeTracks[Sun].riseTime));
    EXPECT_EQ(Text(ui->HomeSetTime), RiseSet("Set: ", homeTracks[Sun].setTime));
    EXPECT_EQ(Text(ui->Distance), Format("%9.6f AU", homeTracks[Sun].distance));
    EXPECT_NEAR(homeTracks[Sun].distance, 1.0, 0.02);
    EXPECT_EQ(Text(ui->SourceButton), "SUN");

    // The Moon's distance refreshes every second.
    homeData.trackingSource = Moon;
    ui->Distance->setText("d");
    RefreshAtSecond(17);
    EXPECT_EQ(Text(ui->Distance), Format("%6.0f km", homeTracks[Moon].distance * 1.5e8));
}

TEST_F(MainWindowTest, SourceButtonAsksForEveryFigure)
{
    Open();
    // The source button (its dialog cancelled) asks for every
    // figure at the next ordinary refresh, whatever the second.
    RefreshAtSecond(40);
    ui->HomeRiseTime->setText("r");
    QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
    window->SourceButtonPressed();
    RefreshAtSecond(41);
    EXPECT_EQ(Text(ui->HomeRiseTime), RiseSet("Rise: ", homeTracks[Moon].riseTime));
    RefreshAtSecond(42);
    ui->HomeRiseTime->setText("r");
    RefreshAtSecond(43);
    EXPECT_EQ(Text(ui->HomeRiseTime), "r"); // the flag was cleared
}

TEST_F(MainWindowTest, HoverExpiresAfterFiveSecondsAndOverlaysEveryMinute)
{
    Open();
    window->resize(1640, 960);
    // Over the map: the read-out appears.
    const QPoint onMap = ui->WorldMap->geometry().center() + ui->centralWidget->geometry().topLeft();
    QMouseEvent move(QEvent::MouseMove, onMap, onMap, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(window.get(), &move);
    ASSERT_TRUE(window->hoverIsVisible());
    EXPECT_EQ(strlen(window->hoverLocator()), 6u);

    // The hover counter runs from the window's start; at most 501 ticks on
    // the read-out is gone and a redraw was made.
    int ticks = 0;
    while (window->hoverIsVisible() && ticks < 600) {
        window->TimerEvent();
        ++ticks;
    }
    EXPECT_LE(ticks, 501);
    EXPECT_FALSE(window->hoverIsVisible());
    EXPECT_FALSE(window->redrawIsRequested());

    // Overlays rebuild by themselves on the 6001st tick after the last.
    window->TimeAdjusted();
    window->DateTimeButtonPressed(); // marks nothing stale: counter keeps running
    Tick(1); // a stale flag from the constructor is long consumed
    qint64 key = 0;
    int rebuilt = 0;
    for (int i = 0; i < 12500; ++i) {
        window->TimerEvent();
        if (window->screenOverlayPixmap().cacheKey() != key) {
            if (key != 0)
                ++rebuilt;
            key = window->screenOverlayPixmap().cacheKey();
            if (rebuilt == 1)
                i = 0;
            else if (rebuilt == 2) {
                EXPECT_EQ(i, 6001); // 6001 ticks after the last rebuild
                break;
            }
        }
    }
    EXPECT_EQ(rebuilt, 2);
}

TEST_F(MainWindowTest, ResizeSpreadsThePanelsAndFollowsTheMapWidth)
{
    Open();
    window->show();
    window->resize(1640, 960);
    QApplication::processEvents();
    QFrame *frames[] = {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame};
    auto checkGaps = [&](int width) {
        int total = 0;
        for (QFrame *f : frames)
            total += f->width();
        const int gap = (width - total) / 5;
        int x = gap;
        for (QFrame *f : frames) {
            EXPECT_EQ(f->x(), x) << f->objectName().toStdString();
            x += f->width() + gap;
        }
    };
    checkGaps(window->width());
    EXPECT_EQ(ui->WorldMap->geometry(), QRect(20, 0, window->width() - 40, 800));
    EXPECT_EQ(window->skyColumn(), (int)((window->width() - 40) / 1600.0 * 376.0));

    window->resize(1920, 1080);
    QApplication::processEvents();
    ASSERT_EQ(window->width(), 1920);
    checkGaps(1920);
    EXPECT_EQ(ui->WorldMap->width(), 1880);
    EXPECT_EQ(ui->LatitudeFrameR->geometry(), QRect(1899, 0, 20, 800));
    EXPECT_EQ(window->skyColumn(), 441); // trunc(1880 / 1600 * 376)
    EXPECT_EQ(window->baseMapPixmap().size(), QSize(1880, 800));

    // The same size again only asks for a repaint.
    const QRect before = ui->Rect2Frame->geometry();
    QResizeEvent same(window->size(), window->size());
    QApplication::sendEvent(window.get(), &same);
    EXPECT_TRUE(window->redrawIsRequested());
    EXPECT_EQ(ui->Rect2Frame->geometry(), before);
}

TEST_F(MainWindowTest, FirstRunOnTheEquatorShowsFiniteFigures)
{
    // No settings file: the default grid at latitude and longitude 0.
    Open(nullptr);
    window->requestForceRefresh();
    window->TimerEvent();
    EXPECT_EQ(Text(ui->HomeGrid), "JJ00aa");
    for (QAbstractButton *figure : {ui->HomeAzimuth, ui->HomeElevation, ui->HomeSpatialOffset})
        EXPECT_EQ(figure->text().indexOf("nan"), -1) << Text(figure);
    EXPECT_TRUE(std::isfinite(homeTracks[Moon].elevation));
    EXPECT_TRUE(std::isfinite(homeTracks[Moon].spatialOffset));
}

// The Sun in a station's sky from libnova (its Sun is referred to J2000, so
// precessed to the date), azimuth counted from north.
ln_hrz_posn LibnovaSun(double latitude, double longitude)
{
    time_t now = DisplayedTime();
    const double jd = ln_get_julian_from_timet(&now);
    ln_equ_posn j2000, ofDate;
    ln_get_solar_equ_coords(jd, &j2000);
    ln_get_equ_prec(&j2000, jd, &ofDate);
    ln_lnlat_posn station{longitude, latitude};
    ln_hrz_posn sky;
    ln_get_hrz_from_equ(&ofDate, &station, jd, &sky);
    sky.az = std::fmod(sky.az + 180.0, 360.0);
    return sky;
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
        QTimer::singleShot(0, [&row] {
            QWidget *dialog = QApplication::activeModalWidget();
            ASSERT_NE(dialog, nullptr);
            auto *grid = dialog->findChild<QLineEdit *>("GridEdit");
            grid->setText(row.grid);
            QTest::keyClick(grid, Qt::Key_Return);
            if (row.home) // the home dialog converts only on Grid Convert
                QTest::mouseClick(dialog->findChild<QPushButton *>("GridConvertButton"),
                                  Qt::LeftButton);
            dialog->findChild<QDialogButtonBox *>()->button(QDialogButtonBox::Ok)->click();
        });
        if (row.home)
            ui->actionHomeStation->trigger();
        else
            QTest::mouseClick(ui->DxGrid, Qt::LeftButton);

        const double latitude = row.home ? homeData.latitude : dxStation.latitude;
        const double longitude = row.home ? homeData.longitude : dxStation.longitude;
        ASSERT_NEAR(latitude, row.latitude, 1e-4) << row.grid;
        ASSERT_NEAR(longitude, row.longitude, 1e-4) << row.grid;
        const SourceTrack &sun = (row.home ? homeTracks : dxTracks)[Sun];
        const ln_hrz_posn expected = LibnovaSun(latitude, longitude);
        EXPECT_NEAR(sun.elevation, expected.alt, 0.15) << row.grid;
        const double azimuthError = std::remainder(sun.azimuth - expected.az, 360.0);
        EXPECT_NEAR(azimuthError * std::cos(expected.alt / 57.3), 0.0, 0.15) << row.grid;
    }
}

TEST_F(MainWindowTest, NothingIsSavedAtExit)
{
    Open();
    const QString path = test::SettingsFolder() + "Lunaquill.ini";
    const QByteArray before = [&] { QFile f(path); f.open(QIODevice::ReadOnly); return f.readAll(); }();
    homeData.frequency = 144.0;
    overlaySettings.StarChartOverlay = true;
    window.reset();
    QFile after(path);
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);

    // Without a file, none is made.
    test::ClearTestHome();
    Open(nullptr);
    window.reset();
    EXPECT_FALSE(QFileInfo::exists(test::SettingsFolder() + "Lunaquill.ini"));
}

} // namespace
