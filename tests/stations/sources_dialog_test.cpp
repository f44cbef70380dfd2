// The Sources table at a fixed instant against the calculator (which the unit
// tests hold against libnova), choosing a source by a click, and the user
// points typed in place.
#include "GuiTestSupport.h"
#include "SharedStateReset.h"
#include "tracking/SourcesDialog.h"
#include "ui_SourcesDialog.h"

#include <QApplication>
#include <QLineEdit>
#include <QTest>
#include <gtest/gtest.h>
#include <libnova/libnova.h>

#include <memory>

namespace lunaquill {
namespace {

constexpr time_t kInstant = 1741586400; // 2025-03-10 06:00:00 UTC, 01:00 in Boston

QString Date(double jd)
{
    ln_date d;
    ln_get_date(jd, &d);
    return QString::asprintf("%02d-%02d %02d:%02d", d.months, d.days, d.hours, d.minutes);
}

TEST(SourcesDialog, ShowsTheDisplayedInstantTakesClicksAndTypedUserPoints)
{
    test::ResetSharedState();
    homeData = {0, "", "FN42mm", "", 42.51, -70.96, 1296.0};
    std::unique_ptr<SourcesDialog> dialog;
    for (time_t now = 0; now != time(nullptr);) { // again if the clock ticks meanwhile
        now = time(nullptr);
        displayOffset = (int32_t)(kInstant - now);
        dialog = std::make_unique<SourcesDialog>();
    }
    dialog->show();
    QTableWidget *table = dialog->widgets()->SourcesTable;
    // The waxing gibbous Moon is up (light green), the Sun is not (grey), nor the user's
    // point at elevation 0: only above 0 counts.
    for (uint32_t id : {Moon, Sun, UserAzEl}) {
        SourceTrack r{};
        ComputeSource(id, TrackAll, *gmtime(&kInstant), 42.51, -70.96, 1296.0, r);
        const QStringList expected = {kSourceNames[id], QString::asprintf("%7.2f", r.azimuth),
            QString::asprintf("%7.2f", r.elevation), QString::asprintf("%7.2f", r.rightAscension),
            QString::asprintf("%7.2f", r.declination), QString::asprintf("%9.6f", r.distance),
            QString::asprintf("%4.2f", r.phase), Date(r.riseTime), Date(r.setTime)};
        for (int c = 0; c < 9; ++c)
            EXPECT_EQ(table->item(id, c)->text(), expected[c]) << id << " " << c;
        EXPECT_EQ(table->item(id, 8)->background().color(),
                  id == Moon ? QColor(172, 255, 172) : QColor(190, 190, 190));
    }
    // A click on a row tracks that source; without a row, -1.
    auto at = [&](int row, int column) {
        return table->visualItemRect(table->item(row, column)).center();
    };
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at(UserAzEl, 0));
    EXPECT_EQ(homeData.trackingSource, 22);
    dialog->SourceChanged(nullptr);
    EXPECT_EQ(homeData.trackingSource, -1);

    // A press on a user cell reads it like atof and restarts the 10 s refresh (a coarse timer:
    // within 5 %); a press on another cell, of a user row or not, leaves the timer alone. The
    // DX records are never written.
    dxTracks[UserAzEl].azimuth = 99;
    const struct { int row, column; const char *typed; double *field, stored; } rows[] = {
        {UserAzEl, 1, "123.5", &homeTracks[UserAzEl].azimuth, 123.5},
        {UserAzEl, 2, "abc", &homeTracks[UserAzEl].elevation, 0.0},
        {UserRaDec, 3, " 5.5h", &homeTracks[UserRaDec].rightAscension, 5.5},
        {UserRaDec, 4, "-12", &homeTracks[UserRaDec].declination, -12.0},
        {UserRaDec, 1, "7", &homeTracks[UserRaDec].azimuth, homeTracks[UserRaDec].azimuth},
        {Moon, 2, "7", &homeTracks[Moon].elevation, homeTracks[Moon].elevation},
    };
    for (const auto &r : rows) {
        table->blockSignals(true); // the text only, as if typed before
        table->item(r.row, r.column)->setText(r.typed);
        table->blockSignals(false);
        dialog->refreshTimer().start(60000);
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at(r.row, r.column));
        EXPECT_EQ(*r.field, r.stored) << r.typed;
        const int remaining = dialog->refreshTimer().remainingTime();
        EXPECT_EQ(remaining > 9500 && remaining <= 10500, r.typed != QString("7")) << remaining;
    }
    EXPECT_EQ(dxTracks[UserAzEl].azimuth, 99);

    // Typed through the cell's editor, the value is kept when the edit ends.
    table->editItem(table->item(UserAzEl, 1));
    auto *editor = table->viewport()->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->setText("77");
    dialog->TimerEvent(); // a refresh while typing leaves the cell alone
    QTest::keyClick(editor, Qt::Key_Return);
    QApplication::processEvents(); // the edit ends through a queued call
    dialog->TimerEvent();
    EXPECT_EQ(table->item(UserAzEl, 1)->text(), "  77.00");

    dialog->reject();
    EXPECT_FALSE(dialog->refreshTimer().isActive());
}

} // namespace
} // namespace lunaquill
