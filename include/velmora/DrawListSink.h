#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// What the preview's walk over a model emits: the OpenGL operations that make up its display
// list. One implementation forwards to OpenGL; DrawListRecorder keeps them in a list.
class DrawListSink {
  public:
    virtual ~DrawListSink() = default;
    virtual uint32_t glGenLists(int32_t range) = 0;
    virtual void glNewList(uint32_t list, uint32_t mode) = 0;
    virtual void glEndList() = 0;
    virtual void glPolygonOffset(float factor, float units) = 0;
    virtual void glBindTexture(uint32_t target, uint32_t texture) = 0;
    virtual void glMaterialfv(uint32_t face, uint32_t pname,
                              const std::array<float, 4>& params) = 0;
    virtual void glBegin(uint32_t mode) = 0;
    virtual void glNormal3f(float nx, float ny, float nz) = 0;
    virtual void glTexCoord2f(float s, float t) = 0;
    virtual void glVertex3f(float x, float y, float z) = 0;
    virtual void glEnd() = 0;

    // Our own addition: what a walk knows beside the OpenGL operations, for sinks that export
    // rather than draw. Each does nothing unless a sink overrides it.
    // At a SET_MATERIAL, before its operations: the 0-based material and texture (-1: none).
    virtual void selectMaterial(int32_t material, int32_t texture) {
        static_cast<void>(material);
        static_cast<void>(texture);
    }
    // Before each command the walk comes to: its 1-based position in the command list.
    virtual void atCommand(int32_t position) { static_cast<void>(position); }
    // At a BGL_LIGHT: where it stands, in the frame of glVertex3f, and its colour 0xAARRGGBB.
    virtual void pointLight(float x, float y, float z, uint32_t colour) {
        static_cast<void>(x);
        static_cast<void>(y);
        static_cast<void>(z);
        static_cast<void>(colour);
    }
};

// Keeps every operation, with its arguments, in order.
class DrawListRecorder final : public DrawListSink {
  public:
    struct Operation {
        std::string name;          // "glBegin", "glVertex3f", ...
        std::vector<double> args;  // the arguments in order (floats widened)
    };

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

    const std::vector<Operation>& operations() const { return operations_; }
    void clear() { operations_.clear(); }

  private:
    std::vector<Operation> operations_;
    uint32_t nextList_ = 1;
};

}  // namespace velmora
