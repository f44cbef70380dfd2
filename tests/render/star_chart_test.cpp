// The chart sphere's mesh (no OpenGL needed) and the clip to the dial's face.
#include "render/SphereMesh.h"
#include "render/StarChartRenderer.h"

#include <QImage>
#include <QPixmap>
#include <QVector3D>
#include <gtest/gtest.h>

using namespace lunaquill;

namespace {

TEST(SphereMesh, VerticesIndicesAndWinding)
{
    const SphereMesh mesh = BuildSphereMesh();
    ASSERT_EQ(mesh.vertices.size(), 101u * 102u);
    ASSERT_EQ(mesh.indices.size(), 60600u);
    EXPECT_EQ(mesh.triangleCount, 20200);

    // Ring 51: v = 51 / 101 = 0.5049505, phi = pi (v - 0.5) = 0.0155524 rad,
    // sin phi = 0.0155518, cos phi = 0.9998791. Segment 25 is theta = pi / 2.
    const float s = 0.0155518f, c = 0.9998791f, v51 = 0.5049505f;
    const struct { int index; float x, y, z, u, v; } rows[] = {
        {0, 0, -1, 0, 0, 0},                  // first: the south pole on the seam
        {101, 0, 1, 0, 0, 1},                 // end of the first segment: north pole
        {25 * 102 + 51, 0, s, c, 0.25f, v51}, // theta = pi / 2: +z
        {50 * 102 + 51, -c, s, 0, 0.5f, v51}, // theta = pi: -x
        {75 * 102, 0, -1, 0, 0.75f, 0},
        {10301, 0, 1, 0, 1, 1},               // last: the north pole, u and v 1
    };
    for (const auto &r : rows) {
        const SphereVertex &vertex = mesh.vertices[r.index];
        SCOPED_TRACE(r.index);
        EXPECT_NEAR(vertex.x, r.x, 1e-6);
        EXPECT_NEAR(vertex.y, r.y, 1e-6);
        EXPECT_NEAR(vertex.z, r.z, 1e-6);
        EXPECT_FLOAT_EQ(vertex.u, r.u);
        EXPECT_FLOAT_EQ(vertex.v, r.v);
    }

    // First quad (i 0, j 0: a 0, c 102) and last (i 99, j 100: a 10198, c 10300).
    const std::vector<uint16_t> first(mesh.indices.begin(), mesh.indices.begin() + 6);
    const std::vector<uint16_t> last(mesh.indices.end() - 6, mesh.indices.end());
    EXPECT_EQ(first, (std::vector<uint16_t>{0, 1, 103, 103, 102, 0}));
    EXPECT_EQ(last, (std::vector<uint16_t>{10198, 10199, 10301, 10301, 10300, 10198}));

    // Every triangle that is not collapsed at a pole faces outward, so back
    // faces can be culled; every index is a vertex.
    int facingOut = 0;
    for (size_t t = 0; t < mesh.indices.size(); t += 3) {
        QVector3D p[3];
        for (int k = 0; k < 3; ++k) {
            ASSERT_LT(mesh.indices[t + k], mesh.vertices.size());
            const SphereVertex &vertex = mesh.vertices[mesh.indices[t + k]];
            p[k] = QVector3D(vertex.x, vertex.y, vertex.z);
        }
        const QVector3D normal = QVector3D::crossProduct(p[1] - p[0], p[2] - p[0]);
        if (normal.length() > 1e-7f) {
            EXPECT_GT(QVector3D::dotProduct(normal, p[0] + p[1] + p[2]), 0.0f) << t;
            ++facingOut;
        }
    }
    EXPECT_EQ(facingOut, 20200 - 2 * 100); // one triangle a segment collapses at each pole
}

TEST(DialFace, ClipLeavesFifteenPixelsTopAndLeftTwentyRightAndBottom)
{
    // A 790-pixel chart: the face is the ellipse in x, y 15..769 (width 755).
    QPixmap chart(790, 790);
    chart.fill(Qt::red);
    QImage sphere(790, 790, QImage::Format_ARGB32_Premultiplied);
    sphere.fill(Qt::green);
    ClipToDialFace(chart, sphere);
    const QImage out = chart.toImage();
    const struct { int x, y; Qt::GlobalColor colour; } rows[] = {
        {14, 392, Qt::red},  {16, 392, Qt::green}, {768, 392, Qt::green}, {770, 392, Qt::red},
        {392, 14, Qt::red},  {392, 16, Qt::green}, {392, 768, Qt::green}, {392, 770, Qt::red},
        {0, 0, Qt::red},     {789, 789, Qt::red},  {120, 120, Qt::red},   {392, 392, Qt::green},
    };
    for (const auto &r : rows)
        EXPECT_EQ(out.pixel(r.x, r.y), QColor(r.colour).rgb()) << r.x << "," << r.y;

    QPixmap none; // no dial image: nothing to draw on, and no crash
    ClipToDialFace(none, sphere);
    EXPECT_TRUE(none.isNull());
}

} // namespace
