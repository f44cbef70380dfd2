// Base map roll and grid, the scale labels, and the rolling of map-sized
// layers. Expected columns are worked by hand in the comments.
#include "render/MapLayers.h"

#include <QColor>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QtGlobal>

#include <gtest/gtest.h>

using namespace lunaquill;

namespace {

const QColor kLand(10, 200, 30);
const QColor kMarker(255, 0, 0);
const QRgb kLightGray = qRgb(192, 192, 192); // Qt::lightGray
const QRgb kDarkGray = qRgb(128, 128, 128);  // Qt::darkGray

// A uniform image with one marker column.
QPixmap Striped(int width, int height, int markerColumn)
{
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(kLand);
    for (int y = 0; y < height; ++y)
        image.setPixel(markerColumn, y, kMarker.rgb());
    return QPixmap::fromImage(image);
}

// The marker columns found on a middle row.
QList<int> MarkerColumns(const QPixmap &pixmap)
{
    const QImage image = pixmap.toImage();
    QList<int> columns;
    for (int x = 0; x < image.width(); ++x)
        if (image.pixel(x, image.height() / 2) == kMarker.rgb())
            columns.append(x);
    return columns;
}

TEST(RollSplit, BothFormsAsBuilt)
{
    struct Row {
        int width, offset, map, overlay;
    } rows[] = {
        // 1610 / 24 = 67: up to 12 hours (24 - offset) * 67, above 1610 - 67 * offset
        {1610, 12, 804, 806}, // 12 * 67 = 804; overlay 1610 - 804 = 806
        {1610, 13, 739, 739}, // 1610 - 871 = 739
        {1610, 23, 69, 69},   // 1610 - 1541
        // 1600 / 24 = 66: the forms differ because 1600 is no multiple of 24
        {1600, 1, 1518, 1534}, // 23 * 66 against 1600 - 66
        {1600, 13, 742, 742},  // 1600 - 858 (11 * 66 would be 726)
        {2400, 5, 1900, 1900}, // a multiple of 24: both agree
    };
    for (const auto &r : rows) {
        EXPECT_EQ(MapRollSplit(r.width, r.offset), r.map) << r.width << " / " << r.offset;
        EXPECT_EQ(OverlayRollSplit(r.width, r.offset), r.overlay) << r.width << " / " << r.offset;
    }
    // Offsets from a damaged settings file must not overflow.
    EXPECT_LT(MapRollSplit(1600, 2000000000), 0);
    EXPECT_GT(OverlayRollSplit(1600, -2000000000), 1600);
}

TEST(ScaleTexts, LatitudeFormats)
{
    EXPECT_EQ(LatitudeLabelText(90), "+90");
    EXPECT_EQ(LatitudeLabelText(10), "+10");
    EXPECT_EQ(LatitudeLabelText(5), "+05");
    EXPECT_EQ(LatitudeLabelText(0), "  0"); // three characters: two blanks
    EXPECT_EQ(LatitudeLabelText(-10), "-10");
    EXPECT_EQ(LatitudeLabelText(-90), "-90");
    EXPECT_EQ(LatitudeLabelText(-5), "-5"); // the sign fills the width of two
}

TEST(ScaleTexts, HoursWestOfGreenwich)
{
    struct Row {
        int i, offset;
        const char *text;
    } rows[] = {
        {0, 0, "12h"},  {12, 0, "00h"}, {24, 0, "12h"}, {13, 0, "23h"}, // -1 + 24
        {0, 5, "17h"},  {17, 5, "00h"}, {0, 23, "11h"},                 // 35 - 24
    };
    for (const auto &r : rows)
        EXPECT_EQ(LongitudeLabelText(r.i, r.offset), r.text) << r.i << " / " << r.offset;
    // Only one 24 is added or taken away, so odd offsets give odd hours, not a crash.
    EXPECT_EQ(LongitudeLabelText(0, 2147483647), "2147483635h");
}

TEST(DrawBaseMap, GridLinesAtFixedPositions)
{
    // 250 x 190: rows trunc(i * 190 / 18), columns trunc(i * 250 / 24).
    const int w = 250, h = 190;
    QPixmap base(w, h);
    DrawBaseMap(base, Striped(w, h, 3), 0, true, true);
    const QImage image = base.toImage();

    struct Line {
        int i, at;
        QRgb colour;
    };
    // i = 1: 10.6, i = 2: 21.1, i = 9: 95 (the equator), i = 17: 179.4
    const Line rows[] = {{1, 10, kDarkGray}, {2, 21, kDarkGray}, {9, 95, kLightGray},
                         {17, 179, kDarkGray}};
    for (const Line &l : rows) {
        EXPECT_EQ(image.pixel(5, l.at), l.colour) << "latitude line " << l.i;
        EXPECT_EQ(image.pixel(w - 2, l.at), l.colour) << "latitude line " << l.i;
        EXPECT_EQ(image.pixel(0, l.at), kLand.rgb()) << "starts at left + 1";
        EXPECT_EQ(image.pixel(5, l.at + 1), kLand.rgb()) << "one pixel thick";
    }
    // i = 1: 10.4, i = 12: 125 (Greenwich), i = 23: 239.6
    const Line columns[] = {{1, 10, kDarkGray}, {12, 125, kLightGray}, {23, 239, kDarkGray}};
    for (const Line &l : columns) {
        EXPECT_EQ(image.pixel(l.at, 5), l.colour) << "longitude line " << l.i;
        EXPECT_EQ(image.pixel(l.at, h - 2), l.colour) << "longitude line " << l.i;
        EXPECT_EQ(image.pixel(l.at, 0), kLand.rgb()) << "starts at top + 1";
        EXPECT_EQ(image.pixel(l.at + 1, 5), kLand.rgb()) << "one pixel thick";
    }
    // The longitude lines are drawn after the latitude lines.
    EXPECT_EQ(image.pixel(125, 10), kLightGray);
    EXPECT_EQ(image.pixel(10, 95), kDarkGray);
}

TEST(DrawBaseMap, GridSwitches)
{
    QPixmap base(240, 180);
    DrawBaseMap(base, Striped(240, 180, 3), 0, false, true);
    QImage image = base.toImage();
    EXPECT_EQ(image.pixel(5, 90), kLand.rgb()); // no equator
    EXPECT_EQ(image.pixel(120, 5), kLightGray);

    DrawBaseMap(base, Striped(240, 180, 3), 0, true, false);
    image = base.toImage();
    EXPECT_EQ(image.pixel(5, 90), kLightGray);
    EXPECT_EQ(image.pixel(120, 5), kLand.rgb()); // no Greenwich line
}

TEST(DrawBaseMap, RollsTheMasterEastward)
{
    struct Row {
        const char *note;
        int width, offset, marker, expected;
    } rows[] = {
        {"no offset", 1600, 0, 100, 100},
        // split 12 * 66 = 792: master 0..792 lands at 1600 - 792 = 808
        {"offset 12", 1600, 12, 100, 908},
        // split 1600 - 13 * 66 = 742: master 0 lands at 858
        {"offset 13", 1600, 13, 100, 958},
        // master column 900 is right of the split 792: lands at 900 - 792
        {"offset 12, right part", 1600, 12, 900, 108},
        // negative offsets are not rolled
        {"negative offset", 1600, -3, 100, 100},
        // split 24 * 66 - 66 * 25 < 0: not rolled rather than drawn outside
        {"offset beyond a day", 1600, 25, 100, 100},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.note);
        QPixmap base(r.width, 40);
        DrawBaseMap(base, Striped(r.width, 40, r.marker), r.offset, false, false);
        EXPECT_EQ(MarkerColumns(base), QList<int>{r.expected});
    }
}

