#include "FavoritesDialog.h"
#include "ui_FavoritesDialog.h"

#include "PanelText.h"
#include "Settings.h"

#include "tracking/Maidenhead.h"
#include "tracking/SharedState.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QTableWidgetItem>
#include <QVBoxLayout>

namespace lunaquill {

namespace {

enum Column {
    LocationColumn, CallsignColumn, GridColumn, AzimuthColumn, ElevationColumn, RiseColumn,
    SetColumn, DopplerColumn, OffsetColumn, ColumnCount
};

const QColor moonUp(172, 255, 172);
const QColor moonDown(190, 190, 190);

} // namespace

QString ExampleListsFolder(const QString &currentFolder, const QString &executableFolder)
{
    const QString candidates[] = {
        currentFolder + "/examples",
        QDir::cleanPath(executableFolder + kInstalledDocFolder + "/examples"),
    };
    for (const QString &folder : candidates)
        if (QFileInfo(folder + "/Favorites.txt").isFile())
            return QDir::cleanPath(folder) + "/";
    return QString();
}

FavoritesDialog::FavoritesDialog(const QString &fileName, bool show, QWidget *parent)
    : QDialog(parent), list(std::make_unique<FavoriteList>())
{
    if (LoadList(SettingsFolder() + fileName) != 0) {
        if (show)
            ExplainMissingList(fileName);
        return;
    }
    if (!show)
        return;
    ui = std::make_unique<Ui::FavoritesDialog>();
    ui->setupUi(this);
    QTableWidget *table = ui->tableWidget;
    const int widths[ColumnCount - 1] = {190, 100, 80, 75, 75, 100, 100, 95};
    for (int column = 0; column < ColumnCount - 1; ++column)
        table->setColumnWidth(column, widths[column]);
    moon = std::make_unique<SourceTrack[]>(FavoriteCapacity);
    FillTable();
    connect(table, &QTableWidget::itemClicked, this, &FavoritesDialog::FavoriteSelected);
    // A row chosen with the keyboard counts as a click on it.
    connect(table, &QTableWidget::itemSelectionChanged, this, [table, this] {
        if (const QList<QTableWidgetItem *> rows = table->selectedItems(); !rows.isEmpty())
            FavoriteSelected(rows.first());
    });
    connect(ui->buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(ui->buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    // A clock set ahead, as when planning, is followed closely; at or behind
    // real time a refill every five seconds does (deliberately asymmetric).
    connect(&timer, &QTimer::timeout, this, &FavoritesDialog::TimerEvent);
    timer.start(displayOffset > 0 ? 100 : 5000);
}

FavoritesDialog::~FavoritesDialog()
{
    if (timer.isActive())
        timer.stop();
}

void FavoritesDialog::ExplainMissingList(const QString &fileName)
{
    // Still no table and no timer: one line that says where to put a list.
    setWindowTitle("Favorites List");
    const QString examples = ExampleListsFolder(QDir::currentPath(),
                                                QCoreApplication::applicationDirPath());
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(new QLabel(
        "Lunaquill found no list " + fileName + " in the folder " + SettingsFolder()
            + "; example lists come with the program"
            + (examples.isEmpty() ? QString() : " (in " + examples + ")") + ".",
        this));
}

int FavoritesDialog::LoadList(const QString &path)
{
    return ReadFavoriteList(QFile::encodeName(path).constData(), *list);
}

void FavoritesDialog::FillTable()
{
    if (!ui)
        return;
    QTableWidget *table = ui->tableWidget;
    table->setSortingEnabled(false);
    // The rows and their items are made once; a refill rewrites the texts,
    // which costs nothing for a cell that shows the same.
    if (table->rowCount() != list->count) {
        table->setRowCount(list->count);
        for (int row = 0; row < list->count; ++row) {
            table->setVerticalHeaderItem(row, new QTableWidgetItem(QString()));
            for (int column = 0; column < ColumnCount; ++column) {
                auto *item = new QTableWidgetItem();
                item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
                if (column >= AzimuthColumn)
                    item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
                table->setItem(row, column, item);
            }
        }
    }

    const struct tm utc = DisplayedUtc();
    for (int row = 0; row < list->count; ++row) {
        FavoriteEntry &entry = list->entries[row];
        // A grid that is no locator leaves its row blank (and clickable).
        if (GridToLatLong(entry.grid, entry.latitude, entry.longitude) != 0)
            continue;
        SourceTrack &track = moon[row];
        // The first time, learn whether the Moon is up before asking for
        // rise and set, which depend on it.
        if (!track.valid)
            ComputeSource(Moon, TrackPosition, utc, entry.latitude, entry.longitude,
                          homeData.frequency, track);
        ComputeSource(Moon, TrackAll, utc, entry.latitude, entry.longitude, homeData.frequency,
                      track);

        const QString texts[ColumnCount] = {
            FieldText(entry.location, sizeof entry.location),
            FieldText(entry.callsign, sizeof entry.callsign),
            FieldText(entry.grid, sizeof entry.grid),
            Printf("%0.2f", track.azimuth),
            Printf("%0.2f", track.elevation),
            RiseSetText("", track.riseTime, track.riseSetStatus),
            RiseSetText("", track.setTime, track.riseSetStatus),
            Printf("%0.1f Hz", track.doppler),
            Printf("%0.1f", track.spatialOffset),
        };
        const QColor &background = track.elevation > 0 ? moonUp : moonDown;
        for (int column = 0; column < ColumnCount; ++column) {
            QTableWidgetItem *item = table->item(row, column);
            item->setText(texts[column]);
            item->setForeground(Qt::black);
            item->setBackground(background);
        }
    }
}

void FavoritesDialog::FavoriteSelected(QTableWidgetItem *item)
{
    const int row = item ? item->row() : -1;
    if (row < 0 || row >= list->count)
        return;
    const FavoriteEntry &entry = list->entries[row];
    // The location stays; CopyField reads no more than the DX fields hold.
    CopyField(dxStation.callsign, entry.callsign);
    CopyField(dxStation.grid, entry.grid);
    dxStation.latitude = entry.latitude;
    dxStation.longitude = entry.longitude;
}

void FavoritesDialog::TimerEvent()
{
    FillTable();
}

} // namespace lunaquill
