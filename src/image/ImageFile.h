#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The image layer: reads texture files and writes PNG, all in memory, for the preview and the
// exports. On Linux it stands on FreeImage; elsewhere on the portable decoder (image/portable:
// stb_image and decoders of its own), which gives FreeImage's pixels for BMP, DDS, PNG and TGA.
// In a build without the preview, reads find nothing and writes fail with a clear error.
namespace velmora::image {

// An image as glTexImage2D takes it with GL_BGR_EXT: 3 bytes a pixel in the order blue, green,
// red, rows from the bottom of the image to the top, each row padded to a multiple of 4 bytes.
struct TextureImage {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> bgrRows;
};

// Bytes of one padded row of `width` pixels.
std::size_t paddedRowBytes(int32_t width);

// Reads an image file (BMP, DDS, TGA, PNG, JPEG and the other formats the library under it
// knows); nothing when the file is missing, unreadable or of no format known. Alpha is dropped.
std::optional<TextureImage> readTextureImage(const std::string& path);

// An image as glTexImage2D takes it with GL_RGBA: 4 bytes a pixel, rows from the bottom up.
struct RgbaImage {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> rgbaRows;
    bool translucent = false;  // some pixel has an alpha below 255
};

// Reads an image file keeping its alpha (32-bit TGA and PNG, DDS with DXT3 or DXT5); an image
// without alpha is opaque. Nothing when the file can't be read.
std::optional<RgbaImage> readRgbaImage(const std::string& path);

// Encodes RGB pixels, rows from top to bottom, as a PNG file's bytes.
std::string encodePNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height);
// Encodes an RGBA image as PNG, with its alpha when it is translucent.
std::string encodePNG(const RgbaImage& image);

}  // namespace velmora::image
