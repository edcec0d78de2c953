#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;
using namespace edittest;
using testbytes::hex;
using testbytes::section;

namespace {

const auto light = [] { return command(BGL_LIGHT, std::vector<std::string>(11, "0")); };
const auto baseOverride = [] { return command(VAR_BASE_OVERRIDE, {"0"}); };
std::shared_ptr<BGLCommand> maskTest(int variable, int32_t jump = 0) {
    return command(IFMSK, {"", std::to_string(variable), "1"}, jump);
}

}  // namespace

TEST(KillShadow, TwelveBytesOnLoadedAndUnloadedModels) {
    const std::string killShadow = "42 47 4C 20 00 00 00 00 BD 00 22 00";
    auto model = modelWith(BGLCommandList(), section("SHAD", "real shadow"));
    model->updateSectionSize();
    const int32_t riffWithout = model->getRIFFSectionSize(0) - (11 + 8);
    model->addKillShadow();
    model->addKillShadow();
    EXPECT_EQ(hex(model->getRIFFSectionData(5)), killShadow);
    EXPECT_EQ(model->getRIFFSectionSize(0), riffWithout + 12 + 8);

    TempDir dir;
    model->saveMDL(dir.file("shadow.mdl"));
    MDLObject again;
    again.readMDL(dir.file("shadow.mdl"));
    EXPECT_EQ(hex(again.getRIFFSectionData(5)), killShadow);
    again.removeKillShadow();
    EXPECT_EQ(again.getRIFFSectionSize(0), riffWithout);
    again.saveMDL(dir.file("plain.mdl"));
    EXPECT_EQ(readFile(dir.file("plain.mdl")).find("SHAD"), std::string::npos);

    // A model never loaded gets the section and no error; the sizes wait for a save.
    MDLObject unloaded;
    unloaded.addKillShadow();
    EXPECT_EQ(hex(unloaded.getRIFFSectionData(5)), killShadow);
    EXPECT_TRUE(throwsPlatform([&] { unloaded.updateSectionSize(); }, 91));
}

// Which tests and overrides in front of a light go, and how the jumps follow, is compared with
// the single steps in OnePassEditsTest; here the rule itself and what else the edit keeps.
TEST(FixLights, MaskTestsUpTo200GoTheDictionaryEmptiesAndKeysStay) {
    auto model = modelWith(*listOf({command(SETWRD, {"1", "2"}), baseOverride(), maskTest(200),
                                    light(), maskTest(201), light()}),
                           section("DICT", "dict"));
    model->BGLCommandList()->Add(command(SETWRD, {"3", "4"}), "Tail", 1);
    model->fixLights();
    EXPECT_EQ(shape(*model->BGLCommandList()), "SETWRD SETWRD BGL_LIGHT IFMSK>0 BGL_LIGHT");
    EXPECT_EQ(model->getRIFFSectionSize(3), 0);
    EXPECT_EQ(model->BGLCommandList()->Item("tail"), model->BGLCommandList()->Item(1));
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->Add(nullptr, "TAIL"); }, 457));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().fixLights(); }, 91));
}

namespace {

const auto useTexture = [](int texture) {
    return command(SET_MATERIAL, {"0", std::to_string(texture)});
};
// A list header of one triangle from `base` on, or a triangle of the list.
const auto header = [](int base) {
    return command(DRAW_TRI_LIST_BEGIN, {std::to_string(base), "3", "1"});
};
std::shared_ptr<BGLCommand> triangle(int a, int b, int c) {
    return command(DRAW_TRI_LIST_ITEM, {std::to_string(a), std::to_string(b), std::to_string(c)});
}

// Vertices 1 to 4: the origin, (10,0,0) at tx 0.5, the origin again, (10,0,0) at (3,4).
// Textures 1 to 4: group 1 at position 1 (size 0) with position 2 (size 50); group 3 at
// position 3 (size 100); position 4 in group 0.
std::string sizesAfter(std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto model = modelWith(*listOf(commands));
    const float corners[4][3] = {{0, 0, 0}, {10, 0.5f, 0}, {0, 0, 0}, {10, 3, 4}};  // x, tx, ty
    const int16_t parents[4] = {1, 1, 3, 0};
    const float sizes[4] = {0, 50, 100, 7};
    for (int i = 0; i < 4; ++i) {
        auto v = model->VertexList()->Add();
        v->x(corners[i][0]);
        v->tx(corners[i][1]);
        v->ty(corners[i][2]);
        model->TextureList()->Add()->parent(parents[i]);
        model->TextureList()->Item(i + 1)->size(sizes[i]);
    }
    const int error = errorOf([&] { model->updateTextureSize(); });
    std::ostringstream out;
    for (const auto& t : *model->TextureList())
        out << t->size() << " ";
    return out.str() + "error " + std::to_string(error);
}

}  // namespace

TEST(TextureSize, GroupsTakeTheLargestRatioOfTheirEdges) {
    const std::pair<std::string, const char*> cases[] = {
        // Ratio 10 / 0.5 = 20 sets both entries of group 1; group 3 keeps its 100.
        {sizesAfter(
             {useTexture(1), header(0), triangle(0, 1, 2), useTexture(-1), triangle(0, 3, 2)}),
         "20 20 100 7 error 0"},
        // tx 3 and ty 4: a texture length of 5, ratio 2. The base vertex counts.
        {sizesAfter({useTexture(0), header(2), triangle(0, 1, 0)}), "2 2 100 7 error 0"},
        // Equal texture coordinates: no division, nothing changes.
        {sizesAfter({useTexture(0), triangle(0, 2, 0)}), "0 50 100 7 error 0"},
        // A texture number outside the list; a group that names no entry (also before any
        // SET_MATERIAL); a corner without a vertex, after the first edge raised the group.
        {sizesAfter({useTexture(4)}), "0 50 100 7 error 9"},
        {sizesAfter({useTexture(3), triangle(0, 1, 2)}), "0 50 100 7 error 9"},
        {sizesAfter({triangle(0, 1, 2)}), "0 50 100 7 error 9"},
        {sizesAfter({useTexture(0), triangle(0, 1, 9)}), "20 20 100 7 error 9"},
        {sizesAfter({useTexture(0), header(40000), triangle(0, 1, 2)}), "0 50 100 7 error 6"},
    };
    for (const auto& [sizes, expected] : cases)
        EXPECT_EQ(sizes, expected);
    EXPECT_TRUE(throwsPlatform([] { MDLObject().updateTextureSize(); }, 91));
}
