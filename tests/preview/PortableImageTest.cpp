// The portable decoder must give FreeImage's pixels, byte for byte: each file here is read by both.
#include "image/ImageFile.h"
#include "image/portable/PortableImage.h"

#include "support/Bytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace velmora;
using namespace testbytes;

namespace {

// Bytes that differ from one position to the next, the same on every run.
std::string varied(std::size_t count, unsigned seed) {
    std::minstd_rand random(seed);
    std::string out;
    for (std::size_t i = 0; i < count; ++i)
        out += static_cast<char>(random() & 0xFF);
    return out;
}

std::string padded(std::string row) {
    row.resize((row.size() + 3) / 4 * 4, '\0');
    return row;
}

// A BMP with a 40-byte header; a negative height stores the rows top-down.
std::string bmp(int32_t width, int32_t height, int bits, const std::string& pixels,
                const std::string& palette = "", int compression = 0,
                const std::string& masks = "") {
    const auto start = static_cast<int64_t>(54 + masks.size() + palette.size());
    return "BM" + le32(start + std::ssize(pixels)) + le32(0) + le32(start) + le32(40) +
           le32(width) + le32(height) + le16(1) + le16(bits) + le32(compression) +
           le32(std::ssize(pixels)) + le32(2835) + le32(2835) + le32(std::ssize(palette) / 4) +
           le32(0) + masks + palette + pixels;
}

// A TGA of true-colour pixels, raw (type 2) or run-length coded (type 10).
std::string tga(int width, int height, int bits, int type, int descriptor,
                const std::string& data) {
    return bytes({0, 0, type}) + std::string(9, '\0') + le16(width) + le16(height) +
           bytes({bits, descriptor}) + data;
}

// A DDS file's 128-byte header and data; `format` is the 32-byte pixel format.
std::string dds(int32_t width, int32_t height, const std::string& format, const std::string& data,
                int32_t flags = 0x1007, int32_t pitch = 0) {
    return "DDS " + le32(124) + le32(flags) + le32(height) + le32(width) + le32(pitch) + le32(0) +
           le32(0) + std::string(44, '\0') + format + le32(0x1000) + std::string(16, '\0') + data;
}
std::string compressed(const std::string& code) {
    return le32(32) + le32(4) + code + std::string(20, '\0');
}
std::string uncompressed(int bits, int64_t red, int64_t green, int64_t blue, bool alpha) {
    return le32(32) + le32(alpha ? 0x41 : 0x40) + le32(0) + le32(bits) + le32(red) + le32(green) +
           le32(blue) + le32(alpha ? 0xFF000000 : 0);
}

std::string bigEndian32(uint32_t value) {
    return bytes({static_cast<int>(value >> 24), static_cast<int>(value >> 16 & 0xFF),
                  static_cast<int>(value >> 8 & 0xFF), static_cast<int>(value & 0xFF)});
}

// A PNG chunk: length, type, data and the CRC-32 of type and data.
std::string pngChunk(const std::string& type, const std::string& data) {
    uint32_t crc = 0xFFFFFFFF;
    for (const unsigned char byte : type + data) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit)
            crc = crc >> 1 ^ (0xEDB88320 & (0 - (crc & 1)));
    }
    return bigEndian32(static_cast<uint32_t>(data.size())) + type + data + bigEndian32(~crc);
}

// A PNG file of one image chunk with its rows stored uncompressed; each row's first byte is
// taken for its filter byte, and made 0 (none).
std::string pngFile(int width, int height, int depth, int colorType, std::string rows) {
    for (std::size_t at = 0; at < rows.size(); at += rows.size() / static_cast<std::size_t>(height))
        rows[at] = 0;
    uint32_t low = 1, high = 0;
    for (const unsigned char byte : rows) {
        low = (low + byte) % 65521;
        high = (high + low) % 65521;
    }
    const std::string deflated = bytes({0x78, 0x01, 0x01}) + le16(std::ssize(rows)) +
                                 le16(~std::ssize(rows)) + rows + bigEndian32(high << 16 | low);
    return std::string("\x89PNG\r\n\x1a\n", 8) +
           pngChunk("IHDR",
                    bigEndian32(width) + bigEndian32(height) + bytes({depth, colorType, 0, 0, 0})) +
           pngChunk("IDAT", deflated) + pngChunk("IEND", "");
}

