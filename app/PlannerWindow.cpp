#include "PlannerWindow.h"

#include "ui_PlannerWindow.h"

#include "tracking/Maidenhead.h"
#include "tracking/PlanText.h"
#include "tracking/SharedState.h"
#include "tracking/StationLines.h"

#include <QAreaSeries>
#include <QCategoryAxis>
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QFileDialog>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLineSeries>
#include <QMessageBox>
#include <QMouseEvent>
#include <QSaveFile>
#include <QScatterSeries>
#include <QValueAxis>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace lunaquill {

namespace {

constexpr int kMonthDays = 30;
constexpr double kChartFloor = -10.0; // degrees: the elevation chart's lower edge
const QColor kHomeColour(30, 90, 200);
const QColor kDxColour(220, 110, 20);
const QColor kBestColour(200, 240, 200);
const QColor kSunColour(255, 215, 170);

// Combo entries before the stations of the lists.
enum { MainWindowDx = 0, NoDx = 1 };

// The lists a DX station can be taken from, as the settings folder holds them.
const char *const kStationLists[] = {
    "DxStations.txt", "Eme50M.txt",   "Eme144M.txt",  "Eme432M.txt",
    "Eme900M.txt",    "Eme1296M.txt", "Eme2304M.txt", "Eme3400M.txt",
    "Eme5760M.txt",   "Eme10G.txt",   "Eme47G.txt",   "Favorites.txt"};

// Column titles of the tables, by the CSV column they show.
QString Title(const std::string &column)
{
    static const struct { const char *column, *title; } kTitles[] = {
        {"start_utc", "Start (UTC)"},
        {"end_utc", "End (UTC)"},
        {"minutes", "Minutes"},
        {"home_az_start", "Home Az start"},
        {"home_el_start", "Home El start"},
        {"home_az_end", "Home Az end"},
        {"home_el_end", "Home El end"},
        {"dx_az_start", "DX Az start"},
        {"dx_el_start", "DX El start"},
        {"dx_az_end", "DX Az end"},
        {"dx_el_end", "DX El end"},
        {"peak_utc", "Peak (lower) UTC"},
        {"peak_el", "Peak El"},
        {"doppler_start_hz", "Doppler start Hz"},
        {"doppler_end_hz", "Doppler end Hz"},
        {"home_degradation_db", "Home degr. dB"},
        {"home_sky_temp_k", "Home sky K"},
        {"home_spatial_offset", "Home SO"},
        {"dx_degradation_db", "DX degr. dB"},
        {"dx_sky_temp_k", "DX sky K"},
        {"dx_spatial_offset", "DX SO"},
        {"pol_start_deg", "Pol. start"},
        {"pol_mid_deg", "Pol. middle"},
        {"pol_end_deg", "Pol. end"},
        {"pol_loss_start_db", "Pol. loss start dB"},
        {"pol_loss_mid_db", "Pol. loss middle dB"},
        {"pol_loss_end_db", "Pol. loss end dB"},
        {"date", "Date"},
        {"transit_utc", "Highest (UTC)"},
        {"elevation_deg", "El"},
        {"declination_deg", "Dec"},
        {"distance_km", "Distance km"},
        {"path_loss_db", "Path loss dB"},
        {"sky_temp_k", "Sky K"},
        {"degradation_db", "Degr. dB"},
        {"sun_moon_deg", "Sun–Moon"},
        {"best", "Best"},
        {"sun_near", "Sun < 15°"},
    };
    for (const auto &t : kTitles)
        if (column == t.column)
            return QString::fromUtf8(t.title);
    return QString::fromStdString(column);
}

void FillTable(QTableWidget *table, const std::vector<std::string> &columns,
               const std::vector<std::vector<std::string>> &rows)
{
    table->setUpdatesEnabled(false);
    table->clear();
    table->setColumnCount(int(columns.size()));
    table->setRowCount(int(rows.size()));
    QStringList titles;
    for (const std::string &c : columns)
        titles << Title(c);
    table->setHorizontalHeaderLabels(titles);
    for (int r = 0; r < int(rows.size()); ++r)
        for (int c = 0; c < int(rows[r].size()) && c < int(columns.size()); ++c) {
            auto *item = new QTableWidgetItem(QString::fromStdString(rows[r][c]));
            item->setTextAlignment(c == 0 ? Qt::AlignLeft | Qt::AlignVCenter
                                          : Qt::AlignRight | Qt::AlignVCenter);
            table->setItem(r, c, item);
        }
    table->resizeColumnsToContents();
    table->setUpdatesEnabled(true);
}

// A category axis over [low, high] labelled at every `step` from `first`.
template <typename LabelText>
QCategoryAxis *LabelledAxis(double low, double high, double first, double step, LabelText label)
{
    auto *axis = new QCategoryAxis();
    for (double x = first; x <= high + 1e-9; x += step)
        axis->append(label(x), x);
    axis->setRange(low, high);
    axis->setLabelsPosition(QCategoryAxis::AxisLabelsPositionOnValue);
    return axis;
}

QString UtcText(int64_t t, const char *format)
{
    const time_t tt = time_t(t);
    struct tm utc {};
    gmtime_r(&tt, &utc);
    char text[32];
    strftime(text, sizeof text, format, &utc);
    return QString::fromLatin1(text);
}

// removeAllSeries deletes the series but not the lines that bound an area;
// a removed axis is the caller's to delete too.
void ClearChart(QChart *chart)
{
    std::vector<QLineSeries *> bounds;
    for (QAbstractSeries *series : chart->series())
        if (auto *area = qobject_cast<QAreaSeries *>(series))
            bounds.insert(bounds.end(), {area->upperSeries(), area->lowerSeries()});
    chart->removeAllSeries();
    for (QLineSeries *line : bounds)
        delete line;
    for (QAbstractAxis *axis : chart->axes()) {
        chart->removeAxis(axis);
        delete axis;
    }
}

QChartView *NewChartView(QWidget *holder)
{
    auto *view = new QChartView(new QChart(), holder);
    view->setRenderHint(QPainter::Antialiasing);
    view->setMinimumHeight(220);
    view->chart()->legend()->setAlignment(Qt::AlignTop);
    view->chart()->setMargins(QMargins(4, 4, 4, 4));
    view->setCursor(Qt::CrossCursor);
    holder->layout()->addWidget(view);
    return view;
}

} // namespace

