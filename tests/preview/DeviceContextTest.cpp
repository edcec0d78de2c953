// On Windows a member that takes a device context takes a real window's as well.
#ifdef _WIN32
#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/TextureList.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace velmora;

TEST(WindowDeviceContext, TheViewDrawsIntoAWindowOnTheScreen) {
    constexpr int kWidth = 160, kHeight = 120;
    HWND window = CreateWindowExW(0, L"STATIC", L"Velmora", WS_POPUP | WS_VISIBLE, 0, 0, kWidth,
                                  kHeight, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    ASSERT_NE(window, nullptr);
    HDC dc = GetDC(window);
    const auto handle = static_cast<int32_t>(reinterpret_cast<intptr_t>(dc));

    MDLObject building;
    building.readMDL(std::string(VELMORA_SAMPLES_DIR) + "/building.mdl");
    building.TextureList()->findFiles(std::string(VELMORA_SAMPLES_DIR) + "/textures");
    auto preview = std::make_shared<OpenGLPreviewObject>();
    preview->initOpenGL(handle);
    building.glPrepareView(preview);
    const ViewResult drawn = building.glDrawView(View{}, handle);

    EXPECT_GT(drawn.triangles, 0);
    EXPECT_GT(drawn.pixels, kWidth * kHeight * 3 / 100) << "the model fills its window";
    EXPECT_LT(drawn.pixels, kWidth * kHeight * 90 / 100) << "with the sky around it";
    preview.reset();
    ReleaseDC(window, dc);
    DestroyWindow(window);
}
#endif
