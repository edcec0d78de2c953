#include "image/portable/PortableImage.h"

// stb's functions are static here, so a program that has its own copy of stb links with ours.
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_NO_STDIO
#define STBI_NO_BMP
#define STBI_NO_HDR
#define STBI_NO_LINEAR
#include <stb_image.h>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb_image_write.h>

#include <algorithm>
#include <climits>
#include <memory>

namespace velmora::image::portable {

namespace {

// Images beyond this many pixels are refused rather than allocated.
constexpr int64_t kMaxPixels = int64_t{1} << 28;

// stb's pixels, rows from the top, as an image (and freed): colour levels through `colorLevel`,
// alpha cut to 8 bits.
template <class Level, class ColorLevel>
std::optional<RgbaImage> imageFromStb(Level* pixels, int width, int height,
                                      const ColorLevel& colorLevel) {
    const std::unique_ptr<Level, void (*)(void*)> owned(pixels, &stbi_image_free);
    std::optional<RgbaImage> image;
    if (pixels) image = blankImage(width, height);
    if (!image) return std::nullopt;
    uint8_t* to = image->rgbaRows.data();
    for (int y = height - 1; y >= 0; --y) {
        const Level* from =
            pixels + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) * 4;
        for (int x = 0; x < width * 4; x += 4, to += 4) {
            for (int c = 0; c < 3; ++c)
                to[c] = colorLevel(from[x + c]);
            to[3] = static_cast<uint8_t>(from[x + 3] >> (8 * (sizeof(Level) - 1)));
        }
    }
    setTranslucency(*image);
    return image;
}

// FreeImage honours a TGA's right-to-left bit, which stb_image passes over: each row is reversed.
void mirrorRightToLeftTga(std::string_view bytes, RgbaImage& image) {
    stbi__context context;
    stbi__start_mem(&context, reinterpret_cast<const stbi_uc*>(bytes.data()),
                    static_cast<int>(bytes.size()));
    if (bytes.size() < 18 || !(bytes[17] & 0x10) || !stbi__tga_test(&context)) return;
    for (auto row = image.rgbaRows.begin(); row != image.rgbaRows.end(); row += image.width * 4) {
        for (int low = 0, high = image.width - 1; low < high; ++low, --high)
            std::swap_ranges(row + low * 4, row + low * 4 + 4, row + high * 4);
    }
}

// PNG colours get FreeImage's gamma correction, made on the 16-bit levels of a 16-bit file.
std::optional<RgbaImage> decodeWithStb(std::string_view bytes) {
    if (bytes.size() > static_cast<std::size_t>(INT_MAX)) return std::nullopt;
    const auto* data = reinterpret_cast<const stbi_uc*>(bytes.data());
    const auto size = static_cast<int>(bytes.size());
    int width = 0, height = 0, channels = 0;
    const std::optional<PngGamma> gamma = pngGamma(bytes);
    if (gamma && gamma->sixteenBits) {
        stbi_us* levels = stbi_load_16_from_memory(data, size, &width, &height, &channels, 4);
        return imageFromStb(levels, width, height,
                            [&](stbi_us level) { return gamma->correct(level); });
    }
    stbi_uc* levels = stbi_load_from_memory(data, size, &width, &height, &channels, 4);
    std::optional<RgbaImage> image = imageFromStb(levels, width, height, [&](stbi_uc level) {
        return gamma ? gamma->correct(level) : level;
    });
    if (image) mirrorRightToLeftTga(bytes, *image);
    return image;
}

void appendBytes(void* context, void* data, int size) {
    static_cast<std::string*>(context)->append(static_cast<const char*>(data),
                                               static_cast<std::size_t>(size));
}

std::string pngBytes(const std::vector<uint8_t>& rows, int32_t width, int32_t height,
                     int channels) {
    std::string png;
    if (!stbi_write_png_to_func(&appendBytes, &png, width, height, channels, rows.data(),
                                width * channels)) {
        return {};
    }
    return png;
}

}  // namespace

std::optional<RgbaImage> blankImage(int64_t width, int64_t height) {
    if (width <= 0 || height <= 0 || width > kMaxPixels / height) return std::nullopt;
    RgbaImage image;
    image.width = static_cast<int32_t>(width);
    image.height = static_cast<int32_t>(height);
    image.rgbaRows.assign(static_cast<std::size_t>(width * height * 4), 0);
    for (std::size_t alpha = 3; alpha < image.rgbaRows.size(); alpha += 4)
        image.rgbaRows[alpha] = 255;
    return image;
}

void setTranslucency(RgbaImage& image) {
    image.translucent = false;
    for (std::size_t alpha = 3; alpha < image.rgbaRows.size() && !image.translucent; alpha += 4)
        image.translucent = image.rgbaRows[alpha] != 255;
}

std::optional<RgbaImage> decodeImage(std::string_view bytes) {
    if (bytes.starts_with("BM")) return decodeBmp(bytes);
    if (bytes.starts_with("DDS ")) return decodeDds(bytes);
    return decodeWithStb(bytes);
}

TextureImage textureImage(const RgbaImage& image) {
    TextureImage texture;
    texture.width = image.width;
    texture.height = image.height;
    const std::size_t rowBytes = paddedRowBytes(image.width);
    texture.bgrRows.assign(rowBytes * static_cast<std::size_t>(image.height), 0);
    const uint8_t* from = image.rgbaRows.data();
    for (int32_t y = 0; y < image.height; ++y) {
        uint8_t* to = texture.bgrRows.data() + rowBytes * static_cast<std::size_t>(y);
        for (int32_t x = 0; x < image.width; ++x, from += 4, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }
    return texture;
}

std::string encodePNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height) {
    if (width <= 0 || height <= 0 ||
        rgb.size() / 3 / static_cast<std::size_t>(width) < static_cast<std::size_t>(height)) {
        return {};
    }
    return pngBytes(rgb, width, height, 3);
}

std::string encodePNG(const RgbaImage& image) {
    const std::size_t pixels = static_cast<std::size_t>(image.width > 0 ? image.width : 0) *
                               static_cast<std::size_t>(image.height > 0 ? image.height : 0);
    if (pixels == 0 || image.rgbaRows.size() < pixels * 4) return {};
    const int channels = image.translucent ? 4 : 3;
    std::vector<uint8_t> rows;
    rows.reserve(pixels * static_cast<std::size_t>(channels));
    // PNG rows run from the top down, the image's from the bottom up.
    for (int32_t y = image.height - 1; y >= 0; --y) {
        const uint8_t* from = image.rgbaRows.data() + static_cast<std::size_t>(y) * image.width * 4;
        for (int32_t x = 0; x < image.width; ++x, from += 4)
            rows.insert(rows.end(), from, from + channels);
    }
    return pngBytes(rows, image.width, image.height, channels);
}

}  // namespace velmora::image::portable
