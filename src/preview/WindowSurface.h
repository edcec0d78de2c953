#pragma once

#include <cstdint>
#include <vector>

// The window-system layer of the preview: offscreen surfaces named by small integer handles, the
// choice of a pixel format, contexts and the copy of a finished frame. Each step stands where a
// window's device context, pixel format and rendering context would. On Linux it is EGL (egl/),
// on Windows WGL (wgl/), where a real device context's handle works as well.
namespace velmora::windowing {

// Registers a surface of that size; its drawing buffer is made when a configuration is set.
// Error 5 for a size that isn't positive.
int32_t createSurface(int32_t width, int32_t height);
// Forgets a surface, with its drawing buffer and every context made on it. Unknown: nothing.
void destroySurface(int32_t surface);

// A configuration with RGB colour, a depth buffer, a pbuffer and desktop OpenGL for the
// surface; 0 when there is none (or no such surface, or no EGL display at all).
int32_t choosePixelFormat(int32_t surface);
// Makes the surface's drawing buffer with that configuration; false when it can't be made.
bool setPixelFormat(int32_t surface, int32_t format);
// The largest width and height a surface's drawing buffer may have; 0 without a display.
int32_t largestSurface();
// A desktop OpenGL (compatibility) context for the surface's buffer; 0 on failure.
int32_t createContext(int32_t surface);
// Makes the context current on this thread, drawing to the surface; false when it can't.
bool makeCurrent(int32_t surface, int32_t context);

// Ends the frame: reads what the current context drew into the surface's pixel store.
// Unknown surfaces and a missing context are passed over.
void swapBuffers(int32_t surface);

// Copies the current context's frame of `width` × `height` pixels into a store of
// `storeWidth` × `storeHeight` RGB pixels, rows from top to bottom (for swapBuffers).
void readFrame(std::vector<uint8_t>& store, int32_t storeWidth, int32_t storeHeight,
               int32_t width, int32_t height);

struct SurfacePixels {
    int32_t width = 0;
    int32_t height = 0;
    // RGB, rows from top to bottom; black until the first frame.
    const std::vector<uint8_t>* rgb = nullptr;
};
// The surface's last frame; error 5 for an unknown handle.
SurfacePixels surfacePixels(int32_t surface);

}  // namespace velmora::windowing
