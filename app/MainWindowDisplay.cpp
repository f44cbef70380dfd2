// Styles of the panels and the layout that follows the window's size.
#include "MainWindow.h"

#include "PanelStyles.h"
#include "WindowLayout.h"
#include "ui_MainWindow.h"

#include "render/MapLayers.h"
#include "tracking/SharedState.h"

#include <QDebug>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QShowEvent>
#include <QWindow>

using namespace lunaquill;

namespace {

// The menu button's icon: eight tenths of the button each way.
void FitIconToButton(QPushButton *button)
{
    const QSize size = button->size();
    button->setIconSize(QSize(size.width() * 8 / 10, size.height() * 8 / 10));
}

} // namespace

void MainWindow::ApplyStyles()
{
    for (QWidget *w : {(QWidget *)ui->centralWidget, (QWidget *)ui->Rect1Frame,
                       (QWidget *)ui->Rect2Frame, (QWidget *)ui->Rect3Frame,
                       (QWidget *)ui->Rect4Frame})
        w->setStyleSheet(kLightGrayStyle);
    for (QWidget *w : {ui->LatitudeFrameL, ui->LatitudeFrameR, ui->LongitudeFrame})
        w->setStyleSheet(kPlainBlackStyle);
    for (QWidget *w : std::initializer_list<QWidget *>{
             ui->AzimuthLabel, ui->ElevationLabel, ui->CallsignLabel, ui->GridLabel,
             ui->LatitudeLabel, ui->LongitudeLabel, ui->HomeDopplerLabel,
             ui->MutualDopplerLabel, ui->SpatialOffsetLabel, ui->SkyTempLabel,
             ui->DegradationLabel, ui->PathLossLabel, ui->DistanceLabel, ui->PathLoss,
             ui->Distance, ui->HomeAzimuth, ui->HomeRiseTime, ui->HomeSetTime,
             ui->HomeElevation, ui->HomeCallsign, ui->HomeGrid, ui->HomeLatitude,
             ui->HomeLongitude, ui->HomeDoppler, ui->HomeSpatialOffset, ui->HomeSkyTemp,
             ui->HomeDegradation, ui->MutualDoppler})
        w->setStyleSheet(kDarkGreenStyle);
    for (QWidget *w : {ui->DxAzimuth, ui->DxRiseTime, ui->DxSetTime, ui->DxElevation,
                       ui->DxLatitude, ui->DxLongitude, ui->DxDoppler, ui->DxSpatialOffset,
                       ui->DxSkyTemp, ui->DxDegradation})
        w->setStyleSheet(kDarkRedStyle);
    for (QWidget *w : {ui->SourceButton, ui->DxCallsign, ui->DxGrid, ui->SetFrequencyButton})
        w->setStyleSheet(kDarkBlueStyle);
    for (QWidget *w : std::initializer_list<QWidget *>{
             ui->ViewModeButton, ui->SetDateTimeButton, ui->DateTimeButton,
             ui->TimeAdjustPlayButton, ui->TimeAdjustMinMButton, ui->TimeAdjustHourMButton,
             ui->TimeAdjustDayMButton, ui->TimeAdjustWeekMButton, ui->TimeAdjustMinPButton,
             ui->TimeAdjustHourPButton, ui->TimeAdjustDayPButton, ui->TimeAdjustWeekPButton})
        w->setStyleSheet(kGrayStyle);

    ui->SetDateTimeButton->setIcon(QIcon(menuIcon));
    FitIconToButton(ui->SetDateTimeButton);
}

namespace {

void LogGeometry(const char *sizeText, const char *geometryText, const QRect &r)
{
    qDebug(sizeText, r.width(), r.height());
    qDebug(geometryText, r.left(), r.top(), r.right(), r.bottom());
}

} // namespace

void MainWindow::resizeEvent(QResizeEvent *event)
{
    const QSize size = event->size();
    if (!size.isValid())
        return;
    if (size == lastSize) {
        redrawRequested = true;
        UpdateDisplay();
        return;
    }
    lastSize = size;
    qDebug("Screen changed to (%d x %d)", size.width(), size.height());
    windowRect = geometry();
    LogGeometry("Screen size is (%d x %d)", "Screen Geometry (%d,%d to %d,%d)", windowRect);

    if (IsFullSize(size))
        LayOutFull();
    else
        LayOutCompact();

    // The map-sized images follow the map (without a map image, nothing).
    if (mapLoaded) {
        MakeMapImages();
        ui->WorldMap->setPixmap(baseMap);
    }
    PlaceCharts();
    PlaceFirstRunHint();

    skyOverlayParameter = topoMaster.width() >= 1
                              ? (int32_t)((double)mapRect.width() / topoMaster.width() * 376.0)
                              : 376;
    overlaysStale = true;
    redrawRequested = true;
    UpdateDisplay();
}

