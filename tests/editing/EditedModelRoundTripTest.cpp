#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "bgl/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;
using bgltest::f;
using bgltest::jl;
using bgltest::jw;
using bgltest::l;
using bgltest::w;

namespace {

// A model whose stream holds a condition, a light behind a mask test and a run of two seasons,
// with its offsets worked out here from the bytes.
std::string modelFile() {
    bgltest::StreamAssembler s;
    s.add(IFIN1, {jw(2), w(141), w(1), w(5)});
    s.add(BGL_CALL_32, {jl(3)});
    s.add(BGL_END);
    s.add(SETWRD, {w(1), w(2)});
    s.add(IFMSK, {jw(6), w(100), w(1)});
    s.add(BGL_LIGHT, {w(0), f(1), f(2), f(3), l(4), f(5), f(6), l(7), f(8), f(9), f(10)});
    s.add(SETWRD, {w(3), w(4)});
    s.add(IFIN1, {jw(10), w(906), w(60), w(150)});
    s.add(SET_MATERIAL, {w(0), w(5)});
    s.add(BGL_JUMP_32, {jl(11)});
    s.add(SET_MATERIAL, {w(0), w(7)});
    s.add(SETWRD, {w(5), w(6)});
    s.add(BGL_JUMP_32, {jl(14)});
    s.add(SETWRD, {w(7), w(8)});
    s.add(BGL_RETURN);
    return bareModel(testbytes::section("BGL ", s.bytes()));
}

// Textures 5, 6 and 7 (0-based) are the summer, autumn and winter of group 3; the file keeps
// neither the group nor the season, so the host sets them after every load.
void groupTextures(MDLObject& model) {
    while (model.TextureList()->Count() < 9)
        model.TextureList()->Add();
    const textureVariant variants[] = {summer, autumn, winter};
    for (int i = 0; i < 3; ++i) {
        model.TextureList()->Item(6 + i)->parent(3);
        model.TextureList()->Item(6 + i)->textureVariant(variants[i]);
    }
}

std::string conditionsText(const ConditionList& list) {
    std::string out;
    for (const auto& c : list)
        out += c->getTypeString() + "(" + c->var() + ") ";
    return out + "m" + std::to_string(list.multiCondition());
}

}  // namespace

TEST(EditedModel, SavedJumpsLandOnTheirCommandsAndEverythingReadsBack) {
    MDLObject model;
    model.readMDLBytes(modelFile());
    groupTextures(model);
    BGLCommandList& list = *model.BGLCommandList();
    ASSERT_EQ(shape(list),
              "IFIN1>3 BGL_CALL_32>4 BGL_END SETWRD IFMSK>7 BGL_LIGHT SETWRD IFIN1>11 SET_MATERIAL "
              "BGL_JUMP_32>12 SET_MATERIAL SETWRD BGL_JUMP_32>15 SETWRD BGL_RETURN");

    auto conditions = list.getConditions(-1);
    auto second = conditions->Add();
    second->var("142");
    conditions->multiCondition(mOR);
    list.addCondition(conditions);

    seasonalTextures seasons;
    seasons.Material = {5, 6, 7, 0, 0};
    seasons.dayStart = {60, 151, 301, 0, 0};
    seasons.dayEnd = {150, 300, 59, 0, 0};
    seasons.active = {true, true, true, false, false};
    list.addSeasonalTextures(seasons);
    model.fixLights();
    model.addKillShadow();
    const std::string edited = shape(list);
    EXPECT_EQ(edited,
              "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_JUMP_32>7 BGL_CALL_32>8 BGL_END "
              "SETWRD BGL_LIGHT SETWRD IFIN1>14 SET_MATERIAL BGL_JUMP_32>18 IFIN1>17 SET_MATERIAL "
              "BGL_JUMP_32>18 SET_MATERIAL SETWRD BGL_JUMP_32>21 SETWRD BGL_RETURN");

    TempDir dir;
    model.saveMDL(dir.file("edited.mdl"));
    const std::string saved = readFile(dir.file("edited.mdl"));
    const std::string stream = sectionPayload(saved, "BGL ");
    // Every offset in the bytes lands on the first byte of the command the list names.
    EXPECT_EQ(jumpTargetsInBytes(stream), jumpTargetsInList(list));
    EXPECT_EQ(testbytes::hex(sectionPayload(saved, "SHAD")), "42 47 4C 20 00 00 00 00 BD 00 22 00");

    MDLObject again;
    again.readMDLBytes(saved);
    groupTextures(again);
    EXPECT_EQ(shape(*again.BGLCommandList()), edited);
    EXPECT_EQ(again.BGLCommandList()->asString(), stream);
    EXPECT_EQ(conditionsText(*again.BGLCommandList()->getConditions(-1)),
              "Between(142) Between(141) m1");
    const seasonalTextures back = again.readSeasonalDates(3);
    EXPECT_EQ(back.dayStart, (std::array<int16_t, 5>{60, 151, 301, 0, 0}));
    EXPECT_EQ(back.dayEnd, (std::array<int16_t, 5>{150, 300, 59, 0, 0}));
    EXPECT_EQ(back.active, (std::array<bool, 5>{true, true, true, false, false}));
    EXPECT_EQ(again.getRIFFSectionSize(5), 12);

    // Freeing the lights again changes nothing, and the stream survives one more save.
    again.fixLights();
    again.saveMDL(dir.file("again.mdl"));
    EXPECT_EQ(sectionPayload(readFile(dir.file("again.mdl")), "BGL "), stream);
}
