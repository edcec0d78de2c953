#pragma once

#include <velmora/BGLCommand.h>
#include <velmora/GeometrySink.h>
#include <velmora/MaterialList.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>

#include "walk/Transform.h"

#include <cstdint>

namespace velmora::walk {

// What both walks emit for the commands that carry geometry: the surface of SET_MATERIAL, the
// depth bias of BGL_ZBIAS, the triangles and lines of the lists, and BGL_LIGHT, in the model's
// own axes. A key outside its list fails before anything of its command is emitted.
class GeometryEmitter {
  public:
    GeometryEmitter(const MaterialList& materials, const TextureList& textures,
                    const VertexList& vertices, GeometrySink& sink);

    // Passes one command at `position` on: the seven commands of geometry, nothing for the rest.
    void emit(const BGLCommand& command, int32_t position);

    // Positions and normals of later geometry go through `transform` (the scenario walk's calls
    // and transforms); the flat walk keeps the identity.
    void transform(const Transform& transform) {
        transform_ = transform;
        transformed_ = !transform.isIdentity();
    }

  private:
    void zBias(const BGLCommand& command);
    void setMaterial(const BGLCommand& command, int32_t position);
    void triangle(const BGLCommand& command);
    void line(const BGLCommand& command);
    void light(const BGLCommand& command, int32_t position);
    Corner cornerOf(const Vertex& vertex) const;

    const KeyedCollection<material>& materials_;
    const KeyedCollection<texture>& textures_;
    const KeyedCollection<Vertex>& vertices_;
    GeometrySink& sink_;
    int32_t vertexBase_ = 0;
    int32_t lineBase_ = 0;
    Transform transform_;
    bool transformed_ = false;
};

}  // namespace velmora::walk
