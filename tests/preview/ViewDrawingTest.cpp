#include <velmora/MDLObject.h>
#include <velmora/OpenGLPreviewObject.h>
#include <velmora/PreviewSurface.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using namespace velmora;
using namespace modelbytes;

namespace {

constexpr int kWidth = 200;
constexpr int kHeight = 150;

// A box from `low` to `high`, its faces wound counter-clockwise seen from outside, with outward
// normals; or, with `reversed`, wound and turned the other way.
void addBox(Model& m, std::array<float, 3> low, std::array<float, 3> high, bool reversed = false) {
    const int base = static_cast<int>(m.vertices.size());
    int corner = 0;
    std::vector<std::array<int, 3>> items;
    for (int axis = 0; axis < 3; ++axis) {
        for (int side = 0; side < 2; ++side) {
            std::array<float, 3> normal{};
            normal[static_cast<std::size_t>(axis)] = (side ? 1.0f : -1.0f) * (reversed ? -1 : 1);
            const int u = (axis + 1) % 3, v = (axis + 2) % 3;
            for (int k = 0; k < 4; ++k) {
                std::array<float, 3> p{};
                p[static_cast<std::size_t>(axis)] = side ? high[static_cast<std::size_t>(axis)]
                                                         : low[static_cast<std::size_t>(axis)];
                const bool du = k == 1 || k == 2, dv = k >= 2;
                p[static_cast<std::size_t>(u)] =
                    du ? high[static_cast<std::size_t>(u)] : low[static_cast<std::size_t>(u)];
                p[static_cast<std::size_t>(v)] =
                    dv ? high[static_cast<std::size_t>(v)] : low[static_cast<std::size_t>(v)];
                m.vertices.push_back({p[0], p[1], p[2], normal[0], normal[1], normal[2],
                                      du ? 1.0f : 0.0f, dv ? 1.0f : 0.0f});
            }
            const bool flip = (side == 0) != reversed;
            items.push_back(flip ? std::array{corner, corner + 2, corner + 1}
                                 : std::array{corner, corner + 1, corner + 2});
            items.push_back(flip ? std::array{corner, corner + 3, corner + 2}
                                 : std::array{corner, corner + 2, corner + 3});
            corner += 4;
        }
    }
    m.draw(base, items);
}

// A model of one untextured material around the commands.
std::string model(const std::function<void(Model&)>& shape) {
    Model m;
    m.materials = {{{0.8f, 0.3f, 0.2f, 1}, {0.8f, 0.3f, 0.2f, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}, 0}};
    m.commands = setMaterial(0, -1);
    shape(m);
    m.commands += bglEnd();
    return m.bytes();
}

class ViewDrawing : public ::testing::Test {
  protected:
    void SetUp() override {
        surface_ = createPreviewSurface(kWidth, kHeight);
        preview_->initOpenGL(surface_);
    }
    void TearDown() override { destroyPreviewSurface(surface_); }

    ViewResult draw(MDLObject& m, const View& view = View(),
                    const std::optional<Scenario>& scenario = Scenario()) {
        m.glPrepareView(preview_);
        return m.glDrawView(view, surface_, scenario);
    }
    std::array<int, 3> pixel(int x, int y) const {
        const std::vector<uint8_t> rgb = previewSurfacePixels(surface_);
        const std::size_t i = (static_cast<std::size_t>(y) * kWidth + x) * 3;
        return {rgb[i], rgb[i + 1], rgb[i + 2]};
    }
    // The first pixel from the top, left to right, that isn't the corner's colour.
    std::array<int, 2> topLeftDrawn() const {
        const std::array<int, 3> background = pixel(0, 0);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x)
                if (pixel(x, y) != background) return {x, y};
        return {-1, -1};
    }
    int count(const std::function<bool(int r, int g, int b)>& wanted) const {
        const std::vector<uint8_t> rgb = previewSurfacePixels(surface_);
        int n = 0;
        for (std::size_t i = 0; i < rgb.size(); i += 3)
            n += wanted(rgb[i], rgb[i + 1], rgb[i + 2]) ? 1 : 0;
        return n;
    }

    TempDir dir_;
    int32_t surface_ = 0;
    std::shared_ptr<OpenGLPreviewObject> preview_ = std::make_shared<OpenGLPreviewObject>();
};

}  // namespace

