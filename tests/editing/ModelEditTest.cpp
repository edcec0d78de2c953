#include <velmora/velmora.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace velmora;
using namespace bgltest;

namespace {

// The call, then a body that draws one triangle with each texture it sets.
std::shared_ptr<MDLObject> modelOf(const StreamAssembler& stream,
                                   std::vector<std::string> textures) {
    modelbytes::Model m;
    m.materials = {{}, {}};
    m.textures = std::move(textures);
    m.vertices = {{0, 0, 0, 0, 1, 0, 0, 0}, {2, 0, 0, 0, 1, 0, 1, 0}, {2, 0, 2, 0, 1, 0, 1, 1}};
    m.commands = stream.bytes();
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(m.bytes());
    return model;
}

void appendTriangle(StreamAssembler& a) {
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});
    a.add(BGL_RETURN);
}

// A hangar roof in summer (152-243) and fall (244-334), winter on the other days, with
// material 1; the textures are summer, fall and winter.
std::shared_ptr<MDLObject> hangar() {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});                     // 0
    a.add(BGL_END);                                  // 1
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 2: something in front of the run
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 3
    a.add(IFIN1, {jw(8), w(906), w(244), w(334)});   // 4
    a.add(SET_MATERIAL, {w(1), w(1)});               // 5: fall
    a.add(BGL_JUMP_32, {jl(12)});                    // 6
    a.add(BGL_JUMP_32, {jl(12)});                    // 7
    a.add(IFIN1, {jw(11), w(906), w(152), w(243)});  // 8
    a.add(SET_MATERIAL, {w(1), w(0)});               // 9: summer
    a.add(BGL_JUMP_32, {jl(12)});                    // 10
    a.add(SET_MATERIAL, {w(1), w(2)});               // 11: winter
    appendTriangle(a);                               // 12
    return modelOf(a, {"roof_su.bmp", "roof_fa.bmp", "roof_wi.bmp"});
}

// The texture the walk draws the triangles with on `day`.
std::vector<int32_t> texturesOn(const MDLObject& model, int32_t day) {
    GeometryCollector geometry;
    model.walk(geometry, Scenario().day(day));
    std::vector<int32_t> out;
    for (const auto& t : geometry.triangles())
        out.push_back(geometry.surfaceOf(t).texture);
    return out;
}

std::string streamText(const MDLObject& model) {
    std::string out;
    for (const auto& c : *model.BGLCommandList()) {
        out += BGLOpcodeDictionary::nameOf(c->opcode());
        for (int16_t i = 0; i < 4; ++i)
            out += "," + c->param(i);
        out += ";";
    }
    return out;
}

EditRequest seasons(const std::string& text, bool force = false) {
    EditRequest request;
    request.seasons.push_back(SeasonsEdit::parse(text));
    request.force = force;
    return request;
}

::testing::AssertionResult refused(const std::function<void()>& edit, const std::string& reason) {
    try {
        edit();
    } catch (const EditRefused& e) {
        for (const auto& r : e.reasons()) {
            if (r.find(reason) != std::string::npos) return ::testing::AssertionSuccess();
        }
        return ::testing::AssertionFailure() << "refused for other reasons: " << e.detail();
    }
    return ::testing::AssertionFailure() << "not refused";
}

}  // namespace

TEST(SeasonEdits, ASeasonJoinsTheRunAndTheOthersKeepTheirDays) {
    const auto model = hangar();
    const EditResult result = editModel(*model, seasons("roof_su.bmp:spring=roof_sp.bmp"));
    EXPECT_EQ(result.said(),
              std::vector<std::string>{"seasons of roof_su.bmp: days 60-151 roof_sp.bmp, days "
                                       "152-243 roof_su.bmp, days 244-334 roof_fa.bmp, days "
                                       "335-59 roof_wi.bmp"});
    EXPECT_EQ(model->TextureList()->Item(4)->bitmap(), "roof_sp.bmp");
    for (const auto& [day, texture] :
         std::vector<std::pair<int, int>>{{100, 3}, {200, 0}, {300, 1}, {10, 2}, {350, 2}}) {
        EXPECT_EQ(texturesOn(*model, day), (std::vector<int32_t>{-1, texture})) << day;
    }
    // The run keeps its material.
    for (const auto& c : *model->BGLCommandList()) {
        if (c->opcode() == SET_MATERIAL) {
            EXPECT_EQ(c->param(0), "1");
        }
    }
    // A season named again takes over its own days only.
    editModel(*model, seasons("roof_su.bmp:fall=roof_au.bmp"));
    EXPECT_EQ(texturesOn(*model, 300), (std::vector<int32_t>{-1, 4}));
    EXPECT_EQ(texturesOn(*model, 200), (std::vector<int32_t>{-1, 0}));
}

