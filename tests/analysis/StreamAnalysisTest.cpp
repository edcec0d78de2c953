#include <velmora/velmora.h>

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

#include <map>

using namespace velmora;
using namespace bgltest;

namespace {

// Three vertices, a material and the textures named.
MDLObject& load(MDLObject& model, const StreamAssembler& stream,
                std::vector<std::string> textures = {"a.bmp", "b.bmp", "c.bmp", "d.bmp"}) {
    modelbytes::Model m;
    m.materials = {{}};
    m.textures = std::move(textures);
    m.vertices = {{0, 0, 0, 0, 1, 0, 0, 0}, {1, 0, 0, 0, 1, 0, 1, 0}, {1, 0, 1, 0, 1, 0, 1, 1}};
    m.commands = stream.bytes();
    model.readMDLBytes(m.bytes());
    return model;
}

// A test on variable `v` alone, holding when it is 1; it fails to `to`.
void test(StreamAssembler& a, int v, int to) {
    a.add(IFIN1, {jw(to), w(v), w(1), w(1)});
}

ConditionList conditions(eMultiCondition combination, std::vector<int> variables) {
    ConditionList list;
    for (const int v : variables) {
        auto c = list.Add();
        c->var(std::to_string(v));
        c->min(1);
        c->max(1);
    }
    list.multiCondition(combination);
    return list;
}

}  // namespace

TEST(GuardAnalysis, FormulasAreEqualOnlyWhenEveryAssignmentAgrees) {
    // Reached when exactly one of variables 1 and 2 is 1: unlike "or", not when both are.
    StreamAssembler exclusive;
    test(exclusive, 1, 3);                // 0: 1 fails to 3
    test(exclusive, 2, 5);                // 1: 1 and not 2 reach the call
    exclusive.add(BGL_JUMP_32, {jl(6)});  // 2: both: past the call
    test(exclusive, 2, 6);                // 3: neither: past the call
    exclusive.add(BGL_JUMP_32, {jl(5)});  // 4: 2 and not 1
    exclusive.add(BGL_CALL_32, {jl(7)});  // 5
    exclusive.add(BGL_END);               // 6
    exclusive.add(BGL_RETURN);            // 7
    MDLObject model;
    const GuardAnalysis guard(*load(model, exclusive).BGLCommandList());
    EXPECT_EQ(guard.formula(), "(1 not in 1..1 and 2 in 1..1) or (1 in 1..1 and 2 not in 1..1)");
    EXPECT_FALSE(guard.means(conditions(mOR, {1, 2})));
    EXPECT_FALSE(guard.means(conditions(mNOR, {1, 2})));
    EXPECT_TRUE(guard.canHold());

    MDLObject either;
    const auto list = load(either, exclusive).BGLCommandList()->getConditions(-1);
    while (list->Count() > 0)
        list->Remove(1);
    for (const auto& c : conditions(mOR, {1, 2}))
        list->Add(c);
    list->multiCondition(mOR);
    either.BGLCommandList()->addCondition(list);
    const GuardAnalysis orGuard(*either.BGLCommandList());
    EXPECT_TRUE(orGuard.means(conditions(mOR, {2, 1})));
    EXPECT_FALSE(orGuard.meansTheSameAs(guard));
    EXPECT_FALSE(guard.meansTheSameAs(orGuard));
}