// A PNG file with `chunks` put right after its 33 bytes of signature and header chunk.
std::string withChunks(const std::string& png, const std::string& chunks) {
    return png.substr(0, 33) + chunks + png.substr(33);
}

// Colour blocks of every kind: four colours, three and transparent black, and both ends equal.
std::string colorBlocks(int count, unsigned seed) {
    std::string out;
    std::minstd_rand random(seed);
    for (int i = 0; i < count; ++i) {
        int first = static_cast<int>(random() & 0xFFFF),
            second = static_cast<int>(random() & 0xFFFF);
        if (i % 3 == 0) std::swap(first, second);
        if (i % 5 == 4) second = first;
        out += le16(first) + le16(second) + varied(4, seed + static_cast<unsigned>(i));
    }
    return out;
}

class PortableImage : public ::testing::Test {
  protected:
    // Writes `bytes` as a file that FreeImage reads, and checks that the portable decoder gives
    // the same image, as RGBA and as texture rows.
    void expectSameAsFreeImage(const std::string& name, const std::string& bytes) {
        SCOPED_TRACE(name);
        const std::string path = dir_.file(name);
        writeFile(path, bytes);
        const std::optional<image::RgbaImage> expected = image::readRgbaImage(path);
        const std::optional<image::RgbaImage> decoded = image::portable::decodeImage(bytes);
        ASSERT_TRUE(expected) << "FreeImage reads nothing";
        ASSERT_TRUE(decoded) << "the portable decoder reads nothing";
        ASSERT_EQ(decoded->width, expected->width);
        ASSERT_EQ(decoded->height, expected->height);
        EXPECT_EQ(decoded->translucent, expected->translucent);
        for (std::size_t i = 0; i < expected->rgbaRows.size(); i += 4) {
            const std::string want(expected->rgbaRows.begin() + i,
                                   expected->rgbaRows.begin() + i + 4);
            const std::string got(decoded->rgbaRows.begin() + i, decoded->rgbaRows.begin() + i + 4);
            ASSERT_EQ(hex(got), hex(want)) << "at pixel " << i / 4 % expected->width << ", "
                                           << i / 4 / expected->width << " from the bottom";
        }
        const std::optional<image::TextureImage> texture = image::readTextureImage(path);
        ASSERT_TRUE(texture);
        EXPECT_EQ(image::portable::textureImage(*decoded).bgrRows, texture->bgrRows);
    }

    TempDir dir_;
};

TEST_F(PortableImage, SampleTextures) {
    for (const char* name : {"roof.bmp", "tree.tga", "wall_summer.bmp", "wall_winter.bmp"})
        expectSameAsFreeImage(name,
                              readFile(std::string(VELMORA_SAMPLES_DIR) + "/textures/" + name));
}

