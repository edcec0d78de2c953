#pragma once

#include <cstdint>
#include <string>

namespace velmora {

// The preview's link to a drawing surface: makes the OpenGL context and turns image files
// into OpenGL textures.
class OpenGLPreviewObject {
  public:
    OpenGLPreviewObject();
    ~OpenGLPreviewObject();
    OpenGLPreviewObject(const OpenGLPreviewObject&) = delete;
    OpenGLPreviewObject& operator=(const OpenGLPreviewObject&) = delete;

    // Makes an OpenGL context on surface `h` (see PreviewSurface.h) current on this thread.
    // Error 100 "Could not initialize OpenGL" when there is no suitable configuration, or when
    // the drawing buffer or the context can't be made.
    void initOpenGL(int32_t h);
    bool openGLInit() const { return openGLInit_; }
    // Loads an image file as a texture and gives its texture name; 0 for an empty path.
    int32_t loadTexture(const std::string& s);
    // The same, keeping the image's alpha (32-bit TGA, PNG with alpha, DXT3
    // and DXT5 DDS) for MDLObject::glDrawView; the name of an image that fails is freed.
    int32_t loadTextureWithAlpha(const std::string& s);

  private:
    bool openGLInit_ = false;
    // A build without the preview (VELMORA_PREVIEW=OFF) has no surface to keep.
    [[maybe_unused]] int32_t renderContext_ = 0;
    [[maybe_unused]] int32_t deviceContext_ = 0;
};

}  // namespace velmora
