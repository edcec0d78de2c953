#include <velmora/OpenGLPreviewObject.h>

#include "foundation/Errors.h"
#include "image/ImageFile.h"
#include "preview/WindowSurface.h"

#include <GL/gl.h>

namespace velmora {

namespace {

const char* const kSource = "Velmora.OpenGLPreviewObject";

[[noreturn]] void raiseNoContext(const std::string& why) {
    Error error(100, kSource, "Could not initialize OpenGL");
    throw error.setDetail(why);
}

[[noreturn]] void raiseUnreadable(GLuint name, const std::string& path) {
    // Unlike the name of the described upload, the name made for an image that fails is freed.
    glDeleteTextures(1, &name);
    raiseLibraryError(kSource, "Loading Texture File: '" + path + "' Failed!");
}

GLuint newTexture() {
    GLuint name = 0;
    glGenTextures(1, &name);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    return name;
}

}  // namespace

OpenGLPreviewObject::OpenGLPreviewObject() = default;
OpenGLPreviewObject::~OpenGLPreviewObject() = default;

void OpenGLPreviewObject::initOpenGL(int32_t h) {
    deviceContext_ = h;
    const int32_t format = windowing::choosePixelFormat(deviceContext_);
    if (format == 0) raiseLibraryError(kSource, "Could not initialize OpenGL");
    // Unlike the described set-up, a surface or context that can't be made is an error here.
    if (!windowing::setPixelFormat(deviceContext_, format)) {
        raiseNoContext("no drawing buffer could be made for surface " + std::to_string(h));
    }
    renderContext_ = windowing::createContext(deviceContext_);
    if (renderContext_ == 0) {
        raiseNoContext("no OpenGL context could be made on surface " + std::to_string(h));
    }
    if (!windowing::makeCurrent(deviceContext_, renderContext_)) {
        raiseNoContext("the OpenGL context could not be made current");
    }
    openGLInit_ = true;
}

int32_t OpenGLPreviewObject::loadTexture(const std::string& s) {
    if (s.empty()) return 0;
    GLuint name = 0;
    glGenTextures(1, &name);
    // No temp.bmp: the image goes from its file to the texture in memory.
    const std::optional<image::TextureImage> image = image::readTextureImage(s);
    if (!image) raiseUnreadable(name, s);
    glBindTexture(GL_TEXTURE_2D, name);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
    glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    glTexImage2D(GL_TEXTURE_2D, 0, 3, image->width, image->height, 0, GL_BGR_EXT, GL_UNSIGNED_BYTE,
                 image->bgrRows.data());
    return static_cast<int32_t>(name);
}

int32_t OpenGLPreviewObject::loadTextureWithAlpha(const std::string& s) {
    if (s.empty()) return 0;
    const GLuint name = newTexture();
    const std::optional<image::RgbaImage> image = image::readRgbaImage(s);
    if (!image) raiseUnreadable(name, s);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, image->width, image->height, 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, image->rgbaRows.data());
    glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
    return static_cast<int32_t>(name);
}

}  // namespace velmora