TEST_F(PortableImage, BmpBitDepthsAndRowOrders) {
    // Palettes shorter than the bit depth allows: the missing entries are black, or a grey ramp
    // in 8-bit images.
    const std::string palette = varied(4 * 4, 1);
    expectSameAsFreeImage("1.bmp",
                          bmp(10, 2, 1, padded(bytes({0xB2, 0xC0})) + padded(bytes({0x4D, 0x40})),
                              palette.substr(0, 8)));
    expectSameAsFreeImage(
        "4.bmp", bmp(5, 2, 4, padded(bytes({0x01, 0x23, 0x40})) + padded(bytes({0xF5, 0x67, 0x80})),
                     palette.substr(0, 12)));
    const std::string indices = padded(bytes({0, 1, 2, 3, 7})) + padded(bytes({3, 2, 1, 0, 200}));
    expectSameAsFreeImage("8.bmp", bmp(5, 2, 8, indices, palette));
    expectSameAsFreeImage("os2.bmp", "BM" + le32(0) + le32(0) + le32(32) + le32(12) + le16(3) +
                                         le16(1) + le16(1) + le16(8) + bytes({1, 2, 3, 4, 5, 6}) +
                                         padded(bytes({0, 1, 2})));

    // Every 5- and 6-bit level, which FreeImage widens by rounding down.
    std::string ramp555, ramp565;
    for (const int channel : {0, 1, 2}) {
        for (int v = 0; v < 32; ++v)
            ramp555 += le16(v << std::array{10, 5, 0}[channel] | 0x8000);
        for (int v = 0; v < 64; ++v)
            ramp565 += le16((channel == 1 ? v : v & 31) << std::array{11, 5, 0}[channel]);
    }
    expectSameAsFreeImage("555.bmp", bmp(32, 3, 16, ramp555));
    expectSameAsFreeImage(
        "565.bmp", bmp(64, 3, 16, ramp565, "", 3, le32(0xF800) + le32(0x07E0) + le32(0x001F)));

    const std::string rows24 = padded(varied(9, 2)) + padded(varied(9, 3));
    expectSameAsFreeImage("24.bmp", bmp(3, 2, 24, rows24));
    expectSameAsFreeImage("24-top-down.bmp", bmp(3, -2, 24, rows24));
    // Cut short: FreeImage keeps what is there and leaves the rest black.
    expectSameAsFreeImage("24-cut.bmp", bmp(3, 2, 24, rows24).substr(0, 54 + 14));
    // The fourth byte is alpha, kept even when it is zero everywhere.
    expectSameAsFreeImage(
        "32.bmp", bmp(4, 1, 32, bytes({9, 8, 7, 0, 6, 5, 4, 128, 3, 2, 1, 255, 1, 1, 1, 7})));
    expectSameAsFreeImage("32-zero-alpha.bmp", bmp(2, 1, 32, bytes({9, 8, 7, 0, 6, 5, 4, 0})));
}

TEST_F(PortableImage, BmpRunLengthCodes) {
    const std::string palette = varied(16 * 4, 4);
    // A run, an odd literal span and its pad byte, end of row, a move, and pixels never written
    // (palette entry 0).
    expectSameAsFreeImage("rle8.bmp", bmp(8, 4, 8, bytes({3, 1, 0, 3, 2, 3, 0, 0, 2, 2, 0, 0,
                                                          0, 2, 2, 1, 2, 3, 0, 0, 4, 1, 0, 1}),
                                          palette, 1));
    // A run cut at the row's end; a literal span too long for its row is read only as far as it
    // fits, and its pad byte is the one after that.
    expectSameAsFreeImage(
        "rle8-overlong.bmp",
        bmp(4, 3, 8, bytes({6, 1, 0, 0, 0, 5, 1, 2, 3, 1, 2, 0, 0, 3, 2, 0, 1}), palette, 1));
    expectSameAsFreeImage("rle4.bmp",
                          bmp(8, 4, 4, bytes({5, 0x12, 0, 3,    0x34, 0x50, 0, 0,    0, 2,
                                              1, 1,    3, 0x67, 0,    0,    8, 0x89, 0, 1}),
                              palette, 2));
    // RLE4 runs and literal spans run on into the next row; an end of row after the last is fine.
    expectSameAsFreeImage(
        "rle4-wrap.bmp",
        bmp(4, 3, 4, bytes({6, 0x12, 0, 0, 0, 5, 0x12, 0x31, 0x20, 0, 0, 0, 0, 0, 0, 1}), palette,
            2));
}

