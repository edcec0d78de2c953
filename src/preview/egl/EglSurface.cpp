#include "preview/WindowSurface.h"

#include "foundation/Errors.h"

#include <EGL/egl.h>
#include <EGL/eglext.h>
#include <GL/gl.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string_view>

namespace velmora::windowing {

namespace {

struct Surface {
    int32_t width = 0;
    int32_t height = 0;
    EGLSurface buffer = EGL_NO_SURFACE;
    EGLConfig config = nullptr;
    std::vector<EGLContext> contexts;  // index + 1 is the context's handle part
    std::vector<uint8_t> rgb;
};

// The surfaces stand for windows of the host, so they are process-wide, like a window system's;
// every function of this file holds the registry's lock, so threads may share it.
struct Registry {
    std::recursive_mutex mutex;
    std::map<int32_t, Surface> surfaces;
    int32_t nextSurface = 1;
    std::vector<EGLConfig> configs;  // format number n is configs[n - 1]
    EGLDisplay display = EGL_NO_DISPLAY;
    bool displayTried = false;
};

Registry& registry() {
    static Registry instance;
    return instance;
}

std::unique_lock<std::recursive_mutex> locked() {
    return std::unique_lock(registry().mutex);
}

Surface* findSurface(int32_t handle) {
    auto& surfaces = registry().surfaces;
    const auto found = surfaces.find(handle);
    return found == surfaces.end() ? nullptr : &found->second;
}

bool hasExtension(const char* list, std::string_view name) {
    if (list == nullptr) return false;
    std::string_view rest(list);
    while (!rest.empty()) {
        const auto end = rest.find(' ');
        if (rest.substr(0, end) == name) return true;
        if (end == std::string_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return false;
}

// Mesa's surfaceless platform needs no display server; where it is missing, the default
// display serves (a machine with a window system or a GPU driver).
EGLDisplay openDisplay() {
    const char* clientExtensions = eglQueryString(EGL_NO_DISPLAY, EGL_EXTENSIONS);
    if (hasExtension(clientExtensions, "EGL_MESA_platform_surfaceless")) {
        const auto getPlatformDisplay = reinterpret_cast<PFNEGLGETPLATFORMDISPLAYEXTPROC>(
            eglGetProcAddress("eglGetPlatformDisplayEXT"));
        if (getPlatformDisplay != nullptr) {
            EGLDisplay display =
                getPlatformDisplay(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
            if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr)) {
                return display;
            }
        }
    }
    EGLDisplay display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
    if (display != EGL_NO_DISPLAY && eglInitialize(display, nullptr, nullptr)) return display;
    return EGL_NO_DISPLAY;
}

EGLDisplay display() {
    Registry& r = registry();
    if (!r.displayTried) {
        r.displayTried = true;
        r.display = openDisplay();
    }
    return r.display;
}

// Context handles carry their surface, so a context is found from its handle alone.
constexpr int32_t kContextsPerSurface = 1 << 12;

int32_t contextHandle(int32_t surface, std::size_t index) {
    return surface * kContextsPerSurface + static_cast<int32_t>(index) + 1;
}

}  // namespace

int32_t createSurface(int32_t width, int32_t height) {
    const auto lock = locked();
    if (width <= 0 || height <= 0) raisePlatformError(kInvalidProcedureCall);
    Registry& r = registry();
    if (r.nextSurface >= INT32_MAX / kContextsPerSurface) raisePlatformError(kOverflow);
    const int32_t handle = r.nextSurface++;
    Surface& surface = r.surfaces[handle];
    surface.width = width;
    surface.height = height;
    surface.rgb.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0);
    return handle;
}

void destroySurface(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr) return;
    EGLDisplay d = registry().display;
    if (d != EGL_NO_DISPLAY) {
        const EGLContext current = eglGetCurrentContext();
        for (EGLContext context : surface->contexts) {
            if (context == current)
                eglMakeCurrent(d, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            eglDestroyContext(d, context);
        }
        if (surface->buffer != EGL_NO_SURFACE) {
            if (eglGetCurrentSurface(EGL_DRAW) == surface->buffer) {
                eglMakeCurrent(d, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
            }
            eglDestroySurface(d, surface->buffer);
        }
    }
    registry().surfaces.erase(handle);
}

namespace {

EGLConfig chooseConfig(EGLDisplay d) {
    // RGB of 24 bits with a 16-bit depth buffer, drawn by desktop OpenGL; a pbuffer takes the
    // place of the window's double buffer, and swapping copies it out.
    const EGLint attributes[] = {EGL_SURFACE_TYPE,
                                 EGL_PBUFFER_BIT,
                                 EGL_RENDERABLE_TYPE,
                                 EGL_OPENGL_BIT,
                                 EGL_COLOR_BUFFER_TYPE,
                                 EGL_RGB_BUFFER,
                                 EGL_RED_SIZE,
                                 8,
                                 EGL_GREEN_SIZE,
                                 8,
                                 EGL_BLUE_SIZE,
                                 8,
                                 EGL_DEPTH_SIZE,
                                 16,
                                 EGL_NONE};
    EGLConfig config = nullptr;
    EGLint count = 0;
    if (!eglChooseConfig(d, attributes, &config, 1, &count) || count < 1) return nullptr;
    return config;
}

}  // namespace

int32_t choosePixelFormat(int32_t handle) {
    const auto lock = locked();
    if (findSurface(handle) == nullptr) return 0;
    EGLDisplay d = display();
    if (d == EGL_NO_DISPLAY) return 0;
    const EGLConfig config = chooseConfig(d);
    if (config == nullptr) return 0;
    auto& configs = registry().configs;
    const auto known = std::find(configs.begin(), configs.end(), config);
    if (known != configs.end()) return static_cast<int32_t>(known - configs.begin()) + 1;
    configs.push_back(config);
    return static_cast<int32_t>(configs.size());
}

bool setPixelFormat(int32_t handle, int32_t format) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    auto& configs = registry().configs;
    if (surface == nullptr || format < 1 || format > static_cast<int32_t>(configs.size())) {
        return false;
    }
    EGLDisplay d = display();
    // A format is set once on a window; a second choice leaves the first in place.
    if (surface->buffer != EGL_NO_SURFACE) return true;
    const EGLConfig config = configs[static_cast<std::size_t>(format - 1)];
    const EGLint size[] = {EGL_WIDTH, surface->width, EGL_HEIGHT, surface->height, EGL_NONE};
    surface->buffer = eglCreatePbufferSurface(d, config, size);
    surface->config = config;
    return surface->buffer != EGL_NO_SURFACE;
}

int32_t largestSurface() {
    const auto lock = locked();
    EGLDisplay d = display();
    if (d == EGL_NO_DISPLAY) return 0;
    const EGLConfig config = chooseConfig(d);
    EGLint width = 0;
    EGLint height = 0;
    if (config == nullptr || !eglGetConfigAttrib(d, config, EGL_MAX_PBUFFER_WIDTH, &width) ||
        !eglGetConfigAttrib(d, config, EGL_MAX_PBUFFER_HEIGHT, &height)) {
        return 0;
    }
    return std::min(width, height);
}

int32_t createContext(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || surface->config == nullptr) return 0;
    if (surface->contexts.size() + 1 >= static_cast<std::size_t>(kContextsPerSurface)) return 0;
    if (!eglBindAPI(EGL_OPENGL_API)) return 0;
    // No version asked: Mesa gives its newest compatibility profile, which keeps OpenGL 1.1.
    const EGLint attributes[] = {EGL_NONE};
    EGLContext context = eglCreateContext(display(), surface->config, EGL_NO_CONTEXT, attributes);
    if (context == EGL_NO_CONTEXT) return 0;
    surface->contexts.push_back(context);
    return contextHandle(handle, surface->contexts.size() - 1);
}

