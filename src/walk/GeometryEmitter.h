#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/DrawListSink.h>
#include <velmora/MaterialList.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>

#include <array>
#include <cstdint>

namespace velmora::walk {

// The OpenGL 1.1 values the walks emit; the walks themselves need no graphics library.
inline constexpr uint32_t kCompile = 0x1300;
inline constexpr uint32_t kTexture2D = 0x0DE1;
inline constexpr uint32_t kFront = 0x0404;
inline constexpr uint32_t kAmbient = 0x1200;
inline constexpr uint32_t kDiffuse = 0x1201;
inline constexpr uint32_t kSpecular = 0x1202;
inline constexpr uint32_t kEmission = 0x1600;
inline constexpr uint32_t kPolygon = 9;
inline constexpr uint32_t kNoTexture = 0xFFFFFFFF;

// An affine transform of model space: a 3 x 3 matrix, row by row, then a translation.
struct Transform {
    std::array<float, 12> m{1, 0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0};

    std::array<float, 3> point(float x, float y, float z) const;
    std::array<float, 3> direction(float x, float y, float z) const;
    // This transform applied after `inner`.
    Transform after(const Transform& inner) const;
    // A turn about the model's vertical axis (y), by `degrees` from +z towards +x.
    static Transform turnAboutVertical(float degrees);
    bool isIdentity() const;
};

// What both walks emit for the four commands that carry surface state and triangles: the
// material and texture of SET_MATERIAL, the depth bias of BGL_ZBIAS and one polygon per
// triangle of a triangle list, with the model's y and z changing places on the way to OpenGL.
class DrawEmitter {
  public:
    DrawEmitter(const MaterialList& materials, const TextureList& textures,
                const VertexList& vertices, DrawListSink& sink);

    void zBias(const BGLCommand& command);
    void setMaterial(const BGLCommand& command);
    void beginTriangleList(const BGLCommand& command);
    void triangle(const BGLCommand& command);
    // A BGL_LIGHT, for the sinks that keep lights (sinks that draw pass over it).
    void light(const BGLCommand& command);
    // Passes one command on: the five above, nothing for the rest.
    void emit(const BGLCommand& command);

    // Positions and normals of later triangles go through `transform` (the scenario walk's
    // calls and transforms); the flat walk keeps the identity.
    void transform(const Transform& transform) {
        transform_ = transform;
        transformed_ = !transform.isIdentity();
    }

  private:
    void drawTriangle(int32_t key1, int32_t key2, int32_t key3);

    const KeyedCollection<material>& materials_;
    const KeyedCollection<texture>& textures_;
    const KeyedCollection<Vertex>& vertices_;
    DrawListSink& sink_;
    int32_t vertexBase_ = 0;
    Transform transform_;
    bool transformed_ = false;
};

}  // namespace velmora::walk
