#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velmora {

// An offscreen drawing surface: stands where a window's device context would stand.
// The handle goes to OpenGLPreviewObject::initOpenGL and MDLObject::glDrawMDL.
int32_t createPreviewSurface(int32_t width, int32_t height);
// The last frame swapped to the surface: RGB, rows from top to bottom, width * height * 3 bytes.
std::vector<uint8_t> previewSurfacePixels(int32_t hDC);
void savePreviewSurfacePNG(int32_t hDC, const std::string& path);
void destroyPreviewSurface(int32_t hDC);
// The largest width and height a surface can be drawn at; 0 when no OpenGL
// display can be opened.
int32_t previewSurfaceLimit();
// Writes RGB pixels (rows from top to bottom) as a PNG file, beside the target
// and moved into place when whole.
void savePixelsPNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height,
                   const std::string& path);
// Twips per pixel of the surfaces: 15, so 800 x 600 pixels are 12000 x 9000 twips.
float TwipsPerPixelX();
float TwipsPerPixelY();

}  // namespace velmora
