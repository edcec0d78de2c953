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

// A guarded call G that calls the body at 3, the command N behind it, and the body.
std::shared_ptr<BGLCommandList> guardedCall() {
    return listOf({cmd(BGL_CALL_32, {"0"}, 3), cmd(BGL_END), cmd(BGL_RETURN)});
}

// Writes conditions in front of a fresh guarded call, as a host does from getConditions(-1).
std::shared_ptr<BGLCommandList> written(eMultiCondition combination,
                                        std::vector<std::shared_ptr<Condition>> conditions) {
    auto list = guardedCall();
    auto cList = list->getConditions(-1);
    for (auto& c : conditions)
        cList->Add(c);
    cList->multiCondition(combination);
    list->addCondition(cList);
    return list;
}

const auto a = [] { return condition(Between, "141", 1, 5); };
const auto b = [] { return condition(Between, "142", -5, 7); };
const auto c = [] { return condition(Between, "143", 0, 9); };

std::string conditionsText(const ConditionList& list) {
    std::string out;
    for (const auto& item : list) {
        out += item->getTypeString() + "(" + item->var() + "," + std::to_string(item->min()) + "," +
               std::to_string(item->max()) + ") ";
    }
    return out + std::to_string(list.commandStart()) + ".." + std::to_string(list.commandEnd()) +
           " m" + std::to_string(list.multiCondition());
}

}  // namespace

TEST(Condition, TypeTextsAndTheListShape) {
    Condition fresh;
    EXPECT_EQ(fresh.getTypeString(), "Between");
    EXPECT_EQ(condition(mask)->getTypeString(), "Mask");
    EXPECT_EQ(condition(RotUser)->getTypeString(), "Rotate to user");
    EXPECT_EQ(condition(RotWind)->getTypeString(), "Rotate with wind");
    EXPECT_TRUE(throwsPlatform([] { condition(static_cast<CondType>(4))->getTypeString(); }, 9));

    ConditionList list;
    EXPECT_EQ(list.commandStart(), 0);
    EXPECT_EQ(list.multiCondition(), mAND);
    auto first = list.Add();
    list.Add(condition(mask), "Key");
    EXPECT_EQ(list.Item("KEY")->cType(), mask);
    EXPECT_EQ(list.Item(1), first);
    EXPECT_TRUE(throwsPlatform([&] { list.Add(nullptr, "key"); }, 457));
    list.Remove(1);
    EXPECT_EQ(list.Count(), 1);
    EXPECT_TRUE(throwsPlatform([&] { list.Item(2); }, 9));
}

TEST(GetConditions, RecognisesTheStretchInFrontOfTheGuardedCall) {
    // Tests of every kind; the ones without a condition still belong to the stretch.
    auto list = listOf({cmd(IFIN1, {"0", "141", "-5", "30"}, 4), cmd(IFIN2, {"0"}),
                        cmd(IFMSK, {"0", "200", "7"}, 4), cmd(BGL_CALL_32, {"0"}, 5), cmd(BGL_END),
                        cmd(IFIN1, {"0", "9", "1", "1"}, 5)});
    EXPECT_EQ(conditionsText(*list->getConditions(-1)), "Between(141,-5,30) Mask(200,7,0) 1..4 m0");
    EXPECT_EQ(conditionsText(*list->getConditions(0)), "0..0 m0");
    EXPECT_EQ(conditionsText(*list->getConditions(4)), "0..0 m0");

    EXPECT_EQ(conditionsText(*listOf({cmd(BGL_CALL_32), cmd(BGL_END)})->getConditions(-1)),
              "1..1 m0");
    // Rotations: parameter 9 wins over parameter 6, compared as numbers; neither adds nothing.
    EXPECT_EQ(conditionsText(*listOf({cmd(SPRITE_VICALL,
                                          {"0", "0", "0", "0", "0", "0", "1", "0", "0", "3188.0"})})
                                  ->getConditions(-1)),
              "Rotate with wind(,0,0) 1..1 m0");
    EXPECT_EQ(conditionsText(
                  *listOf({cmd(IFIN1, {"", "5", "1", "2"}, 3),
                           cmd(SPRITE_VICALL, {"0", "0", "0", "0", "0", "0", " 1", "0", "0", "0"}),
                           cmd(BGL_CALL_32)})
                       ->getConditions(-1)),
              "Between(5,1,2) Rotate to user(,0,0) 1..2 m0");
    EXPECT_EQ(conditionsText(
                  *listOf({cmd(SPRITE_VICALL, {"0", "0", "0", "0", "0", "0", "2", "0", "0", "9"}),
                           cmd(BGL_CALL_32)})
                       ->getConditions(-1)),
              "1..1 m0");
}

