#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "preview/EglSurface.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <FreeImage.h>
#include <GL/gl.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <vector>

using namespace velmora;

namespace {

std::array<uint8_t, 3> pixelAt(const std::vector<uint8_t>& rgb, int width, int x, int y) {
    const std::size_t at = (static_cast<std::size_t>(y) * width + x) * 3;
    return {rgb[at], rgb[at + 1], rgb[at + 2]};
}

}  // namespace

TEST(PreviewSurface, OpensAContextOnlyOnAKnownSurface) {
    EXPECT_EQ(TwipsPerPixelX(), 15.0f);
    EXPECT_EQ(TwipsPerPixelY(), 15.0f);
    EXPECT_TRUE(throwsPlatform([] { createPreviewSurface(0, 10); }, 5));
    EXPECT_TRUE(throwsPlatform([] { previewSurfacePixels(987654); }, 5));

    OpenGLPreviewObject preview;
    EXPECT_FALSE(preview.openGLInit());
    EXPECT_TRUE(throwsError([&] { preview.initOpenGL(987654); }, 100, "Velmora.OpenGLPreviewObject",
                            "Could not initialize OpenGL"));
    EXPECT_FALSE(preview.openGLInit());

    const int32_t surface = createPreviewSurface(32, 16);
    // Black until a frame has been swapped to it.
    EXPECT_EQ(previewSurfacePixels(surface), std::vector<uint8_t>(32 * 16 * 3, 0));
    preview.initOpenGL(surface);
    EXPECT_TRUE(preview.openGLInit());
    destroyPreviewSurface(surface);
    EXPECT_TRUE(throwsPlatform([&] { previewSurfacePixels(surface); }, 5));
}

TEST(PreviewSurface, SwapCopiesTheFrameTopRowFirstAndSavesItAsPNG) {
    const int width = 40;
    const int height = 30;
    const int32_t surface = createPreviewSurface(width, height);
    OpenGLPreviewObject preview;
    preview.initOpenGL(surface);

    // Red everywhere, then blue over the bottom ten rows of the framebuffer.
    glClearColor(1.0f, 0.0f, 0.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glEnable(GL_SCISSOR_TEST);
    glScissor(0, 0, width, 10);
    glClearColor(0.0f, 0.0f, 1.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT);
    glDisable(GL_SCISSOR_TEST);
    egl::swapBuffers(surface);

    const std::vector<uint8_t> rgb = previewSurfacePixels(surface);
    ASSERT_EQ(rgb.size(), static_cast<std::size_t>(width * height * 3));
    EXPECT_EQ(pixelAt(rgb, width, 0, 0), (std::array<uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(pixelAt(rgb, width, 39, 19), (std::array<uint8_t, 3>{255, 0, 0}));
    EXPECT_EQ(pixelAt(rgb, width, 0, 20), (std::array<uint8_t, 3>{0, 0, 255}));
    EXPECT_EQ(pixelAt(rgb, width, 39, 29), (std::array<uint8_t, 3>{0, 0, 255}));

    TempDir dir;
    const std::string png = dir.file("frame.png");
    savePreviewSurfacePNG(surface, png);
    FIBITMAP* saved = FreeImage_Load(FIF_PNG, png.c_str(), 0);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(FreeImage_GetWidth(saved), static_cast<unsigned>(width));
    EXPECT_EQ(FreeImage_GetHeight(saved), static_cast<unsigned>(height));
    RGBQUAD top{};
    RGBQUAD bottom{};
    // FreeImage counts rows from the bottom.
    FreeImage_GetPixelColor(saved, 5, height - 1, &top);
    FreeImage_GetPixelColor(saved, 5, 0, &bottom);
    EXPECT_EQ((std::array<int, 3>{top.rgbRed, top.rgbGreen, top.rgbBlue}),
              (std::array<int, 3>{255, 0, 0}));
    EXPECT_EQ((std::array<int, 3>{bottom.rgbRed, bottom.rgbGreen, bottom.rgbBlue}),
              (std::array<int, 3>{0, 0, 255}));
    FreeImage_Unload(saved);

    EXPECT_TRUE(
        throwsPlatform([&] { savePreviewSurfacePNG(surface, dir.file("no/such/a.png")); }, 76));
    destroyPreviewSurface(surface);
}
