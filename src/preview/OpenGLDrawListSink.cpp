#include "preview/OpenGLDrawListSink.h"

#include <GL/gl.h>

namespace velmora {

uint32_t OpenGLDrawListSink::glGenLists(int32_t range) {
    return ::glGenLists(range);
}

void OpenGLDrawListSink::glNewList(uint32_t list, uint32_t mode) {
    ::glNewList(list, mode);
}

void OpenGLDrawListSink::glEndList() {
    ::glEndList();
}

void OpenGLDrawListSink::glPolygonOffset(float factor, float units) {
    ::glPolygonOffset(factor, units);
}

void OpenGLDrawListSink::glBindTexture(uint32_t target, uint32_t texture) {
    ::glBindTexture(target, texture);
}

void OpenGLDrawListSink::glMaterialfv(uint32_t face, uint32_t pname,
                                      const std::array<float, 4>& params) {
    ::glMaterialfv(face, pname, params.data());
}

void OpenGLDrawListSink::glBegin(uint32_t mode) {
    ::glBegin(mode);
}

void OpenGLDrawListSink::glNormal3f(float nx, float ny, float nz) {
    ::glNormal3f(nx, ny, nz);
}

void OpenGLDrawListSink::glTexCoord2f(float s, float t) {
    ::glTexCoord2f(s, t);
}

void OpenGLDrawListSink::glVertex3f(float x, float y, float z) {
    ::glVertex3f(x, y, z);
}

void OpenGLDrawListSink::glEnd() {
    ::glEnd();
}

}  // namespace velmora
