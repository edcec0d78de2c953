#include "preview/WindowSurface.h"

#include "foundation/Errors.h"

#include <windows.h>

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <map>
#include <mutex>

// Each surface is a hidden window of its own whose context draws into a framebuffer object of
// the surface's size, so the frame never depends on a window being shown. A handle that is no
// surface of ours but a real device context (a window's, given as its 32-bit handle value) is
// used as it is: its pixel format is set, its context draws to the window and swapping shows it.
namespace velmora::windowing {

namespace {

// The framebuffer-object entry points, which opengl32.dll doesn't export; each context has its
// own, as WGL says of anything it gives by name.
struct FramebufferCalls {
    PFNGLGENFRAMEBUFFERSEXTPROC genFramebuffers = nullptr;
    PFNGLBINDFRAMEBUFFEREXTPROC bindFramebuffer = nullptr;
    PFNGLDELETEFRAMEBUFFERSEXTPROC deleteFramebuffers = nullptr;
    PFNGLGENRENDERBUFFERSEXTPROC genRenderbuffers = nullptr;
    PFNGLBINDRENDERBUFFEREXTPROC bindRenderbuffer = nullptr;
    PFNGLDELETERENDERBUFFERSEXTPROC deleteRenderbuffers = nullptr;
    PFNGLRENDERBUFFERSTORAGEEXTPROC renderbufferStorage = nullptr;
    PFNGLFRAMEBUFFERRENDERBUFFEREXTPROC framebufferRenderbuffer = nullptr;
    PFNGLCHECKFRAMEBUFFERSTATUSEXTPROC checkFramebufferStatus = nullptr;

    bool load() {
        return find(genFramebuffers, "glGenFramebuffersEXT") &&
               find(bindFramebuffer, "glBindFramebufferEXT") &&
               find(deleteFramebuffers, "glDeleteFramebuffersEXT") &&
               find(genRenderbuffers, "glGenRenderbuffersEXT") &&
               find(bindRenderbuffer, "glBindRenderbufferEXT") &&
               find(deleteRenderbuffers, "glDeleteRenderbuffersEXT") &&
               find(renderbufferStorage, "glRenderbufferStorageEXT") &&
               find(framebufferRenderbuffer, "glFramebufferRenderbufferEXT") &&
               find(checkFramebufferStatus, "glCheckFramebufferStatusEXT");
    }