PlannerWindow::PlannerWindow(QWidget *parent)
    : QWidget(parent, Qt::Window), ui(new Ui::PlannerWindow)
{
    ui->setupUi(this);
    windowsView = NewChartView(ui->WindowsChartHolder);
    monthView = NewChartView(ui->MonthChartHolder);
    windowsView->viewport()->installEventFilter(this);
    monthView->viewport()->installEventFilter(this);
    ui->WindowsSplitter->setSizes({330, 300});
    ui->MonthSplitter->setSizes({330, 300});

    LoadPlanner(kSettingsFileName, choices);
    ui->DaysSpin->setValue(choices.days);
    ui->HomeMinSpin->setValue(choices.homeMinElevation);
    ui->DxMinSpin->setValue(choices.dxMinElevation);
    ui->Tabs->setCurrentIndex(choices.tab);
    LoadStationChoices();

    saveTimer.setSingleShot(true);
    saveTimer.setInterval(500);
    connect(&saveTimer, &QTimer::timeout, this, [this] { SavePlanner(kSettingsFileName, choices); });
    // A spin box held down changes many times a second: one plan when it rests.
    replanTimer.setSingleShot(true);
    replanTimer.setInterval(150);
    connect(&replanTimer, &QTimer::timeout, this, &PlannerWindow::Replan);
    followTimer.setInterval(1000);
    connect(&followTimer, &QTimer::timeout, this, &PlannerWindow::FollowChanges);

    connect(ui->DaysSpin, &QSpinBox::valueChanged, this, &PlannerWindow::ChoicesChanged);
    connect(ui->HomeMinSpin, &QDoubleSpinBox::valueChanged, this, &PlannerWindow::ChoicesChanged);
    connect(ui->DxMinSpin, &QDoubleSpinBox::valueChanged, this, &PlannerWindow::ChoicesChanged);
    connect(ui->DxCombo, &QComboBox::currentIndexChanged, this, &PlannerWindow::Replan);
    connect(ui->Tabs, &QTabWidget::currentChanged, this, [this](int tab) {
        choices.tab = tab;
        saveTimer.start();
    });
    connect(ui->FromNowButton, &QPushButton::clicked, this, &PlannerWindow::Replan);
    connect(ui->CopyButton, &QPushButton::clicked, this, &PlannerWindow::CopyCsv);
    connect(ui->SaveButton, &QPushButton::clicked, this, &PlannerWindow::SaveCsvChosen);
    connect(ui->WindowsTable, &QTableWidget::cellDoubleClicked, this, [this](int row, int) {
        if (row >= 0 && row < int(plan.size()))
            ShowInstant(plan[size_t(row)].start);
    });
    connect(ui->MonthTable, &QTableWidget::cellDoubleClicked, this, [this](int row, int) {
        if (row >= 0 && row < int(month.size()))
            ShowInstant(month[size_t(row)].transit);
    });
    Replan();
}

