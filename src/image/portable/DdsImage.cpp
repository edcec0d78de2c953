// DDS files: the first surface of DXT1, DXT3 and DXT5 images, and of uncompressed ones of 8
// (grey), 16, 24 and 32 bits a pixel. Bytes missing at the end of the file read as zeros.
#include "image/portable/PortableImage.h"

#include "foundation/ByteReader.h"

#include <array>
#include <bit>

namespace velmora::image::portable {

namespace {

constexpr uint32_t kPitchGiven = 0x8;         // header flag: the pitch field is a row's bytes
constexpr uint32_t kAlphaPixels = 0x1;        // pixel format flag: 32-bit pixels carry alpha
constexpr uint32_t kFourCharacterCode = 0x4;  // pixel format flag: compressed, named by a code
constexpr uint32_t kUncompressed = 0x40;      // pixel format flag: RGB pixels
constexpr int64_t kHeaderBytes = 128;

using Color = std::array<uint8_t, 4>;

struct DdsHeader {
    uint32_t flags = 0;
    int64_t height = 0;
    int64_t width = 0;
    int64_t pitch = 0;
    uint32_t formatFlags = 0;
    std::string code;
    int32_t bitCount = 0;
    std::array<uint32_t, 3> masks{};  // red, green, blue
};

DdsHeader readHeader(ByteReader& in) {
    DdsHeader dds;
    in.seek(8);
    dds.flags = static_cast<uint32_t>(in.int32());
    dds.height = static_cast<uint32_t>(in.int32());
    dds.width = static_cast<uint32_t>(in.int32());
    dds.pitch = static_cast<uint32_t>(in.int32());
    in.seek(80);
    dds.formatFlags = static_cast<uint32_t>(in.int32());
    dds.code = in.text(4);
    dds.bitCount = in.int32();
    for (uint32_t& mask : dds.masks)
        mask = static_cast<uint32_t>(in.int32());
    return dds;
}

// A channel under a 16-bit mask, scaled to 0..255 rounding down.
uint8_t maskedChannel(uint32_t pixel, uint32_t mask) {
    if (mask == 0) return 0;
    const int shift = std::countr_zero(mask);
    return static_cast<uint8_t>(((pixel & mask) >> shift) * 255 / (mask >> shift));
}

// Rows are stored from the top down; 24- and 32-bit pixels are blue, green, red (alpha) whatever
// the masks say, as FreeImage reads them.
std::optional<RgbaImage> decodeUncompressed(ByteReader& in, const DdsHeader& dds) {
    if (dds.bitCount != 8 && dds.bitCount != 16 && dds.bitCount != 24 && dds.bitCount != 32)
        return std::nullopt;
    std::optional<RgbaImage> image = blankImage(dds.width, dds.height);
    if (!image) return std::nullopt;
    // Without a pitch a row is as long as FreeImage's row of the decoded image, which holds 16-bit
    // pixels in 3 bytes.
    const int64_t stride = dds.flags & kPitchGiven
                               ? dds.pitch
                               : dds.width * (dds.bitCount == 16 ? 3 : dds.bitCount / 8);
    const bool alpha = dds.bitCount == 32 && (dds.formatFlags & kAlphaPixels);
    for (int64_t y = 0; y < dds.height; ++y) {
        in.seek(kHeaderBytes + y * stride);
        uint8_t* to = image->rgbaRows.data() + (dds.height - 1 - y) * dds.width * 4;
        for (int64_t x = 0; x < dds.width; ++x, to += 4) {
            if (dds.bitCount == 8) {
                to[0] = to[1] = to[2] = in.byte();
            } else if (dds.bitCount == 16) {
                const auto pixel = static_cast<uint32_t>(in.uint16());
                for (std::size_t c = 0; c < 3; ++c)
                    to[c] = maskedChannel(pixel, dds.masks[c]);
            } else {
                to[2] = in.byte();
                to[1] = in.byte();
                to[0] = in.byte();
                if (dds.bitCount == 32) {
                    const uint8_t fourth = in.byte();
                    if (alpha) to[3] = fourth;
                }
            }
        }
    }
    return image;
}

Color widen565(uint32_t c) {
    const uint32_t red = c >> 11, green = c >> 5 & 63, blue = c & 31;
    return {static_cast<uint8_t>(red << 3 | red >> 2),
            static_cast<uint8_t>(green << 2 | green >> 4),
            static_cast<uint8_t>(blue << 3 | blue >> 2), 255};
}

// The four colours of a colour block. When the first end is not above the second, the block has
// three colours and transparent black; FreeImage reads DXT3 and DXT5 blocks that way too.
std::array<Color, 4> blockColors(uint32_t first, uint32_t second) {
    std::array<Color, 4> colors{widen565(first), widen565(second)};
    const bool fourColors = first > second;
    for (std::size_t c = 0; c < 3; ++c) {
        const int a = colors[0][c], b = colors[1][c];
        colors[2][c] = static_cast<uint8_t>(fourColors ? (2 * a + b) / 3 : (a + b) / 2);
        colors[3][c] = static_cast<uint8_t>(fourColors ? (a + 2 * b) / 3 : 0);
    }
    colors[2][3] = 255;
    colors[3][3] = fourColors ? 255 : 0;
    return colors;
}

// DXT5's eight alpha levels; the steps between the ends round to nearest, as FreeImage does.
std::array<uint8_t, 8> alphaLevels(int first, int second) {
    std::array<uint8_t, 8> levels{static_cast<uint8_t>(first), static_cast<uint8_t>(second)};
    const int steps = first > second ? 7 : 5;
    for (int i = 1; i < steps; ++i)
        levels[static_cast<std::size_t>(i + 1)] =
            static_cast<uint8_t>(((steps - i) * first + i * second + steps / 2) / steps);
    if (steps == 5) {
        levels[6] = 0;
        levels[7] = 255;
    }
    return levels;
}

// One 4x4 block, its pixels row by row from the top.
std::array<Color, 16> decodeBlock(ByteReader& in, char kind) {
    std::array<uint8_t, 16> alphas{};
    alphas.fill(255);
    const bool explicitAlpha = kind != '1';
    if (kind == '3') {
        for (std::size_t i = 0; i < 16; i += 2) {
            const uint8_t pair = in.byte();
            alphas[i] = static_cast<uint8_t>((pair & 15) * 17);
            alphas[i + 1] = static_cast<uint8_t>((pair >> 4) * 17);
        }
    } else if (kind == '5') {
        const int first = in.byte(), second = in.byte();
        const std::array<uint8_t, 8> levels = alphaLevels(first, second);
        uint64_t bits = 0;
        for (int i = 0; i < 6; ++i)
            bits |= uint64_t{in.byte()} << (8 * i);
        for (std::size_t i = 0; i < 16; ++i)
            alphas[i] = levels[bits >> (3 * i) & 7];
    }
    const uint32_t first = static_cast<uint32_t>(in.uint16());
    const uint32_t second = static_cast<uint32_t>(in.uint16());
    const std::array<Color, 4> colors = blockColors(first, second);
    const auto indices = static_cast<uint32_t>(in.int32());
    std::array<Color, 16> pixels{};
    for (std::size_t i = 0; i < 16; ++i) {
        pixels[i] = colors[indices >> (2 * i) & 3];
        if (explicitAlpha) pixels[i][3] = alphas[i];
    }
    return pixels;
}

// Only whole blocks are kept, and a row of blocks is taken as the width over 4 rounded down, so
// a side that isn't a multiple of 4 shears what follows: that is how FreeImage reads such files.
std::optional<RgbaImage> decodeCompressed(ByteReader& in, const DdsHeader& dds) {
    if (dds.code != "DXT1" && dds.code != "DXT3" && dds.code != "DXT5") return std::nullopt;
    const int64_t blocksWide = dds.width / 4, blocksHigh = dds.height / 4;
    std::optional<RgbaImage> image = blankImage(blocksWide * 4, blocksHigh * 4);
    if (!image) return std::nullopt;
    in.seek(kHeaderBytes);
    const int64_t width = image->width, height = image->height;
    for (int64_t by = 0; by < blocksHigh; ++by) {
        for (int64_t bx = 0; bx < blocksWide; ++bx) {
            const std::array<Color, 16> pixels = decodeBlock(in, dds.code[3]);
            for (int64_t i = 0; i < 16; ++i) {
                const int64_t y = height - 1 - (by * 4 + i / 4), x = bx * 4 + i % 4;
                const Color& pixel = pixels[static_cast<std::size_t>(i)];
                std::copy(pixel.begin(), pixel.end(), image->rgbaRows.data() + (y * width + x) * 4);
            }
        }
    }
    return image;
}

}  // namespace

std::optional<RgbaImage> decodeDds(std::string_view bytes) {
    if (!bytes.starts_with("DDS ")) return std::nullopt;
    ByteReader in(bytes);
    const DdsHeader dds = readHeader(in);
    std::optional<RgbaImage> image;
    if (dds.formatFlags & kUncompressed) {
        image = decodeUncompressed(in, dds);
    } else if (dds.formatFlags & kFourCharacterCode) {
        image = decodeCompressed(in, dds);
    }
    if (image) setTranslucency(*image);
    return image;
}

}  // namespace velmora::image::portable
