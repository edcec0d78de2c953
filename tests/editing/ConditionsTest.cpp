#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>

#include "EditingHelpers.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;

namespace {

std::shared_ptr<Condition> condition(CondType type, const std::string& var = "", int16_t min = 0,
                                     int16_t max = 0) {
    auto c = std::make_shared<Condition>();
    c->cType(type);
    c->var(var);
    c->min(min);
    c->max(max);
    return c;
}
const auto a = [] { return condition(Between, "141", 1, 5); };
const auto b = [] { return condition(Between, "142", -5, 7); };
const auto c = [] { return condition(Between, "143", 0, 9); };

// Writes conditions in front of a fresh guarded call G (to 3), followed by N and the body.
std::shared_ptr<BGLCommandList> written(eMultiCondition combination,
                                        std::vector<std::shared_ptr<Condition>> conditions) {
    auto list = listOf({command(BGL_CALL_32, {"0"}, 3), command(BGL_END), command(BGL_RETURN)});
    auto cList = list->getConditions(-1);
    for (auto& item : conditions)
        cList->Add(item);
    cList->multiCondition(combination);
    list->addCondition(cList);
    return list;
}

std::string conditionsText(const ConditionList& list) {
    std::string out;
    for (const auto& item : list)
        out += item->getTypeString() + "(" + item->var() + "," + std::to_string(item->min()) + "," +
               std::to_string(item->max()) + ") ";
    return out + std::to_string(list.commandStart()) + ".." + std::to_string(list.commandEnd()) +
           " m" + std::to_string(list.multiCondition());
}

}  // namespace

TEST(Conditions, TheFourCombinationsComeOutCommandForCommandAndReadBack) {
    struct Case {
        eMultiCondition combination;
        std::vector<std::shared_ptr<Condition>> conditions;
        const char* shape;
        const char* readBack;
    };
    // clang-format off
    const Case cases[] = {
        // mAND: the tests in list order, each failing to N.
        {mAND, {a(), b()}, "IFIN1>4 IFIN1>4 BGL_CALL_32>5 BGL_END BGL_RETURN",
         "Between(141,1,5) Between(142,-5,7) 1..3 m0"},
        // mOR: last condition first, a jump to G behind each test, the opening jump leaves.
        {mOR, {a(), b()}, "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_JUMP_32>7 BGL_CALL_32>8 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..6 m1"},
        {mNOT, {a(), b()}, "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..5 m2"},
        {mNOR, {a(), b()}, "IFIN1>4 IFIN1>4 BGL_JUMP_32>5 BGL_CALL_32>6 BGL_END BGL_RETURN",
         "Between(142,-5,7) Between(141,1,5) 1..4 m3"},
        // A third condition keeps the shapes.
        {mOR, {a(), b(), c()}, "IFIN1>3 BGL_JUMP_32>8 IFIN1>5 BGL_JUMP_32>8 IFIN1>7 BGL_JUMP_32>8 BGL_JUMP_32>9 BGL_CALL_32>10 BGL_END BGL_RETURN",
         "Between(143,0,9) Between(142,-5,7) Between(141,1,5) 1..8 m1"},
        {mNOR, {a(), b(), c()}, "IFIN1>5 IFIN1>5 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(143,0,9) Between(142,-5,7) Between(141,1,5) 1..5 m3"},
        // Under mOR a mask goes in front of G and the list reads back as mAND.
        {mOR, {a(), condition(mask, "300", 3)}, "IFIN1>3 BGL_JUMP_32>5 BGL_JUMP_32>6 IFMSK>6 BGL_CALL_32>7 BGL_END BGL_RETURN",
         "Between(141,1,5) Mask(300,3,0) 1..5 m0"},
        // A rotation alone inserts nothing, not even the opening jump; it rewrites the call.
        {mOR, {condition(RotWind)}, "SPRITE_VICALL>3 BGL_END BGL_RETURN", "Rotate with wind(,0,0) 1..1 m0"},
        {mAND, {condition(RotUser), a()}, "IFIN1>3 SPRITE_VICALL>4 BGL_END BGL_RETURN",
         "Between(141,1,5) Rotate to user(,0,0) 1..2 m0"},
    };
    // clang-format on
    for (const Case& k : cases) {
        SCOPED_TRACE(k.shape);
        auto list = written(k.combination, k.conditions);
        EXPECT_EQ(shape(*list), k.shape);
        EXPECT_EQ(conditionsText(*list->getConditions(-1)), k.readBack);
    }
    EXPECT_EQ(paramsOf(*written(mOR, {a(), b()}), 2), "") << "jumps have an empty parameter 0";
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotWind)}), 1), "0|0|0|0|0|0|0|0|0|3188");
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotUser)}), 1), "0|0|0|0|0|0|1|0|0|0");
    EXPECT_EQ(written(mNOT, {a()})->getConditions(-1)->multiCondition(), mAND)
        << "one condition is never folded";
}

TEST(Conditions, WritingBackIsStableForAndAndTurnsTheTestsRoundOtherwise) {
    // A stretch with a stray command: it goes with the rest.
    auto list = listOf({command(IFIN1, {"0", "141", "1", "5"}, 5), command(SETWRD, {"1", "2"}),
                        command(IFMSK, {"0", "200", "7"}, 5), command(BGL_CALL_32, {"0"}, 6),
                        command(BGL_END), command(BGL_RETURN)});
    list->addCondition(list->getConditions(-1));
    const std::string once = shape(*list, true);
    EXPECT_EQ(shape(*list), "IFIN1>4 IFMSK>4 BGL_CALL_32>5 BGL_END BGL_RETURN");
    list->addCondition(list->getConditions(-1));
    EXPECT_EQ(shape(*list, true), once);

    for (const eMultiCondition m : {mOR, mNOT, mNOR}) {
        auto turned = written(m, {a(), b(), c()});
        const std::string before = shape(*turned);
        EXPECT_EQ(turned->Item(1)->param(1), "143") << m;
        turned->addCondition(turned->getConditions(-1));
        EXPECT_EQ(shape(*turned), before) << m;
        EXPECT_EQ(turned->Item(1)->param(1), "141") << "the tests turn round under " << m;
    }

    // Clearing the conditions of a sprite call gives the plain call back, parameters kept.
    auto wind = written(mAND, {condition(RotWind)});
    auto clear = wind->getConditions(-1);
    clear->Remove(1);
    wind->addCondition(clear);
    EXPECT_EQ(shape(*wind), "BGL_CALL_32>3 BGL_END BGL_RETURN");
    EXPECT_EQ(wind->Item(1)->param(9), "3188");
}

TEST(Conditions, DocumentedFailures) {
    // No guarded call, or no command at all: the scan runs off the list. A range test and a
    // rotation under mNOT: the look-back reaches index 0. A range that is no number.
    const std::pair<std::shared_ptr<BGLCommandList>, int> scans[] = {
        {listOf({command(IFIN1, {"0", "1", "2", "3"}, 2), command(BGL_END)}), 9},
        {listOf({}), 9},
        {written(mNOT, {a(), condition(RotWind)}), 9},
        {listOf({command(IFIN1, {"0", "1", "x", "3"}), command(BGL_CALL_32)}), 13},
    };
    for (const auto& [list, number] : scans)
        EXPECT_TRUE(throwsPlatform([&] { list->getConditions(-1); }, number));
    EXPECT_TRUE(throwsPlatform([] { condition(static_cast<CondType>(4))->getTypeString(); }, 9));
    auto list = written(mAND, {});
    EXPECT_TRUE(throwsPlatform([&] { list->addCondition(list->getConditions(0)); }, 9));
}