void MainWindow::LayOutFull()
{
    if (compactLayout)
        RestoreForm();
    if (latStripRect.isNull())
        latStripRect = ui->LatitudeFrameR->geometry();
    if (lngStripRect.isNull())
        lngStripRect = ui->LongitudeFrame->geometry();
    mapRect = ui->WorldMap->geometry();
    mapRect.setX(20);
    mapRect.setWidth(windowRect.width() - 2 * latStripRect.width());
    ui->WorldMap->setGeometry(mapRect);
    mapRect = ui->WorldMap->geometry();
    LogGeometry("WorldMap size is: (%d x %d)", "WorldMap Geometry (%d,%d to %d,%d)", mapRect);

    latStripRect.setLeft(mapRect.right());
    latStripRect.setWidth(20);
    latStripRect.setTop(0);
    latStripRect.setHeight(mapRect.height());
    ui->LatitudeFrameR->setGeometry(latStripRect);
    latStripRect = ui->LatitudeFrameR->geometry();
    LogGeometry("Lat labels size is: (%d x %d)", "Lat labels Geometry (%d,%d to %d,%d)",
                latStripRect);

    const int stripHeight = lngStripRect.height();
    lngStripRect.setLeft(0);
    lngStripRect.setTop(mapRect.bottom());
    lngStripRect.setRight(windowRect.right());
    lngStripRect.setHeight(stripHeight);
    ui->LongitudeFrame->setGeometry(lngStripRect);
    lngStripRect = ui->LongitudeFrame->geometry();
    LogGeometry("Lng labels size is: (%d x %d)", "Lng labels Geometry (%d,%d to %d,%d)",
                lngStripRect);

    // The four panels spread with equal gaps, the first gap at the left edge.
    QFrame *frames[] = {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame};
    QRect rects[4];
    int total = 0;
    for (int i = 0; i < 4; ++i) {
        rects[i] = frames[i]->geometry();
        total += rects[i].width();
    }
    qDebug("Rect1 x:%d width:%d", 10, rects[0].width());
    qDebug("Rect2 x:%d width:%d", rects[1].x(), rects[1].width());
    qDebug("Rect3 x:%d width:%d", rects[2].x(), rects[2].width());
    qDebug("Rect4 x:%d width:%d", rects[3].x(), rects[3].width());
    const int gap = (windowRect.width() - total) / 5;
    int x = gap;
    for (int i = 0; i < 4; ++i) {
        rects[i].moveLeft(x);
        frames[i]->setGeometry(rects[i]);
        x += rects[i].width() + gap;
    }
}

namespace {

// The smallest horizontal scale of each panel at which its widest text still
// fits at 8 pt (DejaVu Sans; text width plus a pixel each side over the
// read-out's form width): "Rise: 12-31 23:59" 97 of 118 pixels, a call sign
// of 11 characters 76 of 100 and "-376000 Hz" 63 of 84, "49.123456 AU" 78 of
// 100, and the clock "Wed Sep 30 23:59:59 2026" 150 of 178; with a little to
// spare for other fonts.
constexpr double kPanelMinimumScaleX[4] = {0.86, 0.80, 0.82, 0.87};

} // namespace

