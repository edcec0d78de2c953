// Built instead of the preview when Velmora is configured with VELMORA_PREVIEW=OFF: every member
// that needs an OpenGL context or a drawing surface links, and fails with a clear error.
#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "foundation/Errors.h"

namespace velmora {

namespace {

[[noreturn]] void raiseNoPreview() {
    Error error(100, "Velmora.OpenGLPreviewObject", "Could not initialize OpenGL");
    throw error.setDetail("this build of Velmora has no preview (VELMORA_PREVIEW=OFF)");
}

}  // namespace

OpenGLPreviewObject::OpenGLPreviewObject() = default;
OpenGLPreviewObject::~OpenGLPreviewObject() = default;

void OpenGLPreviewObject::initOpenGL(int32_t h) {
    deviceContext_ = h;
    renderContext_ = 0;
    raiseNoPreview();
}

int32_t OpenGLPreviewObject::loadTexture(const std::string&) {
    raiseNoPreview();
}

void MDLObject::glPreparepreview(const std::shared_ptr<OpenGLPreviewObject>&) {
    raiseNoPreview();
}

void MDLObject::glLoadTextureList(const std::shared_ptr<OpenGLPreviewObject>&) {
    raiseNoPreview();
}

void MDLObject::glGenerateDrawList() {
    raiseNoPreview();
}

void MDLObject::glDrawMDL(float, float, float, float, float, float, int32_t, float) {
    raiseNoPreview();
}

int32_t OpenGLPreviewObject::loadTextureWithAlpha(const std::string&) {
    raiseNoPreview();
}

void MDLObject::glPrepareView(const std::shared_ptr<OpenGLPreviewObject>&) {
    raiseNoPreview();
}

ViewResult MDLObject::glDrawView(const View&, int32_t, const std::optional<Scenario>&) const {
    raiseNoPreview();
}

int32_t previewSurfaceLimit() {
    return 0;
}

void savePixelsPNG(const std::vector<uint8_t>&, int32_t, int32_t, const std::string&) {
    raiseNoPreview();
}

int32_t createPreviewSurface(int32_t, int32_t) {
    raiseNoPreview();
}

std::vector<uint8_t> previewSurfacePixels(int32_t) {
    raiseNoPreview();
}

void savePreviewSurfacePNG(int32_t, const std::string&) {
    raiseNoPreview();
}

void destroyPreviewSurface(int32_t) {}

float TwipsPerPixelX() {
    return 15.0f;
}

float TwipsPerPixelY() {
    return 15.0f;
}

}  // namespace velmora
