#include <velmora/OpenGLPreviewObject.h>

#include "foundation/Errors.h"
#include "preview/EglSurface.h"
#include "preview/ImageFile.h"

#include <GL/gl.h>

namespace velmora {

namespace {
const char* const kSource = "Velmora.OpenGLPreviewObject";
}

OpenGLPreviewObject::OpenGLPreviewObject() = default;
OpenGLPreviewObject::~OpenGLPreviewObject() = default;

void OpenGLPreviewObject::initOpenGL(int32_t h) {
    deviceContext_ = h;
    const int32_t format = egl::choosePixelFormat(deviceContext_);
    if (format == 0) raiseLibraryError(kSource, "Could not initialize OpenGL");
    egl::setPixelFormat(deviceContext_, format);
    renderContext_ = egl::createContext(deviceContext_);
    egl::makeCurrent(deviceContext_, renderContext_);
    openGLInit_ = true;
}

int32_t OpenGLPreviewObject::loadTexture(const std::string& s) {
    if (s.empty()) return 0;
    GLuint name = 0;
    glGenTextures(1, &name);
    // No temp.bmp: the image goes from its file to the texture in memory.
    const std::optional<image::TextureImage> image = image::readTextureImage(s);
    if (!image) raiseLibraryError(kSource, "Loading Texture File: '" + s + "' Failed!");
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, image->width, image->height, 0, GL_BGR_EXT, GL_UNSIGNED_BYTE,
                 image->bgrRows.data());
    return static_cast<int32_t>(name);
}

}  // namespace velmora
