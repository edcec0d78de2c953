#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;
using namespace bgltest;

namespace {

// A stream holding a condition, a light behind a mask test and a run of two seasons.
std::string modelFile() {
    StreamAssembler s;
    s.add(IFIN1, {jw(2), w(141), w(1), w(5)});
    s.add(BGL_CALL_32, {jl(3)});
    s.add(BGL_END);
    s.add(SETWRD, {w(1), w(2)});
    s.add(IFMSK, {jw(6), w(100), w(1)});
    s.add(BGL_LIGHT,
          {w(0), f("1"), f("2"), f("3"), l(4), f("5"), f("6"), l(7), f("8"), f("9"), f("10")});
    s.add(SETWRD, {w(3), w(4)});
    s.add(IFIN1, {jw(10), w(906), w(60), w(150)});
    s.add(SET_MATERIAL, {w(0), w(5)});
    s.add(BGL_JUMP_32, {jl(11)});
    s.add(SET_MATERIAL, {w(0), w(7)});
    s.add(SETWRD, {w(5), w(6)});
    s.add(BGL_JUMP_32, {jl(14)});
    s.add(SETWRD, {w(7), w(8)});
    s.add(BGL_RETURN);
    modelbytes::Model model;
    model.commands = s.bytes();
    return model.bytes();
}

}  // namespace

TEST(EditedModel, SavedJumpsLandOnTheirCommandsAndEverythingReadsBack) {
    MDLObject model;
    model.readMDLBytes(modelFile());
    groupSeasons(model);
    BGLCommandList& list = *model.BGLCommandList();
    auto conditions = list.getConditions(-1);
    conditions->Add()->var("142");
    conditions->multiCondition(mOR);
    list.addCondition(conditions);
    const seasonalTextures seasons = threeSeasons();
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
    MDLObject again;
    again.readMDLBytes(saved);
    groupSeasons(again);
    EXPECT_EQ(shape(*again.BGLCommandList()), edited);
    const auto back = again.BGLCommandList()->getConditions(-1);
    ASSERT_EQ(back->Count(), 2);
    EXPECT_EQ(back->Item(1)->var() + " " + back->Item(2)->var(), "142 141");
    EXPECT_EQ(back->multiCondition(), mOR);
    const seasonalTextures dates = again.readSeasonalDates(3);
    EXPECT_EQ(dates.dayStart, seasons.dayStart);
    EXPECT_EQ(dates.dayEnd, seasons.dayEnd);
    EXPECT_EQ(dates.active, seasons.active);
    EXPECT_EQ(again.getRIFFSectionSize(5), 12) << "the kill shadow";

    // Freeing the lights again changes nothing, and the file comes out the same once more: a
    // jump offset that missed the first byte of its command would be written anew.
    again.fixLights();
    again.saveMDL(dir.file("again.mdl"));
    EXPECT_EQ(readFile(dir.file("again.mdl")), saved);
}
