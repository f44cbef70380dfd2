// The sphere the star charts are drawn on: a unit sphere of 100 segments and
// 100 rings, with the texture coordinates of an equirectangular map. Built
// without any OpenGL call, so it can be checked without a context.
#pragma once

#include <cstdint>
#include <vector>

namespace lunaquill {

// One vertex as the vertex buffer holds it: position, then texture
// coordinates, 20 bytes.
struct SphereVertex {
    float x, y, z;
    float u, v;
};
static_assert(sizeof(SphereVertex) == 20, "the vertex buffer layout is 20 bytes a vertex");

struct SphereMesh {
    std::vector<SphereVertex> vertices;
    std::vector<uint16_t> indices;
    int triangleCount = 0;
};

// 101 x 102 vertices, segment i = 0..100 outer and ring j = 0..101 inner:
// u = i / 100, v = j / 101, theta = 2 pi u, phi = pi v - pi / 2 and
// (x, y, z) = (cos theta cos phi, sin phi, sin theta cos phi), computed in
// double and stored as float. Two counter-clockwise (seen from outside)
// triangles per quad, 20,200 triangles and 60,600 16-bit indices.
SphereMesh BuildSphereMesh();

} // namespace lunaquill
