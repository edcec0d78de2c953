#include <velmora/Host.h>
#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "support/ErrorMatchers.h"
#include "support/ImageFiles.h"
#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <string>
#include <vector>

using namespace velmora;
using namespace modelbytes;

namespace {

constexpr int kSize = 256;

using Rgb = std::array<uint8_t, 3>;

// Writes an image and gives its pixels as RGB from the top row: 24 bits of a gradient, or 8 bits
// of palette indices, the palette giving index i the colour (i, i/2, 255-i).
std::vector<Rgb> writeImage(const std::string& path, int width, int height, int bits) {
    std::vector<Rgb> palette;
    for (int i = 0; bits == 8 && i < 256; ++i)
        palette.push_back(
            {static_cast<uint8_t>(i), static_cast<uint8_t>(i / 2), static_cast<uint8_t>(255 - i)});
    std::vector<Rgb> pixels;
    std::vector<uint8_t> indices;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            indices.push_back(static_cast<uint8_t>(x * 5 + y * 3));
            pixels.push_back(bits == 8
                                 ? palette[indices.back()]
                                 : Rgb{static_cast<uint8_t>(x * 7), static_cast<uint8_t>(y * 11),
                                       static_cast<uint8_t>((x + y) * 3)});
        }
    }
    if (path.ends_with(".png")) {
        EXPECT_TRUE(imagefiles::writePng(path, width, height, pixels));
    } else {
        writeFile(path, imagefiles::bmpBytes(width, height, pixels, indices, palette));
    }
    return pixels;
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
    glGetTexImage(GL_TEXTURE_2D, 0, GL_BGR_EXT, GL_UNSIGNED_BYTE, bgr.data());
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

// A flat 2 x 1 plate in the model's x-z plane at x 2..4, y 0.5, z 1..2, facing up its y axis:
// the left half in a red material, the right half textured. Seen from above, it is wider than
// tall; lying off the origin in every axis, it shows a slip in the centring of any of them.
std::string plateModel(std::vector<std::string> textures = {"plate.bmp"}) {
    Model m;
    m.box = {2, 0.5f, 1, 4, 0.5f, 2};
    m.materials = {{{1, 0, 0, 1}, {1, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}, 0}};
    m.textures = std::move(textures);
    for (float left : {2.0f, 3.0f}) {
        m.vertices.push_back({left, 0.5f, 1, 0, 1, 0, 0, 0});
        m.vertices.push_back({left + 1, 0.5f, 1, 0, 1, 0, 1, 0});
        m.vertices.push_back({left + 1, 0.5f, 2, 0, 1, 0, 1, 1});
        m.vertices.push_back({left, 0.5f, 2, 0, 1, 0, 0, 1});
    }
    m.commands = setMaterial(0, -1) + triangleList(0, {{0, 1, 2}, {0, 2, 3}}) + setMaterial(0, 0) +
                 triangleList(4, {{0, 1, 2}, {0, 2, 3}}) + bglEnd();
    return m.bytes();
}

// A frame's RGB pixels, rows from the top, and the extent of its drawn (non-white) part.
struct Frame {
    std::vector<uint8_t> rgb;
    int left = kSize, right = -1, top = kSize, bottom = -1;

    explicit Frame(std::vector<uint8_t> pixels) : rgb(std::move(pixels)) {
        for (int y = 0; y < kSize; ++y) {
            for (int x = 0; x < kSize; ++x) {
                if (at(x, y)[0] + at(x, y)[1] + at(x, y)[2] == 3 * 255) continue;
                left = std::min(left, x);
                right = std::max(right, x);
                top = std::min(top, y);
                bottom = std::max(bottom, y);
            }
        }
    }
    const uint8_t* at(int x, int y) const {
        return &rgb[(static_cast<std::size_t>(y) * kSize + x) * 3];
    }
    int width() const { return right - left + 1; }
    int height() const { return bottom - top + 1; }
    double centreX() const { return (left + right) / 2.0; }
    double centreY() const { return (top + bottom) / 2.0; }
};

class Preview : public ::testing::Test {
  protected:
    void SetUp() override {
        surface_ = createPreviewSurface(kSize, kSize);
        preview_->initOpenGL(surface_);
        writeFile(texturePath_, dxt1File({0x07E0, 0x07E0, 0x07E0, 0x07E0}));  // green
    }
    void TearDown() override { destroyPreviewSurface(surface_); }

