#include <velmora/BGLCommandList.h>
#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;

namespace {

const auto setMaterial = [](int texture) {
    return command(SET_MATERIAL, {"0", std::to_string(texture)});
};
const auto other = [] { return command(SETWRD, {"1", "2"}); };
std::shared_ptr<BGLCommand> dayTest(int start, int end, int32_t jump = 0) {
    return command(IFIN1, {"", "906", std::to_string(start), std::to_string(end)}, jump);
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

// Textures 5, 6 and 7 (0-based) are the summer, autumn and winter of group 3, out of nine; the
// file keeps neither the group nor the season, so a host sets them after every load.
std::shared_ptr<MDLObject> seasonalModel(const BGLCommandList& commands) {
    auto model = modelWith(commands);
    const textureVariant variants[] = {summer, autumn, winter};
    for (int i = 0; i < 9; ++i)
        model->TextureList()->Add();
    for (int i = 0; i < 3; ++i) {
        model->TextureList()->Item(6 + i)->parent(3);
        model->TextureList()->Item(6 + i)->textureVariant(variants[i]);
    }
    return model;
}

std::string seasonsText(const seasonalTextures& s) {
    std::string out;
    for (std::size_t i = 0; i < 5; ++i)
        out += (i ? " " : "") +
               (s.active[i] ? std::to_string(s.dayStart[i]) + "-" + std::to_string(s.dayEnd[i])
                            : std::string("off"));
    return out;
}

}  // namespace

// How the seasons are sorted into a run, and how the jumps follow, is compared with the single
// steps on random seasons and lists in OnePassEditsTest; here one run written and read back.
TEST(SeasonalTextures, TheRunOfThreeSeasonsAtTenComesOutCommandForCommand) {
    // Jumps onto, into and behind the old run at 10 and 11, then N at 12.
    const auto runAtTen = [] {
        return listOf({other(), command(BGL_CALL_32, {}, 10),
                       command(IFIN1, {"", "5", "0", "0"}, 11), command(BGL_JUMP_32, {}, 12),
                       other(), other(), other(), other(), other(), dayTest(1, 100, 12),
                       setMaterial(5), other(), command(BGL_JUMP_32, {}, 14), command(BGL_END)});
    };
    auto list = runAtTen();
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*list),
              "SETWRD BGL_CALL_32>10 IFIN1>10 BGL_JUMP_32>10 SETWRD SETWRD SETWRD SETWRD SETWRD "
              "IFIN1>13 SET_MATERIAL BGL_JUMP_32>17 IFIN1>16 SET_MATERIAL BGL_JUMP_32>17 "
              "SET_MATERIAL SETWRD BGL_JUMP_32>19 BGL_END");

    // Read back; the old run had only summer dated, so it alone counted.
    EXPECT_EQ(seasonsText(seasonalModel(*runAtTen())->readSeasonalDates(3)),
              "1-100 off off off off");
    auto model = seasonalModel(*list);
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "60-150 151-300 301-59 off off");
    EXPECT_EQ(seasonsText(model->readSeasonalDates(4)), "off off off off off");

    // The new run holds Material(0), so it is found again as a whole and written the same.
    const std::string once = shape(*list, true);
    list->addSeasonalTextures(threeSeasons());
    EXPECT_EQ(shape(*list, true), once);
}

TEST(SeasonalTextures, ReadingDatesAndTheDocumentedFailures) {
    // One dated variant, one without: the other gets the rest of the year, 366 to 0 here.
    auto model = seasonalModel(
        *listOf({other(), dayTest(1, 365), setMaterial(6), setMaterial(5), setMaterial(-1)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "366-0 1-365 off off off");
    model = seasonalModel(*listOf({other(), setMaterial(5)}));
    EXPECT_EQ(seasonsText(model->readSeasonalDates(3)), "off off off off off");

    // A run at the head or at the end fails before it changes; a texture group naming no
    // entry fails too.
    for (auto list :
         {listOf({setMaterial(5), other()}), listOf({other(), dayTest(1, 2, 3), setMaterial(5)})}) {
        const std::string before = shape(*list, true);
        EXPECT_TRUE(throwsPlatform([&] { list->addSeasonalTextures(threeSeasons()); }, 9));
        EXPECT_EQ(shape(*list, true), before);
    }
    EXPECT_TRUE(
        throwsPlatform([] { seasonalModel(*listOf({setMaterial(5)}))->readSeasonalDates(3); }, 9));
    EXPECT_TRUE(throwsPlatform(
        [] {
            seasonalModel(*listOf({other(), setMaterial(9)}))->readSeasonalDates(3);
        },
        9));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().readSeasonalDates(3); }, 91));
}
