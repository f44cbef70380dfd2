// "Favorites List": the stations of a band or favourites list with the Moon
// as each of them sees it at the displayed instant, refreshed by a timer; a
// click on a row makes that station the DX station (lunaquill::dxStation).
// With the show flag clear it only reads the list, for the map.
#pragma once

#include "tracking/ComputeSource.h"
#include "tracking/FavoriteList.h"

#include <QDialog>
#include <QString>
#include <QTimer>

#include <memory>

class QTableWidgetItem;
namespace Ui {
class FavoritesDialog;
}

namespace lunaquill {

// The installed documentation folder, relative to the folder of the executable.
inline constexpr const char *kInstalledDocFolder = "/../share/doc/lunaquill";

// Where the example lists are: examples/ below the current folder (a source
// tree), else in the installed documentation beside the executable's folder;
// empty when neither holds them.
QString ExampleListsFolder(const QString &currentFolder, const QString &executableFolder);

class FavoritesDialog : public QDialog
{
    Q_OBJECT

public:
    // Reads fileName from the settings folder. With `show` set and a list
    // that could be read, builds the table, fills it and starts the refresh;
    // a list that cannot be read leaves a bare dialog that can only be closed
    // and names the file it looked for.
    FavoritesDialog(const QString &fileName, bool show, QWidget *parent = nullptr);
    ~FavoritesDialog() override;

    // 0 on success (also for an empty list), -1 when the file cannot be opened.
    int LoadList(const QString &path);
    // Every row for the displayed instant.
    void FillTable();

    // The list as read, for the map and for tests.
    const FavoriteEntry *entries() const { return list->entries; }
    int32_t count() const { return list->count; }
    // The widget set, null for a bare dialog; the refresh timer.
    Ui::FavoritesDialog *widgets() const { return ui.get(); }
    const QTimer &refreshTimer() const { return timer; }

public slots:
    void FavoriteSelected(QTableWidgetItem *item);
    void TimerEvent();

private:
    void ExplainMissingList(const QString &fileName);

    std::unique_ptr<FavoriteList> list;
    std::unique_ptr<Ui::FavoritesDialog> ui;
    QTimer timer;
    // Each station's Moon, kept between refills as the main window keeps the
    // home station's, so that during a pass the rise shown is that pass's.
    std::unique_ptr<SourceTrack[]> moon;
};

} // namespace lunaquill