    Frame draw(MDLObject& model, float heading, float pitch, float panX, float panY, float zoom) {
        model.glDrawMDL(heading, pitch, panX, panY, twips_, twips_, surface_, zoom);
        return Frame(previewSurfacePixels(surface_));
    }

    TempDir dir_;
    int32_t surface_ = 0;
    std::shared_ptr<OpenGLPreviewObject> preview_ = std::make_shared<OpenGLPreviewObject>();
    const std::string texturePath_ = dir_.file("green.dds");
    const float twips_ = kSize * TwipsPerPixelX();
};

}  // namespace

TEST_F(Preview, ShowsThePlateCentredAndFollowsTheView) {
    MDLObject model;
    model.readMDLBytes(plateModel());
    model.TextureList()->Item(1)->file(texturePath_);
    int yields = 0;
    setYieldHook([&] { ++yields; });
    model.glPreparepreview(preview_);
    setYieldHook(nullptr);
    // Twice for the preparation, once per texture, once per command.
    EXPECT_EQ(yields, 2 + 1 + 9);
    EXPECT_TRUE(model.Loaded());
    EXPECT_EQ(model.LoadingStatus(), generatingDrawList);

    const Frame base = draw(model, 0, 0, 0, 0, 100);
    // Seen down its y axis, the plate is 2 x 1 units; at the base distance the view reaches
    // sqrt(5)/2 units from the centre to the edge, so a unit is 114.5 pixels.
    EXPECT_NEAR(base.centreX(), 127.5, 1.5);
    EXPECT_NEAR(base.centreY(), 127.5, 1.5);
    EXPECT_NEAR(base.width(), 229, 3);
    EXPECT_NEAR(base.height(), 115, 3);
    // Left half lit red, right half showing its texture's green.
    const uint8_t* red = base.at(70, 128);
    EXPECT_GT(red[0], 200);
    EXPECT_LT(red[1] + red[2], 40);
    const uint8_t* green = base.at(186, 128);
    EXPECT_NEAR(green[0], 0, 3);
    EXPECT_NEAR(green[1], 255, 3);
    EXPECT_NEAR(green[2], 0, 3);

    // Panning along the model's x moves it right by half a unit, 57 pixels.
    EXPECT_NEAR(draw(model, 0, 0, 0.5f, 0, 100).left - base.left, 57, 3);
    // Panning along the model's z moves it up the screen.
    EXPECT_NEAR(base.top - draw(model, 0, 0, 0, 0.25f, 100).top, 29, 3);
    // Zoom 200 halves the distance: the plate doubles in size.
    const Frame zoomed = draw(model, 0, 0, 0, 0, 200);
    EXPECT_NEAR(zoomed.height(), 229, 3);
    EXPECT_EQ(zoomed.width(), kSize);  // clipped at the sides
    // A quarter turn of heading stands the plate upright on the screen.
    const Frame turned = draw(model, 90, 0, 0, 0, 100);
    EXPECT_NEAR(turned.width(), 115, 3);
    EXPECT_NEAR(turned.height(), 229, 3);
    EXPECT_NEAR(turned.centreY(), 127.5, 1.5);

    // Red at one end and green at the other: the PNG keeps the surface's rows in their order.
    EXPECT_NE(turned.at(128, 70)[1], turned.at(128, 186)[1]);
    const std::string png = testOutputFolder() + "/preview-plate.png";
    savePreviewSurfacePNG(surface_, png);
    const imagefiles::Picture saved = imagefiles::readPicture(readFile(png));
    ASSERT_EQ(saved.pixels.size() * 3, turned.rgb.size());
    std::vector<uint8_t> rgb;
    for (const Rgb& pixel : saved.pixels)
        rgb.insert(rgb.end(), pixel.begin(), pixel.end());
    EXPECT_EQ(rgb, turned.rgb);

    // A zoom or a height of 0 raises error 11 and leaves the last frame as it was.
    EXPECT_TRUE(throwsPlatform([&] { draw(model, 0, 0, 0, 0, 0); }, 11));
    EXPECT_TRUE(throwsPlatform([&] { model.glDrawMDL(0, 0, 0, 0, twips_, 0, surface_, 100); }, 11));
    EXPECT_EQ(previewSurfacePixels(surface_), turned.rgb);
}

