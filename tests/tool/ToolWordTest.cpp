#include <velmora/velmora.h>

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>

// What the tool promises and must keep: options that never take the model for a value, numbers
// checked against their ranges, every failed write an exit status, texts that fit and carry no
// NUL, numbers as numbers in JSON, and seasons added to a run rather than replacing it.
namespace {

using namespace bgltest;
using namespace tooltest;
using nlohmann::json;
namespace stdfs = std::filesystem;

class ToolWord : public ::testing::Test {
  protected:
    // The call, a run of summer (152-243) and fall (244-334) with winter on other days, a
    // light behind a mask test and a size test, all on one triangle.
    std::string hangar(const std::string& name, std::vector<std::string> textures = {
                                                    "roof_su.bmp", "roof_fa.bmp", "roof_wi.bmp"}) {
        StreamAssembler a;
        a.add(velmora::BGL_CALL_32, {jl(2)});                     // 0
        a.add(velmora::BGL_END);                                  // 1
        a.add(velmora::IFIN1, {jw(6), w(906), w(244), w(334)});   // 2
        a.add(velmora::SET_MATERIAL, {w(0), w(1)});               // 3
        a.add(velmora::BGL_JUMP_32, {jl(10)});                    // 4
        a.add(velmora::BGL_JUMP_32, {jl(10)});                    // 5
        a.add(velmora::IFIN1, {jw(9), w(906), w(152), w(243)});   // 6
        a.add(velmora::SET_MATERIAL, {w(0), w(0)});               // 7
        a.add(velmora::BGL_JUMP_32, {jl(10)});                    // 8
        a.add(velmora::SET_MATERIAL, {w(0), w(2)});               // 9
        a.add(velmora::IFSIZEV, {jw(13), w(100), w(40)});         // 10
        a.add(velmora::DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});  // 11
        a.add(velmora::DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});   // 12
        a.add(velmora::IFMSK, {jw(15), w(652), w(4)});            // 13
        a.add(velmora::BGL_LIGHT, {w(1), f("-20"), f("1.5"), f("1E+10"), l(0), f("0"), f("0"),
                                   l(0xFFFF0000), f("0"), f("0"), f("0")});  // 14
        a.add(velmora::BGL_RETURN);                                          // 15
        modelbytes::Model m;
        m.materials = {{}};
        m.textures = std::move(textures);
        m.vertices = {{0, 0, 0, 0, 1, 0, 0, 0}, {2, 0, 0, 0, 1, 0, 1, 0}, {2, 0, 2, 0, 1, 0, 1, 1}};
        m.commands = a.bytes();
        velmora::MDLObject model;
        model.readMDLBytes(m.bytes());
        model.setISFT(std::string("Hangar 7 \xA9 1.0\0", 15));
        model.saveMDL(dir.file(name));
        return dir.file(name);
    }
    json jsonOf(const std::string& args) {
        const ToolRun run = runTool(args);
        EXPECT_EQ(run.status, 0) << args << "\n" << run.err;
        return json::parse(run.out);
    }

    TempDir dir;
};

}  // namespace

