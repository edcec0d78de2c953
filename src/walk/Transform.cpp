#include "walk/Transform.h"

#include <cmath>
#include <numbers>

namespace velmora::walk {

Vector3 Transform::point(const Vector3& p) const {
    return {m[0] * p[0] + m[1] * p[1] + m[2] * p[2] + m[9],
            m[3] * p[0] + m[4] * p[1] + m[5] * p[2] + m[10],
            m[6] * p[0] + m[7] * p[1] + m[8] * p[2] + m[11]};
}

Vector3 Transform::direction(const Vector3& d) const {
    return {m[0] * d[0] + m[1] * d[1] + m[2] * d[2], m[3] * d[0] + m[4] * d[1] + m[5] * d[2],
            m[6] * d[0] + m[7] * d[1] + m[8] * d[2]};
}

Transform Transform::after(const Transform& inner) const {
    Transform out;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            out.m[3 * r + c] = m[3 * r] * inner.m[c] + m[3 * r + 1] * inner.m[3 + c] +
                               m[3 * r + 2] * inner.m[6 + c];
        }
    }
    const Vector3 moved = point({inner.m[9], inner.m[10], inner.m[11]});
    out.m[9] = moved[0];
    out.m[10] = moved[1];
    out.m[11] = moved[2];
    return out;
}

Transform Transform::turnAboutVertical(float degrees) {
    const double radians = degrees * std::numbers::pi / 180.0;
    const auto c = static_cast<float>(std::cos(radians));
    const auto s = static_cast<float>(std::sin(radians));
    // +z turns towards +x: x' = c x + s z, z' = -s x + c z.
    return Transform{{c, 0, s, 0, 1, 0, -s, 0, c, 0, 0, 0}};
}

bool Transform::isIdentity() const {
    return m == Transform{}.m;
}

}  // namespace velmora::walk