    template <typename Call>
    static bool find(Call& call, const char* name) {
        call = reinterpret_cast<Call>(reinterpret_cast<void*>(wglGetProcAddress(name)));
        return call != nullptr;
    }
};

struct Context {
    HGLRC gl = nullptr;
    int32_t surface = 0;  // the surface it was made for
    FramebufferCalls calls;
    GLuint framebuffer = 0;  // 0 for a real device context, which draws to its window
    GLuint colour = 0;
    GLuint depth = 0;
};

struct Surface {
    int32_t width = 0;
    int32_t height = 0;
    HWND window = nullptr;  // the hidden window; none for a real device context
    HDC dc = nullptr;
    int format = 0;
    std::vector<uint8_t> rgb;
};

struct Registry {
    std::recursive_mutex mutex;
    std::map<int32_t, Surface> surfaces;
    std::map<int32_t, Context> contexts;
    int32_t nextSurface = 1;
    int32_t nextContext = 1;
    int32_t largest = -1;  // not yet asked
};

Registry& registry() {
    static Registry instance;
    return instance;
}

std::unique_lock<std::recursive_mutex> locked() {
    return std::unique_lock(registry().mutex);
}

const wchar_t* windowClass() {
    static const wchar_t* name = [] {
        WNDCLASSW type{};
        type.style = CS_OWNDC;
        type.lpfnWndProc = DefWindowProcW;
        type.hInstance = GetModuleHandleW(nullptr);
        type.lpszClassName = L"VelmoraPreviewSurface";
        RegisterClassW(&type);
        return type.lpszClassName;
    }();
    return name;
}

HDC asDeviceContext(int32_t handle) {
    HDC dc = reinterpret_cast<HDC>(static_cast<intptr_t>(handle));
    const DWORD type = GetObjectType(dc);
    return type == OBJ_DC || type == OBJ_MEMDC ? dc : nullptr;
}

// A surface of ours, or a real device context seen for the first time, which joins the
// registry with the size of its window.
Surface* findSurface(int32_t handle) {
    auto& surfaces = registry().surfaces;
    const auto found = surfaces.find(handle);
    if (found != surfaces.end()) return &found->second;
    HDC dc = handle > 0 && handle < registry().nextSurface ? nullptr : asDeviceContext(handle);
    if (dc == nullptr) return nullptr;
    Surface& surface = surfaces[handle];
    surface.dc = dc;
    RECT area{};
    if (HWND window = WindowFromDC(dc); window != nullptr && GetClientRect(window, &area)) {
        surface.width = area.right - area.left;
        surface.height = area.bottom - area.top;
    }
    surface.rgb.assign(static_cast<std::size_t>(surface.width) * surface.height * 3, 0);
    return &surface;
}

PIXELFORMATDESCRIPTOR pixelFormatWanted() {
    PIXELFORMATDESCRIPTOR wanted{};
    wanted.nSize = sizeof wanted;
    wanted.nVersion = 1;
    wanted.dwFlags = PFD_DRAW_TO_WINDOW | PFD_SUPPORT_OPENGL | PFD_DOUBLEBUFFER;
    wanted.iPixelType = PFD_TYPE_RGBA;
    wanted.cColorBits = 24;
    wanted.cDepthBits = 16;
    wanted.iLayerType = PFD_MAIN_PLANE;
    return wanted;
}

void releaseFramebuffer(Context& context) {
    if (context.framebuffer == 0) return;
    context.calls.bindFramebuffer(GL_FRAMEBUFFER_EXT, 0);
    context.calls.deleteFramebuffers(1, &context.framebuffer);
    const GLuint buffers[] = {context.colour, context.depth};
    context.calls.deleteRenderbuffers(2, buffers);
    context.framebuffer = 0;
}

// Gives the context a framebuffer of the surface's size, bound for drawing; false when the
// driver has none.
bool attachFramebuffer(Context& context, const Surface& surface) {
    if (context.framebuffer != 0) {
        context.calls.bindFramebuffer(GL_FRAMEBUFFER_EXT, context.framebuffer);
        return true;
    }
    if (!context.calls.load()) return false;
    FramebufferCalls& gl = context.calls;
    gl.genFramebuffers(1, &context.framebuffer);
    gl.bindFramebuffer(GL_FRAMEBUFFER_EXT, context.framebuffer);
    gl.genRenderbuffers(1, &context.colour);
    gl.bindRenderbuffer(GL_RENDERBUFFER_EXT, context.colour);
    gl.renderbufferStorage(GL_RENDERBUFFER_EXT, GL_RGB8, surface.width, surface.height);
    gl.framebufferRenderbuffer(GL_FRAMEBUFFER_EXT, GL_COLOR_ATTACHMENT0_EXT, GL_RENDERBUFFER_EXT,
                               context.colour);
    gl.genRenderbuffers(1, &context.depth);
    gl.bindRenderbuffer(GL_RENDERBUFFER_EXT, context.depth);
    gl.renderbufferStorage(GL_RENDERBUFFER_EXT, GL_DEPTH_COMPONENT16, surface.width,
                           surface.height);
    gl.framebufferRenderbuffer(GL_FRAMEBUFFER_EXT, GL_DEPTH_ATTACHMENT_EXT, GL_RENDERBUFFER_EXT,
                               context.depth);
    if (gl.checkFramebufferStatus(GL_FRAMEBUFFER_EXT) != GL_FRAMEBUFFER_COMPLETE_EXT) {
        releaseFramebuffer(context);
        return false;
    }
    return true;
}

void destroyContext(Context& context) {
    if (wglGetCurrentContext() == context.gl) {
        releaseFramebuffer(context);
        wglMakeCurrent(nullptr, nullptr);
    }
    wglDeleteContext(context.gl);
}

// The largest framebuffer, asked of a context made for the purpose on a surface of its own.
int32_t askLargest() {
    const int32_t probe = createSurface(1, 1);
    int32_t largest = 0;
    const int32_t format = choosePixelFormat(probe);
    if (format != 0 && setPixelFormat(probe, format)) {
        const HGLRC previous = wglGetCurrentContext();
        const HDC previousDc = wglGetCurrentDC();
        HDC dc = registry().surfaces[probe].dc;
        HGLRC gl = wglCreateContext(dc);
        if (gl != nullptr && wglMakeCurrent(dc, gl)) {
            GLint renderbuffer = 0;
            GLint viewport[2] = {0, 0};
            glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE_EXT, &renderbuffer);
            glGetIntegerv(GL_MAX_VIEWPORT_DIMS, viewport);
            largest = std::min({renderbuffer, viewport[0], viewport[1]});
            wglMakeCurrent(previousDc, previous);
        }
        if (gl != nullptr) wglDeleteContext(gl);
    }
    destroySurface(probe);
    return largest;
}

}  // namespace