TEST(GuardAnalysis, TheFormulaLeavesOutATermTheOthersCover) {
    // (1 and 2) or (not 1 and 3): "2 and 3" is a prime implicant too, but a redundant one.
    StreamAssembler a;
    test(a, 1, 3);                // 0
    test(a, 2, 6);                // 1
    a.add(BGL_JUMP_32, {jl(5)});  // 2
    test(a, 3, 6);                // 3
    a.add(BGL_JUMP_32, {jl(5)});  // 4
    a.add(BGL_CALL_32, {jl(7)});  // 5
    a.add(BGL_END);               // 6
    a.add(BGL_RETURN);            // 7
    MDLObject model;
    const GuardAnalysis guard(*load(model, a).BGLCommandList());
    EXPECT_EQ(guard.formula(), "(1 not in 1..1 and 3 in 1..1) or (1 in 1..1 and 2 in 1..1)");

    // A guard no values reach.
    StreamAssembler never;
    test(never, 1, 4);                // 0
    test(never, 1, 4);                // 1: the same test again
    never.add(BGL_JUMP_32, {jl(4)});  // 2: holding, past the call
    never.add(BGL_CALL_32, {jl(5)});  // 3
    never.add(BGL_END);               // 4
    never.add(BGL_RETURN);            // 5
    MDLObject none;
    const GuardAnalysis unreachable(*load(none, never).BGLCommandList());
    EXPECT_EQ(unreachable.formula(), "never");
    EXPECT_FALSE(unreachable.canHold());
}

TEST(StreamAnalysis, FindsSeasonalRunsSizeBranchesLightsAndTheShadow) {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});                     // 0
    a.add(BGL_END);                                  // 1
    a.add(IFIN1, {jw(5), w(906), w(152), w(334)});   // 2: summer
    a.add(SET_MATERIAL, {w(0), w(1)});               // 3
    a.add(BGL_JUMP_32, {jl(6)});                     // 4
    a.add(SET_MATERIAL, {w(0), w(3)});               // 5: every other day
    a.add(IFSIZEV, {jw(11), w(100), w(40)});         // 6
    a.add(SET_MATERIAL, {w(0), w(-1)});              // 7: the detailed part
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 8
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 9
    a.add(BGL_JUMP_32, {jl(13)});                    // 10: over the coarse part
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 11
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 12
    a.add(IFMSK, {jw(17), w(652), w(4)});            // 13: kept, above 200
    a.add(VAR_BASE_OVERRIDE, {l(0)});                // 14
    a.add(IFMSK, {jw(17), w(120), w(1)});            // 15
    a.add(BGL_LIGHT, {w(1), f("-20"), f("1"), f("-20"), l(0), f("0"), f("0"), l(0xFFFF0000), f("0"),
                      f("0"), f("0")});  // 16
    a.add(BGL_RETURN);                   // 17
    MDLObject model;
    const StreamAnalysis analysis(*load(model, a).BGLCommandList());

    ASSERT_EQ(analysis.seasonalRuns().size(), 1u);
    const SeasonalRun& run = analysis.seasonalRuns()[0];
    EXPECT_EQ(run.first, 3);  // positions count from 1: the day test
    EXPECT_EQ(run.last, 6);   // up to the size test, which is no part of a run
    ASSERT_EQ(run.variants.size(), 2u);
    EXPECT_EQ(run.variants[0].texture, 1);
    EXPECT_EQ(run.variants[0].firstDay, 152);
    EXPECT_EQ(run.variants[0].selectedBy, "906 in 152..334");
    EXPECT_TRUE(run.variants[1].isDefault());
    EXPECT_EQ(analysis.runOf(5), &run);
    EXPECT_EQ(analysis.runOf(7), nullptr);
    EXPECT_EQ(analysis.textureGroups(4), (std::vector<int32_t>{0, 1, 2, 1}));

    ASSERT_EQ(analysis.sizeTests().size(), 1u);
    EXPECT_EQ(analysis.sizeTests()[0].text, "size(100) >= 40 px");
    EXPECT_EQ(analysis.sizeTests()[0].failsTo, 12);
    const SizeBranch* detailed = analysis.branchOf(10);
    ASSERT_NE(detailed, nullptr);
    EXPECT_TRUE(detailed->holds);
    EXPECT_EQ(detailed->last, 10);  // the jump over the coarse part is in neither
    const SizeBranch* coarse = analysis.branchOf(13);
    ASSERT_NE(coarse, nullptr);
    EXPECT_FALSE(coarse->holds);
    EXPECT_EQ(coarse->selectedBy, "not (size(100) >= 40 px)");
    EXPECT_EQ(analysis.branchOf(11), nullptr);
    EXPECT_EQ(analysis.branchOf(14), nullptr);

    ASSERT_EQ(analysis.lights().size(), 1u);
    const LightReport& light = analysis.lights()[0];
    EXPECT_EQ(light.at, (std::array<double, 3>{-20, 1, -20}));
    EXPECT_EQ(light.colour, 0xFFFF0000u);
    ASSERT_EQ(light.guards.size(), 3u);
    EXPECT_TRUE(light.guards[0].freedByFix);   // (120 & 1)
    EXPECT_TRUE(light.guards[1].freedByFix);   // the override
    EXPECT_FALSE(light.guards[2].freedByFix);  // (652 & 4)
    EXPECT_EQ(light.guards[2].text, "(652 & 4)");

    EXPECT_EQ(shadowKindOf(model), ShadowKind::None);
    model.addKillShadow();
    EXPECT_EQ(shadowKindOf(model), ShadowKind::KillShadow);
}

