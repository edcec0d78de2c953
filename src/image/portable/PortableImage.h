#pragma once

#include "image/ImageFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Image files decoded and PNG encoded in memory without FreeImage: stb_image reads PNG, TGA, JPEG
// and the other formats it knows; BMP and DDS have decoders of their own here. Where FreeImage
// decodes a BMP, DDS, PNG or TGA file, these give the same pixels, so a texture looks the same on
// every system (JPEG pixels differ slightly: the two have their own inverse DCT and chroma
// upsampling). Some damaged files that FreeImage refuses (a run-length BMP cut short) still
// decode here.
namespace velmora::image::portable {

// Decodes an image file's bytes: RGBA, rows bottom-up, `translucent` when some alpha is below
// 255. Nothing when the bytes are of no format known or can't be decoded.
std::optional<RgbaImage> decodeImage(std::string_view bytes);

// The image as a texture: BGR rows padded to 4 bytes, alpha dropped (not blended).
TextureImage textureImage(const RgbaImage& image);

// PNG files' bytes from RGB pixels with rows top to bottom, and from an RGBA image (with its
// alpha when it is translucent). Empty when the pixels don't fill the size or can't be encoded.
std::string encodePNG(const std::vector<uint8_t>& rgb, int32_t width, int32_t height);
std::string encodePNG(const RgbaImage& image);

// The decoders behind decodeImage for the formats stb_image doesn't read as FreeImage does.
std::optional<RgbaImage> decodeBmp(std::string_view bytes);
std::optional<RgbaImage> decodeDds(std::string_view bytes);

// The correction FreeImage makes to a PNG file's colour levels (not its alpha) for the gamma of
// its gAMA chunk: the corrected 8-bit level of a decoded level shifted right by `shift`.
struct PngGamma {
    bool sixteenBits = false;  // the levels to correct are the file's 16-bit ones
    int shift = 0;
    std::vector<uint8_t> table;
    uint8_t correct(uint32_t level) const { return table[level >> shift]; }
};
// Nothing when FreeImage corrects nothing: no gAMA chunk, a palette, an sRGB chunk, or a gamma
// near enough the screen's.
std::optional<PngGamma> pngGamma(std::string_view bytes);

// An image of opaque black pixels to decode into; nothing when a side is not positive or the
// image is too big to hold.
std::optional<RgbaImage> blankImage(int64_t width, int64_t height);
// Sets `translucent` from the pixels' alpha.
void setTranslucency(RgbaImage& image);

}  // namespace velmora::image::portable
