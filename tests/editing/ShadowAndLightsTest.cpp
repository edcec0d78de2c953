#include <velmora/MDLObject.h>

#include "EditingHelpers.h"
#include "ReferenceEdits.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace edittest;
using testbytes::hex;

namespace {

constexpr int16_t kRIFF = 0;
constexpr int16_t kDICT = 3;
constexpr int16_t kSHAD = 5;

std::shared_ptr<BGLCommand> light() {
    return cmd(BGL_LIGHT, {"0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"});
}
std::shared_ptr<BGLCommand> maskTest(int variable, int32_t jump = 0) {
    return cmd(IFMSK, {"", std::to_string(variable), "1"}, jump);
}
std::shared_ptr<BGLCommand> baseOverride() {
    return cmd(VAR_BASE_OVERRIDE, {"0"});
}
std::shared_ptr<BGLCommand> other() {
    return cmd(SETWRD, {"1", "2"});
}

// Frees the lights of a model holding `commands` and a "DICT" section.
std::shared_ptr<MDLObject> fixed(std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    auto model = modelWith(*listOf(commands), testbytes::section("DICT", "dict"));
    model->fixLights();
    return model;
}

}  // namespace

TEST(KillShadow, TwelveBytesOnLoadedAndUnloadedModels) {
    const std::string killShadow = "42 47 4C 20 00 00 00 00 BD 00 22 00";
    MDLObject model;
    model.readMDLBytes(bareModel(testbytes::section("SHAD", "real shadow")));
    model.updateSectionSize();  // the sizes as a save has them: "TEXT" is always there
    const int32_t riffWithout = model.getRIFFSectionSize(kRIFF) - (11 + 8);
    model.addKillShadow();
    model.addKillShadow();
    EXPECT_EQ(hex(model.getRIFFSectionData(kSHAD)), killShadow);
    EXPECT_EQ(model.getRIFFSectionSize(kSHAD), 12);
    EXPECT_EQ(model.getRIFFSectionSize(kRIFF), riffWithout + 12 + 8);

    TempDir dir;
    model.saveMDL(dir.file("shadow.mdl"));
    const std::string saved = readFile(dir.file("shadow.mdl"));
    EXPECT_EQ(hex(sectionPayload(saved, "SHAD")), killShadow);
    MDLObject again;
    again.readMDLBytes(saved);
    const int32_t savedWithout = again.getRIFFSectionSize(kRIFF) - (12 + 8);
    EXPECT_EQ(hex(again.getRIFFSectionData(kSHAD)), killShadow);
    again.removeKillShadow();
    EXPECT_EQ(again.getRIFFSectionSize(kSHAD), 0);
    EXPECT_EQ(again.getRIFFSectionData(kSHAD), "");
    EXPECT_EQ(again.getRIFFSectionSize(kRIFF), savedWithout);
    again.saveMDL(dir.file("plain.mdl"));
    EXPECT_EQ(readFile(dir.file("plain.mdl")).find("SHAD"), std::string::npos);
    again.removeKillShadow();
    EXPECT_EQ(again.getRIFFSectionSize(kRIFF), savedWithout);

    // A model never loaded gets the section and no error; the sizes wait for a save.
    MDLObject unloaded;
    unloaded.addKillShadow();
    EXPECT_EQ(hex(unloaded.getRIFFSectionData(kSHAD)), killShadow);
    EXPECT_EQ(unloaded.getRIFFSectionSize(kSHAD), 12);
    EXPECT_EQ(unloaded.getRIFFSectionSize(kRIFF), 0);
    unloaded.removeKillShadow();
    EXPECT_EQ(unloaded.getRIFFSectionSize(kSHAD), 0);
    EXPECT_TRUE(throwsPlatform([&] { unloaded.updateSectionSize(); }, 91));
}

