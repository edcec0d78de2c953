#pragma once

#include <array>
#include <cstdint>

namespace velmora {

// A point or a direction in the model's own axes: x to the east, y up, z to the north.
using Vector3 = std::array<float, 3>;

// What the triangles and lines that follow a SET_MATERIAL are made of. The colours are the
// material's own, r, g, b, a, whether or not a texture covers them; the values of a default
// Surface are the look of what a stream draws before its first SET_MATERIAL.
struct Surface {
    int32_t material = -1;  // 0-based index into the MaterialList; -1 before any SET_MATERIAL
    int32_t texture = -1;   // 0-based index into the TextureList; -1 for none
    std::array<float, 4> diffuse{1, 1, 1, 1};
    std::array<float, 4> ambient{0.2f, 0.2f, 0.2f, 1};
    std::array<float, 4> specular{0, 0, 0, 1};
    std::array<float, 4> emissive{0, 0, 0, 1};
    float power = 0;
    // The texture's glPointer (its OpenGL name once loaded); 0 without a texture.
    int32_t textureName = 0;
    int32_t command = 0;  // 1-based position of the SET_MATERIAL; 0 before any
};

// One corner of a triangle: its vertex, moved by the transforms in force.
struct Corner {
    Vector3 position{};
    Vector3 normal{};
    std::array<float, 2> texCoord{};  // as the vertex gives it: (tx, ty)
};

// A BGL_LIGHT.
struct Light {
    Vector3 position{};
    uint32_t colour = 0;  // 0xAARRGGBB
    int32_t type = 0;     // the command's light type, as it stands
    int32_t command = 0;  // 1-based position of the BGL_LIGHT
};

// What a walk over a model's command stream (MDLObject::walk) emits: the command it comes to,
// and what the model is made of there. Every member does nothing unless a sink overrides it.
class GeometrySink {
  public:
    virtual ~GeometrySink() = default;

    // Before each command the walk comes to: its 1-based position in the command list.
    virtual void atCommand(int32_t /*position*/) {}
    // At a SET_MATERIAL whose material and texture are in the model's lists.
    virtual void surface(const Surface& /*surface*/) {}
    // At a BGL_ZBIAS: the depth bias for what follows, as the command gives it; a higher bias
    // draws a surface over the ones at the same depth.
    virtual void depthBias(float /*bias*/) {}
    // At a DRAW_TRI_LIST_ITEM: its three corners in the item's order. The simulator's front face
    // is the side opposite to (b - a) x (c - a).
    virtual void triangle(const std::array<Corner, 3>& /*corners*/) {}
    // At a DRAW_LINE_LIST_ITEM whose two vertices are in the model: where the line runs.
    virtual void line(const std::array<Vector3, 2>& /*ends*/) {}
    // At a BGL_LIGHT whose parameters are numbers.
    virtual void light(const Light& /*light*/) {}
};

}  // namespace velmora
