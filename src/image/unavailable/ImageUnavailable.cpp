// Built instead of the image layer when Velmora is configured without the preview (and so
// without FreeImage): no image is found, and writing one fails with a clear error.
#include "image/ImageFile.h"

#include "foundation/Errors.h"

namespace velmora::image {

namespace {

[[noreturn]] void raiseNoImages() {
    raisePlatformError(kPathFileAccessError,
                       "this build of Velmora has no image library (VELMORA_PREVIEW=OFF)");
}

}  // namespace

std::size_t paddedRowBytes(int32_t width) {
    return (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
}

std::optional<TextureImage> readTextureImage(const std::string&) {
    return std::nullopt;
}

std::optional<RgbaImage> readRgbaImage(const std::string&) {
    return std::nullopt;
}

std::string encodePNG(const std::vector<uint8_t>&, int32_t, int32_t) {
    raiseNoImages();
}

std::string encodePNG(const RgbaImage&) {
    raiseNoImages();
}

}  // namespace velmora::image
