// The menu and panel dialogs: About, stations, sources, lists, overlays and
// frequency. Each runs modally on the stack. The station dialogs count only
// when accepted; the sources, lists, frequency and overlays change what is in
// force while open, so the window shows it whatever their result (Ok saves).
#include "MainWindow.h"

#include "AboutDialog.h"
#include "FavoritesDialog.h"
#include "FrequencyDialog.h"
#include "Settings.h"
#include "ui_MainWindow.h"

#include "tracking/DxSelectDialog.h"
#include "tracking/DxStationDialog.h"
#include "tracking/HomeStationDialog.h"
#include "tracking/Maidenhead.h"
#include "tracking/SharedState.h"
#include "tracking/SourcesDialog.h"

#include "render/OverlaysDialog.h"

#include <QFrame>
#include <QMessageBox>

using namespace lunaquill;

bool MainWindow::SaveHomeSettings()
{
    QString error;
    if (SaveHomeData(kSettingsFileName, homeData, &error) == 0)
        return true;
    ShowSaveFailure(error);
    return false;
}

void MainWindow::SaveOverlaySettings()
{
    QString error;
    if (SaveOverlays(kSettingsFileName, overlaySettings, &error) != 0)
        ShowSaveFailure(error);
}

void MainWindow::ShowSaveFailure(const QString &error)
{
    // One box, window-modal and not blocking: the display keeps running
    // behind it, and a second failure only updates its text.
    if (!saveWarning) {
        saveWarning = new QMessageBox(QMessageBox::Warning, "Settings not saved", QString(),
                                      QMessageBox::Ok, this);
        saveWarning->setAttribute(Qt::WA_DeleteOnClose);
    }
    saveWarning->setText("Lunaquill could not save the settings to " + error
                         + ".\n\nThe change holds until Lunaquill is closed; the file keeps "
                           "the earlier settings.");
    saveWarning->open();
}

bool MainWindow::About()
{
    AboutDialog dialog;
    dialog.exec();
    return true;
}

bool MainWindow::HomeStation()
{
    HomeStationDialog dialog;
    if (dialog.exec() == QDialog::Accepted) {
        // The first-run hint has done its work once the station is on disk.
        if (SaveHomeSettings() && homeStationHint) {
            homeStationHint->hide();
            homeStationHint->deleteLater();
            homeStationHint = nullptr;
        }
        if (homeData.grid[0] != '\0')
            homeStationSet = 1;
        ShowChanges();
    }
    return true;
}

bool MainWindow::CheckDxGrid()
{
    double latitude, longitude;
    if (dxStation.grid[0] != '\0')
        dxStationSet = GridToLatLong(dxStation.grid, latitude, longitude) == 0 ? 1 : 0;
    else
        dxStationSet = 0;
    return dxStationSet != 0;
}

bool MainWindow::DxStation()
{
    DxStationDialog dialog;
    if (dialog.exec() == QDialog::Accepted)
        ShowChanges();
    return true;
}

bool MainWindow::SetDxStation()
{
    DxSelectDialog dialog;
    if (dialog.exec() == QDialog::Accepted)
        ShowChanges();
    return true;
}

// The tracked source chosen in the Sources table stays in force whatever the
// result; Ok also saves it.
bool MainWindow::SourcesDisplay()
{
    SourcesDialog dialog;
    if (dialog.exec() == QDialog::Accepted)
        SaveHomeSettings();
    ShowChanges();
    return true;
}

void MainWindow::SourceButtonPressed()
{
    SourcesDisplay();
}

bool MainWindow::Favorites(const QString &fileName)
{
    // A click on a row has set the DX station already, whatever the result.
    FavoritesDialog dialog(fileName, true);
    dialog.exec();
    ShowChanges();
    return true;
}

bool MainWindow::Eme50M() { return Favorites("Eme50M.txt"); }
bool MainWindow::Eme144M() { return Favorites("Eme144M.txt"); }
bool MainWindow::Eme432M() { return Favorites("Eme432M.txt"); }
bool MainWindow::Eme900M() { return Favorites("Eme900M.txt"); }
bool MainWindow::Eme1296M() { return Favorites("Eme1296M.txt"); }
bool MainWindow::Eme2304M() { return Favorites("Eme2304M.txt"); }
bool MainWindow::Eme3400M() { return Favorites("Eme3400M.txt"); }
bool MainWindow::Eme5760M() { return Favorites("Eme5760M.txt"); }
bool MainWindow::Eme10G() { return Favorites("Eme10G.txt"); }
bool MainWindow::Eme47G() { return Favorites("Eme47G.txt"); }
bool MainWindow::EmeFavorites() { return Favorites("Favorites.txt"); }

bool MainWindow::SetOverlays()
{
    // The switches change as they are clicked and a cancel keeps them in
    // memory, so the map and the view follow them at once; only Ok saves them.
    OverlaysDialog dialog;
    if (dialog.exec() == QDialog::Accepted)
        SaveOverlaySettings();
    DrawMapOverlay();
    TimeAdjusted();
    return true;
}

bool MainWindow::SetFrequency()
{
    // An entered frequency is in force even when the dialog is cancelled.
    FrequencyDialog dialog;
    if (dialog.exec() == QDialog::Accepted)
        SaveHomeSettings();
    ShowChanges();
    return true;
}
