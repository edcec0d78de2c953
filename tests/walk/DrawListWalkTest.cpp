#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;
using namespace modelbytes;

namespace {

const Material kRed{{1, 0, 0, 1},
                    {0.5f, 0.25f, 0.125f, 1},
                    {0.75f, 0.5f, 0.25f, 0.5f},
                    {0, 0.125f, 0.25f, 0.375f},
                    7};

// Vertex i sits at (i, 10 + i, 20 + i) with normal (i/8, 2 + i/8, 3 + i/8) and texture
// coordinate (i/4, 1 - i/4), so every component tells which vertex it came from.
Vert numbered(int i) {
    const float f = static_cast<float>(i);
    return {f, 10 + f, 20 + f, f / 8, 2 + f / 8, 3 + f / 8, f / 4, 1 - f / 4};
}

std::string walkModel(const std::string& commands) {
    Model m;
    m.materials = {kRed, Material{}};
    m.textures = {"wall.bmp", "roof.bmp"};
    for (int i = 0; i < 16; ++i)
        m.vertices.push_back(numbered(i));
    m.commands = commands;
    return m.bytes();
}

// One operation a line: "glVertex3f(2, 22, 12)".
class Expected {
  public:
    Expected& op(const std::string& name, std::vector<double> args = {}) {
        text_ << name << "(";
        for (std::size_t i = 0; i < args.size(); ++i)
            text_ << (i ? ", " : "") << args[i];
        text_ << ")\n";
        return *this;
    }
    // Diffuse, ambient, specular, emissive.
    Expected& materials(const Rgba& d, const Rgba& a, const Rgba& s, const Rgba& e) {
        const std::pair<double, const Rgba*> colours[] = {
            {0x1201, &d}, {0x1200, &a}, {0x1202, &s}, {0x1600, &e}};
        for (const auto& [pname, c] : colours)
            op("glMaterialfv", {0x0404, pname, (*c)[0], (*c)[1], (*c)[2], (*c)[3]});
        return *this;
    }
    // One triangle: one normal, the first corner's; y and z exchanged everywhere.
    Expected& triangle(int a, int b, int c) {
        const Vert first = numbered(a);
        op("glBegin", {9}).op("glNormal3f", {first.nx, first.nz, first.ny});
        for (int k : {a, b, c}) {
            const Vert v = numbered(k);
            op("glTexCoord2f", {v.tx, v.ty}).op("glVertex3f", {v.x, v.z, v.y});
        }
        return op("glEnd");
    }
    std::string str() const { return text_.str(); }

  private:
    std::ostringstream text_;
};

std::string recorded(const DrawListRecorder& recorder) {
    Expected out;
    for (const auto& op : recorder.operations())
        out.op(op.name, op.args);
    return out.str();
}

}  // namespace

TEST(DrawListWalk, EmitsSurfaceStateAndTrianglesInStreamOrder) {
    MDLObject model;
    model.readMDLBytes(walkModel(
        setMaterial(0, -1) + triangleList(0, {{0, 1, 2}}) + zBias(3) +
        // Textured: lit white whatever the material says; the base holds across SET_MATERIAL.
        setMaterial(1, 0) + triangleList(4, {{0, 1, 2}, {3, 2, 1}}) + setMaterial(0, 1) +
        triangleList(10, {{5, 0, 1}}) + zBias(-2) + bglEnd()));
    model.TextureList()->Item(1)->glPointer(77);
    // An item ahead of any list header counts from vertex 0.
    model.BGLCommandList()->Add(bgltest::command(DRAW_TRI_LIST_ITEM, {"2", "3", "4"}), "", 1);
    DrawListRecorder recorder;
    model.glGenerateDrawList(recorder);
    EXPECT_EQ(model.drawListId(), 1);

    const Rgba white{1, 1, 1, 1};
    const Rgba black{0, 0, 0, 0};
    Expected expected;
    expected.op("glGenLists", {1}).op("glNewList", {1, 0x1300}).triangle(2, 3, 4);
    expected.op("glBindTexture", {0x0DE1, 4294967295.0})
        .materials(kRed.diffuse, kRed.ambient, kRed.specular, kRed.emissive)
        .triangle(0, 1, 2)
        .op("glPolygonOffset", {-3, 0});
    expected.op("glBindTexture", {0x0DE1, 77}).materials(white, white, black, black);
    expected.triangle(4, 5, 6).triangle(7, 6, 5);
    // A texture without a file was given no name: it binds 0.
    expected.op("glBindTexture", {0x0DE1, 0}).materials(white, white, black, black);
    expected.triangle(15, 10, 11).op("glPolygonOffset", {2, 0}).op("glEndList");
    EXPECT_EQ(recorded(recorder), expected.str());
}

TEST(DrawListWalk, StopsWithTheListOpenAtAKeyOutsideItsTable) {
    struct Case {
        const char* what;
        std::string commands;
        std::size_t recorded;  // operations before the failure
    };
    const Case cases[] = {{"material", setMaterial(2, -1), 2},
                          {"texture", setMaterial(1, 2), 2},
                          {"vertex after others", triangleList(0, {{0, 1, 2}, {1, 2, 16}}), 11}};
    for (const Case& c : cases) {
        MDLObject model;
        model.readMDLBytes(walkModel(c.commands + bglEnd()));
        DrawListRecorder recorder;
        EXPECT_TRUE(throwsPlatform([&] { model.glGenerateDrawList(recorder); }, 9)) << c.what;
        EXPECT_EQ(recorder.operations().size(), c.recorded) << c.what;
    }
    DrawListRecorder recorder;
    EXPECT_TRUE(throwsPlatform([&] { MDLObject().glGenerateDrawList(recorder); }, 91));
}