TEST(SeasonEdits, DaysNoSeasonClaimsKeepTheTextureDrawnToday) {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});
    a.add(BGL_END);
    a.add(SET_MATERIAL, {w(0), w(0)});
    appendTriangle(a);
    const auto model = modelOf(a, {"orange.bmp"});
    const EditResult result = editModel(*model, seasons("orange.bmp:winter=snow.bmp@335-59"));
    EXPECT_EQ(result.said()[0],
              "seasons of orange.bmp: days 60-334 orange.bmp, days 335-59 snow.bmp");
    EXPECT_EQ(texturesOn(*model, 100), std::vector<int32_t>{0});
    EXPECT_EQ(texturesOn(*model, 20), std::vector<int32_t>{1});
    EXPECT_EQ(texturesOn(*model, 340), std::vector<int32_t>{1});
}

TEST(SeasonEdits, WhatWouldBeDroppedIsRefusedAndTheModelStaysAsItWas) {
    const auto model = hangar();
    const std::string before = streamText(*model);
    // A condition first, then seasons that would drop fall: nothing of either is kept.
    EditRequest request = seasons("roof_su.bmp:summer@152-334,spring=roof_sp.bmp");
    request.conditions.push_back(parseCondition("between 798 3 5"));
    EXPECT_TRUE(refused([&] { editModel(*model, request); },
                        "fall (roof_fa.bmp, days 244-334) would be dropped"));
    EXPECT_EQ(streamText(*model), before);
    EXPECT_EQ(model->TextureList()->Count(), 3);

    request.force = true;
    const EditResult forced = editModel(*model, request);
    EXPECT_NE(std::find(forced.said().begin(), forced.said().end(),
                        "forced: fall (roof_fa.bmp, days 244-334) would be dropped"),
              forced.said().end());
    EXPECT_EQ(texturesOn(*model, 300), (std::vector<int32_t>{-1, 0}));
    // More parts of the year than a run holds is no edit at all.
    EXPECT_TRUE(throwsError(
        [&] {
            editModel(*model, seasons("roof_su.bmp:heavywinter=a.bmp@20-30,spring=b.bmp@70-80,"
                                      "fall=c.bmp@250-260"));
        },
        100, "Velmora.ModelEdit"));
}

TEST(ShadowEdits, AnOwnShadowIsKeptUnlessForcedAndEveryCaseSaysWhatItDid) {
    const auto model = hangar();
    EditRequest remove;
    remove.removeKillShadow = true;
    EXPECT_EQ(editModel(*model, remove).said()[0],
              "kill shadow: the model has no shadow; nothing removed");
    RIFFSection& shadow = model->section(model->getRIFFSectionIndex("SHAD"));
    shadow.data = std::string(37, 'x');
    shadow.size = 37;
    EditRequest add;
    add.addKillShadow = true;
    EXPECT_TRUE(refused([&] { editModel(*model, add); },
                        "the model's own shadow (37 bytes) would be replaced"));
    EXPECT_TRUE(refused([&] { editModel(*model, remove); }, "is no kill shadow"));
    EXPECT_EQ(model->getRIFFSectionSize(model->getRIFFSectionIndex("SHAD")), 37);
    add.force = true;
    EXPECT_EQ(editModel(*model, add).said()[0],
              "kill shadow added in place of the model's own shadow (37 bytes)");
    EXPECT_EQ(shadowKindOf(*model), ShadowKind::KillShadow);
    EXPECT_EQ(editModel(*model, add).said()[0],
              "kill shadow: the model has one already; nothing changed");
}

