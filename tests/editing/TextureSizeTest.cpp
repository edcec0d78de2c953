#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;
using namespace edittest;

namespace {

std::shared_ptr<BGLCommand> useTexture(int texture) {
    return cmd(SET_MATERIAL, {"0", std::to_string(texture)});
}
std::shared_ptr<BGLCommand> triangles(int base) {
    return cmd(DRAW_TRI_LIST_BEGIN, {std::to_string(base), "3", "1"});
}
std::shared_ptr<BGLCommand> triangle(int a, int b, int c) {
    return cmd(DRAW_TRI_LIST_ITEM, {std::to_string(a), std::to_string(b), std::to_string(c)});
}

// Vertices 1 to 4: the origin, (10,0,0) at tx 0.5, the origin again, (10,0,0) at (3,4).
// Textures 1 to 4: group 1 at position 1 (size 0) with position 2 (size 50); group 3 at
// position 3 (size 100); position 4 in group 0.
std::shared_ptr<MDLObject> measuredModel(
    std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto model = modelWith(*listOf(commands));
    const float corners[4][5] = {
        {0, 0, 0, 0, 0}, {10, 0, 0, 0.5f, 0}, {0, 0, 0, 0, 0}, {10, 0, 0, 3, 4}};
    for (const auto& c : corners) {
        auto v = model->VertexList()->Add();
        v->x(c[0]);
        v->y(c[1]);
        v->z(c[2]);
        v->tx(c[3]);
        v->ty(c[4]);
    }
    const int16_t parents[4] = {1, 1, 3, 0};
    const float sizes[4] = {0, 50, 100, 7};
    for (int i = 0; i < 4; ++i) {
        auto t = model->TextureList()->Add();
        t->parent(parents[i]);
        t->size(sizes[i]);
    }
    return model;
}

std::string sizes(const MDLObject& model) {
    std::string out;
    for (const auto& t : *model.TextureList()) {
        std::ostringstream text;
        text << t->size();
        out += (out.empty() ? "" : " ") + text.str();
    }
    return out;
}

}  // namespace

TEST(TextureSize, GroupsTakeTheLargestRatioOfTheirEdges) {
    // Texture 2 (group 1): ratio 10 / 0.5 = 20 sets both entries of the group, the one above it
    // too; texture 3 (group 3, size 100) keeps 100; no texture: passed over.
    auto model = measuredModel({useTexture(1), triangles(0), triangle(0, 1, 2), useTexture(2),
                                triangle(0, 1, 2), useTexture(-1), triangle(0, 3, 2)});
    model->updateTextureSize();
    EXPECT_EQ(sizes(*model), "20 20 100 7");

    // tx 3 and ty 4 give a texture length of 5: ratio 2, below 20, changes nothing; nor does a
    // ratio equal to the size of the group's entry, though the other entry differs.
    model->TextureList()->Item(2)->size(50);
    model->BGLCommandList()->Add(useTexture(0));
    model->BGLCommandList()->Add(triangle(0, 3, 2));
    model->updateTextureSize();
    EXPECT_EQ(sizes(*model), "20 50 100 7");
    model->TextureList()->Item(1)->size(1);
    model->updateTextureSize();
    EXPECT_EQ(sizes(*model), "20 20 100 7");

    // The base vertex counts: base 2 makes corners 3 and 4 (model 10, texture 5).
    auto based = measuredModel({useTexture(0), triangles(2), triangle(0, 1, 0)});
    based->updateTextureSize();
    EXPECT_EQ(sizes(*based), "2 2 100 7");

    // Equal texture coordinates: no division, nothing changes; recalcTextureSizes does nothing.
    auto flat = measuredModel({useTexture(0), triangles(0), triangle(0, 2, 0)});
    flat->updateTextureSize();
    flat->recalcTextureSizes();
    EXPECT_EQ(sizes(*flat), "0 50 100 7");
    auto none = measuredModel({useTexture(3), cmd(BGL_END)});
    none->updateTextureSize();
    EXPECT_EQ(sizes(*none), "0 50 100 7");
}

TEST(TextureSize, DocumentedFailures) {
    // A texture number outside the list; a group whose parent is no position (0 here, also
    // before any SET_MATERIAL); a corner without a vertex; a base vertex above 32767.
    auto outside = measuredModel({useTexture(4)});
    EXPECT_TRUE(throwsPlatform([&] { outside->updateTextureSize(); }, 9));
    auto groupZero = measuredModel({useTexture(3), triangle(0, 1, 2)});
    EXPECT_TRUE(throwsPlatform([&] { groupZero->updateTextureSize(); }, 9));
    auto noMaterial = measuredModel({triangle(0, 1, 2)});
    EXPECT_TRUE(throwsPlatform([&] { noMaterial->updateTextureSize(); }, 9));
    // The first edge raised the group before the second found no vertex.
    auto noVertex = measuredModel({useTexture(0), triangle(0, 1, 9)});
    EXPECT_TRUE(throwsPlatform([&] { noVertex->updateTextureSize(); }, 9));
    EXPECT_EQ(sizes(*noVertex), "20 20 100 7");
    auto wide = measuredModel({useTexture(0), triangles(40000), triangle(0, 1, 2)});
    EXPECT_TRUE(throwsPlatform([&] { wide->updateTextureSize(); }, 6));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().updateTextureSize(); }, 91));
}
