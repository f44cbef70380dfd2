#include "SourcesDialog.h"
#include "ui_SourcesDialog.h"

#include "ComputeSource.h"
#include "SharedState.h"
#include "StationEntry.h"

#include <QSignalBlocker>
#include <QTableWidgetItem>

#include <cstdio>

namespace lunaquill {

namespace {

enum Column {
    SourceColumn, AzimuthColumn, ElevationColumn, RaColumn, DeclinationColumn, DistanceColumn,
    PhaseColumn, RiseColumn, SetColumn, ColumnCount
};

constexpr int kRefreshMs = 10000;

const QColor kUpColour(172, 255, 172);
const QColor kDownColour(190, 190, 190);

QString Format(const char *format, double value)
{
    char text[64];
    snprintf(text, sizeof text, format, value);
    return QString::fromLatin1(text);
}

// Month-day hour:minute of a rise or set, or "always up" / "never up".
QString DateText(double julianDate, int32_t riseSetStatus)
{
    char text[64];
    FormatRiseSet(text, sizeof text, "", julianDate, riseSetStatus);
    return QString::fromLatin1(text);
}

// The home record field that a user cell edits, with the values it takes,
// or null for any other cell. Only the home records: the DX figures of a
// user point stay as they were.
struct UserCell {
    double *field;
    double low, high;
};

UserCell UserField(int row, int column)
{
    if (row == UserAzEl && column == AzimuthColumn)
        return {&homeTracks[UserAzEl].azimuth, 0, 360};
    if (row == UserAzEl && column == ElevationColumn)
        return {&homeTracks[UserAzEl].elevation, -90, 90};
    if (row == UserRaDec && column == RaColumn)
        return {&homeTracks[UserRaDec].rightAscension, 0, 24}; // hours
    if (row == UserRaDec && column == DeclinationColumn)
        return {&homeTracks[UserRaDec].declination, -90, 90};
    return {nullptr, 0, 0};
}

} // namespace

SourcesDialog::SourcesDialog(QWidget *parent) : QDialog(parent), ui(new Ui::SourcesDialog)
{
    ui->setupUi(this);
    QTableWidget *table = ui->SourcesTable;
    table->setRowCount(SourceCount);
    table->setColumnWidth(SourceColumn, 120);
    for (int column = AzimuthColumn; column <= PhaseColumn; ++column)
        table->setColumnWidth(column, 82);
    table->setColumnWidth(RiseColumn, 100);
    for (int row = 0; row < (int)SourceCount; ++row) {
        for (int column = 0; column < ColumnCount; ++column) {
            auto *item = new QTableWidgetItem(column == SourceColumn ? kSourceNames[row] : "");
            // Only the user points' own figures can be typed over.
            Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
            if (UserField(row, column).field)
                flags |= Qt::ItemIsEditable;
            item->setFlags(flags);
            if (column != SourceColumn)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            item->setForeground(Qt::black); // on the light row colours, whatever the theme
            table->setItem(row, column, item);
        }
    }
    const int32_t tracked = homeData.trackingSource;
    if (tracked >= 0 && tracked < (int32_t)SourceCount)
        table->selectRow(tracked);

    Refresh();

    connect(table, &QTableWidget::itemClicked, this, &SourcesDialog::SourceChanged);
    // A row chosen with the keyboard counts as a click on it.
    connect(table, &QTableWidget::itemSelectionChanged, this, [table, this] {
        if (const QList<QTableWidgetItem *> rows = table->selectedItems(); !rows.isEmpty())
            SourceChanged(rows.first());
    });
    connect(table, &QTableWidget::itemPressed, this, &SourcesDialog::ItemPressed);
    // A typed value is kept as soon as the edit ends, so the next refresh
    // shows it instead of the old one.
    connect(table, &QTableWidget::itemChanged, this, &SourcesDialog::StoreUserPoint);
    connect(&timer, &QTimer::timeout, this, &SourcesDialog::TimerEvent);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    timer.start(kRefreshMs);
}

SourcesDialog::~SourcesDialog()
{
    delete ui;
}

void SourcesDialog::done(int result)
{
    timer.stop();
    QDialog::done(result);
}

void SourcesDialog::TimerEvent()
{
    Refresh();
}

void SourcesDialog::Refresh()
{
    QTableWidget *table = ui->SourcesTable;
    // The refresh's own writes are no edits.
    const QSignalBlocker quiet(table);
    // A cell being typed in keeps what is typed: its editor lies over it.
    const QTableWidgetItem *editing = nullptr;
    for (QWidget *editor : table->viewport()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
        if (editor->isVisible())
            editing = table->itemAt(editor->geometry().center());
    const struct tm utc = DisplayedUtc();
    for (int row = 0; row < (int)SourceCount; ++row) {
        SourceTrack &record = homeTracks[row];
        ComputeSource((uint32_t)row, TrackAll, utc, homeData.latitude, homeData.longitude,
                      homeData.frequency, record);
        const QString texts[ColumnCount] = {
            kSourceNames[row],
            Format("%7.2f", record.azimuth),
            Format("%7.2f", record.elevation),
            Format("%7.2f", record.rightAscension),
            Format("%7.2f", record.declination),
            Format("%9.6f", record.distance),
            Format("%4.2f", record.phase),
            DateText(record.riseTime, record.riseSetStatus),
            DateText(record.setTime, record.riseSetStatus),
        };
        const QColor &colour = record.elevation > 0 ? kUpColour : kDownColour;
        for (int column = 0; column < ColumnCount; ++column) {
            QTableWidgetItem *item = table->item(row, column);
            if (item != editing)
                item->setText(texts[column]);
            item->setBackground(colour);
        }
    }
}

void SourcesDialog::SourceChanged(QTableWidgetItem *item)
{
    const int row = item ? item->row() : -1;
    if (row >= (int)SourceCount)
        return;
    homeData.trackingSource = row; // -1 without a row
}

void SourcesDialog::ItemPressed(QTableWidgetItem *item)
{
    if (!item || !UserField(item->row(), item->column()).field)
        return;
    // Held while the cell is read, then a full period from now.
    timer.stop();
    StoreUserPoint(item);
    timer.start(kRefreshMs);
}

void SourcesDialog::StoreUserPoint(QTableWidgetItem *item)
{
    const UserCell cell = item ? UserField(item->row(), item->column()) : UserCell{};
    if (!cell.field)
        return;
    // A number outside the sky, or no number, changes nothing: the cell
    // shows the value in force again.
    if (!ReadNumberWithin(item->text().toStdString(), cell.low, cell.high, *cell.field)) {
        const QSignalBlocker quiet(item->tableWidget());
        item->setText(Format("%7.2f", *cell.field));
    }
}

} // namespace lunaquill