TEST_F(ToolWord, OptionsTakeOneValueAnOccurrenceAndNumbersTheirRange) {
    const std::string model = q(hangar("hangar.mdl"));
    const std::string out = q(dir.file("out.mdl"));
    for (const std::string& args :
         {"edit --condition 'between 798 3 5' " + model + " -o " + out,
          "edit --condition='between 798 3 5' " + model + " --condition 'mask 120 1' -o " + out,
          "export-gltf --set 798=3 " + model + " -o " + q(dir.file("x.glb")) + " --set 652=4"}) {
        const ToolRun run = runTool(args);
        EXPECT_EQ(run.status, 0) << args << "\n" << run.err;
    }
    EXPECT_EQ(jsonOf("info --json " + out)["guard"]["formula"], "798 in 3..5 and (120 & 1)");

    struct Usage {
        std::string args;
        const char* says;
    };
    const Usage usage[] = {
        {"render " + model + " -o a.png --sheet 0", "--sheet: give a whole number from 1 to 64"},
        {"info " + model + " --jobs -3", "--jobs: give a whole number from 1 to 1024, not '-3'"},
        {"render " + model + " -o a.png --heading north", "--heading: give a number, not 'north'"},
        {"render " + model + " -o a.png --elevation 95", "from -90 to 90"},
        {"export-gltf " + model + " -o a.glb --day 0", "--day: give a whole number from 1 to 366"},
        {"export-gltf " + model + " -o a.glb --set 798=x", "the value 'x' is no whole number"},
        {"edit " + model + " --condition 'between 798 5 3'",
         "the minimum 5 is above the maximum 3, so the test could never hold"},
    };
    for (const Usage& u : usage) {
        const ToolRun run = runTool(u.args, dir.path());
        EXPECT_EQ(run.status, 2) << u.args;
        EXPECT_NE(run.err.find(u.says), std::string::npos) << run.err;
    }
}

TEST_F(ToolWord, EveryFailedWriteIsExitOneNamingWhatTheUserGave) {
    const std::string model = q(hangar("hangar.mdl"));
    for (const std::string& args : {"export-asm " + model + " -o -", "info --json " + model,
                                    "commands " + model, "edit " + model + " -o - --clean-dict"}) {
        const ToolRun run = runTool(args + " >/dev/full");
        EXPECT_EQ(run.status, 1) << args;
        EXPECT_NE(run.err.find("standard output"), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("No space left on device"), std::string::npos) << run.err;
    }
    // A pipe closed before a long listing is through.
    StreamAssembler many;
    for (int i = 0; i < 4000; ++i)
        many.add(velmora::BGL_ZBIAS, {w(i)});
    modelbytes::Model m;
    m.commands = many.bytes();
    writeFile(dir.file("many.mdl"), m.bytes());
    const std::string line = "(LSAN_OPTIONS=suppressions=" VELMORA_TOOL_TEST_DIR
                             "/lsan-suppressions.txt " VELMORA_TOOL " commands " +
                             q(dir.file("many.mdl")) + " 2>" + q(dir.file("err")) + "; echo $? >" +
                             q(dir.file("status")) + ") | head -c 1 >/dev/null";
    ASSERT_EQ(std::system(line.c_str()), 0);
    EXPECT_EQ(readFile(dir.file("status")), "1\n");
    EXPECT_NE(readFile(dir.file("err")).find("Broken pipe"), std::string::npos);
    stdfs::create_directories(dir.file("empty/deeper"));
    const ToolRun none = runTool("info " + q(dir.file("empty")));
    EXPECT_EQ(none.status, 1);
    EXPECT_NE(none.err.find("empty: holds no .mdl file"), std::string::npos) << none.err;
    const ToolRun proc = runTool("export-asm " + model + " -o /proc/x.asm");
    EXPECT_EQ(proc.status, 1);
    EXPECT_NE(proc.err.find("/proc/x.asm"), std::string::npos) << proc.err;
    EXPECT_EQ(proc.err.find(".velmora-"), std::string::npos) << proc.err;
}

