// The Overlays dialog: texts, order, and each control writing its own switch
// the moment it changes.
#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "render/OverlaysDialog.h"
#include "ui_OverlaysDialog.h"

#include <gtest/gtest.h>

namespace lunaquill {
namespace {

using S = OverlaySettings;
#define BOX(name, text, flag) {#name, text, &S::flag}
const struct { const char *name, *text; bool S::*flag; } kControls[] = {
    BOX(MoonCheckbox, "Moon", MoonOverlay), BOX(SunCheckbox, "Sun", SunOverlay),
    BOX(VenusCheckbox, "Venus", VenusOverlay), BOX(MercuryCheckbox, "Mercury", MercuryOverlay),
    BOX(MarsCheckbox, "Mars", MarsOverlay), BOX(JupiterCheckbox, "Jupiter", JupiterOverlay),
    BOX(NeptuneCheckbox, "Neptune", NeptuneOverlay), BOX(SaturnCheckbox, "Saturn", SaturnOverlay),
    BOX(UranusCheckbox, "Uranus", UranusOverlay), BOX(PlutoCheckbox, "Pluto", PlutoOverlay),
    BOX(SunShadingCheckbox, "Sun Shading", SunShadingOverlay),
    BOX(MoonShadingCheckbox, "Moon Shading", MoonShadingOverlay),
    BOX(SkyNoiseCheckbox, "Sky Noise", SkyNoiseOverlay),
    BOX(ConstellationsCheckbox, "Constellations", ConstellationsOverlay),
    BOX(LatitudeGridlinesCheckbox, "Latitude Grid Lines", LatitudeGridlines),
    BOX(LongitudeGridlinesCheckbox, "Longitude Grid Lines", LongitudeGridlines),
    BOX(StarsCheckbox, "Stars", StarsOverlay), {"MapOffsetComboBox", "", nullptr},
    BOX(StarChartCheckbox, "Star Charts", StarChartOverlay), {"StarsMagnitudeComboBox", "", nullptr},
    BOX(FavoriteStationsCheckbox, "Favorite Stations", FavoriteStationsOverlay),
};

TEST(OverlaysDialog, EachControlShowsAndWritesItsOwnSwitch)
{
    test::ResetSharedState();
    int n = 0; // every other switch on, so each box must show its own
    for (const auto &c : kControls)
        if (c.flag)
            overlaySettings.*c.flag = n++ % 2;
    overlaySettings.MapOffset = 7;
    overlaySettings.StarsMagnitude = 12;
    OverlaysDialog dialog;
    Ui::OverlaysDialog *ui = dialog.widgets();
    EXPECT_EQ(dialog.windowTitle() + "|" + ui->OverlayEnablesLabel->text() + "|"
                  + ui->TimeOffsetLabel->text() + "|" + ui->MagnitudeLabel->text(),
              "Overlay Configuration|Overlay Enables|Map Offset (hours)|MAGN");

    QStringList expected, chain; // the focus runs through the controls in this order
    for (const auto &c : kControls)
        expected << c.name;
    QWidget *w = ui->MoonCheckbox;
    for (int i = 0; i < 100 && chain.size() < 21; ++i, w = w->nextInFocusChain())
        if (expected.contains(w->objectName()))
            chain << w->objectName();
    EXPECT_EQ(chain, expected);

    for (const auto &c : kControls) {
        if (!c.flag)
            continue;
        auto *box = dialog.findChild<QCheckBox *>(c.name);
        EXPECT_EQ(box->text(), c.text);
        EXPECT_EQ(box->isChecked(), overlaySettings.*c.flag) << c.name;
        const OverlaySettings before = overlaySettings;
        box->click();
        for (const auto &other : kControls) { // this switch flipped, no other
            if (other.flag) {
                EXPECT_EQ(overlaySettings.*other.flag, before.*other.flag != (other.flag == c.flag))
                    << c.name << " " << other.name;
            }
        }
    }
    // Items are the numbers 0..23 and 0..20; the index is stored at once.
    EXPECT_EQ(ui->MapOffsetComboBox->currentText() + ui->StarsMagnitudeComboBox->currentText(), "712");
    EXPECT_EQ(ui->MapOffsetComboBox->itemText(23) + ui->StarsMagnitudeComboBox->itemText(20)
                  + QString::number(ui->MapOffsetComboBox->count() + ui->StarsMagnitudeComboBox->count()),
              "232045");
    ui->MapOffsetComboBox->setCurrentIndex(23);
    ui->StarsMagnitudeComboBox->setCurrentIndex(0);
    EXPECT_EQ(overlaySettings.MapOffset * 100 + overlaySettings.StarsMagnitude, 2300);
}

} // namespace
} // namespace lunaquill