void MainWindow::RememberForm()
{
    auto remember = [this](QWidget *w) {
        formPlaces.push_back({w, w->geometry(), w->font()});
    };
    for (QWidget *w : {(QWidget *)ui->WorldMap, (QWidget *)ui->LatitudeFrameL,
                       (QWidget *)ui->LatitudeFrameR, (QWidget *)ui->LongitudeFrame})
        remember(w);
    for (QFrame *frame : {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame}) {
        remember(frame);
        for (QWidget *w : frame->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
            remember(w);
    }
}

void MainWindow::RestoreForm()
{
    for (const FormPlace &place : formPlaces) {
        place.widget->setGeometry(place.geometry);
        place.widget->setFont(place.font);
    }
    latStripRect = ui->LatitudeFrameR->geometry();
    lngStripRect = ui->LongitudeFrame->geometry();
    FitIconToButton(ui->SetDateTimeButton);
    compactLayout = false;
}

void MainWindow::LayOutCompact()
{
    QFrame *frames[] = {ui->Rect1Frame, ui->Rect2Frame, ui->Rect3Frame, ui->Rect4Frame};
    std::array<PanelForm, 4> panels;
    for (int i = 0; i < 4; ++i) {
        for (const FormPlace &place : formPlaces)
            if (place.widget == frames[i])
                panels[i] = {place.geometry.size(), kPanelMinimumScaleX[i]};
    }
    // The window under its menu bar (the central widget itself may not have
    // been given its new size yet).
    const QSize central(width(), height() - ui->menuBar->sizeHint().height());
    const CompactLayout layout = lunaquill::LayOutCompact(central, panels);
    if (layout.rows == 0) {
        LayOutFull(); // below the minimum size: the form as it stands
        return;
    }
    compactLayout = true;

    ui->WorldMap->setGeometry(layout.map);
    ui->LatitudeFrameL->setGeometry(layout.latitudeLeft);
    ui->LatitudeFrameR->setGeometry(layout.latitudeRight);
    ui->LongitudeFrame->setGeometry(layout.longitude);
    mapRect = layout.map;
    latStripRect = layout.latitudeRight;
    lngStripRect = layout.longitude;
    LogGeometry("WorldMap size is: (%d x %d)", "WorldMap Geometry (%d,%d to %d,%d)", mapRect);

    for (int i = 0; i < 4; ++i) {
        frames[i]->setGeometry(layout.panels[i]);
        // The texts shrink with the panel's width; in low panels (18 pixels
        // and more) a line of up to 90 % of the form's size still fits.
        const double fontScale = std::min(layout.scaleX[i], std::max(layout.scaleY, 0.9));
        for (const FormPlace &place : formPlaces) {
            if (place.widget->parentWidget() != frames[i])
                continue;
            const QRect rect = ScaledRect(place.geometry, layout.scaleX[i], layout.scaleY);
            place.widget->setGeometry(rect);
            QFont font = place.font;
            font.setPointSizeF(ScaledPointSize(place.font.pointSizeF(), fontScale));
            // A heading that no longer fits in bold is set in the regular weight.
            auto *label = qobject_cast<QLabel *>(place.widget);
            if (label && font.bold()
                && QFontMetrics(font).horizontalAdvance(label->text()) + 2 > rect.width())
                font.setBold(false);
            place.widget->setFont(font);
        }
    }
    FitIconToButton(ui->SetDateTimeButton);
}

void MainWindow::PlaceCharts()
{
    ui->StarChart1->setGeometry(ChartRect(mapRect, 0));
    ui->StarChart2->setGeometry(ChartRect(mapRect, 1));
}

void MainWindow::showEvent(QShowEvent *event)
{
    if (!sizeChosen && !event->spontaneous()) {
        sizeChosen = true;
        if (!testAttribute(Qt::WA_Resized))
            ChooseSize();
        if (QWindow *shown = windowHandle())
            connect(shown, &QWindow::screenChanged, this, &MainWindow::ScreenChanged);
    }
    QMainWindow::showEvent(event);
}

void MainWindow::ChooseSize()
{
    // The form's 1640 x 960, or the screen's free area where that is smaller
    // (a laptop, or a screen scaled to 125 % or more), then maximised, so
    // that a window manager fits its frame in too. (The offscreen platform
    // of the tests has no window manager; it would take maximised as its
    // whole 800 x 600 screen, whatever size is asked for later.)
    const QScreen *shownOn = screen();
    const QRect free = shownOn ? shownOn->availableGeometry() : QRect(QPoint(), kFullWindowSize);
    if (free.width() >= kFullWindowSize.width() && free.height() >= kFullWindowSize.height()) {
        resize(kFullWindowSize);
        return;
    }
    resize(kFullWindowSize.boundedTo(free.size()).expandedTo(kMinimumWindowSize));
    if (!testAttribute(Qt::WA_Moved))
        move(free.topLeft());
    if (QGuiApplication::platformName() != "offscreen")
        setWindowState(windowState() | Qt::WindowMaximized);
}

void MainWindow::ScreenChanged()
{
    // Another screen may have another scale: icons, map and charts again at
    // its pixel ratio.
    LoadIcons();
    ui->SetDateTimeButton->setIcon(QIcon(menuIcon));
    lastSize = QSize();
    QResizeEvent again(size(), size());
    resizeEvent(&again);
}

void MainWindow::ShowFirstRunHint()
{
    homeStationHint = new QFrame(ui->centralWidget);
    homeStationHint->setObjectName("FirstRunHint");
    homeStationHint->setStyleSheet(
        "QFrame#FirstRunHint { background-color: rgba(0, 0, 0, 200); border: 1px solid "
        "LightGray; border-radius:5px; } QLabel { color:white; background: transparent; }");
    auto *text = new QLabel("Welcome to Lunaquill. Set your home station (call sign and "
                            "locator) so that every figure is for where you are.",
                            homeStationHint);
    text->setWordWrap(true);
    auto *button = new QPushButton("Home Station...", homeStationHint);
    button->setObjectName("FirstRunHomeStationButton");
    button->setStyleSheet(kDarkBlueStyle);
    connect(button, &QPushButton::clicked, this, &MainWindow::HomeStation);
    auto *later = new QPushButton("Later", homeStationHint);
    later->setStyleSheet(kGrayStyle);
    connect(later, &QPushButton::clicked, homeStationHint, &QWidget::hide);
    for (QWidget *w : std::initializer_list<QWidget *>{text, button, later}) {
        QFont font = w->font();
        font.setPointSize(9);
        w->setFont(font);
    }
    PlaceFirstRunHint();
    homeStationHint->show();
}

void MainWindow::PlaceFirstRunHint()
{
    if (!homeStationHint)
        return;
    // Across the top of the map (the Arctic), clear of the scales.
    const int width = std::min(620, mapRect.width() - 40);
    const QRect hint(mapRect.left() + (mapRect.width() - width) / 2, mapRect.top() + 12, width, 44);
    homeStationHint->setGeometry(hint);
    const auto children = homeStationHint->findChildren<QWidget *>(Qt::FindDirectChildrenOnly);
    // Text, then the two buttons at the right.
    children[0]->setGeometry(8, 4, width - 16 - 2 * 104, 36);
    children[1]->setGeometry(width - 2 * 104, 9, 100, 26);
    children[2]->setGeometry(width - 104, 9, 96, 26);
}