TEST_F(ToolWord, TextsFitTheirColumnsCarryNoZeroAndNameFilesInUtf8) {
    const std::string longName(40, 'w');
    const std::string model = hangar("long.mdl", {longName + ".bmp",
                                                  "fa\xE7"
                                                  "ade.bmp",
                                                  "roof_wi.bmp"});
    const ToolRun info = runTool("info " + q(model));
    ASSERT_EQ(info.status, 0) << info.err;
    EXPECT_EQ(info.out.find('\0'), std::string::npos);
    EXPECT_NE(info.out.find("ISFT            Hangar 7 \xC2\xA9 1.0\n"), std::string::npos);
    EXPECT_NE(info.out.find(longName + ".bmp  TEXTURE_AIRCRAFT"), std::string::npos) << info.out;
    EXPECT_NE(info.out.find("fa\xC3\xA7"
                            "ade.bmp" +
                            std::string(36, ' ') + "TEXTURE_AIRCRAFT"),
              std::string::npos)
        << info.out;

    stdfs::create_directories(dir.file("flt"));
    const ToolRun flt = runTool("export-flt " + q(model) + " -o " + q(dir.file("flt/m.flt")));
    ASSERT_EQ(flt.status, 0) << flt.err;
    EXPECT_TRUE(
        stdfs::exists(dir.file("flt/fa\xC3\xA7"
                               "ade.bmp.attr")))
        << dir.listing("flt");
}

TEST_F(ToolWord, JsonGivesNumbersAsNumbersWithTheirTextWhereItDiffers) {
    const std::string model = q(hangar("hangar.mdl"));
    const json report = jsonOf("info --json " + model);
    EXPECT_EQ(report["format"], 3);
    EXPECT_EQ(report["isft"], "Hangar 7 \xC2\xA9 1.0") << "the text ends at its zero";
    const json& light = report["lights"][0];
    EXPECT_EQ(light["at"], json::array({-20.0, 1.5, 1e10}));
    EXPECT_EQ(light["colour"], "#FF0000");
    EXPECT_EQ(light["alpha"], 255);
    EXPECT_EQ(light["tests"], json::array({"(652 & 4)"}));
    EXPECT_EQ(report["sizeTests"][0]["size"], 100);
    EXPECT_EQ(report["sizeTests"][0]["pixels"], 40);
    const json commands = jsonOf("commands --json " + model)["commands"];
    EXPECT_EQ(commands[2]["params"], json::array({28, 906, 244, 334}));  // 28: bytes ahead
    EXPECT_EQ(commands[14]["params"][2], 1.5);
    EXPECT_EQ(commands[14]["params"][3], (json{{"value", 1e10}, {"text", "1E+10"}}));
}

TEST_F(ToolWord, SeasonsJoinTheRunAndWhatWouldBeDroppedIsRefused) {
    const std::string model = q(hangar("hangar.mdl"));
    const std::string out = dir.file("out.mdl");
    const ToolRun added =
        runTool("edit " + model + " -o " + q(out) + " --seasons 'roof_su.bmp:spring=roof_sp.bmp'");
    ASSERT_EQ(added.status, 0) << added.err;
    EXPECT_EQ(added.out,
              "seasons of roof_su.bmp: days 60-151 roof_sp.bmp, days 152-243 roof_su.bmp, days "
              "244-334 roof_fa.bmp, days 335-59 roof_wi.bmp\nsaved " +
                  out + "\n");
    const ToolRun dropped = runTool("edit " + q(out) + " -o " + q(dir.file("dropped.mdl")) +
                                    " --seasons 'roof_su.bmp:summer@60-334'");
    EXPECT_EQ(dropped.status, 1);
    EXPECT_NE(dropped.err.find("refused: spring (roof_sp.bmp, days 60-151) would be dropped; "
                               "fall (roof_fa.bmp, days 244-334) would be dropped"),
              std::string::npos)
        << dropped.err;
    EXPECT_NE(dropped.err.find("use --force to write the seasons anyway"), std::string::npos);
    EXPECT_FALSE(stdfs::exists(dir.file("dropped.mdl")));

    const ToolRun windsock =
        runTool("edit " + model + " --seasons 'roof_fa.bmp:winter=snow.bmp@335-59'");
    EXPECT_EQ(windsock.status, 0) << windsock.err;
    EXPECT_NE(windsock.out.find("days 152-243 roof_su.bmp, days 244-334 roof_fa.bmp, days "
                                "335-59 snow.bmp"),
              std::string::npos)
        << windsock.out;
}
