// The charts where no OpenGL context can be had: this test runs on the
// offscreen platform with its GLX path switched off, so contexts are refused.
#include "app/MainWindow.h"
#include "ui_MainWindow.h"

#include "SharedStateReset.h"
#include "render/StarChartRenderer.h"
#include "tracking/SharedState.h"

#include <QApplication>
#include <QDir>
#include <gtest/gtest.h>

using namespace lunaquill;

namespace {

TEST(StarChartsWithoutOpenGl, StayThePlainDial)
{
    test::ResetSharedState();
    StarChartRenderer renderer;
    EXPECT_FALSE(renderer.initialise());
    QPixmap overlay(360, 180);
    overlay.fill(Qt::blue);
    QImage target(100, 100, QImage::Format_RGB32);
    target.fill(Qt::red);
    const QImage before = target;
    renderer.render(overlay, target, 10.0f, 20.0f); // refused quietly
    EXPECT_EQ(target, before);

    CopyField(homeData.grid, "FN42mm");
    homeData.latitude = 42.5;
    homeData.longitude = -71.0;
    CopyField(dxStation.grid, "QF56og");
    dxStation.latitude = -33.75;
    dxStation.longitude = 151.2;
    MainWindow window;
    window.resize(1640, 960);
    window.show();
    QApplication::processEvents();
    window.ViewModeButtonPressed();

    Ui::MainWindow *ui = window.widgets();
    const QImage dial = QPixmap(QDir::currentPath() + "/pixmaps/dial.png")
                            .scaled(ui->StarChart1->size(), Qt::KeepAspectRatio)
                            .toImage();
    for (QLabel *chart : {ui->StarChart1, ui->StarChart2}) {
        EXPECT_TRUE(chart->isVisible());
        EXPECT_EQ(chart->pixmap().toImage().convertToFormat(dial.format()), dial);
    }
    EXPECT_FALSE(ui->WorldMap->isVisible());
}

} // namespace