TEST_F(ViewDrawing, AnyModelFillsTheFrameWithTheBackgroundAroundIt) {
    struct Case {
        const char* what;
        std::function<void(Model&)> shape;
    };
    const Case cases[] = {
        {"a 1 m lamp",
         [](Model& m) {
             addBox(m, {-0.1f, 0, -0.1f}, {0.1f, 1, 0.1f});
         }},
        {"a 40 m building",
         [](Model& m) {
             addBox(m, {-20, 0, -8}, {20, 12, 8});
         }},
        {"a 2 km field",
         [](Model& m) {
             addBox(m, {-1000, 0, -1000}, {1000, 0, 1000});
         }},
        {"a pad facing down, wound the other way",
         [](Model& m) {
             addBox(m, {-20, 0, -20}, {20, 0, 20}, true);
         }},
        {"a vertical card",
         [](Model& m) {
             addBox(m, {-3, 0, 0}, {3, 8, 0});
         }},
    };
    const View view;
    const std::array<int, 3> background{static_cast<int>(view.background[0] * 255 + 0.5f),
                                        static_cast<int>(view.background[1] * 255 + 0.5f),
                                        static_cast<int>(view.background[2] * 255 + 0.5f)};
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        MDLObject m;
        m.readMDLBytes(model(c.shape));
        const ViewResult result = draw(m, view);
        const double covered = static_cast<double>(result.pixels) / (kWidth * kHeight);
        EXPECT_GT(covered, 0.03);
        EXPECT_LT(covered, 0.90);
        EXPECT_EQ(pixel(0, 0), background);
        EXPECT_EQ(pixel(kWidth - 1, kHeight - 1), background);
        // What the depth says is drawn is what differs from the background.
        const int coloured = count([&](int r, int g, int b) {
            return std::array{r, g, b} != background;
        });
        EXPECT_NEAR(coloured, result.pixels, result.pixels / 50 + 2);
    }
}

TEST_F(ViewDrawing, TheScenarioChoosesWhatIsDrawnAndAlphaLeavesTheBackground) {
    const std::string samples = VELMORA_SAMPLES_DIR;
    MDLObject building;
    building.readMDL(samples + "/building.mdl");
    building.TextureList()->findFiles(samples + "/textures");
    // Brick walls in summer; pale walls in winter.
    const auto brick = [](int r, int g, int) { return r - g > 35 && 2 * r > 3 * g; };
    draw(building, View(), Scenario().day(200));
    const int summerBricks = count(brick);
    draw(building, View(), Scenario().day(15));
    EXPECT_GT(summerBricks, 1000);
    EXPECT_LT(count(brick), summerBricks / 20);
    // Drawn only from complexity 2 up: at 1 nothing is drawn, and the frame says so.
    EXPECT_EQ(draw(building, View(), Scenario().complexity(1)).pixels, 0);
    EXPECT_EQ(draw(building, View(), std::nullopt).triangles, 14) << "the flat walk draws it";

    // The tree's image is clear around its crown and trunk: the card's corners show the sky.
    MDLObject tree;
    tree.readMDL(samples + "/tree.mdl");
    View side;
    side.heading = 90;
    side.elevation = 0;
    const ViewResult card = draw(tree, side);  // no image: the whole card
    const auto [left, top] = topLeftDrawn();
    tree.TextureList()->findFiles(samples + "/textures");
    const ViewResult clipped = draw(tree, side);
    EXPECT_LT(clipped.pixels, card.pixels * 0.8);
    EXPECT_EQ(pixel(left + 2, top + 2), pixel(0, 0)) << "the card's corner shows the sky";
    const std::array<int, 3> crown = pixel(kWidth / 2, kHeight / 2);
    EXPECT_GT(crown[1], crown[0] + 40) << "green in the middle";
    View blended = side;
    blended.blendAlpha = true;
    EXPECT_NEAR(static_cast<double>(draw(tree, blended).pixels), clipped.pixels,
                clipped.pixels * 0.05);
}

