#include <velmora/Host.h>
#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <FreeImage.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace velmora;
using namespace modelbytes;

namespace {

constexpr int kSize = 256;

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

struct Pixel {
    int r, g, b;
    bool white() const { return r == 255 && g == 255 && b == 255; }
};

struct Frame {
    std::vector<uint8_t> rgb;
    Pixel at(int x, int y) const {
        const std::size_t i = (static_cast<std::size_t>(y) * kSize + x) * 3;
        return {rgb[i], rgb[i + 1], rgb[i + 2]};
    }
    // The drawn (non-white) part: its size and its extent.
    int drawn = 0;
    int left = kSize, right = -1, top = kSize, bottom = -1;
    double centreX = 0;
    double centreY = 0;
};

Frame measure(std::vector<uint8_t> rgb) {
    Frame f{std::move(rgb)};
    for (int y = 0; y < kSize; ++y) {
        for (int x = 0; x < kSize; ++x) {
            if (f.at(x, y).white()) continue;
            ++f.drawn;
            f.left = std::min(f.left, x);
            f.right = std::max(f.right, x);
            f.top = std::min(f.top, y);
            f.bottom = std::max(f.bottom, y);
            f.centreX += x;
            f.centreY += y;
        }
    }
    if (f.drawn > 0) {
        f.centreX /= f.drawn;
        f.centreY /= f.drawn;
    }
    return f;
}

void writeSolidBMP(const std::string& path, BYTE r, BYTE g, BYTE b) {
    FIBITMAP* bitmap = FreeImage_Allocate(8, 8, 24);
    RGBQUAD colour{b, g, r, 0};
    FreeImage_FillBackground(bitmap, &colour, 0);
    ASSERT_TRUE(FreeImage_Save(FIF_BMP, bitmap, path.c_str(), 0));
    FreeImage_Unload(bitmap);
}

// A PNG file's pixels as RGB, rows from top to bottom.
std::vector<uint8_t> pngPixels(const std::string& path) {
    FIBITMAP* loaded = FreeImage_Load(FIF_PNG, path.c_str(), 0);
    FIBITMAP* bitmap = FreeImage_ConvertTo24Bits(loaded);
    const int width = static_cast<int>(FreeImage_GetWidth(bitmap));
    const int height = static_cast<int>(FreeImage_GetHeight(bitmap));
    std::vector<uint8_t> rgb;
    for (int y = height - 1; y >= 0; --y) {
        const BYTE* row = FreeImage_GetScanLine(bitmap, y);
        for (int x = 0; x < width; ++x) {
            rgb.push_back(row[3 * x + FI_RGBA_RED]);
            rgb.push_back(row[3 * x + FI_RGBA_GREEN]);
            rgb.push_back(row[3 * x + FI_RGBA_BLUE]);
        }
    }
    FreeImage_Unload(bitmap);
    FreeImage_Unload(loaded);
    return rgb;
}

class FrameDrawing : public ::testing::Test {
  protected:
    void SetUp() override {
        surface_ = createPreviewSurface(kSize, kSize);
        preview_->initOpenGL(surface_);
        texturePath_ = dir_.file("green.bmp");
        writeSolidBMP(texturePath_, 0, 255, 0);
    }
    void TearDown() override { destroyPreviewSurface(surface_); }

    Frame draw(MDLObject& model, float heading, float pitch, float panX, float panY, float zoom) {
        const float twips = kSize * TwipsPerPixelX();
        model.glDrawMDL(heading, pitch, panX, panY, twips, twips, surface_, zoom);
        return measure(previewSurfacePixels(surface_));
    }

    TempDir dir_;
    int32_t surface_ = 0;
    std::shared_ptr<OpenGLPreviewObject> preview_ = std::make_shared<OpenGLPreviewObject>();
    std::string texturePath_;
};

}  // namespace

