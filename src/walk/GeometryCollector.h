#pragma once

#include <velmora/DrawListSink.h>

#include <array>
#include <cstdint>
#include <vector>

namespace velmora::walk {

// A sink that keeps what a walk draws as triangles, each with the surface state in force: for
// a drawing that needs the extent before it draws, and for exports. Positions and normals are
// kept as the walk emits them, in the exchanged frame (x, model z, model y).
class GeometryCollector final : public DrawListSink {
  public:
    struct Surface {
        int32_t material = -1;  // 0-based; -1 before the first SET_MATERIAL
        int32_t texture = -1;   // 0-based; -1 for none
        uint32_t textureName = 0;
        std::array<float, 4> diffuse{1, 1, 1, 1};
        std::array<float, 4> ambient{0.2f, 0.2f, 0.2f, 1};
        std::array<float, 4> specular{0, 0, 0, 1};
        std::array<float, 4> emission{0, 0, 0, 1};
        float polygonOffset = 0;
        int32_t setAt = 0;  // position of the SET_MATERIAL that chose it; 0 before any
    };
    struct Corner {
        std::array<float, 3> position{};
        std::array<float, 2> texCoord{};
    };
    struct Triangle {
        std::size_t surface = 0;  // index into surfaces()
        int32_t command = 0;      // position of the DRAW_TRI_LIST_ITEM
        std::array<float, 3> normal{};
        std::array<Corner, 3> corners{};
    };

    struct Light {
        std::array<float, 3> position{};
        uint32_t colour = 0;  // 0xAARRGGBB
    };

    const std::vector<Surface>& surfaces() const { return surfaces_; }
    const std::vector<Triangle>& triangles() const { return triangles_; }
    const std::vector<Light>& lights() const { return lights_; }

    uint32_t glGenLists(int32_t range) override;
    void glNewList(uint32_t, uint32_t) override {}
    void glEndList() override {}
    void glPolygonOffset(float factor, float units) override;
    void glBindTexture(uint32_t target, uint32_t texture) override;
    void glMaterialfv(uint32_t face, uint32_t pname, const std::array<float, 4>& params) override;
    void glBegin(uint32_t mode) override;
    void glNormal3f(float nx, float ny, float nz) override;
    void glTexCoord2f(float s, float t) override;
    void glVertex3f(float x, float y, float z) override;
    void glEnd() override;
    void selectMaterial(int32_t material, int32_t texture) override;
    void atCommand(int32_t position) override { command_ = position; }
    void pointLight(float x, float y, float z, uint32_t colour) override;

  private:
    // The surface being changed: a new one once a triangle has used the last.
    Surface& changing();

    std::vector<Surface> surfaces_;
    std::vector<Triangle> triangles_;
    std::vector<Light> lights_;
    int32_t command_ = 0;
    bool surfaceUsed_ = true;
    Triangle current_;
    std::array<float, 2> texCoord_{};
    int corner_ = 0;
};

}  // namespace velmora::walk
