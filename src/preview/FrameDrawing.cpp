#include <velmora/MDLObject.h>
#include <velmora/PreviewSurface.h>

#include "foundation/Errors.h"
#include "foundation/NumberText.h"
#include "preview/WindowSurface.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <cmath>

namespace velmora {

namespace {

const GLfloat kLightAmbient[4] = {0.05f, 0.05f, 0.05f, 1.0f};
const GLfloat kLightDiffuse[4] = {0.5f, 0.5f, 0.5f, 1.0f};
const GLfloat kLightSpecular[4] = {0.05f, 0.05f, 0.05f, 1.0f};

// Single-precision arithmetic that fails as the host's arithmetic does: a zero divisor is
// error 11, a result too large for a single is error 6.
float checked(float result) {
    if (!std::isfinite(result)) raisePlatformError(kOverflow);
    return result;
}

float divide(float dividend, float divisor) {
    if (divisor == 0.0f) raisePlatformError(kDivisionByZero);
    return checked(dividend / divisor);
}

}  // namespace

void MDLObject::glDrawMDL(float heading, float pitch, float panX, float panY, float picWidth,
                          float picHeigth, int32_t hDC, float zoom) {
    glShadeModel(GL_SMOOTH);
    glEnable(GL_DEPTH_TEST);
    glEnable(GL_CULL_FACE);
    glEnable(GL_BLEND);
    glEnable(GL_TEXTURE_2D);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonMode(GL_FRONT, GL_FILL);
    glClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, kLightDiffuse);
    // The light keeps its default position: it shines from the viewer whatever the model's turn.
    glLightfv(GL_LIGHT0, GL_AMBIENT, kLightAmbient);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, kLightDiffuse);
    glLightfv(GL_LIGHT0, GL_SPECULAR, kLightSpecular);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glClear(GL_COLOR_BUFFER_BIT);
    glClear(GL_ACCUM_BUFFER_BIT);
    glClear(GL_DEPTH_BUFFER_BIT);
    glClear(GL_STENCIL_BUFFER_BIT);

    const float width = divide(picWidth, TwipsPerPixelX());
    const float height = divide(picHeigth, TwipsPerPixelY());
    const float aspect = divide(width, height);
    glViewport(0, 0, numbers::toInt32(width), numbers::toInt32(height));

    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    gluPerspective(60.0, static_cast<double>(aspect), 0.01, 10000.0);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();

    if (!boundingBox_) raisePlatformError(kObjectNotSet);
    const velmora::BoundingBox& box = *boundingBox_;
    const float dx = checked(box.xmax() - box.xmin());
    const float dy = checked(box.ymax() - box.ymin());
    const float dz = checked(box.zmax() - box.zmin());
    const float radius = checked(std::sqrt((dx * 0.5f) * (dx * 0.5f) + (dy * 0.5f) * (dy * 0.5f) +
                                           (dz * 0.5f) * (dz * 0.5f)));
    const float distance = checked(std::sqrt(3.0f) * radius);

    glTranslatef(0.0f, 0.0f, divide(checked(-distance * 100.0f), zoom));
    glRotatef(pitch, 1.0f, 0.0f, 0.0f);
    glRotatef(heading, 0.0f, 0.0f, 1.0f);
    // After the turns, so the pan moves the model along its own x and z, not the screen's.
    glTranslatef(checked(panX - checked(box.xmin() + box.xmax()) / 2.0f),
                 checked(panY - checked(box.zmin() + box.zmax()) / 2.0f),
                 checked(-checked(box.ymin() + box.ymax()) / 2.0f));

    glPushMatrix();
    glCallList(static_cast<GLuint>(drawListId_));
    glPopMatrix();
    windowing::swapBuffers(hDC);
}

}  // namespace velmora
