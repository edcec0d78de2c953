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

// Writes an image with FreeImage: 24 bits, or 8 bits with a palette of up to 256 colours
// (the pattern then gives palette entries, red = index).
void writeImage(const std::string& path, FREE_IMAGE_FORMAT format, int width, int height, int bits,
                const Pattern& pattern) {
    FIBITMAP* bitmap = FreeImage_Allocate(width, height, bits);
    ASSERT_NE(bitmap, nullptr);
    if (bits == 8) {
        RGBQUAD* palette = FreeImage_GetPalette(bitmap);
        for (int i = 0; i < 256; ++i) {
            palette[i] = RGBQUAD{static_cast<BYTE>(255 - i), static_cast<BYTE>(i / 2),
                                 static_cast<BYTE>(i), 0};
        }
    }
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Rgb c = pattern(x, y);
            const unsigned row = static_cast<unsigned>(height - 1 - y);
            if (bits == 8) {
                BYTE index = c[0];
                FreeImage_SetPixelIndex(bitmap, static_cast<unsigned>(x), row, &index);
            } else {
                RGBQUAD q{c[2], c[1], c[0], 255};
                FreeImage_SetPixelColor(bitmap, static_cast<unsigned>(x), row, &q);
            }
        }
    }
    ASSERT_TRUE(FreeImage_Save(format, bitmap, path.c_str(), 0));
    FreeImage_Unload(bitmap);
}

Rgb gradient(int x, int y) {
    return {static_cast<uint8_t>(x * 7), static_cast<uint8_t>(y * 11),
            static_cast<uint8_t>((x + y) * 3)};
}

Rgb paletteColour(int index) {
    return {static_cast<uint8_t>(index), static_cast<uint8_t>(index / 2),
            static_cast<uint8_t>(255 - index)};
}

// The texture as OpenGL holds it, read back as BGR rows from the bottom, 4-byte aligned.
struct Texels {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> bgr;
    Rgb at(int x, int yFromTop) const {
        const std::size_t row = (static_cast<std::size_t>(width) * 3 + 3) / 4 * 4;
        const std::size_t i = row * static_cast<std::size_t>(height - 1 - yFromTop) + x * 3;
        return {bgr[i + 2], bgr[i + 1], bgr[i]};
    }
};

Texels readTexture(int32_t name) {
    Texels t;
    glBindTexture(GL_TEXTURE_2D, static_cast<GLuint>(name));
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &t.width);
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_HEIGHT, &t.height);
    t.bgr.assign((static_cast<std::size_t>(t.width) * 3 + 3) / 4 * 4 * t.height, 0);
    glGetTexImage(GL_TEXTURE_2D, 0, GL_BGR, GL_UNSIGNED_BYTE, t.bgr.data());
    return t;
}

void expectImage(const Texels& t, int width, int height, const Pattern& pattern) {
    ASSERT_EQ(t.width, width);
    ASSERT_EQ(t.height, height);
    int wrong = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (t.at(x, y) != pattern(x, y) && ++wrong < 5) {
                ADD_FAILURE() << "texel " << x << "," << y;
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

// A DXT1 file of 8 x 8 pixels written by hand: the 128-byte head, then four 8-byte blocks,
// each of one colour (colour 0 in RGB 565 with every index 0).
std::string dxt1File(const std::array<uint16_t, 4>& blockColours) {
    std::string head = "DDS " + le32(124) + le32(0x1 | 0x2 | 0x4 | 0x1000 | 0x80000) + le32(8) +
                       le32(8) + le32(4 * 8) + le32(0) + le32(0);
    head += std::string(11 * 4, '\0');
    head += le32(32) + le32(0x4) + "DXT1" + le32(0) + le32(0) + le32(0) + le32(0) + le32(0);
    head += le32(0x1000) + le32(0) + le32(0) + le32(0) + le32(0);
    std::string blocks;
    for (uint16_t c : blockColours)
        blocks += le16(c) + le16(0) + le32(0);
    return head + blocks;
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
    const Pattern palette = [&](int x, int y) { return paletteColour(indices(x, y)[0]); };
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
        expectImage(readTexture(preview_.loadTexture(path)), c.width, c.height,
                    c.bits == 8 ? palette : gradient);
    }
    EXPECT_EQ(preview_.loadTexture(""), 0) << "no file, no texture";

    // A DXT1 file of red, green, blue and white blocks: top-left, top-right, bottom-left,
    // bottom-right.
    const std::string dds = dir_.file("blocks.dds");
    writeFile(dds, dxt1File({0xF800, 0x07E0, 0x001F, 0xFFFF}));
    const Texels t = readTexture(preview_.loadTexture(dds));
    ASSERT_EQ(t.width * 100 + t.height, 808);
    EXPECT_EQ(t.at(1, 1), (Rgb{255, 0, 0}));
    EXPECT_EQ(t.at(6, 2), (Rgb{0, 255, 0}));
    EXPECT_EQ(t.at(2, 6), (Rgb{0, 0, 255}));
    EXPECT_EQ(t.at(7, 7), (Rgb{255, 255, 255}));
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
