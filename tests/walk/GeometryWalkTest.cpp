#include <velmora/GeometryCollector.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace bgltest;

namespace {

const modelbytes::Material kGlass{
    {0.1f, 0.2f, 0.3f, 0.75f}, {0.4f, 0.5f, 0.6f, 1}, {0.7f, 0.8f, 0.9f, 1}, {0, 0, 0.5f, 1}, 16};

// Vertex i at (i, 10 + i, 20 + i), its normal (i, 1, 0) and texture coordinate (i/4, 1 - i/4):
// every component tells which vertex and which axis it came from.
std::string modelWith(const StreamAssembler& stream) {
    modelbytes::Model m;
    m.materials = {kGlass, modelbytes::Material{}};
    m.textures = {"wall.bmp"};
    for (int i = 0; i < 8; ++i) {
        const auto f = static_cast<float>(i);
        m.vertices.push_back({f, 10 + f, 20 + f, f, 1, 0, f / 4, 1 - f / 4});
    }
    m.commands = stream.bytes();
    return m.bytes();
}

Vector3 at(int i) {
    const auto f = static_cast<float>(i);
    return {f, 10 + f, 20 + f};
}

// A light of type 1 at (0.5, -2, 3), colour 0xFFFF0000.
void addLight(StreamAssembler& a) {
    a.add(BGL_LIGHT, {w(1), f("0.5"), f("-2"), f("3"), l(1), f("4"), f("5"), l(0xFFFF0000), f("6"),
                      f("7"), f("8")});
}

}  // namespace

TEST(GeometryWalk, EmitsEveryPartInTheModelsOwnAxes) {
    StreamAssembler a;
    a.add(SET_MATERIAL, {w(0), w(-1)});               // 1: untextured glass
    a.add(BGL_ZBIAS, {w(3)});                         // 2
    a.add(DRAW_TRI_LIST_BEGIN, {w(2), w(0), w(6)});   // 3
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});    // 4: vertices 2, 3, 4
    a.add(DRAW_TRI_LIST_ITEM, {w(2), w(1), w(0)});    // 5
    a.add(DRAW_LINE_LIST_BEGIN, {w(5), w(0), w(4)});  // 6
    a.add(DRAW_LINE_LIST_ITEM, {w(0), w(2)});         // 7: vertices 5 and 7
    a.add(DRAW_LINE_LIST_ITEM, {w(0), w(9)});         // 8: vertex 14 is not in the model
    addLight(a);                                      // 9
    a.add(SET_MATERIAL, {w(0), w(0)});                // 10: textured, and nothing follows
    a.add(BGL_END);                                   // 11
    MDLObject model;
    model.readMDLBytes(modelWith(a));
    model.TextureList()->Item(1)->glPointer(42);

    GeometryCollector geometry;
    const MDLObject& unchanged = model;
    unchanged.walk(geometry);
    EXPECT_EQ(model.drawListId(), 0);

    ASSERT_EQ(geometry.surfaces().size(), 2u);
    const Surface& glass = geometry.surfaces()[0];
    EXPECT_EQ(glass.material, 0);
    EXPECT_EQ(glass.texture, -1);
    EXPECT_EQ(glass.diffuse, kGlass.diffuse);
    EXPECT_EQ(glass.ambient, kGlass.ambient);
    EXPECT_EQ(glass.specular, kGlass.specular);
    EXPECT_EQ(glass.emissive, kGlass.emissive);
    EXPECT_EQ(glass.power, 16);
    EXPECT_EQ(glass.command, 1);
    // A textured surface keeps its material's colours and names its texture's image.
    const Surface& wall = geometry.surfaces()[1];
    EXPECT_EQ(wall.texture, 0);
    EXPECT_EQ(wall.textureName, 42);
    EXPECT_EQ(wall.diffuse, kGlass.diffuse);
    EXPECT_EQ(geometry.surfaceAt(10), &wall);
    EXPECT_EQ(geometry.surfaceAt(9), nullptr);

    ASSERT_EQ(geometry.triangles().size(), 2u);
    const auto& first = geometry.triangles()[0];
    EXPECT_EQ(first.command, 4);
    EXPECT_EQ(first.surface, 0);
    EXPECT_EQ(first.depthBias, 3);
    for (int k = 0; k < 3; ++k) {
        const Corner& corner = first.corners[static_cast<std::size_t>(k)];
        EXPECT_EQ(corner.position, at(2 + k));
        EXPECT_EQ(corner.normal, (Vector3{2.0f + k, 1, 0})) << "each corner has its own normal";
        EXPECT_EQ(corner.texCoord, (std::array<float, 2>{(2.0f + k) / 4, 1 - (2.0f + k) / 4}));
    }
    EXPECT_EQ(geometry.triangles()[1].corners[0].position, at(4));

    ASSERT_EQ(geometry.lines().size(), 1u);
    EXPECT_EQ(geometry.lines()[0].ends, (std::array<Vector3, 2>{at(5), at(7)}));
    ASSERT_EQ(geometry.lights().size(), 1u);
    const Light& light = geometry.lights()[0];
    EXPECT_EQ(light.position, (Vector3{0.5f, -2, 3}));
    EXPECT_EQ(light.colour, 0xFFFF0000u);
    EXPECT_EQ(light.type, 1);
    EXPECT_EQ(light.command, 9);
}

