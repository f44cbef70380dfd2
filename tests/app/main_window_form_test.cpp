// The main window's form: read-outs wide enough for the longest text the
// display cycle writes.
#include "ui_MainWindow.h"

#include <QFontMetrics>
#include <QMainWindow>
#include <gtest/gtest.h>

namespace {

TEST(MainWindowForm, ReadOutsFitTheirWidestText)
{
    QMainWindow window;
    Ui::MainWindow ui;
    ui.setupUi(&window);
    window.resize(1640, 960); // the minimum size the program enforces
    window.show();
    // The widest text the display cycle writes into each, with 10 pixels to
    // spare; a name starting with "*" stands for its Home and its Dx read-out.
    const struct { const char *name, *text; } readouts[] = {
        {"*Azimuth", " 359.99"}, {"*Elevation", " -89.99"}, {"*RiseTime", "Rise: 12-31 23:59"},
        {"*SetTime", "Set: 12-31 23:59"}, {"*Callsign", "VK9/Q9QQ/MM"}, {"*Grid", "RE78WW"},
        {"*Latitude", "-89.99"}, {"*Longitude", "-179.99"}, {"*Doppler", "-140000 Hz"},
        {"*SpatialOffset", "-179.9"}, {"*SkyTemp", "12345.6"}, {"*Degradation", "-99.9"},
        {"MutualDoppler", "-140000 Hz"}, {"PathLoss", "-99.9"}, {"Distance", "49.999999 AU"},
        {"SourceButton", "USER RA/DEC"}, {"SourceButton", "SAGITTARIUS"},
        {"SetFrequencyButton", "47088.00 Mhz"}, {"DateTimeButton", "Wed May 28 23:59:59 2025"},
        {"ViewModeButton", "View"}, {"TimeAdjustMinMButton", "-10 min"},
        {"TimeAdjustMinPButton", "+10 min"}, {"TimeAdjustWeekMButton", "-Week"},
        {"TimeAdjustWeekPButton", "+Week"},
    };
    for (const auto &row : readouts) {
        const QString pattern = row.name;
        for (const QString &name : pattern[0] != '*' ? QStringList{pattern}
                                   : QStringList{"Home" + pattern.mid(1), "Dx" + pattern.mid(1)}) {
            auto *button = window.findChild<QAbstractButton *>(name);
            ASSERT_NE(button, nullptr) << name.toStdString();
            const int width = QFontMetrics(button->font()).horizontalAdvance(row.text);
            EXPECT_LE(width, button->width() - 10) << name.toStdString() << " " << row.text;
        }
    }
}

} // namespace