PlannerWindow::~PlannerWindow()
{
    if (saveTimer.isActive())
        SavePlanner(kSettingsFileName, choices);
}

void PlannerWindow::LoadStationChoices()
{
    ui->DxCombo->blockSignals(true);
    ui->DxCombo->clear();
    ui->DxCombo->addItem(tr("DX station of the main window"));
    ui->DxCombo->addItem(tr("None: the home station alone"));
    for (const char *list : kStationLists) {
        FILE *file = fopen(SettingsPath(list).toLocal8Bit().constData(), "rb");
        if (!file)
            continue;
        const ListFormat format =
            list == kStationLists[0] ? ListFormat::DxStations : ListFormat::Favorites;
        const QString listName = QString::fromLatin1(list).chopped(4);
        char line[StationLineSize];
        StationText station;
        int count = 0;
        while (count < 1000 && ReadStationLine(file, line, format)) {
            const LineKind kind = ParseStationLine(line, format, station);
            if (kind == LineKind::EndOfList)
                break;
            if (kind != LineKind::Station)
                continue;
            char grid[sizeof station.grid + 1] = {};
            memcpy(grid, station.grid, strnlen(station.grid, sizeof station.grid));
            double latitude, longitude;
            if (GridToLatLong(grid, latitude, longitude) != 0)
                continue;
            const QString call = QString::fromLatin1(station.call,
                                                     int(strnlen(station.call, sizeof station.call)))
                                     .trimmed();
            ui->DxCombo->addItem(QString("%1  %2  (%3)").arg(call, QString::fromLatin1(grid), listName),
                                 QPointF(latitude, longitude));
            ++count;
        }
        fclose(file);
    }
    ui->DxCombo->blockSignals(false);
}

PlanRequest PlannerWindow::RequestNow() const
{
    PlanRequest r;
    r.home = {homeData.latitude, homeData.longitude, ui->HomeMinSpin->value()};
    r.frequencyMHz =
        std::isfinite(homeData.frequency) && homeData.frequency > 0 ? homeData.frequency : 1296.0;
    r.from = int64_t(DisplayedTime());
    r.days = ui->DaysSpin->value();
    r.dx.minElevation = ui->DxMinSpin->value();
    const int choice = ui->DxCombo->currentIndex();
    if (choice == MainWindowDx && dxStationSet) {
        r.hasDx = true;
        r.dx.latitude = dxStation.latitude;
        r.dx.longitude = dxStation.longitude;
    } else if (choice > NoDx) {
        const QPointF p = ui->DxCombo->currentData().toPointF();
        r.hasDx = true;
        r.dx.latitude = p.x();
        r.dx.longitude = p.y();
    }
    return r;
}

