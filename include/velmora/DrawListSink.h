#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// What MDLObject::glGenerateDrawList emits: the OpenGL 1.1 operations that make up the preview's
// display list. One implementation forwards to OpenGL; DrawListRecorder keeps them in a list.
// (A host that wants the geometry rather than the operations walks the model with a
// GeometrySink.)
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
