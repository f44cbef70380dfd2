#include "DxStationDialog.h"
#include "ui_DxStationDialog.h"

#include "DxStationList.h"
#include "FieldText.h"
#include "Maidenhead.h"
#include "SettingsFolder.h"
#include "SharedState.h"
#include "StationEntry.h"

#include <QFile>
#include <QTableWidgetItem>

#include <cstring>

namespace lunaquill {

namespace {

enum Column { LocationColumn, PrefixColumn, GridColumn, LatitudeColumn, LongitudeColumn, ColumnCount };

// Section backgrounds, light enough for black text: blue, green, sand, lilac.
const QColor bandColours[4] = {QColor(0xdd, 0xea, 0xf7), QColor(0xdf, 0xf1, 0xdc),
                               QColor(0xfb, 0xf0, 0xd2), QColor(0xec, 0xe1, 0xf4)};

} // namespace

DxStationDialog::DxStationDialog(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::DxStationDialog>())
{
    ui->setupUi(this);
    QTableWidget *table = ui->DxStationTable;
    // The longitude column takes what is left.
    table->setColumnWidth(LocationColumn, 300);
    table->setColumnWidth(PrefixColumn, 120);
    table->setColumnWidth(GridColumn, 90);
    table->setColumnWidth(LatitudeColumn, 90);

    const QString path = SettingsFolder() + "DxStations.txt";
    // A missing or unreadable list just leaves the table empty.
    ReadDxStations(QFile::encodeName(path).constData());
    FillTable();

    connect(table, &QTableWidget::itemClicked, this, &DxStationDialog::DxStationSelected);
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

DxStationDialog::~DxStationDialog() = default;

void DxStationDialog::FillTable()
{
    if (dxStationCount < 1)
        return;
    QTableWidget *table = ui->DxStationTable;
    table->setRowCount(dxStationCount);
    int colourGroup = 0;
    for (int row = 0; row < dxStationCount; ++row) {
        DxStationRecord &record = dxStationRecords[row];
        // A grid that is no locator keeps the zeros of the cleared record.
        GridToLatLong(record.grid, record.latitude, record.longitude);
        // A line without call is a section heading: it starts the next band.
        bool heading = record.prefix[0] == '\0';
        if (heading)
            colourGroup = (colourGroup + 1) % 4;

        QString texts[ColumnCount];
        texts[LocationColumn] = FieldText(record.location, sizeof record.location);
        texts[PrefixColumn] = FieldText(record.prefix, sizeof record.prefix);
        texts[GridColumn] = FieldText(record.grid, sizeof record.grid);
        texts[LatitudeColumn] = QString::fromStdString(FormatFixed(record.latitude, 5, 2));
        texts[LongitudeColumn] = QString::fromStdString(FormatFixed(record.longitude, 5, 2));
        for (int column = 0; column < ColumnCount; ++column) {
            auto *item = new QTableWidgetItem(texts[column]);
            item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
            item->setBackground(bandColours[colourGroup]);
            item->setForeground(Qt::black);
            if (column >= LatitudeColumn)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            if (heading) {
                QFont font = item->font();
                font.setBold(true);
                item->setFont(font);
            }
            table->setItem(row, column, item);
        }
    }
}

void DxStationDialog::DxStationSelected(QTableWidgetItem *item)
{
    if (!item)
        return;
    int row = item->row();
    if (row < 0 || row >= dxStationCount)
        return;
    const DxStationRecord &record = dxStationRecords[row];
    // CopyField reads no further than the DX fields can hold, so the
    // unterminated full-width fields of a record are safe to pass.
    CopyField(dxStation.callsign, record.prefix);
    CopyField(dxStation.grid, record.grid);
    dxStation.latitude = record.latitude;
    dxStation.longitude = record.longitude;
}

} // namespace lunaquill