TEST(FixLights, TestsAndOverridesInFrontOfLightsGo) {
    // Nothing of interest in front of a light; two lights in a row; DICT emptied all the same.
    auto model = fixed({other(), light(), light(), baseOverride(), other(), light()});
    EXPECT_EQ(shape(*model->BGLCommandList()),
              "SETWRD BGL_LIGHT BGL_LIGHT VAR_BASE_OVERRIDE SETWRD BGL_LIGHT");
    EXPECT_EQ(model->getRIFFSectionSize(kDICT), 0);
    EXPECT_EQ(model->getRIFFSectionData(kDICT), "");

    // 200 goes and 201 stays; from the far end 300, an override, 100: the two nearer go. The
    // jumps onto removed commands lead to the ones that took their places.
    model = fixed({cmd(BGL_JUMP_32, {}, 3), cmd(BGL_JUMP_32, {}, 7), maskTest(200, 4), light(),
                   maskTest(300, 9), baseOverride(), maskTest(100, 9), light(), maskTest(201, 10),
                   light(), cmd(BGL_JUMP_32, {}, 6)});
    EXPECT_EQ(
        shape(*model->BGLCommandList()),
        "BGL_JUMP_32>3 BGL_JUMP_32>5 BGL_LIGHT IFMSK>6 BGL_LIGHT IFMSK>7 BGL_LIGHT BGL_JUMP_32>5");
    EXPECT_EQ(model->BGLCommandList()->Item(4)->param(1), "300");

    // Keys that a host gave to commands stay with them.
    model = fixed({other(), maskTest(7), light()});
    model->BGLCommandList()->Add(other(), "Tail", 1);
    model->BGLCommandList()->Add(maskTest(9), "", 3);
    model->fixLights();
    EXPECT_EQ(shape(*model->BGLCommandList()), "SETWRD SETWRD BGL_LIGHT");
    EXPECT_EQ(model->BGLCommandList()->Item("tail"), model->BGLCommandList()->Item(1));
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->Add(nullptr, "TAIL"); }, 457));

    // A model without lights loses only its DICT.
    model = fixed({other(), maskTest(5)});
    EXPECT_EQ(shape(*model->BGLCommandList()), "SETWRD IFMSK>0");
}

TEST(FixLights, ALightAtTheHeadFailsAndKeepsWhatWasDone) {
    for (auto commands : {std::vector{light(), other()}, std::vector{maskTest(300), light()},
                          std::vector{baseOverride(), maskTest(1), light()}}) {
        auto model = modelWith(*listOf({}), testbytes::section("DICT", "dict"));
        for (auto& c : commands)
            model->BGLCommandList()->Add(c);
        EXPECT_TRUE(throwsPlatform([&] { model->fixLights(); }, 9));
        EXPECT_EQ(model->getRIFFSectionSize(kDICT), 0);
    }
    // The removals before the failure stay done; the light behind is never reached.
    auto model = modelWith(*listOf({other(), maskTest(1), light(), maskTest(50), light()}));
    model->BGLCommandList()->Item(1)->opcode(VAR_BASE_OVERRIDE);
    EXPECT_TRUE(throwsPlatform([&] { model->fixLights(); }, 9));
    EXPECT_EQ(shape(*model->BGLCommandList()), "BGL_LIGHT IFMSK>0 BGL_LIGHT");

    auto noNumber = modelWith(*listOf({other(), maskTest(1), cmd(IFMSK, {"", "", "1"}), light()}));
    EXPECT_TRUE(throwsPlatform([&] { noNumber->fixLights(); }, 13));
    EXPECT_TRUE(throwsPlatform([] { MDLObject().fixLights(); }, 91));
}

TEST(FixLights, TheOnePassRebuildMatchesTheSingleSteps) {
    int removing = 0;
    for (uint32_t seed = 1; seed <= 300; ++seed) {
        Dice dice(seed);
        auto list = std::make_shared<BGLCommandList>();
        list->Add(other());
        const int length = 2 + dice.below(40);
        for (int i = 0; i < length; ++i) {
            switch (dice.below(8)) {
                case 0:
                case 1:
                    list->Add(light());
                    break;
                case 2:
                    list->Add(baseOverride());
                    break;
                case 3:
                    list->Add(maskTest(dice.below(2) ? 200 : 201));
                    break;
                case 4:
                    list->Add(maskTest(dice.below(400)));
                    break;
                case 5:
                    list->Add(cmd(BGL_ANIMATE));
                    break;
                case 6:
                    list->Add(cmd(BGL_JUMP_32));
                    break;
                default:
                    list->Add(other());
                    break;
            }
        }
        // Now and then a light near the head, to see the failures match too.
        if (dice.below(10) == 0) list->Item(1)->opcode(dice.below(2) ? BGL_LIGHT : IFMSK);
        scatterJumps(*list, dice);
        auto fast = modelWith(*list);
        auto plain = modelWith(*deepCopy(*list));
        const int fastError = errorOf([&] { fast->fixLights(); });
        const int plainError = errorOf([&] { reference::fixLights(*plain); });
        removing += fast->BGLCommandList()->Count() < list->Count() ? 1 : 0;
        ASSERT_EQ(fastError, plainError) << "seed " << seed;
        ASSERT_EQ(fullShape(*fast->BGLCommandList()), fullShape(*plain->BGLCommandList()))
            << "seed " << seed;
    }
    EXPECT_GT(removing, 100);
}
