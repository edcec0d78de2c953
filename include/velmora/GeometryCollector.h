#pragma once

#include <velmora/GeometrySink.h>

#include <array>
#include <cstdint>
#include <vector>

namespace velmora {

// Keeps everything a walk emits, in the order it came: every surface set (also those no
// triangle follows), the triangles and lines with the surface and depth bias in force and the
// command that drew them, and the lights. All of it in the model's own axes.
//
//     GeometryCollector geometry;
//     model.walk(geometry, Scenario().day(15));
//     for (const auto& t : geometry.triangles()) use(geometry.surfaceOf(t), t.corners);
class GeometryCollector : public GeometrySink {
  public:
    struct Triangle {
        std::array<Corner, 3> corners{};
        int32_t surface = -1;  // index into surfaces(); -1 before the first SET_MATERIAL
        float depthBias = 0;   // the BGL_ZBIAS in force; 0 before any
        int32_t command = 0;   // position of the DRAW_TRI_LIST_ITEM
    };
    struct Line {
        std::array<Vector3, 2> ends{};
        int32_t surface = -1;
        int32_t command = 0;  // position of the DRAW_LINE_LIST_ITEM
    };

    void atCommand(int32_t position) override { command_ = position; }
    void surface(const Surface& surface) override;
    void depthBias(float bias) override { depthBias_ = bias; }
    void triangle(const std::array<Corner, 3>& corners) override;
    void line(const std::array<Vector3, 2>& ends) override;
    void light(const Light& light) override { lights_.push_back(light); }

    const std::vector<Surface>& surfaces() const { return surfaces_; }
    const std::vector<Triangle>& triangles() const { return triangles_; }
    const std::vector<Line>& lines() const { return lines_; }
    const std::vector<Light>& lights() const { return lights_; }

    // The surface a triangle or line is made of; a default Surface before any SET_MATERIAL.
    const Surface& surfaceOf(const Triangle& triangle) const {
        return surfaceAtIndex(triangle.surface);
    }
    const Surface& surfaceOf(const Line& line) const { return surfaceAtIndex(line.surface); }
    // The first surface set by the SET_MATERIAL at `command`; nullptr when the walk set none there.
    const Surface* surfaceAt(int32_t command) const;

    // Forgets everything, for another walk.
    void clear();

  private:
    const Surface& surfaceAtIndex(int32_t index) const;

    std::vector<Surface> surfaces_;
    std::vector<Triangle> triangles_;
    std::vector<Line> lines_;
    std::vector<Light> lights_;
    int32_t command_ = 0;
    float depthBias_ = 0;
    bool surfacesInOrder_ = true;  // surfaces were set at rising command positions
};

}  // namespace velmora
