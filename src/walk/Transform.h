#pragma once

#include <velmora/GeometrySink.h>

#include <array>

namespace velmora::walk {

// An affine transform of model space: a 3 x 3 matrix, row by row, then a translation.
struct Transform {
    std::array<float, 12> m{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

    Vector3 point(const Vector3& p) const;
    Vector3 direction(const Vector3& d) const;
    // This transform applied after `inner`.
    Transform after(const Transform& inner) const;
    // A turn about the model's vertical axis (y), by `degrees` from +z towards +x.
    static Transform turnAboutVertical(float degrees);
    bool isIdentity() const;
};

}  // namespace velmora::walk