TEST_F(PortableImage, TgaCompressionAndOrigins) {
    // Fifteen pixels as raw 3, run 4, raw 2, run 6: packets cross the rows of a 5 by 3 image.
    for (const int bits : {24, 32}) {
        const std::size_t size = static_cast<std::size_t>(bits / 8);
        const std::string p = varied(7 * size, static_cast<unsigned>(bits));
        const auto pixel = [&](std::size_t i) { return p.substr(i * size, size); };
        std::string raw = p.substr(0, 3 * size);
        for (int i = 0; i < 4; ++i)
            raw += pixel(3);
        raw += pixel(4) + pixel(5);
        for (int i = 0; i < 6; ++i)
            raw += pixel(6);
        const std::string packed = bytes({2}) + p.substr(0, 3 * size) + bytes({0x83}) + pixel(3) +
                                   bytes({1}) + pixel(4) + pixel(5) + bytes({0x85}) + pixel(6);
        for (const int origin : {0x00, 0x10, 0x20, 0x30}) {
            const int descriptor = origin | (bits == 32 ? 8 : 0);
            const std::string name = std::to_string(bits) + "-" + std::to_string(origin);
            expectSameAsFreeImage(name + ".tga", tga(5, 3, bits, 2, descriptor, raw));
            expectSameAsFreeImage(name + "-rle.tga", tga(5, 3, bits, 10, descriptor, packed));
        }
    }
}

TEST_F(PortableImage, PngPalettesAlphaDepthsAndGamma) {
    // Three rows each; a row is its filter byte and its pixels.
    const std::string palette =
        pngChunk("PLTE", varied(256 * 3, 5)) + pngChunk("tRNS", varied(200, 6));
    const std::vector<std::pair<std::string, std::string>> pngs = {
        {"palette-alpha", withChunks(pngFile(7, 3, 8, 3, varied(3 * 8, 7)), palette)},
        {"grey4", pngFile(9, 3, 4, 0, varied(3 * 6, 8))},
        {"grey", pngFile(5, 3, 8, 0, varied(3 * 6, 9))},
        {"rgb", pngFile(5, 3, 8, 2, varied(3 * 16, 10))},
        {"rgba", pngFile(5, 3, 8, 6, varied(3 * 21, 11))},
        {"rgb16", pngFile(5, 3, 16, 2, varied(3 * 31, 12))},
        {"rgba16", pngFile(5, 3, 16, 6, varied(3 * 41, 13))}};
    for (const auto& [name, png] : pngs) {
        expectSameAsFreeImage(name + ".png", png);
        // FreeImage corrects the colours for the file's gamma, unless it has a palette or the
        // correction is small; 45000 is within 5% of none.
        for (const int gamma : {100000, 50000, 30000, 45000})
            expectSameAsFreeImage(name + "-" + std::to_string(gamma) + ".png",
                                  withChunks(png, pngChunk("gAMA", bigEndian32(gamma))));
    }
    const std::string& rgb = pngs[3].second;
    const std::string& rgb16 = pngs[5].second;
    expectSameAsFreeImage("srgb.png", withChunks(rgb, pngChunk("sRGB", bytes({0})) +
                                                          pngChunk("gAMA", bigEndian32(100000))));
    // 16-bit levels are corrected on their significant bits only.
    expectSameAsFreeImage("rgb16-10-bits.png",
                          withChunks(rgb16, pngChunk("sBIT", bytes({10, 10, 10})) +
                                                pngChunk("gAMA", bigEndian32(100000))));
}

