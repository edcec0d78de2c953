#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "ReferenceEdits.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;

namespace {

std::shared_ptr<BGLCommand> setMaterial(int texture) {
    return cmd(SET_MATERIAL, {"0", std::to_string(texture)});
}
std::shared_ptr<BGLCommand> dayTest(int start, int end, int32_t jump = 0) {
    return cmd(IFIN1, {"", "906", std::to_string(start), std::to_string(end)}, jump);
}
std::shared_ptr<BGLCommand> other() {
    return cmd(SETWRD, {"1", "2"});
}

// Summer 60 to 150 (texture 5), autumn 151 to 300 (6), winter 301 to 59 (7).
seasonalTextures threeSeasons() {
    seasonalTextures s;
    s.Material = {5, 6, 7, 8, 9};
    s.dayStart = {60, 151, 301, 0, 0};
    s.dayEnd = {150, 300, 59, 0, 0};
    s.active = {true, true, true, false, false};
    return s;
}

// Nine commands with jumps onto, into and behind the old run at 10 and 11, then N at 12.
std::shared_ptr<BGLCommandList> runAtTen() {
    return listOf({other(), cmd(BGL_CALL_32, {}, 10), cmd(IFIN1, {"", "5", "0", "0"}, 11),
                   cmd(BGL_JUMP_32, {}, 12), other(), other(), other(), other(), other(),
                   dayTest(1, 100, 12), setMaterial(5), other(), cmd(BGL_JUMP_32, {}, 14),
                   cmd(BGL_END)});
}

// A model whose textures 5, 6 and 7 (0-based) are the summer, autumn and winter of group 3.
std::shared_ptr<MDLObject> seasonalModel(const BGLCommandList& commands) {
    auto model = modelWith(commands);
    for (int i = 0; i < 9; ++i)
        model->TextureList()->Add();
    const textureVariant variants[] = {summer, autumn, winter};
    for (int i = 0; i < 3; ++i) {
        model->TextureList()->Item(6 + i)->parent(3);
        model->TextureList()->Item(6 + i)->textureVariant(variants[i]);
    }
    return model;
}

std::string seasonsText(const seasonalTextures& s) {
    std::string out;
    for (std::size_t i = 0; i < 5; ++i) {
        if (!out.empty()) out += " ";
        out +=
            s.active[i] ? std::to_string(s.dayStart[i]) + "-" + std::to_string(s.dayEnd[i]) : "off";
    }
    return out;
}

}  // namespace

TEST(SeasonalTextures, TheRunOfThreeSeasonsAtTenComesOutCommandForCommand) {
    auto list = runAtTen();
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*list),
              "SETWRD BGL_CALL_32>10 IFIN1>10 BGL_JUMP_32>10 SETWRD SETWRD SETWRD SETWRD SETWRD "
              "IFIN1>13 SET_MATERIAL BGL_JUMP_32>17 IFIN1>16 SET_MATERIAL BGL_JUMP_32>17 "
              "SET_MATERIAL SETWRD BGL_JUMP_32>19 BGL_END");
    EXPECT_EQ(paramsOf(*list, 10), "|906|151|300");
    EXPECT_EQ(paramsOf(*list, 11), "0|6");
    EXPECT_EQ(paramsOf(*list, 12), "");
    EXPECT_EQ(paramsOf(*list, 13), "|906|60|150");
    EXPECT_EQ(paramsOf(*list, 14), "0|5");
    EXPECT_EQ(paramsOf(*list, 16), "0|7");

    // Read back; the old run had only summer dated, so it alone counted.
    EXPECT_EQ(seasonsText(seasonalModel(*runAtTen())->readSeasonalDates(3)),
              "1-100 off off off off");
    auto model = seasonalModel(*list);
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "60-150 151-300 301-59 off off");
    EXPECT_EQ(seasonsText(model->readSeasonalDates(4)), "off off off off off");

    // The new run holds Material(0), so it is found again as a whole and written the same.
    const std::string once = fullShape(*list);
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(fullShape(*list), once);
}

