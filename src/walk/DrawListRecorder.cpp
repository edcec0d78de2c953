#include <velmora/DrawListSink.h>

namespace velmora {

uint32_t DrawListRecorder::glGenLists(int32_t range) {
    operations_.push_back({"glGenLists", {static_cast<double>(range)}});
    const uint32_t first = nextList_;
    nextList_ += static_cast<uint32_t>(range);
    return first;
}

void DrawListRecorder::glNewList(uint32_t list, uint32_t mode) {
    operations_.push_back({"glNewList", {static_cast<double>(list), static_cast<double>(mode)}});
}

void DrawListRecorder::glEndList() {
    operations_.push_back({"glEndList", {}});
}

void DrawListRecorder::glPolygonOffset(float factor, float units) {
    operations_.push_back({"glPolygonOffset", {factor, units}});
}

void DrawListRecorder::glBindTexture(uint32_t target, uint32_t texture) {
    operations_.push_back(
        {"glBindTexture", {static_cast<double>(target), static_cast<double>(texture)}});
}

void DrawListRecorder::glMaterialfv(uint32_t face, uint32_t pname,
                                    const std::array<float, 4>& params) {
    operations_.push_back({"glMaterialfv",
                           {static_cast<double>(face), static_cast<double>(pname), params[0],
                            params[1], params[2], params[3]}});
}

void DrawListRecorder::glBegin(uint32_t mode) {
    operations_.push_back({"glBegin", {static_cast<double>(mode)}});
}

void DrawListRecorder::glNormal3f(float nx, float ny, float nz) {
    operations_.push_back({"glNormal3f", {nx, ny, nz}});
}

void DrawListRecorder::glTexCoord2f(float s, float t) {
    operations_.push_back({"glTexCoord2f", {s, t}});
}

void DrawListRecorder::glVertex3f(float x, float y, float z) {
    operations_.push_back({"glVertex3f", {x, y, z}});
}

void DrawListRecorder::glEnd() {
    operations_.push_back({"glEnd", {}});
}

}  // namespace velmora