TEST_F(PortableImage, DdsBlockCompressionAndPlainPixels) {
    // 16 by 16 is 4 by 4 blocks; DXT3 and DXT5 blocks lead with their alpha.
    const std::string colors = colorBlocks(16, 12);
    expectSameAsFreeImage("dxt1.dds", dds(16, 16, compressed("DXT1"), colors));
    std::string dxt3, dxt5;
    for (std::size_t i = 0; i < 16; ++i) {
        dxt3 += varied(8, 20 + static_cast<unsigned>(i)) + colors.substr(8 * i, 8);
        const int low = static_cast<int>(i * 15), high = 255 - static_cast<int>(i * 7);
        // Eight levels when the first end is above the second, else six and 0 and 255.
        dxt5 += (i % 2 ? bytes({high, low}) : bytes({low, high})) +
                varied(6, 40 + static_cast<unsigned>(i)) + colors.substr(8 * i, 8);
    }
    expectSameAsFreeImage("dxt3.dds", dds(16, 16, compressed("DXT3"), dxt3));
    expectSameAsFreeImage("dxt5.dds", dds(16, 16, compressed("DXT5"), dxt5));
    // Sides that aren't multiples of 4: FreeImage keeps the whole blocks and reads them as rows
    // of 2.
    expectSameAsFreeImage("dxt1-10x9.dds", dds(10, 9, compressed("DXT1"), colorBlocks(9, 13)));

    // Uncompressed rows from the top down, with the pitch when the header gives it.
    expectSameAsFreeImage("24-pitch.dds", dds(3, 2, uncompressed(24, 0xFF0000, 0xFF00, 0xFF, false),
                                              varied(24, 14), 0x100F, 12));
    expectSameAsFreeImage(
        "32-alpha.dds", dds(3, 2, uncompressed(32, 0xFF0000, 0xFF00, 0xFF, true), varied(24, 16)));
    expectSameAsFreeImage(
        "32-no-alpha.dds",
        dds(3, 2, uncompressed(32, 0xFF0000, 0xFF00, 0xFF, false), varied(24, 16)));
    // Without a pitch, FreeImage takes a row of 16-bit pixels to be 3 bytes a pixel long.
    expectSameAsFreeImage("565.dds",
                          dds(4, 2, uncompressed(16, 0xF800, 0x07E0, 0x1F, false), varied(24, 17)));
    expectSameAsFreeImage("4444.dds",
                          dds(4, 2, uncompressed(16, 0xF00, 0xF0, 0xF, false), varied(24, 18)));
}

TEST_F(PortableImage, PngEncodingRoundTrips) {
    const std::string rgbaBytes = varied(24, 19);
    image::RgbaImage rgba{3, 2, {rgbaBytes.begin(), rgbaBytes.end()}, true};
    for (const bool translucent : {true, false}) {
        rgba.translucent = translucent;
        for (std::size_t i = 3; !translucent && i < rgba.rgbaRows.size(); i += 4)
            rgba.rgbaRows[i] = 255;
        const std::string path = dir_.file("rgba.png");
        writeFile(path, image::portable::encodePNG(rgba));
        EXPECT_EQ(image::readRgbaImage(path).value().rgbaRows, rgba.rgbaRows);
    }

    // RGB rows given from the top down come back from the bottom up.
    const std::string rgb = varied(18, 20);
    const std::string path = dir_.file("rgb.png");
    writeFile(path, image::portable::encodePNG({rgb.begin(), rgb.end()}, 3, 2));
    std::string expected;
    for (const std::size_t at : {9, 12, 15, 0, 3, 6})
        expected += rgb.substr(at, 3) + '\xFF';
    const std::vector<uint8_t> back = image::readRgbaImage(path).value().rgbaRows;
    EXPECT_EQ(hex({back.begin(), back.end()}), hex(expected));
    EXPECT_TRUE(image::portable::encodePNG({1, 2, 3}, 2, 1).empty());
}

TEST_F(PortableImage, NoImage) {
    // No bytes, no format known, a header cut short, a DXT image smaller than one block.
    for (const std::string& bytes :
         {std::string(), std::string("not an image at all"), bmp(3, 2, 24, "").substr(0, 20),
          std::string("DDS "), dds(2, 2, compressed("DXT1"), std::string(8, '\0'))})
        EXPECT_FALSE(image::portable::decodeImage(bytes));
}

}  // namespace
