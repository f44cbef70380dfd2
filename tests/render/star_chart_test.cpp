// The chart sphere's mesh (no OpenGL needed) and the clip to the dial's face.
#include "render/SphereMesh.h"
#include "render/StarChartRenderer.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace lunaquill;

namespace {

TEST(SphereMesh, CountsVerticesAndIndices)
{
    const SphereMesh mesh = BuildSphereMesh();
    ASSERT_EQ(mesh.vertices.size(), 101u * 102u);
    ASSERT_EQ(mesh.indices.size(), 60600u);
    EXPECT_EQ(mesh.triangleCount, 20200);
    // Ring 51: v = 51 / 101 = 0.5049505, phi = pi (v - 0.5) = 0.0155524 rad,
    // sin phi = 0.0155518, cos phi = 0.9998791; segment 25 is theta = pi / 2.
    const float s = 0.0155518f, c = 0.9998791f, v = 0.5049505f;
    const struct { int index; float x, y, z, u, v; } rows[] = {
        {0, 0, -1, 0, 0, 0},     // first: the south pole
        {50 * 102 + 51, -c, s, 0, 0.5f, v}, {25 * 102 + 51, 0, s, c, 0.25f, v},
        {10301, 0, 1, 0, 1, 1},  // last: the north pole
    };
    for (const auto &r : rows) {
        const SphereVertex &p = mesh.vertices[r.index];
        for (auto [got, want] :
             {std::pair{p.x, r.x}, {p.y, r.y}, {p.z, r.z}, {p.u, r.u}, {p.v, r.v}})
            EXPECT_NEAR(got, want, 1e-6) << "vertex " << r.index;
    }
}

TEST(DialFace, ClipLeavesFifteenPixelsTopAndLeftTwentyRightAndBottom)
{
    // A 790-pixel chart: the face is the ellipse over x, y 15..769.
    QPixmap chart(790, 790);
    chart.fill(Qt::red);
    QImage sphere(790, 790, QImage::Format_ARGB32_Premultiplied);
    sphere.fill(Qt::green);
    ClipToDialFace(chart, sphere);
    const QImage out = chart.toImage();
    const struct { int x, y; Qt::GlobalColor colour; } rows[] = {
        {14, 392, Qt::red}, {16, 392, Qt::green}, {392, 768, Qt::green}, {392, 770, Qt::red},
        {120, 120, Qt::red}, // 384.7 pixels from the centre, beyond the radius 377.5
    };
    for (const auto &r : rows)
        EXPECT_EQ(out.pixel(r.x, r.y), QColor(r.colour).rgb()) << r.x << "," << r.y;
}

} // namespace