TEST_F(ViewDrawing, AFittedModelKeepsItsMarginAndItsNearestCorner) {
    MDLObject cube;
    cube.readMDLBytes(model([](Model& m) { addBox(m, {-1, -1, -1}, {1, 1, 1}, true); }));
    // The drawn pixels of the last frame on `surface` stay off its edges.
    const auto expectMargin = [&](int32_t surface, int width, int height, const View& view) {
        SCOPED_TRACE(std::to_string(width) + " x " + std::to_string(height) + ", heading " +
                     std::to_string(view.heading) + ", elevation " +
                     std::to_string(view.elevation));
        const std::vector<uint8_t> rgb = previewSurfacePixels(surface);
        const auto isSky = [&](int x, int y) {
            const std::size_t i = (static_cast<std::size_t>(y) * width + x) * 3;
            return std::equal(rgb.begin() + i, rgb.begin() + i + 3, rgb.begin());
        };
        int left = width, right = -1, top = height, bottom = -1;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                if (isSky(x, y)) continue;
                left = std::min(left, x), right = std::max(right, x);
                top = std::min(top, y), bottom = std::max(bottom, y);
            }
        }
        EXPECT_GE(left, 2);
        EXPECT_GE(top, 2);
        EXPECT_LE(right, width - 3);
        EXPECT_LE(bottom, height - 3);
    };
    const auto views = [] {
        std::vector<View> out(4);
        out[1].heading = -45, out[1].elevation = 35.26f;  // along the diagonal to a corner
        out[2].heading = 0, out[2].elevation = 0;
        out[3].heading = 90, out[3].elevation = 90;
        return out;
    }();
    for (const View& view : views) {
        draw(cube, view);
        expectMargin(surface_, kWidth, kHeight, view);
    }
    // Seen along its diagonal with the back faces culled, the nearest corner sits in the middle
    // of the frame; were the near plane to cut it, the sky would show through.
    View diagonal = views[1];
    diagonal.cullBackFaces = true;
    draw(cube, diagonal);
    for (int y = kHeight / 2 - 2; y <= kHeight / 2 + 2; ++y)
        for (int x = kWidth / 2 - 2; x <= kWidth / 2 + 2; ++x)
            EXPECT_NE(pixel(x, y), pixel(0, 0)) << x << ", " << y;

    // A frame taller than wide fits the model to its width.
    const int32_t tall = createPreviewSurface(100, 200);
    auto preview = std::make_shared<OpenGLPreviewObject>();
    preview->initOpenGL(tall);
    for (const View& view : views) {
        cube.glDrawView(view, tall);
        expectMargin(tall, 100, 200, view);
    }
    destroyPreviewSurface(tall);
}

TEST_F(ViewDrawing, BadViewsAndSurfacesAreErrors) {
    MDLObject m;
    m.readMDLBytes(model([](Model& m) { addBox(m, {0, 0, 0}, {1, 1, 1}); }));
    for (const float zoom : {0.0f, -50.0f, NAN}) {
        View view;
        view.zoom = zoom;
        EXPECT_TRUE(throwsPlatform([&] { m.glDrawView(view, surface_); }, 5)) << zoom;
    }
    EXPECT_TRUE(throwsPlatform([&] { m.glDrawView(View(), 987654); }, 5));
    EXPECT_GE(previewSurfaceLimit(), 4096);
}

TEST_F(ViewDrawing, LightsShowAsPointsOfTheirColourAndTheNightIsDark) {
    MDLObject pad;
    pad.readMDLBytes(model([](Model& m) {
        addBox(m, {-20, 0, -20}, {20, 0, 20});
        // A red light above the pad's middle, with nothing in front of it.
        m.commands += testbytes::le16(0xB2) + testbytes::le16(1) + testbytes::f32(0) +
                      testbytes::f32(1) + testbytes::f32(0) + testbytes::le32(0) +
                      testbytes::f32(0) + testbytes::f32(0) + testbytes::le32(0xFFFF0000u) +
                      testbytes::f32(0) + testbytes::f32(0) + testbytes::f32(0);
    }));
    const auto red = [](int r, int g, int b) { return r > 230 && g < 40 && b < 40; };
    View view;
    view.elevation = 60;
    const ViewResult day = draw(pad, view);
    EXPECT_EQ(day.lights, 1);
    EXPECT_GT(count(red), 4) << "the light shows by day";
    const std::array<int, 3> sky = pixel(0, 0);

    draw(pad, view, Scenario().night());
    EXPECT_GT(count(red), 4) << "and at night";
    const std::array<int, 3> night = pixel(0, 0);
    for (std::size_t c = 0; c < 3; ++c)
        EXPECT_LT(night[c] * 4, sky[c] + 1) << "the night sky is dark";
    // The pad itself, lit by the moon alone, is darker than by day.
    const std::array<int, 3> centreByNight = pixel(kWidth / 2 + 20, kHeight / 2 + 10);
    draw(pad, view);
    const std::array<int, 3> centreByDay = pixel(kWidth / 2 + 20, kHeight / 2 + 10);
    EXPECT_LT(centreByNight[0] * 3, centreByDay[0]);
}
