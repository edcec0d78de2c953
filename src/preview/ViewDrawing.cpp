#include <velmora/GeometryCollector.h>
#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>

#include "foundation/Errors.h"
#include "foundation/Host.h"
#include "preview/WindowSurface.h"

#include <GL/gl.h>
#include <GL/glu.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace velmora {

namespace {

constexpr double kFieldOfView = 40;  // vertical, degrees
constexpr double kMargin = 1.08;     // the fitted sphere leaves this much room around it

using Point = std::array<double, 3>;

// The drawing's world is right-handed with y up: the model's (x, y, -z), x to the east and -z
// to the north, as in glTF.
Point world(const Vector3& model) {
    return {model[0], model[1], -static_cast<double>(model[2])};
}

void checkView(const View& view) {
    const auto finite = [](float v) { return std::isfinite(v); };
    if (!finite(view.heading) || !finite(view.elevation) || !finite(view.distance) ||
        !finite(view.zoom) || view.zoom <= 0 || view.distance < 0) {
        raisePlatformError(kInvalidProcedureCall,
                           "the view needs finite angles, a distance of 0 or more and a zoom "
                           "above 0");
    }
}

struct Sphere {
    Point centre{};
    double radius = 0;
};

// Every point drawn: the corners of the triangles and the lights.
template <class Visit>
void forEachPoint(const GeometryCollector& geometry, Visit&& visit) {
    for (const auto& triangle : geometry.triangles()) {
        for (const auto& corner : triangle.corners)
            visit(world(corner.position));
    }
    for (const Light& light : geometry.lights())
        visit(world(light.position));
}

Sphere boundsOf(const GeometryCollector& geometry) {
    Point low{HUGE_VAL, HUGE_VAL, HUGE_VAL};
    Point high{-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
    forEachPoint(geometry, [&](const Point& p) {
        for (std::size_t a = 0; a < 3; ++a) {
            low[a] = std::min(low[a], p[a]);
            high[a] = std::max(high[a], p[a]);
        }
    });
    Sphere sphere;
    for (std::size_t a = 0; a < 3; ++a)
        sphere.centre[a] = (low[a] + high[a]) / 2;
    forEachPoint(geometry, [&](const Point& p) {
        sphere.radius = std::max(
            sphere.radius,
            std::hypot(p[0] - sphere.centre[0], p[1] - sphere.centre[1], p[2] - sphere.centre[2]));
    });
    // A model of a single point still gets a frame of its own.
    if (!(sphere.radius > 0)) sphere.radius = 1;
    return sphere;
}

// Where the camera stands and what it sees, in the world.
struct Camera {
    Point eye{};
    Point centre{};
    Point up{};
    double distance = 0;
    double aspect = 1;
    double nearPlane = 0;
    double farPlane = 0;
};

// The camera that looks at `sphere` along the view's heading and elevation from the view's
// distance, or from where the sphere fits the frame with a margin.
Camera cameraFor(const View& view, const Sphere& sphere, const windowing::SurfacePixels& surface) {
    Camera camera;
    camera.centre = sphere.centre;
    camera.aspect = static_cast<double>(surface.width) / surface.height;
    const double halfHeight = kFieldOfView * std::numbers::pi / 360;
    const double halfAngle = std::min(halfHeight, std::atan(camera.aspect * std::tan(halfHeight)));
    const double fitted = sphere.radius / std::sin(halfAngle) * kMargin;
    camera.distance = (view.distance > 0 ? view.distance : fitted) * 100.0 / view.zoom;

    const double heading = view.heading * std::numbers::pi / 180;
    const double elevation = std::clamp<double>(view.elevation, -90, 90) * std::numbers::pi / 180;
    // The direction the camera looks along, in the world: north is -z.
    const Point forward{std::sin(heading) * std::cos(elevation), -std::sin(elevation),
                        -std::cos(heading) * std::cos(elevation)};
    for (std::size_t a = 0; a < 3; ++a)
        camera.eye[a] = sphere.centre[a] - camera.distance * forward[a];
    // Looking straight up or down, "up" on the frame is the heading.
    const bool vertical = std::abs(std::cos(elevation)) < 1e-6;
    camera.up = vertical ? Point{std::sin(heading), 0, -std::cos(heading)} : Point{0, 1, 0};
    camera.nearPlane =
        std::max({camera.distance - sphere.radius * 1.05, camera.distance * 1e-4, 1e-3});
    camera.farPlane = camera.distance + sphere.radius * 1.05;
    return camera;
}

// The surface's look: a textured surface is lit white, with its image where one was loaded.
void setSurface(const Surface& surface, float depthBias, const View& view) {
    static constexpr std::array<float, 4> kWhite{1, 1, 1, 1};
    static constexpr std::array<float, 4> kBlack{0, 0, 0, 0};
    const bool textured = surface.texture >= 0;
    glMaterialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, (textured ? kWhite : surface.diffuse).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT, (textured ? kWhite : surface.ambient).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, (textured ? kBlack : surface.specular).data());
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, (textured ? kBlack : surface.emissive).data());
    if (depthBias != 0) {
        glEnable(GL_POLYGON_OFFSET_FILL);
        glPolygonOffset(-depthBias, 0);
    } else {
        glDisable(GL_POLYGON_OFFSET_FILL);
    }
    if (!textured || surface.textureName == 0) {
        glDisable(GL_TEXTURE_2D);
        glDisable(GL_ALPHA_TEST);
        glDisable(GL_BLEND);
        return;
    }
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(surface.textureName));
    glEnable(GL_ALPHA_TEST);
    if (view.blendAlpha) {
        // Clear texels still write no depth, so what lies behind them shows.
        glAlphaFunc(GL_GREATER, 0.02f);
        glEnable(GL_BLEND);
    } else {
        glAlphaFunc(GL_GEQUAL, 0.5f);
        glDisable(GL_BLEND);
    }
}