TEST(SeasonalTextures, TheSortingOfSeasons) {
    const auto rebuilt = [](seasonalTextures s) {
        auto list =
            listOf({other(), dayTest(1, 9, 4), setMaterial(5), other(), cmd(BGL_JUMP_32, {}, 4)});
        list->addSeasonalTextures(s);
        return shape(*list) + " / " + paramsOf(*list, 2) + " / " + paramsOf(*list, 3);
    };
    seasonalTextures s = threeSeasons();
    // Only winter active: one SET_MATERIAL with Material(0) and no test.
    s.active = {false, false, true, false, false};
    EXPECT_EQ(rebuilt(s), "SETWRD SET_MATERIAL SETWRD BGL_JUMP_32>2 / 0|5 / 1|2");
    // Nothing active and nothing wrapping: the run goes.
    s.active = {};
    s.dayEnd[2] = 400;
    EXPECT_EQ(rebuilt(s), "SETWRD SETWRD BGL_JUMP_32>2 / 1|2 / ");
    // An inactive wrapping season still becomes the default, after the tests of the others.
    s = threeSeasons();
    s.active = {true, true, false, false, false};
    EXPECT_EQ(rebuilt(s),
              "SETWRD IFIN1>5 SET_MATERIAL BGL_JUMP_32>9 IFIN1>8 SET_MATERIAL BGL_JUMP_32>9 "
              "SET_MATERIAL SETWRD BGL_JUMP_32>2 / |906|151|300 / 0|6");
    // Two wrapping seasons: the higher index is the default, the other keeps its test.
    s = threeSeasons();
    s.active = {false, false, true, false, true};
    s.dayStart[4] = 300;
    s.dayEnd[4] = 20;
    EXPECT_EQ(rebuilt(s),
              "SETWRD IFIN1>5 SET_MATERIAL BGL_JUMP_32>6 SET_MATERIAL SETWRD BGL_JUMP_32>2 "
              "/ |906|301|59 / 0|7");
    // No season wraps: every season has its test and its closing jump behind the run.
    s = threeSeasons();
    s.dayEnd[2] = 365;
    EXPECT_EQ(rebuilt(s),
              "SETWRD IFIN1>5 SET_MATERIAL BGL_JUMP_32>11 IFIN1>8 SET_MATERIAL BGL_JUMP_32>11 "
              "IFIN1>11 SET_MATERIAL BGL_JUMP_32>11 SETWRD BGL_JUMP_32>2 / |906|301|365 / 0|7");
}