bool makeCurrent(int32_t handle, int32_t context) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    Surface* owner = findSurface(context / kContextsPerSurface);
    const int32_t index = context % kContextsPerSurface - 1;
    if (surface == nullptr || owner == nullptr || index < 0 ||
        index >= static_cast<int32_t>(owner->contexts.size())) {
        return false;
    }
    return eglMakeCurrent(display(), surface->buffer, surface->buffer,
                          owner->contexts[static_cast<std::size_t>(index)]) == EGL_TRUE;
}

void swapBuffers(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || eglGetCurrentContext() == EGL_NO_CONTEXT) return;
    // The frame lies in the buffer the context draws to; a smaller buffer fills only its part.
    EGLint drawWidth = surface->width;
    EGLint drawHeight = surface->height;
    const EGLSurface drawing = eglGetCurrentSurface(EGL_DRAW);
    if (drawing != EGL_NO_SURFACE) {
        eglQuerySurface(eglGetCurrentDisplay(), drawing, EGL_WIDTH, &drawWidth);
        eglQuerySurface(eglGetCurrentDisplay(), drawing, EGL_HEIGHT, &drawHeight);
    }
    const int32_t width = std::min(surface->width, drawWidth);
    const int32_t height = std::min(surface->height, drawHeight);
    if (width <= 0 || height <= 0) return;

    readFrame(surface->rgb, surface->width, surface->height, width, height);
}

SurfacePixels surfacePixels(int32_t handle) {
    const auto lock = locked();
    const Surface* surface = findSurface(handle);
    if (surface == nullptr) raisePlatformError(kInvalidProcedureCall);
    return SurfacePixels{surface->width, surface->height, &surface->rgb};
}

}  // namespace velmora::windowing