QString PlannerWindow::InputsKey() const
{
    return QString::asprintf("%.9g %.9g %.9g %d %.9g %.9g", homeData.latitude, homeData.longitude,
                             homeData.frequency, int(dxStationSet), dxStation.latitude,
                             dxStation.longitude);
}

void PlannerWindow::FollowChanges()
{
    if (InputsKey() != lastInputs)
        Replan();
}

void PlannerWindow::ChoicesChanged()
{
    choices.days = ui->DaysSpin->value();
    choices.homeMinElevation = ui->HomeMinSpin->value();
    choices.dxMinElevation = ui->DxMinSpin->value();
    saveTimer.start();
    replanTimer.start();
}

void PlannerWindow::Replan()
{
    replanTimer.stop();
    lastInputs = InputsKey();
    planned = RequestNow();
    plan = PlanMutualWindows(planned);
    PlanRequest monthRequest = planned;
    monthRequest.days = kMonthDays;
    month = PlanConditions(monthRequest);
    monthFirst = month.empty() ? planned.from : month.front().date;

    const char *dxName = "";
    if (planned.hasDx)
        dxName = ui->DxCombo->currentIndex() == MainWindowDx ? dxStation.grid : "";
    const QString dxText = !planned.hasDx ? tr("alone")
                           : *dxName      ? tr("with %1").arg(QString::fromLatin1(dxName))
                                          : tr("with %1").arg(ui->DxCombo->currentText());
    int64_t minutes = 0;
    for (const MutualWindow &w : plan)
        minutes += PlanMinutes(w.start, w.end);
    ui->SummaryLabel->setText(
        tr("%1 %2, %3 MHz, %4 days from %5 UTC: %6 windows, %7 h %8 min in all")
            .arg(QString::fromLatin1(homeData.grid), dxText)
            .arg(planned.frequencyMHz, 0, 'f', 1)
            .arg(planned.days)
            .arg(QString::fromStdString(FormatPlanTime(planned.from, false)))
            .arg(plan.size())
            .arg(minutes / 60)
            .arg(minutes % 60));
    FillWindows();
    FillMonth();
}

