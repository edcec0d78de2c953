#pragma once

#include <velmora/GeometrySink.h>

#include <array>
#include <cstdint>
#include <vector>

namespace velmora {

class MDLObject;

// Which side of a triangle is its front. The simulator hands each corner to OpenGL as (x, z, y)
// and culls back faces with OpenGL's defaults (counter-clockwise front). Swapping y and z mirrors
// the frame, so in the model's own axes a triangle is seen from the side opposite to
// (b - a) x (c - a). Mirroring to glTF's (x, y, -z) with the corners kept puts glTF's
// counter-clockwise front on the same side.

// The direction the front of the triangle a, b, c faces: (c - a) x (b - a), not of unit length;
// zero for a triangle without area.
Vector3 frontNormal(const std::array<Vector3, 3>& corners);

// The front faces against the sum of the corners' normals, so the triangle is lit from behind
// and shows its back where it should show its front. A triangle without area, or whose normals
// sum to nothing, is not reversed.
bool isReversed(const std::array<Corner, 3>& corners);

// The DRAW_TRI_LIST_ITEMs of the model whose triangles are reversed, by their 1-based positions
// in the command list, as the file holds them (before any transform of a walk). An item whose
// corners are not in the vertex list is passed over.
std::vector<int32_t> reversedTriangles(const MDLObject& model);

}  // namespace velmora
