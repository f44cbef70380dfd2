#include "WindowLayout.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace lunaquill {

namespace {

constexpr int kStrip = 20; // the latitude and hour scales' thickness
constexpr int kGap = 4;    // between the scale, the rows of panels and the bottom

// Scales for one row of panels across `width` pixels: every panel as large
// as it can be (at most its form size) with each at or above its minimum;
// the shortfall is taken from the panels with room to spare, evenly (one
// common scale t, raised to a panel's own minimum where that is higher).
// False when even the minimums do not fit.
bool FillRow(const std::vector<int> &row, const std::array<PanelForm, 4> &panels, int width,
             std::array<double, 4> &scaleX)
{
    auto widthAt = [&](double t) {
        double sum = 0.0;
        for (int i : row)
            sum += std::ceil(panels[i].size.width() * std::max(t, panels[i].minimumScaleX));
        return sum;
    };
    if (widthAt(0.0) > width)
        return false;
    double low = 0.0, high = 1.0;
    if (widthAt(1.0) <= width) {
        low = 1.0;
    } else {
        for (int step = 0; step < 40; ++step) {
            const double t = (low + high) / 2;
            (widthAt(t) <= width ? low : high) = t;
        }
    }
    for (int i : row)
        scaleX[i] = std::max(low, panels[i].minimumScaleX);
    return true;
}

} // namespace

bool IsFullSize(QSize window)
{
    return window.width() >= kFullWindowSize.width() && window.height() >= kFullWindowSize.height();
}

CompactLayout LayOutCompact(QSize central, const std::array<PanelForm, 4> &panels)
{
    const std::vector<std::vector<int>> arrangements[2] = {{{0, 1, 2, 3}}, {{0, 1}, {2, 3}}};
    int panelHeight = 0;
    for (const PanelForm &p : panels)
        panelHeight = std::max(panelHeight, p.size.height());

    CompactLayout best;
    for (const auto &rows : arrangements) {
        CompactLayout layout;
        layout.rows = int(rows.size());
        bool fits = true;
        for (const auto &row : rows)
            fits = fits && FillRow(row, panels, central.width() - (int(row.size()) + 1) * kGap,
                                   layout.scaleX);
        if (!fits)
            continue;

        // The map as large as the width allows and the panels at their
        // smallest height leave room for; the panels take what is left, up to
        // the scale of their narrowest panel (so they keep their proportions
        // where there is room).
        const int below = kStrip + (layout.rows + 1) * kGap;
        const int smallestPanels =
            int(std::ceil(layout.rows * panelHeight * kMinimumPanelScaleY));
        const int mapHeight = std::min((central.width() - 2 * kStrip) / 2,
                                       central.height() - below - smallestPanels);
        if (mapHeight < 1)
            continue;
        const double narrowest = *std::min_element(layout.scaleX.begin(), layout.scaleX.end());
        const double room = double(central.height() - mapHeight - below)
                            / (layout.rows * panelHeight);
        layout.scaleY = std::clamp(std::min(room, narrowest), kMinimumPanelScaleY, 1.0);

        const int mapWidth = 2 * mapHeight;
        const int left = (central.width() - mapWidth) / 2;
        layout.map = QRect(left, 0, mapWidth, mapHeight);
        layout.latitudeLeft = QRect(left - kStrip, 0, kStrip, mapHeight);
        layout.latitudeRight = QRect(left + mapWidth, 0, kStrip, mapHeight);
        layout.longitude = QRect(left - kStrip, mapHeight, mapWidth + 2 * kStrip, kStrip);

        // Each row spread with equal gaps, the first at the left edge.
        const int height = int(std::lround(panelHeight * layout.scaleY));
        int y = mapHeight + kStrip + kGap;
        for (const auto &row : rows) {
            int total = 0;
            for (int i : row)
                total += int(std::ceil(panels[i].size.width() * layout.scaleX[i]));
            const int gap = (central.width() - total) / (int(row.size()) + 1);
            int x = gap;
            for (int i : row) {
                const int width = int(std::ceil(panels[i].size.width() * layout.scaleX[i]));
                layout.panels[i] = QRect(x, y, width, height);
                x += width + gap;
            }
            y += height + kGap;
        }
        if (best.rows == 0 || mapHeight > best.map.height())
            best = layout;
    }
    return best;
}

QRect ChartRect(const QRect &map, int which)
{
    const int half = map.width() / 2;
    const int side = std::max(std::min(half, map.height()) - 10, 1);
    const int left = map.left() + which * half + (half - side) / 2;
    const int top = map.top() + (map.height() - side) / 2;
    return QRect(left, top, side, side);
}

double ScaledPointSize(double formPointSize, double scale)
{
    return std::min(formPointSize, std::max(8.0, formPointSize * scale));
}

QRect ScaledRect(const QRect &form, double scaleX, double scaleY)
{
    const int left = int(std::lround(form.left() * scaleX));
    const int top = int(std::lround(form.top() * scaleY));
    const int right = int(std::lround((form.left() + form.width()) * scaleX));
    const int bottom = int(std::lround((form.top() + form.height()) * scaleY));
    return QRect(left, top, right - left, bottom - top);
}

} // namespace lunaquill