TEST(DrawBaseMap, PiecesComeFromTheMasterAtItsOwnResolution)
{
    // An 800-wide map from a 1600-wide master, offset 12: split = 12 * 33 =
    // 396. The second piece is master columns 0..396 unscaled at 800 - 396 =
    // 404, so master column 100 shows at 504 (a scaled copy would put it at
    // 50 + 404 = 454).
    QPixmap base(800, 40);
    DrawBaseMap(base, Striped(1600, 80, 100), 12, false, false);
    const QList<int> columns = MarkerColumns(base);
    EXPECT_TRUE(columns.contains(504));
    EXPECT_FALSE(columns.contains(454));
}

bool Inked(const QImage &image, int x, int y)
{
    return image.pixel(x, y) != qRgb(0, 0, 0);
}

// Leftmost column from `from` on with ink between rows top and bottom; the
// width if none.
int LeftmostInk(const QImage &image, int top, int bottom, int from = 0)
{
    for (int x = from; x < image.width(); ++x)
        for (int y = std::max(top, 0); y <= std::min(bottom, image.height() - 1); ++y)
            if (Inked(image, x, y))
                return x;
    return image.width();
}

TEST(ScaleLabels, LatitudeTextsSitOnTheirBaselines)
{
    const QFontMetrics metrics{QFont()};
    const QPixmap scale = LatitudeLabels(QSize(40, 800), 800);
    ASSERT_EQ(scale.size(), QSize(40, 800));
    const QImage image = scale.toImage().convertToFormat(QImage::Format_RGB32);
    // Baselines: 10 at the top, trunc(i * 44.44) + 4 between, trunc(800 - 3) at the bottom.
    QList<int> baselines{10};
    for (int i = 1; i <= 17; ++i)
        baselines.append(int(i * (800 / 18.0)) + 4);
    baselines.append(797);
    ASSERT_EQ(baselines[9], 404);
    auto nearBaseline = [&](int y) {
        for (int b : baselines)
            if (y >= b - metrics.ascent() && y <= b + metrics.descent())
                return true;
        return false;
    };
    for (int y = 0; y < 800; ++y) {
        if (!nearBaseline(y)) {
            ASSERT_EQ(LeftmostInk(image, y, y), 40) << "stray ink on row " << y;
        }
    }
    for (int b : baselines)
        EXPECT_LT(LeftmostInk(image, b - metrics.ascent(), b + metrics.descent()), 40)
            << "no text at baseline " << b;
    // "  0" starts two blanks further right than "+10" above it.
    const int zeroLeft = LeftmostInk(image, 404 - metrics.ascent(), 404);
    const int tenLeft = LeftmostInk(image, baselines[8] - metrics.ascent(), baselines[8]);
    EXPECT_GE(zeroLeft - tenLeft, metrics.horizontalAdvance("  ") - metrics.horizontalAdvance("+"));
}

