// "Overlay Configuration": what the map and the charts show. Every control
// writes its switch in lunaquill::overlaySettings the moment it changes; the
// dialog itself saves nothing (the main window saves the group on Ok, and a
// cancel keeps the changes in memory).
#pragma once

#include <QDialog>

namespace Ui {
class OverlaysDialog;
}

namespace lunaquill {

class OverlaysDialog : public QDialog
{
    Q_OBJECT

public:
    explicit OverlaysDialog(QWidget *parent = nullptr);
    ~OverlaysDialog() override;

    Ui::OverlaysDialog *widgets() const { return ui; }

public slots:
    void MoonOverlayChanged();
    void SunOverlayChanged();
    void VenusOverlayChanged();
    void MercuryOverlayChanged();
    void MarsOverlayChanged();
    void JupiterOverlayChanged();
    void NeptuneOverlayChanged();
    void SaturnOverlayChanged();
    void UranusOverlayChanged();
    void PlutoOverlayChanged();
    void SunShadingOverlayChanged();
    void MoonShadingOverlayChanged();
    void SkyNoiseOverlayChanged();
    void ConstellationsOverlayChanged();
    void LatitudeGridlinesChanged();
    void LongitudeGridlinesChanged();
    void StarsOverlayChanged();
    void MapOffsetChanged(int index);
    void StarChartOverlayChanged();
    void StarsMagnitudeChanged(int index);
    void FavoritesOverlayChanged();

private:
    Ui::OverlaysDialog *ui;
};

} // namespace lunaquill