TEST(SeasonalTextures, ReadingDates) {
    // One texture of the group, no test: not seasonal.
    EXPECT_EQ(seasonsText(seasonalModel(*listOf({other(), setMaterial(5)}))->readSeasonalDates(3)),
              "off off off off off");
    // One dated variant, one without: the other gets the rest of the year, 366 to 0 here.
    auto model = seasonalModel(
        *listOf({other(), dayTest(1, 365), setMaterial(6), setMaterial(5), setMaterial(-1)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "366-0 1-365 off off off");
    // A later command of the same season overwrites the earlier, here with no date.
    model = seasonalModel(*listOf({other(), dayTest(60, 300), setMaterial(5), dayTest(20, 30),
                                   setMaterial(6), other(), setMaterial(5)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "31-19 20-30 off off off");

    EXPECT_TRUE(
        throwsPlatform([] { seasonalModel(*listOf({setMaterial(5)}))->readSeasonalDates(3); }, 9));
    EXPECT_TRUE(throwsPlatform(
        [] {
            seasonalModel(*listOf({other(), setMaterial(9)}))->readSeasonalDates(3);
        },
        9));
    auto odd = seasonalModel(*listOf({other(), setMaterial(5)}));
    odd->TextureList()->Item(6)->textureVariant(static_cast<textureVariant>(5));
    EXPECT_TRUE(throwsPlatform([&] { odd->readSeasonalDates(3); }, 9));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().readSeasonalDates(3); }, 91));
}

TEST(SeasonalTextures, EveryRunIsReplacedAndRunsAtTheEndsFail) {
    // Two runs, the later found from behind the first.
    auto two = listOf(
        {other(), setMaterial(5), other(), cmd(BGL_JUMP_32, {}, 5), setMaterial(5), other()});
    seasonalTextures s = threeSeasons();
    s.active = {true, false, false, false, false};
    two->addSeasonalTextures(s);
    EXPECT_EQ(shape(*two), "SETWRD SET_MATERIAL SETWRD SET_MATERIAL SETWRD");

    // Texture not used: nothing changes.
    auto unused = listOf({setMaterial(1), other()});
    unused->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*unused), "SET_MATERIAL SETWRD");

    // A run at the head or at the end fails before it changes; an earlier run stays rebuilt.
    for (auto list :
         {listOf({setMaterial(5), other()}), listOf({other(), dayTest(1, 2, 3), setMaterial(5)})}) {
        const std::string before = fullShape(*list);
        EXPECT_TRUE(throwsPlatform([&] { list->addSeasonalTextures(threeSeasons()); }, 9));
        EXPECT_EQ(fullShape(*list), before);
    }
    auto late = listOf({other(), setMaterial(5), other(), setMaterial(5)});
    EXPECT_TRUE(throwsPlatform([&] { late->addSeasonalTextures(s); }, 9));
    EXPECT_EQ(shape(*late), "SETWRD SET_MATERIAL SETWRD SET_MATERIAL");
    EXPECT_EQ(late->Item(2)->param(0), "0");
}

TEST(SeasonalTextures, TheOnePassRebuildMatchesTheSingleSteps) {
    int failures = 0;
    int rebuiltCases = 0;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        Dice dice(seed);
        auto list = std::make_shared<BGLCommandList>();
        const int length = 3 + dice.below(30);
        for (int i = 0; i < length; ++i) {
            switch (dice.below(9)) {
                case 0:
                case 1:
                    list->Add(setMaterial(dice.below(4) - 1));
                    break;
                case 2:
                    list->Add(dayTest(dice.below(366), dice.below(366)));
                    break;
                case 3:
                    list->Add(cmd(IFIN1, {"", "5", "1", "2"}));
                    break;
                case 4:
                    list->Add(cmd(BGL_JUMP_32));
                    break;
                case 5:
                    list->Add(cmd(BGL_CALL_32));
                    break;
                case 6:
                    list->Add(cmd(BGL_ANIMATE));
                    break;
                default:
                    list->Add(other());
                    break;
            }
        }
        scatterJumps(*list, dice);
        seasonalTextures s;
        for (std::size_t v = 0; v < 5; ++v) {
            s.Material[v] = static_cast<int16_t>(dice.below(4));
            s.dayStart[v] = static_cast<int16_t>(dice.below(366));
            s.dayEnd[v] = static_cast<int16_t>(dice.below(366));
            s.active[v] = dice.below(2) == 1;
        }
        auto plain = deepCopy(*list);
        const int32_t countBefore = list->Count();
        const int fastError = errorOf([&] { list->addSeasonalTextures(s); });
        const int plainError = errorOf([&] { reference::addSeasonalTextures(*plain, s); });
        failures += fastError != 0 ? 1 : 0;
        rebuiltCases +=
            fastError == 0 &&
                    reference::seasonalBlock(*deepCopy(*list), s.Material[0], true, 1) != -1 &&
                    list->Count() != countBefore
                ? 1
                : 0;
        ASSERT_EQ(fastError, plainError) << "seed " << seed;
        ASSERT_EQ(fullShape(*list), fullShape(*plain)) << "seed " << seed;
    }
    EXPECT_GT(failures, 10) << "runs at the ends are among the cases";
    EXPECT_GT(rebuiltCases, 50) << "rebuilt runs are among the cases";
}