TEST(GeometryWalk, AKeyOutsideItsListFailsBeforeItsCommandEmitsAnything) {
    struct Case {
        const char* what;
        std::vector<Op> ops;
        std::string detail;
        std::size_t surfaces, triangles;
    };
    const Case cases[] = {
        {"material",
         {{SET_MATERIAL, {w(2), w(-1)}}},
         "material 2 is not in the model, which has 2",
         0,
         0},
        {"texture",
         {{SET_MATERIAL, {w(1), w(1)}}},
         "texture 1 is not in the model, which has 1",
         0,
         0},
        {"last corner",
         {{SET_MATERIAL, {w(1), w(-1)}},
          {DRAW_TRI_LIST_BEGIN, {w(4), w(0), w(6)}},
          {DRAW_TRI_LIST_ITEM, {w(0), w(1), w(3)}},
          {DRAW_TRI_LIST_ITEM, {w(0), w(1), w(4)}}},
         "vertex 8 is not in the model, which has 8",
         1,
         1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        StreamAssembler a;
        a.ops = c.ops;
        a.add(BGL_END);
        MDLObject model;
        model.readMDLBytes(modelWith(a));
        for (const bool simulated : {false, true}) {
            GeometryCollector geometry;
            try {
                model.walk(geometry, simulated ? std::optional(Scenario()) : std::nullopt);
                ADD_FAILURE() << "no error";
            } catch (const Error& e) {
                EXPECT_EQ(e.number(), 9);
                EXPECT_EQ(e.detail(), c.detail);
                EXPECT_EQ(e.command(), static_cast<int32_t>(c.ops.size()));
            }
            EXPECT_EQ(geometry.surfaces().size(), c.surfaces);
            EXPECT_EQ(geometry.triangles().size(), c.triangles);
        }
    }
    GeometryCollector geometry;
    EXPECT_TRUE(throwsPlatform([&] { MDLObject().walk(geometry); }, 91));
}

TEST(GeometryWalk, APartTurnedToFaceTheViewerTurnsItsCornersNormalsAndLights) {
    StreamAssembler a;
    a.add(SPRITE_VICALL, {jw(2), w(0), w(0), w(0), w(0), w(0), w(1), w(0), w(0), w(0)});  // 0
    a.add(BGL_END);                                                                       // 1
    a.add(SET_MATERIAL, {w(1), w(-1)});                                                   // 2
    a.add(DRAW_TRI_LIST_BEGIN, {w(1), w(0), w(3)});                                       // 3
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});                                        // 4
    addLight(a);                                                                          // 5
    a.add(BGL_RETURN);                                                                    // 6
    MDLObject model;
    model.readMDLBytes(modelWith(a));
    GeometryCollector geometry;
    // A quarter turn from north towards east: (x, y, z) goes to (z, y, -x).
    model.walk(geometry, Scenario().viewerHeading(90));
    ASSERT_EQ(geometry.triangles().size(), 1u);
    const Corner& corner = geometry.triangles()[0].corners[0];
    EXPECT_NEAR(corner.position[0], 21, 1e-5);
    EXPECT_NEAR(corner.position[1], 11, 1e-5);
    EXPECT_NEAR(corner.position[2], -1, 1e-5);
    EXPECT_NEAR(corner.normal[2], -1, 1e-6);
    ASSERT_EQ(geometry.lights().size(), 1u);
    EXPECT_NEAR(geometry.lights()[0].position[0], 3, 1e-6);
    EXPECT_NEAR(geometry.lights()[0].position[2], -0.5, 1e-6);
}
