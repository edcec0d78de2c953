#pragma once

#include <velmora/DrawListSink.h>

namespace velmora {

// Sends every operation of the draw-list walk straight to the current OpenGL context.
class OpenGLDrawListSink final : public DrawListSink {
  public:
    uint32_t glGenLists(int32_t range) override;
    void glNewList(uint32_t list, uint32_t mode) override;
    void glEndList() override;
    void glPolygonOffset(float factor, float units) override;
    void glBindTexture(uint32_t target, uint32_t texture) override;
    void glMaterialfv(uint32_t face, uint32_t pname, const std::array<float, 4>& params) override;
    void glBegin(uint32_t mode) override;
    void glNormal3f(float nx, float ny, float nz) override;
    void glTexCoord2f(float s, float t) override;
    void glVertex3f(float x, float y, float z) override;
    void glEnd() override;
};

}  // namespace velmora
