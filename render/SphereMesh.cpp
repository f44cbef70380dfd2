#include "SphereMesh.h"

#include <cmath>

namespace lunaquill {

SphereMesh BuildSphereMesh()
{
    constexpr int segments = 100;
    constexpr int rings = 100;
    constexpr int perSegment = rings + 2; // rings 0..101
    const double pi = M_PI;

    SphereMesh mesh;
    mesh.vertices.reserve((segments + 1) * perSegment);
    for (int i = 0; i <= segments; ++i) {
        for (int j = 0; j < perSegment; ++j) {
            const double u = double(i) / segments;
            const double v = double(j) / (rings + 1);
            const double theta = u * (2.0 * pi);
            const double phi = v * pi - pi / 2.0;
            mesh.vertices.push_back({float(std::cos(theta) * std::cos(phi)), float(std::sin(phi)),
                                     float(std::sin(theta) * std::cos(phi)), float(u), float(v)});
        }
    }

    mesh.indices.reserve(segments * (rings + 1) * 6);
    for (int i = 0; i < segments; ++i) {
        for (int j = 0; j <= rings; ++j) {
            const uint16_t a = uint16_t(i * perSegment + j);
            const uint16_t c = uint16_t((i + 1) * perSegment + j);
            for (uint16_t index : {a, uint16_t(a + 1), uint16_t(c + 1)})
                mesh.indices.push_back(index);
            ++mesh.triangleCount;
            for (uint16_t index : {uint16_t(c + 1), c, a})
                mesh.indices.push_back(index);
            ++mesh.triangleCount;
        }
    }
    return mesh;
}

} // namespace lunaquill