TEST_F(Preview, ImagesLoadBottomUpAsBGRWithTheirRowPadding) {
    // 5 pixels a row are 15 bytes: each row carries fill bytes that must not shift the next;
    // an 8-bit image resolves its palette, its size taken from the bitmap header.
    struct Case {
        const char* name;
        int width, height, bits;
    };
    for (const Case& c : {Case{"even.bmp", 8, 6, 24}, Case{"odd.bmp", 5, 3, 24},
                          Case{"odd.png", 7, 5, 24}, Case{"palette.bmp", 13, 7, 8}}) {
        SCOPED_TRACE(c.name);
        const std::string path = dir_.file(c.name);
        const std::vector<Rgb> expected = writeImage(path, c.width, c.height, c.bits);
        std::vector<Rgb> texels;
        EXPECT_EQ(readTexture(preview_->loadTexture(path), texels),
                  (std::vector<int>{c.width, c.height}));
        EXPECT_EQ(texels, expected);
    }
    EXPECT_EQ(preview_->loadTexture(""), 0) << "no file, no texture";

    // A DXT1 file of red, green, blue and white blocks: top-left, top-right, bottom-left,
    // bottom-right.
    const std::string dds = dir_.file("blocks.dds");
    writeFile(dds, dxt1File({0xF800, 0x07E0, 0x001F, 0xFFFF}));
    std::vector<Rgb> texels;
    ASSERT_EQ(readTexture(preview_->loadTexture(dds), texels), (std::vector<int>{8, 8}));
    EXPECT_EQ(texels[1 * 8 + 1], (Rgb{255, 0, 0}));
    EXPECT_EQ(texels[2 * 8 + 6], (Rgb{0, 255, 0}));
    EXPECT_EQ(texels[6 * 8 + 2], (Rgb{0, 0, 255}));
    EXPECT_EQ(texels[7 * 8 + 7], (Rgb{255, 255, 255}));
}

TEST_F(Preview, FailuresLeaveThePreviewAsItWas) {
    // Unreadable textures fail with their path and leave nothing behind.
    const std::string garbage = dir_.file("garbage.bmp");
    writeFile(garbage, "this is no image at all");
    const std::string truncated = dir_.file("truncated.dds");
    writeFile(truncated, dxt1File({0, 0, 0, 0}).substr(0, 60));
    for (const std::string& path : {dir_.file("missing.png"), garbage, truncated, dir_.path()}) {
        EXPECT_TRUE(throwsError([&] { preview_->loadTexture(path); }, 100,
                                "Velmora.OpenGLPreviewObject",
                                "Loading Texture File: '" + path + "' Failed!"));
    }
    EXPECT_EQ(dir_.listing(), "garbage.bmp green.dds truncated.dds");

    // The preparation stops at the first; the textures before it keep their names.
    MDLObject model;
    model.readMDLBytes(plateModel({"a.bmp", "b.bmp", "c.bmp"}));
    const std::string missing = dir_.file("missing.dds");
    model.TextureList()->Item(1)->file(texturePath_);
    model.TextureList()->Item(2)->file(missing);
    model.TextureList()->Item(3)->file(texturePath_);
    model.TextureList()->Item(3)->glPointer(-5);
    EXPECT_TRUE(throwsError([&] { model.glPreparepreview(preview_); }, 100,
                            "Velmora.OpenGLPreviewObject",
                            "Loading Texture File: '" + missing + "' Failed!"));
    EXPECT_FALSE(model.Loaded());
    EXPECT_EQ(model.LoadingStatus(), generatingDrawList);
    EXPECT_EQ(model.drawListId(), 0);
    EXPECT_NE(model.TextureList()->Item(1)->glPointer(), 0);
    EXPECT_EQ(model.TextureList()->Item(3)->glPointer(), -5);

    // A context opens only on a known surface, and a surface needs a size.
    OpenGLPreviewObject preview;
    EXPECT_TRUE(throwsError([&] { preview.initOpenGL(987654); }, 100, "Velmora.OpenGLPreviewObject",
                            "Could not initialize OpenGL"));
    EXPECT_FALSE(preview.openGLInit());
    EXPECT_TRUE(throwsPlatform([] { createPreviewSurface(0, 10); }, 5));
}