TEST(LightEdits, FixingSaysWhichLightsWereFreedAndWhyOthersKeepTheirTests) {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});
    a.add(BGL_END);
    const auto light = [&a](int variable) {
        a.add(IFMSK, {jw(a.size() + 2), w(variable), w(1)});
        a.add(BGL_LIGHT,
              {w(1), f("1"), f("2"), f("3"), l(0), f("0"), f("0"), l(-1), f("0"), f("0"), f("0")});
    };
    light(120);
    light(652);
    light(120);
    a.add(BGL_RETURN);
    const auto model = modelOf(a, {});
    EditRequest fix;
    fix.fixLights = true;
    const std::vector<std::string> said = editModel(*model, fix).said();
    ASSERT_EQ(said.size(), 3u);
    EXPECT_EQ(said[0],
              "lights: 2 of 3 freed of the tests and overrides in front of them "
              "(2 commands removed)");
    EXPECT_EQ(said[1], "  freed: the lights at commands 4 and 8 of the model as loaded");
    EXPECT_EQ(said[2],
              "  1 stay behind (652 & 1) (command 5): a mask test on a variable above "
              "200 stays");
}

TEST(ConditionEdits, AGuardThatCouldNeverHoldIsRefused) {
    const auto model = hangar();
    EXPECT_TRUE(throwsError([] { parseCondition("between 798 5 3"); }, 100, "Velmora.ModelEdit",
                            "The edit is not understood"));
    // Two ranges of one variable that don't meet can't both hold.
    EditRequest never;
    never.conditions = {parseCondition("between 798 1 2"), parseCondition("between 798 3 4")};
    EXPECT_TRUE(refused([&] { editModel(*model, never); }, "could never hold"));
    never.combine = mOR;
    EXPECT_NO_THROW(editModel(*model, never));
    EditRequest cleared;
    cleared.clearConditions = true;
    cleared.conditions = {parseCondition("mask 120 1")};
    cleared.combine = mNOR;
    cleared.conditions.push_back(parseCondition("mask 120 1"));
    EXPECT_TRUE(refused([&] { editModel(*model, cleared); }, "could never be reached"));
}

TEST(ModelEdits, AFileWrittenIsReadBackAndSaysWhatItHolds) {
    TempDir dir;
    const auto model = hangar();
    EditRequest request = seasons("roof_su.bmp:spring=roof_sp.bmp");
    request.isft = "Hangar 7";
    const EditResult result = editModel(*model, request);
    model->saveMDL(dir.file("out.mdl"));
    EXPECT_EQ(result.checkWritten(dir.file("out.mdl")), result.said());
    // A file that doesn't hold what the edit meant is no success.
    hangar()->saveMDL(dir.file("other.mdl"));
    EXPECT_TRUE(throwsError([&] { result.checkWritten(dir.file("other.mdl")); }, 100,
                            "Velmora.ModelEdit", "The model written does not read back as edited"));
}

TEST(WindingEdits, ReversedTrianglesAreFoundAndTurnedInPlace) {
    // Vertices 0, 1, 2 face up as their normals do; 0, 2, 1 and 2, 1, 0 face down. A corner
    // outside the vertex list is passed over.
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});                     // 0
    a.add(BGL_END);                                  // 1
    a.add(SET_MATERIAL, {w(0), w(0)});               // 2
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(9)});  // 3
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 4
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(2), w(1)});   // 5: reversed
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(2), w(7)});   // 6: no vertex 7
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 7
    a.add(DRAW_TRI_LIST_ITEM, {w(2), w(1), w(0)});   // 8: reversed
    a.add(BGL_RETURN);                               // 9
    const auto model = modelOf(a, {"a.bmp"});
    EXPECT_EQ(reversedTriangles(*model), (std::vector<int32_t>{6, 9}));

    TempDir dir;
    model->saveMDL(dir.file("before.mdl"));
    EditRequest request;
    request.fixWinding = true;
    const EditResult result = editModel(*model, request);
    EXPECT_EQ(result.said(),
              std::vector<std::string>{"winding: 2 reversed triangles turned round"});
    model->saveMDL(dir.file("after.mdl"));
    EXPECT_EQ(result.checkWritten(dir.file("after.mdl")), result.said());
    EXPECT_EQ(std::filesystem::file_size(dir.file("after.mdl")),
              std::filesystem::file_size(dir.file("before.mdl")));
    EXPECT_EQ(model->BGLCommandList()->Item(6)->param(1), "1");
    EXPECT_EQ(model->BGLCommandList()->Item(6)->param(2), "2");
    EXPECT_TRUE(reversedTriangles(*model).empty());
    EXPECT_TRUE(fixWinding(*model).empty()) << "nothing left to turn";
}