TEST(GuardAnalysis, ValuesToShowAModelChangeAsFewVariablesAsTheGuardNeeds) {
    // 790 in 0..1 and (250 & 1), then a guard of one IFIN2 on 1285 and 798.
    StreamAssembler masked;
    masked.add(IFIN1, {jw(3), w(790), w(0), w(1)});  // 0
    masked.add(IFMSK, {jw(3), w(250), w(1)});        // 1
    masked.add(BGL_CALL_32, {jl(4)});                // 2
    masked.add(BGL_END);                             // 3
    masked.add(BGL_RETURN);                          // 4
    StreamAssembler pair;
    pair.add(IFIN2, {jw(2), w(1285), w(7), w(9), w(798), w(0), w(5)});  // 0
    pair.add(BGL_CALL_32, {jl(3)});                                     // 1
    pair.add(BGL_END);                                                  // 2
    pair.add(BGL_RETURN);                                               // 3
    // Reached when 1 is 1, or when both 2 and 3 are: one variable is enough.
    StreamAssembler either;
    test(either, 1, 2);                // 0
    either.add(BGL_JUMP_32, {jl(4)});  // 1
    test(either, 2, 5);                // 2
    test(either, 3, 5);                // 3
    either.add(BGL_CALL_32, {jl(6)});  // 4
    either.add(BGL_END);               // 5
    either.add(BGL_RETURN);            // 6
    const auto zero = [](int32_t) { return 0; };
    MDLObject a, b, c;
    const GuardAnalysis first(*load(a, masked).BGLCommandList());
    const GuardAnalysis second(*load(b, pair).BGLCommandList());
    const GuardAnalysis third(*load(c, either).BGLCommandList());
    using Values = std::map<int32_t, int32_t>;
    EXPECT_EQ(first.valuesToHold(zero), (Values{{250, 1}}));
    EXPECT_EQ(first.valuesToHold([](int32_t v) { return v == 790 ? 5 : 0; }),
              (Values{{250, 1}, {790, 0}}));
    EXPECT_EQ(first.valuesToHold([](int32_t v) { return v == 250 ? 3 : 0; }), Values{})
        << "it holds already";
    EXPECT_EQ(first.valuesToHold(zero, {250}), std::nullopt) << "250 is the caller's to set";
    EXPECT_EQ(second.valuesToHold(zero), (Values{{1285, 7}}));
    EXPECT_EQ(third.valuesToHold(zero), (Values{{1, 1}}));
    EXPECT_EQ(third.valuesToHold(zero, {1}), (Values{{2, 1}, {3, 1}}));

    // Under the scenario's defaults and with what it sets kept.
    const auto shown = scenarioToShow(first, Scenario().set(790, 1));
    ASSERT_TRUE(shown);
    EXPECT_EQ(shown->changed, (Values{{250, 1}}));
    EXPECT_EQ(shown->scenario.value(790), 1);
    EXPECT_EQ(shown->scenario.value(250), 1);
    EXPECT_FALSE(scenarioToShow(first, Scenario().set(790, 3)));
}