// The normal a triangle is lit with: its first corner's, turned to the side the camera sees,
// since files differ in winding and in which side their normals stand on; one worked out from
// the corners where the file gives none. `eye` is the camera in the model's axes.
Vector3 litNormal(const GeometryCollector::Triangle& triangle, const Point& eye) {
    const auto& p = triangle.corners;
    std::array<double, 3> n{p[0].normal[0], p[0].normal[1], p[0].normal[2]};
    if (n[0] == 0 && n[1] == 0 && n[2] == 0) {
        std::array<double, 3> u{}, v{};
        for (std::size_t a = 0; a < 3; ++a) {
            u[a] = p[1].position[a] - p[0].position[a];
            v[a] = p[2].position[a] - p[0].position[a];
        }
        n = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    }
    double facing = 0;
    for (std::size_t a = 0; a < 3; ++a)
        facing += n[a] * (eye[a] - p[0].position[a]);
    const double sign = facing < 0 ? -1 : 1;
    return {static_cast<float>(sign * n[0]), static_cast<float>(sign * n[1]),
            static_cast<float>(sign * n[2])};
}

// The triangles in the model's axes, the modelview taking them to the world.
void drawTriangles(const GeometryCollector& geometry, const View& view, const Point& eye) {
    const GeometryCollector::Triangle* previous = nullptr;
    for (const auto& triangle : geometry.triangles()) {
        if (!previous || triangle.surface != previous->surface ||
            triangle.depthBias != previous->depthBias) {
            if (previous) glEnd();
            setSurface(geometry.surfaceOf(triangle), triangle.depthBias, view);
            glBegin(GL_TRIANGLES);
        }
        previous = &triangle;
        const Vector3 normal =
            view.cullBackFaces ? triangle.corners[0].normal : litNormal(triangle, eye);
        glNormal3f(normal[0], normal[1], normal[2]);
        for (const auto& corner : triangle.corners) {
            glTexCoord2f(corner.texCoord[0], corner.texCoord[1]);
            glVertex3f(corner.position[0], corner.position[1], corner.position[2]);
        }
    }
    if (previous) glEnd();
}

// Each light of the walk as the simulator shows it: a point of its colour, with a glow around
// it at night.
void drawLights(const GeometryCollector& geometry, bool night, int32_t height) {
    if (geometry.lights().empty()) return;
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glDisable(GL_ALPHA_TEST);
    glEnable(GL_POINT_SMOOTH);
    glEnable(GL_BLEND);
    const float size = std::max(3.0f, static_cast<float>(height) / 120.0f);
    const auto points = [&](float pointSize, float alpha) {
        glPointSize(pointSize);
        glBegin(GL_POINTS);
        for (const Light& light : geometry.lights()) {
            const uint32_t c = light.colour;
            glColor4f(static_cast<float>((c >> 16) & 255) / 255.0f,
                      static_cast<float>((c >> 8) & 255) / 255.0f,
                      static_cast<float>(c & 255) / 255.0f, alpha);
            glVertex3f(light.position[0], light.position[1], light.position[2]);
        }
        glEnd();
    };
    if (night) {
        glDepthMask(GL_FALSE);
        points(size * 4, 0.25f);
        glDepthMask(GL_TRUE);
    }
    points(night ? size * 1.5f : size, 1.0f);
}