int32_t createSurface(int32_t width, int32_t height) {
    const auto lock = locked();
    if (width <= 0 || height <= 0) raisePlatformError(kInvalidProcedureCall);
    Registry& r = registry();
    if (r.nextSurface == INT32_MAX) raisePlatformError(kOverflow);
    const int32_t handle = r.nextSurface++;
    Surface& surface = r.surfaces[handle];
    surface.width = width;
    surface.height = height;
    surface.rgb.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 0);
    surface.window = CreateWindowExW(0, windowClass(), L"", WS_POPUP, 0, 0, 1, 1, nullptr, nullptr,
                                     GetModuleHandleW(nullptr), nullptr);
    surface.dc = surface.window != nullptr ? GetDC(surface.window) : nullptr;
    return handle;
}

void destroySurface(int32_t handle) {
    const auto lock = locked();
    Registry& r = registry();
    const auto found = r.surfaces.find(handle);
    if (found == r.surfaces.end()) return;
    for (auto it = r.contexts.begin(); it != r.contexts.end();) {
        if (it->second.surface == handle) {
            destroyContext(it->second);
            it = r.contexts.erase(it);
        } else {
            ++it;
        }
    }
    Surface& surface = found->second;
    if (surface.window != nullptr) {
        ReleaseDC(surface.window, surface.dc);
        DestroyWindow(surface.window);
    }
    r.surfaces.erase(found);
}

int32_t choosePixelFormat(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || surface->dc == nullptr) return 0;
    const PIXELFORMATDESCRIPTOR wanted = pixelFormatWanted();
    return ChoosePixelFormat(surface->dc, &wanted);
}

bool setPixelFormat(int32_t handle, int32_t format) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || surface->dc == nullptr || format < 1) return false;
    // A format is set once on a window; a second choice leaves the first in place.
    if (surface->format != 0 || GetPixelFormat(surface->dc) != 0) return true;
    const PIXELFORMATDESCRIPTOR wanted = pixelFormatWanted();
    if (!SetPixelFormat(surface->dc, format, &wanted)) return false;
    surface->format = format;
    return true;
}

int32_t largestSurface() {
    const auto lock = locked();
    Registry& r = registry();
    if (r.largest < 0) r.largest = askLargest();
    return r.largest;
}

int32_t createContext(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || surface->dc == nullptr) return 0;
    HGLRC gl = wglCreateContext(surface->dc);
    if (gl == nullptr) return 0;
    Registry& r = registry();
    if (r.nextContext == INT32_MAX) {
        wglDeleteContext(gl);
        return 0;
    }
    const int32_t context = r.nextContext++;
    r.contexts[context] = Context{gl, handle, {}, 0, 0, 0};
    return context;
}

bool makeCurrent(int32_t handle, int32_t contextHandle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    auto& contexts = registry().contexts;
    const auto context = contexts.find(contextHandle);
    if (surface == nullptr || surface->dc == nullptr || context == contexts.end()) return false;
    if (!wglMakeCurrent(surface->dc, context->second.gl)) return false;
    // A real device context draws to its window; a surface of ours to its framebuffer.
    if (surface->window == nullptr) return true;
    return attachFramebuffer(context->second, *surface);
}

void swapBuffers(int32_t handle) {
    const auto lock = locked();
    Surface* surface = findSurface(handle);
    if (surface == nullptr || wglGetCurrentContext() == nullptr) return;
    if (surface->window == nullptr) {
        SwapBuffers(surface->dc);
        return;
    }
    glFinish();
    readFrame(surface->rgb, surface->width, surface->height, surface->width, surface->height);
}

SurfacePixels surfacePixels(int32_t handle) {
    const auto lock = locked();
    const Surface* surface = findSurface(handle);
    if (surface == nullptr) raisePlatformError(kInvalidProcedureCall);
    return SurfacePixels{surface->width, surface->height, &surface->rgb};
}

}  // namespace velmora::windowing
