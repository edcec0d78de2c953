#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <FreeImage.h>
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>
#include <vector>

using namespace velmora;
using namespace testbytes;

namespace {

using Rgb = std::array<uint8_t, 3>;
using Pattern = std::function<Rgb(int x, int y)>;  // y counts from the top row

Rgb gradient(int x, int y) {
    return {static_cast<uint8_t>(x * 7), static_cast<uint8_t>(y * 11),
            static_cast<uint8_t>((x + y) * 3)};
}

// Writes an image with FreeImage: 24 bits, or 8 bits whose palette gives index i the colour
// (i, i / 2, 255 - i); the pattern's red is then the index.
void writeImage(const std::string& path, FREE_IMAGE_FORMAT format, int width, int height, int bits,
                const Pattern& pattern) {
    FIBITMAP* bitmap = FreeImage_Allocate(width, height, bits);
    RGBQUAD* palette = FreeImage_GetPalette(bitmap);
    for (int i = 0; palette && i < 256; ++i)
        palette[i] = {static_cast<BYTE>(255 - i), static_cast<BYTE>(i / 2), static_cast<BYTE>(i),
                      0};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgb c = pattern(x, y);
            RGBQUAD colour{c[2], c[1], c[0], 255};
            BYTE index = c[0];
            const auto row = static_cast<unsigned>(height - 1 - y);
            if (bits == 8) FreeImage_SetPixelIndex(bitmap, static_cast<unsigned>(x), row, &index);
            if (bits != 8) FreeImage_SetPixelColor(bitmap, static_cast<unsigned>(x), row, &colour);
        }
    }
    ASSERT_TRUE(FreeImage_Save(format, bitmap, path.c_str(), 0));
    FreeImage_Unload(bitmap);
}

// The texture as OpenGL holds it, read back as BGR rows from the bottom, each padded to 4 bytes,
// and given as its width, height and RGB texels from the top row.
std::vector<int> readTexture(int32_t name, std::vector<Rgb>& texels) {
    GLint width = 0, height = 0;
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(name));
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &height);
    const int row = (width * 3 + 3) / 4 * 4;
    std::vector<uint8_t> bgr(static_cast<std::size_t>(row * height));
    glGetTexImage(GL_TEXTURE_2D, 0, GL_BGR, GL_UNSIGNED_BYTE, bgr.data());
    for (int y = height - 1; y >= 0; --y) {
        for (int x = 0; x < width; ++x) {
            const uint8_t* p = &bgr[static_cast<std::size_t>(row * y + 3 * x)];
            texels.push_back({p[2], p[1], p[0]});
        }
    }
    return {width, height};
}

// A DXT1 file of 8 x 8 pixels written by hand: the 128-byte head, then four 8-byte blocks,
// each of one colour (colour 0 in RGB 565 with every index 0).
std::string dxt1File(const std::array<uint16_t, 4>& blockColours) {
    std::string file = "DDS " + le32(124) + le32(0x1 | 0x2 | 0x4 | 0x1000 | 0x80000) + le32(8) +
                       le32(8) + le32(4 * 8) + std::string(13 * 4, '\0') + le32(32) + le32(0x4) +
                       "DXT1" + std::string(5 * 4, '\0') + le32(0x1000) + std::string(4 * 4, '\0');
    for (uint16_t c : blockColours)
        file += le16(c) + le16(0) + le32(0);
    return file;
}

class TextureLoading : public ::testing::Test {
  protected:
    void SetUp() override {
        surface_ = createPreviewSurface(16, 16);
        preview_.initOpenGL(surface_);
    }
    void TearDown() override { destroyPreviewSurface(surface_); }

    TempDir dir_;
    int32_t surface_ = 0;
    OpenGLPreviewObject preview_;
};

}  // namespace

TEST_F(TextureLoading, ImagesLoadBottomUpAsBGRWithTheirRowPadding) {
    // 5 pixels a row are 15 bytes: each row carries fill bytes that must not shift the next;
    // an 8-bit image resolves its palette, its size taken from the bitmap header.
    const Pattern indices = [](int x, int y) {
        return Rgb{static_cast<uint8_t>((x * 5 + y * 3) % 256), 0, 0};
    };
    struct Case {
        const char* name;
        FREE_IMAGE_FORMAT format;
        int width, height, bits;
    };
    for (const Case& c :
         {Case{"even.bmp", FIF_BMP, 8, 6, 24}, Case{"odd.bmp", FIF_BMP, 5, 3, 24},
          Case{"odd.png", FIF_PNG, 7, 5, 24}, Case{"palette.bmp", FIF_BMP, 13, 7, 8}}) {
        SCOPED_TRACE(c.name);
        const std::string path = dir_.file(c.name);
        writeImage(path, c.format, c.width, c.height, c.bits, c.bits == 8 ? indices : gradient);
        std::vector<Rgb> expected, texels;
        for (int y = 0; y < c.height; ++y) {
            for (int x = 0; x < c.width; ++x) {
                const uint8_t i = indices(x, y)[0];
                expected.push_back(
                    c.bits == 8 ? Rgb{i, static_cast<uint8_t>(i / 2), static_cast<uint8_t>(255 - i)}
                                : gradient(x, y));
            }
        }
        EXPECT_EQ(readTexture(preview_.loadTexture(path), texels),
                  (std::vector<int>{c.width, c.height}));
        EXPECT_EQ(texels, expected);
    }
    EXPECT_EQ(preview_.loadTexture(""), 0) << "no file, no texture";

    // A DXT1 file of red, green, blue and white blocks: top-left, top-right, bottom-left,
    // bottom-right.
    const std::string dds = dir_.file("blocks.dds");
    writeFile(dds, dxt1File({0xF800, 0x07E0, 0x001F, 0xFFFF}));
    std::vector<Rgb> texels;
    ASSERT_EQ(readTexture(preview_.loadTexture(dds), texels), (std::vector<int>{8, 8}));
    EXPECT_EQ(texels[1 * 8 + 1], (Rgb{255, 0, 0}));
    EXPECT_EQ(texels[2 * 8 + 6], (Rgb{0, 255, 0}));
    EXPECT_EQ(texels[6 * 8 + 2], (Rgb{0, 0, 255}));
    EXPECT_EQ(texels[7 * 8 + 7], (Rgb{255, 255, 255}));
}

TEST_F(TextureLoading, UnreadableFilesFailWithTheirPathAndLeaveNothingBehind) {
    const std::string garbage = dir_.file("garbage.bmp");
    writeFile(garbage, "this is no image at all");
    const std::string truncated = dir_.file("truncated.dds");
    writeFile(truncated, dxt1File({0, 0, 0, 0}).substr(0, 60));
    for (const std::string& path : {dir_.file("missing.png"), garbage, truncated, dir_.path()}) {
        EXPECT_TRUE(throwsError([&] { preview_.loadTexture(path); }, 100,
                                "Velmora.OpenGLPreviewObject",
                                "Loading Texture File: '" + path + "' Failed!"));
    }
    EXPECT_EQ(dir_.listing(), "garbage.bmp truncated.dds");
}