// The frame's state, projection and lights, and the camera; the modelview takes the model's
// axes to the world. At night the sky is dark and only the moon and the model's own light show.
void beginFrame(const View& view, const Camera& camera, const windowing::SurfacePixels& surface,
                bool night) {
    glPushAttrib(GL_ALL_ATTRIB_BITS);
    glViewport(0, 0, surface.width, surface.height);
    const float sky = night ? 0.12f : 1.0f;
    glClearColor(view.background[0] * sky, view.background[1] * sky, view.background[2] * sky,
                 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glShadeModel(GL_SMOOTH);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    // Drawn in (x, y, -z), the fronts of FrontFace.h wind counter-clockwise on the screen.
    glFrontFace(GL_CCW);
    if (view.cullBackFaces) {
        glEnable(GL_CULL_FACE);
        glCullFace(GL_BACK);
    } else {
        glDisable(GL_CULL_FACE);
    }

    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    gluPerspective(kFieldOfView, camera.aspect, camera.nearPlane, camera.farPlane);
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    // A sun above and behind the viewer's right shoulder, with light from the sky around; the
    // moon in its place at night.
    const GLfloat sun[4] = {0.4f, 0.8f, 0.45f, 0.0f};
    const GLfloat sunColour[4] = {0.75f, 0.75f, 0.72f, 1.0f};
    const GLfloat moonColour[4] = {0.1f, 0.11f, 0.16f, 1.0f};
    const GLfloat daySky[4] = {0.38f, 0.38f, 0.42f, 1.0f};
    const GLfloat nightSky[4] = {0.04f, 0.04f, 0.07f, 1.0f};
    const GLfloat none[4] = {0, 0, 0, 1};
    glLightfv(GL_LIGHT0, GL_POSITION, sun);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, night ? moonColour : sunColour);
    glLightfv(GL_LIGHT0, GL_AMBIENT, none);
    glLightfv(GL_LIGHT0, GL_SPECULAR, none);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, night ? nightSky : daySky);
    glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, GL_FALSE);
    glEnable(GL_LIGHTING);
    glEnable(GL_LIGHT0);
    glEnable(GL_NORMALIZE);
    gluLookAt(camera.eye[0], camera.eye[1], camera.eye[2], camera.centre[0], camera.centre[1],
              camera.centre[2], camera.up[0], camera.up[1], camera.up[2]);
    glScalef(1, 1, -1);
}

void endFrame() {
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopAttrib();
}

int64_t coveredPixels(int32_t width, int32_t height) {
    std::vector<float> depth(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(0, 0, width, height, GL_DEPTH_COMPONENT, GL_FLOAT, depth.data());
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    return std::count_if(depth.begin(), depth.end(), [](float d) { return d < 1.0f; });
}

// The scenario the view walks under: parts that turn to the viewer face the camera, and size
// tests see the model from the view's distance when it gives one.
std::optional<Scenario> scenarioFor(const View& view, const std::optional<Scenario>& scenario) {
    std::optional<Scenario> walked = scenario;
    if (walked && !walked->viewerHeading()) walked->viewerHeading(view.heading);
    if (walked && view.distance > 0 && !walked->viewingDistance()) {
        walked->viewingDistance(view.distance * 100.0 / view.zoom);
    }
    return walked;
}

}  // namespace

void MDLObject::glPrepareView(const std::shared_ptr<OpenGLPreviewObject>& oglPreview) {
    for (const auto& entry : required(textureList_).elements()) {
        yieldToHost();
        entry->glPointer(
            entry->file().empty() ? 0 : required(oglPreview).loadTextureWithAlpha(entry->file()));
    }
}

ViewResult MDLObject::glDrawView(const View& view, int32_t hDC,
                                 const std::optional<Scenario>& scenario) const {
    checkView(view);
    const windowing::SurfacePixels surface = windowing::surfacePixels(hDC);

    // What is drawn, with its extent, before anything is drawn: the walk goes to a collector.
    GeometryCollector geometry;
    walk(geometry, scenarioFor(view, scenario));
    const Sphere sphere = boundsOf(geometry);
    const bool night =
        scenario && (scenario->value(variables::kTimeOfDay) & variables::kNight) != 0;
    const Camera camera = cameraFor(view, sphere, surface);

    ViewResult result;
    result.triangles = static_cast<int64_t>(geometry.triangles().size());
    result.lights = static_cast<int64_t>(geometry.lights().size());
    result.distance = static_cast<float>(camera.distance);
    result.radius = static_cast<float>(sphere.radius);
    for (std::size_t a = 0; a < 3; ++a)
        result.centre[a] = static_cast<float>(sphere.centre[a]);

    beginFrame(view, camera, surface, night);
    drawTriangles(geometry, view, Point{camera.eye[0], camera.eye[1], -camera.eye[2]});
    drawLights(geometry, night, surface.height);
    glFinish();
    result.pixels = coveredPixels(surface.width, surface.height);
    endFrame();
    windowing::swapBuffers(hDC);
    return result;
}

}  // namespace velmora
