#pragma once

#include <velmora/DrawListSink.h>
#include <velmora/GeometrySink.h>

#include <cstdint>

namespace velmora::walk {

// Turns a walk's geometry into the OpenGL 1.1 operations of the preview's display list: per
// surface a texture binding and four material colours, per depth bias a polygon offset, per
// triangle one polygon lit with its first corner's normal, its y and z exchanged on the way.
// Lines and lights have no operation.
class DrawListAdapter final : public GeometrySink {
  public:
    explicit DrawListAdapter(DrawListSink& sink) : sink_(sink) {}

    // glGenLists(1) and glNewList(name, GL_COMPILE); the name, which must fit 16 bits.
    int16_t beginList();
    void endList() { sink_.glEndList(); }

    void surface(const Surface& surface) override;
    void depthBias(float bias) override;
    void triangle(const std::array<Corner, 3>& corners) override;

  private:
    DrawListSink& sink_;
};

}  // namespace velmora::walk