TEST(GetConditions, DocumentedFailures) {
    // No guarded call: the scan runs off the list.
    auto noCall = listOf({cmd(IFIN1, {"0", "1", "2", "3"}, 2), cmd(BGL_END)});
    EXPECT_TRUE(throwsPlatform([&] { noCall->getConditions(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([] { BGLCommandList().getConditions(-1); }, 9));
    // One range test and a rotation under mNOT or mNOR: the look-back reaches index 0.
    EXPECT_TRUE(throwsPlatform(
        [] {
            written(mNOT, {a(), condition(RotWind)})->getConditions(-1);
        },
        9));
    EXPECT_TRUE(throwsPlatform(
        [] {
            written(mNOR, {condition(RotUser), a()})->getConditions(-1);
        },
        9));
    // Limits that aren't 16-bit numbers.
    EXPECT_TRUE(throwsPlatform(
        [] {
            listOf({cmd(IFIN1, {"0", "1", "x", "3"}), cmd(BGL_CALL_32)})->getConditions(-1);
        },
        13));
    EXPECT_TRUE(throwsPlatform(
        [] {
            listOf({cmd(IFMSK, {"0", "1", "40000"}), cmd(BGL_CALL_32)})->getConditions(-1);
        },
        6));
}

TEST(AddCondition, TheFourCombinationsComeOutCommandForCommand) {
    // mAND: the tests in list order, each failing to N.
    auto andList = written(mAND, {a(), b()});
    EXPECT_EQ(shape(*andList), "IFIN1>4 IFIN1>4 BGL_CALL_32>5 BGL_END BGL_RETURN");
    EXPECT_EQ(paramsOf(*andList, 1), "|141|1|5");
    EXPECT_EQ(paramsOf(*andList, 2), "|142|-5|7");

    // mOR: last condition first, a jump to G behind each test, the opening jump leaves.
    auto orList = written(mOR, {a(), b()});
    EXPECT_EQ(shape(*orList),
              "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_JUMP_32>7 BGL_CALL_32>8 BGL_END "
              "BGL_RETURN");
    EXPECT_EQ(paramsOf(*orList, 1), "|142|-5|7");
    EXPECT_EQ(paramsOf(*orList, 3), "|141|1|5");
    EXPECT_EQ(paramsOf(*orList, 2), "");

    auto notList = written(mNOT, {a(), b()});
    EXPECT_EQ(shape(*notList),
              "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN");
    EXPECT_EQ(paramsOf(*notList, 1), "|142|-5|7");

    auto norList = written(mNOR, {a(), b()});
    EXPECT_EQ(shape(*norList), "IFIN1>4 IFIN1>4 BGL_JUMP_32>5 BGL_CALL_32>6 BGL_END BGL_RETURN");
    EXPECT_EQ(paramsOf(*norList, 1), "|142|-5|7");

    // A third condition keeps the shapes.
    EXPECT_EQ(shape(*written(mAND, {a(), b(), c()})),
              "IFIN1>5 IFIN1>5 IFIN1>5 BGL_CALL_32>6 BGL_END BGL_RETURN");
    EXPECT_EQ(shape(*written(mOR, {a(), b(), c()})),
              "IFIN1>3 BGL_JUMP_32>8 IFIN1>5 BGL_JUMP_32>8 IFIN1>7 BGL_JUMP_32>8 BGL_JUMP_32>9 "
              "BGL_CALL_32>10 BGL_END BGL_RETURN");
    EXPECT_EQ(shape(*written(mNOT, {a(), b(), c()})),
              "IFIN1>3 BGL_JUMP_32>8 IFIN1>5 BGL_JUMP_32>8 IFIN1>7 BGL_JUMP_32>8 BGL_CALL_32>9 "
              "BGL_END BGL_RETURN");
    EXPECT_EQ(shape(*written(mNOR, {a(), b(), c()})),
              "IFIN1>5 IFIN1>5 IFIN1>5 BGL_JUMP_32>6 BGL_CALL_32>7 BGL_END BGL_RETURN");

    // The shapes read back as written, with the tests in list order.
    EXPECT_EQ(conditionsText(*andList->getConditions(-1)),
              "Between(141,1,5) Between(142,-5,7) 1..3 m0");
    EXPECT_EQ(conditionsText(*orList->getConditions(-1)),
              "Between(142,-5,7) Between(141,1,5) 1..6 m1");
    EXPECT_EQ(conditionsText(*notList->getConditions(-1)),
              "Between(142,-5,7) Between(141,1,5) 1..5 m2");
    EXPECT_EQ(conditionsText(*norList->getConditions(-1)),
              "Between(142,-5,7) Between(141,1,5) 1..4 m3");
    // One condition is never folded.
    EXPECT_EQ(written(mNOT, {a()})->getConditions(-1)->multiCondition(), mAND);
}

TEST(AddCondition, MasksGoInFrontOfTheCallAndRotationsRewriteIt) {
    auto orMask = written(mOR, {a(), condition(mask, "300", 3)});
    EXPECT_EQ(shape(*orMask),
              "IFIN1>3 BGL_JUMP_32>5 BGL_JUMP_32>6 IFMSK>6 BGL_CALL_32>7 BGL_END BGL_RETURN");
    EXPECT_EQ(paramsOf(*orMask, 4), "|300|3");
    EXPECT_EQ(conditionsText(*orMask->getConditions(-1)), "Between(141,1,5) Mask(300,3,0) 1..5 m0");
    EXPECT_EQ(shape(*written(mNOR, {condition(mask, "300", 3), a()})),
              "IFIN1>4 BGL_JUMP_32>5 IFMSK>5 BGL_CALL_32>6 BGL_END BGL_RETURN");

    // A rotation alone inserts nothing, not even the opening jump; the call target stays.
    auto wind = written(mOR, {condition(RotWind)});
    EXPECT_EQ(shape(*wind), "SPRITE_VICALL>3 BGL_END BGL_RETURN");
    EXPECT_EQ(paramsOf(*wind, 1), "0|0|0|0|0|0|0|0|0|3188");
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotWind), condition(RotUser)}), 1),
              "0|0|0|0|0|0|1|0|0|0");
    EXPECT_EQ(paramsOf(*written(mAND, {condition(RotUser), condition(RotWind)}), 1),
              "0|0|0|0|0|0|0|0|0|3188");
    // The rotation lands on the call wherever it stands in the list.
    EXPECT_EQ(shape(*written(mNOT, {condition(RotWind), a()})),
              "IFIN1>3 BGL_JUMP_32>4 SPRITE_VICALL>5 BGL_END BGL_RETURN");
    EXPECT_EQ(shape(*written(mNOT, {a(), condition(RotWind)})),
              "IFIN1>3 BGL_JUMP_32>4 SPRITE_VICALL>5 BGL_END BGL_RETURN");

    // Clearing the conditions of a sprite call gives the plain call back, parameters kept.
    auto clear = wind->getConditions(-1);
    clear->Remove(1);
    wind->addCondition(clear);
    EXPECT_EQ(shape(*wind), "BGL_CALL_32>3 BGL_END BGL_RETURN");
    EXPECT_EQ(wind->Item(1)->param(9), "3188");
}

