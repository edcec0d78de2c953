#include <velmora/DrawListSink.h>
#include <velmora/Host.h>
#include <velmora/MDLObject.h>

#include "preview/ModelBytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

using namespace velmora;
using namespace modelbytes;

namespace {

using Operation = DrawListRecorder::Operation;

const Material kRed{{1.0f, 0.0f, 0.0f, 1.0f},
                    {0.5f, 0.25f, 0.125f, 1.0f},
                    {0.75f, 0.5f, 0.25f, 0.5f},
                    {0.0f, 0.125f, 0.25f, 0.375f},
                    7.0f};
const Material kBlue{{0.0f, 0.0f, 1.0f, 1.0f},
                     {0.0f, 0.5f, 1.0f, 1.0f},
                     {0.25f, 0.25f, 0.25f, 1.0f},
                     {0.5f, 0.5f, 0.5f, 0.5f},
                     2.0f};

// Vertex i sits at (i, 10 + i, 20 + i) with normal (i/8, 2 + i/8, 3 + i/8) and texture
// coordinate (i/4, 1 - i/4), so every component tells which vertex it came from.
std::vector<Vert> numberedVertices(int count) {
    std::vector<Vert> out;
    for (int i = 0; i < count; ++i) {
        const float f = static_cast<float>(i);
        out.push_back({f, 10 + f, 20 + f, f / 8, 2 + f / 8, 3 + f / 8, f / 4, 1 - f / 4});
    }
    return out;
}

std::string describe(const std::vector<Operation>& operations) {
    std::ostringstream out;
    for (const Operation& op : operations) {
        out << op.name << "(";
        for (std::size_t i = 0; i < op.args.size(); ++i)
            out << (i ? ", " : "") << op.args[i];
        out << ")\n";
    }
    return out.str();
}

std::vector<Operation> materialOps(uint32_t pname, const Rgba& c) {
    return {{"glMaterialfv", {0x0404, static_cast<double>(pname), c[0], c[1], c[2], c[3]}}};
}

// The operations of one triangle of numbered vertices a, b, c (0-based).
std::vector<Operation> triangle(int a, int b, int c) {
    const std::vector<Vert> v = numberedVertices(16);
    std::vector<Operation> out{{"glBegin", {9}}};
    // One normal, the first corner's, with y and z exchanged.
    out.push_back({"glNormal3f", {v[a].nx, v[a].nz, v[a].ny}});
    for (int k : {a, b, c}) {
        out.push_back({"glTexCoord2f", {v[k].tx, v[k].ty}});
        out.push_back({"glVertex3f", {v[k].x, v[k].z, v[k].y}});
    }
    out.push_back({"glEnd", {}});
    return out;
}

void append(std::vector<Operation>& to, const std::vector<Operation>& more) {
    to.insert(to.end(), more.begin(), more.end());
}

std::string walkModel(const std::string& commands) {
    return model(bbox(0, 0, 0, 1, 1, 1), mate({kRed, kBlue}), text({"wall.bmp", "roof.bmp"}),
                 vert(numberedVertices(16)), commands);
}

// Gives list names too large for 16 bits.
class FarListSink final : public DrawListSink {
  public:
    uint32_t glGenLists(int32_t) override { return 40000; }
    void glNewList(uint32_t, uint32_t) override { ++recorded; }
    void glEndList() override {}
    void glPolygonOffset(float, float) override {}
    void glBindTexture(uint32_t, uint32_t) override {}
    void glMaterialfv(uint32_t, uint32_t, const std::array<float, 4>&) override {}
    void glBegin(uint32_t) override {}
    void glNormal3f(float, float, float) override {}
    void glTexCoord2f(float, float) override {}
    void glVertex3f(float, float, float) override {}
    void glEnd() override {}
    int recorded = 0;
};

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
    auto early = std::make_shared<BGLCommand>();
    early->opcode(DRAW_TRI_LIST_ITEM);
    for (int16_t k = 0; k < 3; ++k)
        early->param(k, std::to_string(k + 2));
    model.BGLCommandList()->Add(early, "", 1);
    ASSERT_EQ(model.BGLCommandList()->Count(), 14);

