#include "walk/GeometryCollector.h"

#include "walk/DrawEmitter.h"

namespace velmora::walk {

GeometryCollector::Surface& GeometryCollector::changing() {
    if (surfaceUsed_ || surfaces_.empty()) {
        surfaces_.push_back(surfaces_.empty() ? Surface{} : surfaces_.back());
        surfaceUsed_ = false;
    }
    return surfaces_.back();
}

uint32_t GeometryCollector::glGenLists(int32_t) {
    return 1;
}

void GeometryCollector::glPolygonOffset(float factor, float) {
    changing().polygonOffset = factor;
}

void GeometryCollector::glBindTexture(uint32_t, uint32_t texture) {
    changing().textureName = texture == kNoTexture ? 0 : texture;
}

void GeometryCollector::glMaterialfv(uint32_t, uint32_t pname, const std::array<float, 4>& params) {
    Surface& surface = changing();
    if (pname == kDiffuse) surface.diffuse = params;
    if (pname == kAmbient) surface.ambient = params;
    if (pname == kSpecular) surface.specular = params;
    if (pname == kEmission) surface.emission = params;
}

void GeometryCollector::selectMaterial(int32_t material, int32_t texture) {
    Surface& surface = changing();
    surface.material = material;
    surface.texture = texture;
    surface.setAt = command_;
}

void GeometryCollector::pointLight(float x, float y, float z, uint32_t colour) {
    lights_.push_back({{x, y, z}, colour});
}

void GeometryCollector::glBegin(uint32_t) {
    if (surfaces_.empty()) changing();
    current_ = Triangle{};
    current_.surface = surfaces_.size() - 1;
    current_.command = command_;
    corner_ = 0;
}

void GeometryCollector::glNormal3f(float nx, float ny, float nz) {
    current_.normal = {nx, ny, nz};
}

void GeometryCollector::glTexCoord2f(float s, float t) {
    texCoord_ = {s, t};
}

void GeometryCollector::glVertex3f(float x, float y, float z) {
    if (corner_ < 3) current_.corners[static_cast<std::size_t>(corner_++)] = {{x, y, z}, texCoord_};
}

void GeometryCollector::glEnd() {
    if (corner_ < 3) return;
    triangles_.push_back(current_);
    surfaceUsed_ = true;
}

}  // namespace velmora::walk