TEST(AddCondition, ReadingAndWritingBackIsStableOnlyForAnd) {
    // A stretch with a stray command: it goes with the rest.
    auto list = listOf({cmd(IFIN1, {"0", "141", "1", "5"}, 5), cmd(SETWRD, {"1", "2"}),
                        cmd(IFMSK, {"0", "200", "7"}, 5), cmd(BGL_CALL_32, {"0"}, 6), cmd(BGL_END),
                        cmd(BGL_RETURN)});
    list->addCondition(list->getConditions(-1));
    const std::string once = fullShape(*list);
    EXPECT_EQ(shape(*list), "IFIN1>4 IFMSK>4 BGL_CALL_32>5 BGL_END BGL_RETURN");
    list->addCondition(list->getConditions(-1));
    EXPECT_EQ(fullShape(*list), once);

    for (const eMultiCondition m : {mOR, mNOT, mNOR}) {
        auto turned = written(m, {a(), b(), c()});
        const std::string before = shape(*turned);
        EXPECT_EQ(turned->Item(1)->param(1), "143") << m;
        turned->addCondition(turned->getConditions(-1));
        EXPECT_EQ(shape(*turned), before) << m;
        EXPECT_EQ(turned->Item(1)->param(1), "141") << "the tests turn round under " << m;
        turned->addCondition(turned->getConditions(-1));
        EXPECT_EQ(turned->Item(1)->param(1), "143") << m;
    }
}

TEST(AddCondition, JumpsFromElsewhereKeepTheirCommands) {
    // A jump onto the call keeps it; one into the old stretch goes in front of it (here 0).
    auto list = listOf({cmd(IFIN1, {"0", "1", "2", "3"}, 3), cmd(IFIN1, {"0", "4", "5", "6"}, 3),
                        cmd(BGL_CALL_32, {"0"}, 6), cmd(BGL_JUMP_32, {}, 3),
                        cmd(BGL_JUMP_32, {}, 2), cmd(BGL_RETURN)});
    auto cList = list->getConditions(-1);
    cList->multiCondition(mOR);
    list->addCondition(cList);
    EXPECT_EQ(shape(*list),
              "IFIN1>3 BGL_JUMP_32>6 IFIN1>5 BGL_JUMP_32>6 BGL_JUMP_32>7 BGL_CALL_32>9 "
              "BGL_JUMP_32>6 BGL_JUMP_32>0 BGL_RETURN");

    // An index outside the list fails where the steps reach it.
    auto bad = guardedCall();
    auto none = bad->getConditions(0);
    EXPECT_TRUE(throwsPlatform([&] { bad->addCondition(none); }, 9));
}