void PlannerWindow::FillWindows()
{
    std::vector<std::vector<std::string>> rows;
    for (const MutualWindow &w : plan)
        rows.push_back(WindowCells(w, planned.hasDx));
    FillTable(ui->WindowsTable, WindowColumns(planned.hasDx), rows);

    QChart *chart = windowsView->chart();
    ClearChart(chart);

    // Hours after the start of the plan on x.
    const double hours = planned.days * 24.0;
    // Some 400 to 750 points a curve: a point every pixel or two.
    const int64_t step = planned.days <= 3 ? 600 : planned.days <= 7 ? 1200 : 3600;
    auto curve = [&](const PlanSite &site, const QString &name, const QColor &colour) {
        auto *series = new QLineSeries();
        series->setName(name);
        series->setPen(QPen(colour, 2));
        QList<QPointF> points;
        for (int64_t t = planned.from; t <= planned.from + int64_t(hours * 3600); t += step)
            points.append({double(t - planned.from) / 3600.0,
                           PlannerMoonElevation(site.latitude, site.longitude, double(t))});
        series->replace(points);
        return series;
    };
    // The windows as bands from the floor to the top of the chart. The area
    // does not own its bounding lines: the view does, which outlives its chart.
    auto *top = new QLineSeries(windowsView);
    auto *floor = new QLineSeries(windowsView);
    top->append(0, kChartFloor);
    for (const MutualWindow &w : plan) {
        const double a = double(w.start - planned.from) / 3600.0;
        const double b = double(w.end - planned.from) / 3600.0;
        top->append(a, kChartFloor);
        top->append(a, 90.0);
        top->append(b, 90.0);
        top->append(b, kChartFloor);
    }
    top->append(hours, kChartFloor);
    floor->append(0, kChartFloor);
    floor->append(hours, kChartFloor);
    auto *bands = new QAreaSeries(top, floor);
    bands->setName(planned.hasDx ? tr("Mutual windows") : tr("Moon windows"));
    bands->setColor(QColor(120, 200, 120, 90));
    bands->setBorderColor(QColor(120, 200, 120, 160));
    chart->addSeries(bands);
    chart->addSeries(curve(planned.home, tr("Home"), kHomeColour));
    if (planned.hasDx)
        chart->addSeries(curve(planned.dx, tr("DX"), kDxColour));

    // Labels at the whole UTC hours of their step.
    const double labelStep = planned.days <= 2   ? 6.0
                             : planned.days <= 7 ? 12.0
                                                 : 24.0 * ((planned.days + 9) / 10);
    const double firstLabel =
        std::fmod(labelStep - std::fmod(double(planned.from % 86400) / 3600.0, labelStep),
                  labelStep);
    QCategoryAxis *x = LabelledAxis(0.0, hours, firstLabel, labelStep, [&](double h) {
        return UtcText(planned.from + int64_t(std::llround(h * 3600)),
                       labelStep < 24 ? "%m-%d %H:%M" : "%m-%d");
    });
    x->setTitleText(tr("UTC"));
    auto *y = new QValueAxis();
    y->setRange(kChartFloor, 90.0);
    y->setTickCount(11);
    y->setLabelFormat("%.0f"); // the axis formats with the C library: no degree sign here
    y->setTitleText(tr("Moon elevation °"));
    chart->addAxis(x, Qt::AlignBottom);
    chart->addAxis(y, Qt::AlignLeft);
    for (QAbstractSeries *s : chart->series()) {
        s->attachAxis(x);
        s->attachAxis(y);
    }
}

void PlannerWindow::FillMonth()
{
    std::vector<std::vector<std::string>> rows;
    for (const DayConditions &d : month)
        rows.push_back(ConditionCells(d));
    FillTable(ui->MonthTable, ConditionColumns(), rows);
    for (int r = 0; r < int(month.size()); ++r) {
        const DayConditions &d = month[size_t(r)];
        if (!d.best && !d.sunNear)
            continue;
        for (int c = 0; c < ui->MonthTable->columnCount(); ++c)
            ui->MonthTable->item(r, c)->setBackground(d.sunNear ? kSunColour : kBestColour);
    }

    QChart *chart = monthView->chart();
    ClearChart(chart);
    auto *degradation = new QLineSeries();
    degradation->setName(tr("Degradation dB"));
    degradation->setPen(QPen(QColor(40, 40, 40), 2));
    auto *declination = new QLineSeries();
    declination->setName(tr("Declination °"));
    declination->setPen(QPen(kHomeColour, 1.5));
    auto *distance = new QLineSeries();
    distance->setName(tr("Distance 1000 km"));
    distance->setPen(QPen(kDxColour, 1.5));
    auto *best = new QScatterSeries();
    best->setName(tr("Best days"));
    best->setColor(QColor(40, 170, 40));
    best->setMarkerSize(11);
    auto *sun = new QScatterSeries();
    sun->setName(tr("Sun within 15°"));
    sun->setColor(QColor(230, 60, 30));
    sun->setMarkerShape(QScatterSeries::MarkerShapeRectangle);
    sun->setMarkerSize(11);
    double low = 0, high = 0;
    for (const DayConditions &d : month) {
        const double x = double(d.transit - monthFirst) / 86400.0;
        degradation->append(x, d.degradation);
        declination->append(x, d.declination);
        distance->append(x, d.distanceKm / 1000.0);
        if (d.best)
            best->append(x, d.degradation);
        if (d.sunNear)
            sun->append(x, d.degradation);
        low = std::min(low, d.degradation);
        high = std::max(high, d.degradation);
    }
    QCategoryAxis *x = LabelledAxis(0.0, double(kMonthDays), 0.0, 3.0, [&](double day) {
        return UtcText(monthFirst + int64_t(day) * 86400, "%m-%d");
    });
    x->setTitleText(tr("UTC date"));
    auto *dbAxis = new QValueAxis();
    dbAxis->setRange(std::floor(low - 0.5), std::ceil(high + 0.5));
    dbAxis->applyNiceNumbers();
    dbAxis->setTitleText(tr("Degradation dB"));
    auto *decAxis = new QValueAxis();
    decAxis->setRange(-30, 30);
    decAxis->setLabelFormat("%.0f");
    decAxis->setTitleText(tr("Declination °"));
    decAxis->setLinePenColor(kHomeColour);
    auto *kmAxis = new QValueAxis();
    kmAxis->setRange(350, 410);
    kmAxis->setTitleText(tr("Distance 1000 km"));
    kmAxis->setLinePenColor(kDxColour);
    chart->addAxis(x, Qt::AlignBottom);
    chart->addAxis(dbAxis, Qt::AlignLeft);
    chart->addAxis(decAxis, Qt::AlignRight);
    chart->addAxis(kmAxis, Qt::AlignRight);
    const std::pair<QAbstractSeries *, QValueAxis *> attach[] = {
        {degradation, dbAxis}, {declination, decAxis}, {distance, kmAxis}, {best, dbAxis},
        {sun, dbAxis}};
    for (const auto &[series, axis] : attach) {
        chart->addSeries(series);
        series->attachAxis(x);
        series->attachAxis(axis);
    }
}

