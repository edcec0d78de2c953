// The image layer where FreeImage is not at hand: files are read whole and decoded by the
// portable decoders, PNG is written by stb_image_write. The pixels are FreeImage's.
#include "image/ImageFile.h"

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "image/portable/PortableImage.h"

#include <exception>

namespace velmora::image {

namespace {

std::optional<RgbaImage> readImage(const std::string& path) {
    std::string bytes;
    try {
        bytes = fs::readWholeFile(path);
    } catch (const std::exception&) {
        return std::nullopt;  // missing or unreadable: no image, as with any other failure
    }
    return portable::decodeImage(bytes);
}

std::string checkedPNG(std::string png) {
    if (png.empty()) {
        raisePlatformError(kPathFileAccessError, "the picture couldn't be encoded as PNG");
    }
    return png;
}

}  // namespace

std::size_t paddedRowBytes(int32_t width) {
    return (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
}

std::optional<TextureImage> readTextureImage(const std::string& path) {
    const std::optional<RgbaImage> image = readImage(path);
    if (!image) return std::nullopt;
    return portable::textureImage(*image);
}

std::optional<RgbaImage> readRgbaImage(const std::string& path) {
    return readImage(path);
}

std::string encodePNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height) {
    if (width <= 0 || height <= 0) raisePlatformError(kOverflow);
    return checkedPNG(portable::encodePNG(rgb, width, height));
}

std::string encodePNG(const RgbaImage& image) {
    if (image.width <= 0 || image.height <= 0) raisePlatformError(kOverflow);
    return checkedPNG(portable::encodePNG(image));
}

}  // namespace velmora::image
