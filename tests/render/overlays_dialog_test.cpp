// The Overlays dialog: each control showing and writing its own switch the
// moment it changes.
#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "render/OverlaysDialog.h"
#include "ui_OverlaysDialog.h"

#include <gtest/gtest.h>

namespace lunaquill {
namespace {

using S = OverlaySettings;
#define BOX(name, flag) {#name, &S::flag}
const struct { const char *name; bool S::*flag; } kBoxes[] = {
    BOX(MoonCheckbox, MoonOverlay), BOX(SunCheckbox, SunOverlay), BOX(VenusCheckbox, VenusOverlay),
    BOX(MercuryCheckbox, MercuryOverlay), BOX(MarsCheckbox, MarsOverlay),
    BOX(JupiterCheckbox, JupiterOverlay), BOX(NeptuneCheckbox, NeptuneOverlay),
    BOX(SaturnCheckbox, SaturnOverlay), BOX(UranusCheckbox, UranusOverlay),
    BOX(PlutoCheckbox, PlutoOverlay), BOX(SunShadingCheckbox, SunShadingOverlay),
    BOX(MoonShadingCheckbox, MoonShadingOverlay), BOX(SkyNoiseCheckbox, SkyNoiseOverlay),
    BOX(ConstellationsCheckbox, ConstellationsOverlay),
    BOX(LatitudeGridlinesCheckbox, LatitudeGridlines),
    BOX(LongitudeGridlinesCheckbox, LongitudeGridlines), BOX(StarsCheckbox, StarsOverlay),
    BOX(StarChartCheckbox, StarChartOverlay),
    BOX(FavoriteStationsCheckbox, FavoriteStationsOverlay),
};

TEST(OverlaysDialog, EachControlShowsAndWritesItsOwnSwitch)
{
    test::ResetSharedState();
    int n = 0; // every other switch on, so each box must show its own
    for (const auto &b : kBoxes)
        overlaySettings.*b.flag = n++ % 2;
    overlaySettings.MapOffset = 7;
    overlaySettings.StarsMagnitude = 12;
    OverlaysDialog dialog;
    for (const auto &b : kBoxes) {
        auto *box = dialog.findChild<QCheckBox *>(b.name);
        ASSERT_TRUE(box) << b.name;
        EXPECT_EQ(box->isChecked(), overlaySettings.*b.flag) << b.name;
        const OverlaySettings before = overlaySettings;
        box->click();
        for (const auto &other : kBoxes) { // this switch flipped, no other
            EXPECT_EQ(overlaySettings.*other.flag, before.*other.flag != (other.flag == b.flag))
                << b.name << " " << other.name;
        }
    }
    // Items are the numbers 0..23 and 0..20; the index is stored at once.
    Ui::OverlaysDialog *ui = dialog.widgets();
    EXPECT_EQ(ui->MapOffsetComboBox->currentText() + ui->StarsMagnitudeComboBox->currentText(),
              "712");
    ui->MapOffsetComboBox->setCurrentIndex(23);
    ui->StarsMagnitudeComboBox->setCurrentIndex(0);
    EXPECT_EQ(overlaySettings.MapOffset * 100 + overlaySettings.StarsMagnitude, 2300);
}

} // namespace
} // namespace lunaquill