QString PlannerWindow::CurrentCsv() const
{
    const std::string text = ui->Tabs->currentIndex() == 1 ? ConditionsCsv(month)
                                                           : WindowsCsv(plan, planned.hasDx);
    return QString::fromStdString(text);
}

void PlannerWindow::CopyCsv()
{
    QGuiApplication::clipboard()->setText(CurrentCsv());
}

bool PlannerWindow::SaveCsv(const QString &path, QString *error) const
{
    QSaveFile file(path);
    const QByteArray bytes = CurrentCsv().toUtf8();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    if (error)
        *error = path + ": " + file.errorString();
    return false;
}

void PlannerWindow::SaveCsvChosen()
{
    const QString name = ui->Tabs->currentIndex() == 1 ? "eme-month.csv" : "eme-windows.csv";
    const QString path =
        QFileDialog::getSaveFileName(this, tr("Save CSV"), QDir::home().filePath(name),
                                     tr("CSV files (*.csv);;All files (*)"));
    QString error;
    if (!path.isEmpty() && !SaveCsv(path, &error))
        QMessageBox::warning(this, tr("Save CSV"), tr("The file was not written: %1").arg(error));
}

void PlannerWindow::ShowInstant(qint64 t)
{
    const qint64 offset = t - qint64(time(nullptr));
    displayOffset = int32_t(std::clamp<qint64>(offset, INT32_MIN, INT32_MAX));
    emit DisplayedTimeChanged();
}

void PlannerWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    followTimer.start();
}

void PlannerWindow::hideEvent(QHideEvent *event)
{
    followTimer.stop();
    QWidget::hideEvent(event);
}

bool PlannerWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        auto *mouse = static_cast<QMouseEvent *>(event);
        for (QChartView *view : {windowsView, monthView}) {
            if (watched != view->viewport() || mouse->button() != Qt::LeftButton)
                continue;
            QChart *chart = view->chart();
            const QPointF scene = view->mapToScene(mouse->position().toPoint());
            const QPointF inChart = chart->mapFromScene(scene);
            if (!chart->plotArea().contains(inChart) || chart->series().isEmpty())
                return false;
            const double x = chart->mapToValue(inChart, chart->series().front()).x();
            if (view == windowsView)
                ShowInstant(planned.from + qint64(std::llround(x * 3600.0)));
            else
                ShowInstant(monthFirst + qint64(std::llround(x * 86400.0)));
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

} // namespace lunaquill