TEST(ScaleLabels, HourTextsStartAtTheirColumns)
{
    const QFontMetrics metrics{QFont()};
    const QPixmap scale = LongitudeLabels(QSize(1600, 20), 1600, 5);
    const QImage image = scale.toImage().convertToFormat(QImage::Format_RGB32);
    const int textWidth = metrics.horizontalAdvance("00h");
    ASSERT_LT(textWidth, 50); // room between labels 66 pixels apart
    // Labels 66.67 pixels apart; nothing above the ascent over the baseline 20 - 5.
    EXPECT_EQ(LeftmostInk(image, 0, 14 - metrics.ascent()), 1600);
    int from = 0;
    for (int i = 0; i < 24; ++i) {
        const int x = int(i * 1600 / 24.0) + 12; // 12, 78, 145, 212, ...
        const int left = LeftmostInk(image, 0, 19, from);
        EXPECT_GE(left, x) << "label " << i;
        EXPECT_LE(left, x + 3) << "label " << i;
        from = x + textWidth + 2; // past this label
    }
}

TEST(DrawRolled, LayerFollowsTheMapOffset)
{
    struct Row {
        int offset, expected;
    } rows[] = {
        {0, 30},
        // 240 / 24 = 10: split 240 - 30 = 210, column 0 lands at 30
        {3, 60},
        // split 240 - 230 = 10: column 30 lands at 30 - 10
        {23, 20},
        // outside a day: drawn as it is
        {-1, 30},
        {40, 30},
    };
    for (const auto &r : rows) {
        QPixmap target(240, 20);
        target.fill(Qt::blue);
        QPainter painter(&target);
        DrawRolled(painter, Striped(240, 20, 30), 240, r.offset);
        painter.end();
        EXPECT_EQ(MarkerColumns(target), QList<int>{r.expected}) << "offset " << r.offset;
        EXPECT_NE(target.toImage().pixel(239, 19), QColor(Qt::blue).rgb()) << "all covered";
    }
}

QStringList messages;

void Collect(QtMsgType, const QMessageLogContext &, const QString &text)
{
    messages.append(text);
}

struct SkyRoll {
    QList<int> markers;
    QStringList log;
    bool covered;
};

SkyRoll Roll(int sagittariusX, bool debug)
{
    // A 240-wide sky with its reference column 100 marked.
    QPixmap target(240, 10);
    target.fill(Qt::blue);
    messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(Collect);
    RollSkyOverlay(target, Striped(240, 10, 100), 100, sagittariusX, debug);
    qInstallMessageHandler(previous);
    const QImage image = target.toImage();
    bool covered = true;
    for (int x = 0; x < 240; ++x)
        covered &= image.pixel(x, 5) != QColor(Qt::blue).rgb();
    return SkyRoll{MarkerColumns(target), messages, covered};
}

TEST(RollSkyOverlay, ReferenceColumnLandsUnderSagittarius)
{
    struct Row {
        const char *note;
        int sagittariusX, expected;
    } rows[] = {
        {"left", 40, 40},
        {"no shift", 100, 100},
        {"right", 150, 150},
        {"right edge", 239, 239},
        // An x left of the map (shift 400, folded to 160): -300 + 2 * 240
        {"off the map, left", -300, 180},
        // Beyond the right edge (shift -160, folded to 80): 500 - 2 * 240
        {"off the map, right", 500, 20},
    };
    for (const auto &r : rows) {
        SCOPED_TRACE(r.note);
        const SkyRoll roll = Roll(r.sagittariusX, false);
        EXPECT_EQ(roll.markers, QList<int>{r.expected});
        EXPECT_TRUE(roll.covered);
        EXPECT_TRUE(roll.log.isEmpty());
    }
}

TEST(RollSkyOverlay, DebugMessages)
{
    // Sagittarius at 40, reference 100: shift 60 to the left.
    EXPECT_EQ(Roll(40, true).log,
              QStringList({"Shifting source_overlay to the LEFT by 60 pixels",
                           "Copying source_overlay(60,0,240,10) to pixmap(0,0,180,10)",
                           "Copying source_overlay(0,0,60,10) to pixmap(180,0,240,10)"}));
    // At 150: shift 100 - 150 + 240 = 190 to the right.
    EXPECT_EQ(Roll(150, true).log,
              QStringList({"Shifting source_overlay to the RIGHT by 190 pixels",
                           "Copying source_overlay(190,0,240,10) to pixmap(0,0,50,10)",
                           "Copying source_overlay(0,0,190,10) to pixmap(50,0,240,10)"}));
}

} // namespace