TEST_F(FrameDrawing, ShowsThePlateCentredAndFollowsTheView) {
    MDLObject model;
    model.readMDLBytes(plateModel());
    EXPECT_FALSE(model.Loaded());
    model.TextureList()->Item(1)->file(texturePath_);
    int yields = 0;
    setYieldHook([&] { ++yields; });
    model.glPreparepreview(preview_);
    setYieldHook(nullptr);
    // Twice for the preparation, once per texture, once per command.
    EXPECT_EQ(yields, 2 + 1 + 9);
    EXPECT_TRUE(model.Loaded());
    EXPECT_EQ(model.LoadingStatus(), generatingDrawList);
    EXPECT_NE(model.TextureList()->Item(1)->glPointer(), 0);
    EXPECT_NE(model.drawListId(), 0);

    const Frame base = draw(model, 0, 0, 0, 0, 100);
    savePreviewSurfacePNG(surface_, testOutputFolder() + "/preview-plate.png");
    // Seen down its y axis, the plate is 2 x 1 units; at the base distance the view reaches
    // sqrt(5)/2 units from the centre to the edge, so a unit is 114.5 pixels.
    EXPECT_NEAR(base.centreX, 127.5, 1.5);
    EXPECT_NEAR(base.centreY, 127.5, 1.5);
    EXPECT_NEAR(base.right - base.left + 1, 229, 3);
    EXPECT_NEAR(base.bottom - base.top + 1, 115, 3);
    // Left half lit red, right half showing its texture's green.
    const Pixel red = base.at(70, 128);
    EXPECT_GT(red.r, 200);
    EXPECT_LT(red.g + red.b, 40);
    const Pixel green = base.at(186, 128);
    EXPECT_NEAR(green.r, 0, 3);
    EXPECT_NEAR(green.g, 255, 3);
    EXPECT_NEAR(green.b, 0, 3);

    // Panning along the model's x moves it right by half a unit, 57 pixels.
    const Frame panned = draw(model, 0, 0, 0.5f, 0, 100);
    EXPECT_NEAR(panned.left - base.left, 57, 3);
    // Panning along the model's z moves it up the screen.
    const Frame raised = draw(model, 0, 0, 0, 0.25f, 100);
    EXPECT_NEAR(base.top - raised.top, 29, 3);
    // Zoom 200 halves the distance: the plate doubles in size.
    const Frame near = draw(model, 0, 0, 0, 0, 200);
    EXPECT_NEAR(near.bottom - near.top + 1, 229, 3);
    EXPECT_GT(near.drawn, 2 * base.drawn);  // clipped at the sides
    // A quarter turn of heading stands the plate upright on the screen.
    const Frame turned = draw(model, 90, 0, 0, 0, 100);
    EXPECT_NEAR(turned.right - turned.left + 1, 115, 3);
    EXPECT_NEAR(turned.bottom - turned.top + 1, 229, 3);
    EXPECT_NEAR(turned.centreY, 127.5, 1.5);
    // Red at one end and green at the other: the PNG keeps the surface's rows in their order.
    EXPECT_NE(turned.at(128, 70).g, turned.at(128, 186).g);
    const std::string png = dir_.file("turned.png");
    savePreviewSurfacePNG(surface_, png);
    EXPECT_EQ(pngPixels(png), turned.rgb);

    // A zoom or a height of 0 raises error 11 and leaves the last frame as it was.
    const float twips = kSize * TwipsPerPixelX();
    EXPECT_TRUE(
        throwsPlatform([&] { model.glDrawMDL(0, 0, 0, 0, twips, twips, surface_, 0); }, 11));
    EXPECT_TRUE(throwsPlatform([&] { model.glDrawMDL(0, 0, 0, 0, twips, 0, surface_, 100); }, 11));
    EXPECT_EQ(previewSurfacePixels(surface_), turned.rgb);
}

TEST_F(FrameDrawing, AnUnreadableTextureStopsThePreparation) {
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
}

TEST(PreviewContext, OpensOnlyOnAKnownSurface) {
    OpenGLPreviewObject preview;
    EXPECT_TRUE(throwsError([&] { preview.initOpenGL(987654); }, 100, "Velmora.OpenGLPreviewObject",
                            "Could not initialize OpenGL"));
    EXPECT_FALSE(preview.openGLInit());
    EXPECT_TRUE(throwsPlatform([] { createPreviewSurface(0, 10); }, 5));
}