    int yields = 0;
    setYieldHook([&] { ++yields; });
    DrawListRecorder recorder;
    model.glGenerateDrawList(recorder);
    setYieldHook(nullptr);
    EXPECT_EQ(yields, 14);
    EXPECT_EQ(model.drawListId(), 1);

    const Rgba white{1, 1, 1, 1};
    const Rgba black{0, 0, 0, 0};
    std::vector<Operation> expected{{"glGenLists", {1}}, {"glNewList", {1, 0x1300}}};
    append(expected, triangle(2, 3, 4));
    append(expected, {{"glBindTexture", {0x0DE1, 4294967295.0}}});
    append(expected, materialOps(0x1201, kRed.diffuse));
    append(expected, materialOps(0x1200, kRed.ambient));
    append(expected, materialOps(0x1202, kRed.specular));
    append(expected, materialOps(0x1600, kRed.emissive));
    append(expected, triangle(0, 1, 2));
    append(expected, {{"glPolygonOffset", {-3, 0}}});
    append(expected, {{"glBindTexture", {0x0DE1, 77}}});
    append(expected, materialOps(0x1201, white));
    append(expected, materialOps(0x1200, white));
    append(expected, materialOps(0x1202, black));
    append(expected, materialOps(0x1600, black));
    append(expected, triangle(4, 5, 6));
    append(expected, triangle(7, 6, 5));
    // A texture without a file was given no name: it binds 0.
    append(expected, {{"glBindTexture", {0x0DE1, 0}}});
    append(expected, materialOps(0x1201, white));
    append(expected, materialOps(0x1200, white));
    append(expected, materialOps(0x1202, black));
    append(expected, materialOps(0x1600, black));
    append(expected, triangle(15, 10, 11));
    append(expected, {{"glPolygonOffset", {2, 0}}, {"glEndList", {}}});
    EXPECT_EQ(describe(recorder.operations()), describe(expected));

    // A second walk makes a new list.
    recorder.clear();
    model.glGenerateDrawList(recorder);
    EXPECT_EQ(model.drawListId(), 2);
    EXPECT_EQ(describe(recorder.operations()).substr(0, 32), "glGenLists(1)\nglNewList(2, 4864)");
}

TEST(DrawListWalk, StopsWithTheListOpenAtAKeyOutsideItsTable) {
    struct Case {
        const char* what;
        std::string commands;
        std::size_t recorded;  // operations before the failure
    };
    for (const Case& c :
         {Case{"material", setMaterial(2, -1), 2},
          Case{"material of an untextured surface", setMaterial(-1, -1), 2},
          Case{"texture", setMaterial(1, 2), 2}, Case{"vertex", triangleList(14, {{0, 1, 2}}), 2},
          Case{"vertex after others", triangleList(0, {{0, 1, 2}, {1, 2, 16}}), 11}}) {
        SCOPED_TRACE(c.what);
        MDLObject model;
        model.readMDLBytes(walkModel(c.commands + bglEnd()));
        DrawListRecorder recorder;
        EXPECT_TRUE(throwsPlatform([&] { model.glGenerateDrawList(recorder); }, 9));
        EXPECT_EQ(recorder.operations().size(), c.recorded) << describe(recorder.operations());
    }

    MDLObject model;
    model.readMDLBytes(walkModel(bglEnd()));
    FarListSink far;
    EXPECT_TRUE(throwsPlatform([&] { model.glGenerateDrawList(far); }, 6));
    EXPECT_EQ(far.recorded, 0);

    // A stream without surfaces still gets a list.
    DrawListRecorder recorder;
    model.glGenerateDrawList(recorder);
    EXPECT_EQ(describe(recorder.operations()), "glGenLists(1)\nglNewList(1, 4864)\nglEndList()\n");

    MDLObject never;
    EXPECT_TRUE(throwsPlatform([&] { never.glGenerateDrawList(recorder); }, 91));
}
