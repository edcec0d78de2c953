#include <velmora/PreviewSurface.h>

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "image/ImageFile.h"
#include "preview/WindowSurface.h"

namespace velmora {

int32_t createPreviewSurface(int32_t width, int32_t height) {
    return windowing::createSurface(width, height);
}

std::vector<uint8_t> previewSurfacePixels(int32_t hDC) {
    return *windowing::surfacePixels(hDC).rgb;
}

void savePreviewSurfacePNG(int32_t hDC, const std::string& path) {
    const windowing::SurfacePixels frame = windowing::surfacePixels(hDC);
    fs::replaceFile(path, image::encodePNG(*frame.rgb, frame.width, frame.height));
}

int32_t previewSurfaceLimit() {
    return windowing::largestSurface();
}

void savePixelsPNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height,
                   const std::string& path) {
    if (width <= 0 || height <= 0 ||
        rgb.size() != static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3) {
        raisePlatformError(kInvalidProcedureCall, "the pixels don't make a picture of that size");
    }
    fs::replaceFile(path, image::encodePNG(rgb, width, height));
}

void destroyPreviewSurface(int32_t hDC) {
    windowing::destroySurface(hDC);
}

// Surfaces have no physical screen behind them; 15 twips a pixel is the usual 96 dots an inch.
float TwipsPerPixelX() {
    return 15.0f;
}
float TwipsPerPixelY() {
    return 15.0f;
}

}  // namespace velmora
