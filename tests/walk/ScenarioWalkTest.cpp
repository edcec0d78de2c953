#include <velmora/DrawListSink.h>
#include <velmora/GeometryCollector.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <sstream>

using namespace velmora;
using namespace bgltest;

namespace {

// Two materials, a texture, and three vertices a triangle.
std::string modelWith(const StreamAssembler& stream) {
    modelbytes::Model m;
    m.materials = {{{1, 0, 0, 1}, {}, {}, {}, 0}, {{0, 0, 1, 1}, {}, {}, {}, 0}};
    m.textures = {"wall.bmp"};
    for (int i = 0; i < 9; ++i) {
        const auto f = static_cast<float>(i);
        m.vertices.push_back({f, 10 + f, 20 + f, 0, 1, 0, f / 8, 1});
    }
    m.commands = stream.bytes();
    return m.bytes();
}

// Each operation as "name args", one a line.
std::string operationsOf(MDLObject& model, const Scenario& scenario) {
    DrawListRecorder recorder;
    model.glGenerateDrawList(recorder, scenario);
    std::ostringstream out;
    out << std::setprecision(10);
    for (const auto& op : recorder.operations()) {
        out << op.name;
        for (const double a : op.args)
            out << " " << a;
        out << "\n";
    }
    return out.str();
}

std::string triangle(int first, const std::string& material) {
    std::ostringstream out;
    out << "glBindTexture 3553 4294967295\n" << material << "glBegin 9\nglNormal3f 0 0 1\n";
    for (int v = first; v < first + 3; ++v) {
        out << "glTexCoord2f " << v / 8.0 << " 1\nglVertex3f " << v << " " << 20 + v << " "
            << 10 + v << "\n";
    }
    return out.str() + "glEnd\n";
}

}  // namespace

TEST(ScenarioWalk, FollowsCallsJumpsAndTestsUnderTheScenario) {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(3)});                     // 0: the body
    a.add(BGL_END);                                  // 1
    a.add(SET_MATERIAL, {w(0), w(0)});               // 2: never on the way
    a.add(IFIN1, {jw(7), w(798), w(3), w(5)});       // 3: complexity 3 to 5, else to 7
    a.add(SET_MATERIAL, {w(0), w(-1)});              // 4: red
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 5
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 6
    a.add(IFMSK, {jw(11), w(652), w(4)});            // 7: at night only
    a.add(SET_MATERIAL, {w(1), w(-1)});              // 8: blue
    a.add(DRAW_TRI_LIST_BEGIN, {w(3), w(0), w(3)});  // 9
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 10
    a.add(IFSIZEV, {jw(13), w(10), w(50)});          // 11: size 10 seen at 50 pixels or more
    a.add(jump, {jw(16)});                           // 12: detailed: past the coarse part
    a.add(SET_MATERIAL, {w(1), w(-1)});              // 13: the coarse part
    a.add(DRAW_TRI_LIST_BEGIN, {w(6), w(0), w(3)});  // 14
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 15
    a.add(BGL_RETURN);                               // 16
    MDLObject model;
    model.readMDLBytes(modelWith(a));

    const std::string red =
        "glMaterialfv 1028 4609 1 0 0 1\nglMaterialfv 1028 4608 0 0 0 0\n"
        "glMaterialfv 1028 4610 0 0 0 0\nglMaterialfv 1028 5632 0 0 0 0\n";
    const std::string open = "glGenLists 1\nglNewList 1 4864\n";
    // Complexity 5 by default, day: the red part and the detailed branch.
    EXPECT_EQ(operationsOf(model, Scenario()), open + triangle(0, red) + "glEndList\n");
    // Sparse scenery at night, seen from far away: the blue part and the coarse branch.
    const std::string ops =
        operationsOf(model, Scenario().complexity(1).night().viewingDistance(1000));
    EXPECT_EQ(ops.find("glMaterialfv 1028 4609 1 0 0 1"), std::string::npos) << ops;
    EXPECT_NE(ops.find("glVertex3f 3 23 13"), std::string::npos) << ops;
    EXPECT_NE(ops.find("glVertex3f 6 26 16"), std::string::npos) << ops;
    EXPECT_EQ(ops.find("glVertex3f 0 20 10"), std::string::npos) << ops;
    // The flat walk draws all four SET_MATERIALs and the three triangles, on or off the way.
    DrawListRecorder flat;
    model.glGenerateDrawList(flat);
    int begins = 0;
    for (const auto& op : flat.operations())
        begins += op.name == "glBegin";
    EXPECT_EQ(begins, 3);
}

TEST(ScenarioWalk, ALoopingStreamIsAnErrorThatNamesWhereItWas) {
    StreamAssembler a;
    a.add(BGL_CALL_32, {jl(2)});
    a.add(BGL_END);
    a.add(IFIN1, {jw(2), w(906), w(1), w(10)});  // fails back onto itself on most days
    a.add(BGL_RETURN);
    MDLObject model;
    model.readMDLBytes(modelWith(a));
    DrawListRecorder recorder;
    EXPECT_TRUE(throwsError([&] { model.glGenerateDrawList(recorder, Scenario()); }, 100,
                            "Velmora.MDLObject", "The walk of the command stream does not end"));
    model.glGenerateDrawList(recorder, Scenario().day(5));  // holds on day 5: no loop
}

TEST(ScenarioWalk, AMaskTestHoldsOnAnyOfItsBitsAndUnsetVariablesTakeTheirDefaults) {
    EXPECT_EQ(Scenario().value(906), 172);
    EXPECT_EQ(Scenario().value(798), 5);
    EXPECT_EQ(Scenario().value(652), 1);
    EXPECT_EQ(Scenario().value(300), 0);
    EXPECT_EQ(Scenario().season(heavywinter).value(906), 35);

    // Each test guards one triangle (the first vertex tells which) and jumps over it when it fails.
    StreamAssembler a;
    a.add(SET_MATERIAL, {w(0), w(-1)});              // 0
    a.add(IFIN1, {jw(4), w(798), w(5), w(5)});       // 1: the densest scenery only
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 2
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 3
    a.add(IFMSK, {jw(7), w(652), w(6)});             // 4: dusk or night
    a.add(DRAW_TRI_LIST_BEGIN, {w(3), w(0), w(3)});  // 5
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 6
    a.add(IFIN1, {jw(10), w(906), w(30), w(40)});    // 7: early February
    a.add(DRAW_TRI_LIST_BEGIN, {w(6), w(0), w(3)});  // 8
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 9
    a.add(BGL_END);                                  // 10
    MDLObject model;
    model.readMDLBytes(modelWith(a));
    const auto drawn = [&model](const Scenario& scenario) {
        GeometryCollector geometry;
        model.walk(geometry, scenario);
        std::string firsts;
        for (const auto& t : geometry.triangles())
            firsts += std::to_string(static_cast<int>(t.corners[0].position[0]));
        return firsts;
    };
    EXPECT_EQ(drawn(Scenario()), "0");
    EXPECT_EQ(drawn(Scenario().set(652, 2)), "03") << "dusk holds one bit of the mask";
    EXPECT_EQ(drawn(Scenario().night()), "03");
    EXPECT_EQ(drawn(Scenario().season(heavywinter).complexity(4)), "6");
}
