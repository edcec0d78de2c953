#include <velmora/velmora.h>

#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>

namespace {

using namespace bgltest;
using namespace tooltest;
using nlohmann::json;
namespace stdfs = std::filesystem;

// A triangle drawn with texture 0, then the end of the body.
void appendBody(StreamAssembler& a) {
    a.add(velmora::SET_MATERIAL, {w(0), w(0)});
    a.add(velmora::DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(3)});
    a.add(velmora::DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});
    a.add(velmora::BGL_RETURN);
}

std::string modelOf(const StreamAssembler& stream,
                    std::vector<std::string> textures = {"wall.bmp", "unused.bmp"}) {
    modelbytes::Model m;
    m.materials = {{}};
    m.textures = std::move(textures);
    m.vertices = {{0, 0, 0, 0, 1, 0, 0, 0}, {2, 0, 0, 0, 1, 0, 1, 0}, {2, 0, 2, 0, 1, 0, 1, 1}};
    m.commands = stream.bytes();
    return m.bytes();
}

// The call at 0, BGL_END at 1, the body from 2.
StreamAssembler plainCall() {
    StreamAssembler a;
    a.add(velmora::BGL_CALL_32, {jl(2)});
    a.add(velmora::BGL_END);
    appendBody(a);
    return a;
}

// Fresh samples, made by the sample program, in a folder of their own.
class ToolTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(makeSamples(dir.file("samples"))); }
    std::string sample(const std::string& name) const { return dir.file("samples/" + name); }
    std::string write(const std::string& name, const std::string& bytes) const {
        writeFile(dir.file(name), bytes);
        return dir.file(name);
    }
    // A model built by the library: the plain call under these conditions.
    std::string conditioned(const std::string& name, velmora::eMultiCondition combination,
                            std::vector<std::shared_ptr<velmora::Condition>> conditions) {
        velmora::MDLObject model;
        model.readMDLBytes(modelOf(plainCall()));
        auto list = model.BGLCommandList()->getConditions(-1);
        for (auto& c : conditions)
            list->Add(c);
        list->multiCondition(combination);
        model.BGLCommandList()->addCondition(list);
        model.saveMDL(dir.file(name));
        return dir.file(name);
    }
    json info(const std::string& path) {
        const ToolRun run = runTool("info --json " + q(path));
        EXPECT_EQ(run.status, 0) << run.err;
        return json::parse(run.out);
    }

    TempDir dir;
};

std::shared_ptr<velmora::Condition> condition(velmora::CondType type, const char* var, int min,
                                              int max = 0) {
    auto c = std::make_shared<velmora::Condition>();
    c->cType(type);
    c->var(var);
    c->min(static_cast<int16_t>(min));
    c->max(static_cast<int16_t>(max));
    return c;
}

}  // namespace

TEST_F(ToolTest, CommittedSamplesAreWhatTheSampleProgramMakes) {
    for (const char* name :
         {"building.mdl", "lightpad.mdl", "tree.mdl", "scenery.bgl", "textures/wall_summer.bmp",
          "textures/wall_winter.bmp", "textures/roof.bmp"}) {
        EXPECT_EQ(readFile(sample(name)), readFile(std::string(VELMORA_SAMPLES_DIR) + "/" + name))
            << name;
    }
}

TEST_F(ToolTest, InfoShowsTheGuardAsItReallyEvaluates) {
    using namespace velmora;
    const auto between = condition(Between, "798", 3, 5);
    const auto mask12 = condition(mask, "120", 1);
    const auto other = condition(Between, "120", 1, 4);
    StreamAssembler ifin2;  // IFIN2 fails to the command behind the call
    ifin2.add(IFIN2, {jw(2), w(798), w(3), w(5), w(906), w(1), w(365)});
    ifin2.add(BGL_CALL_32, {jl(3)});
    ifin2.add(BGL_END);
    appendBody(ifin2);
    StreamAssembler mixed;  // an IFIN1, a size test and a SETWRD in front of the call
    mixed.add(IFIN1, {jw(4), w(798), w(3), w(5)});
    mixed.add(IFSIZEV, {jw(4), w(100), w(4)});
    mixed.add(SETWRD, {w(900), w(1)});
    mixed.add(BGL_CALL_32, {jl(5)});
    mixed.add(BGL_END);
    appendBody(mixed);
    struct Case {
        std::string path;
        std::string formula;
        bool canRewrite;
        const char* combine;  // as the editor reads it
    };
    const Case cases[] = {
        {write("ifin2.mdl", modelOf(ifin2)), "(798 in 3..5 and 906 in 1..365)", false, "and"},
        {write("mixed.mdl", modelOf(mixed)), "798 in 3..5 and size(100) >= 4 px", false, "and"},
        {conditioned("and.mdl", mAND, {between, mask12}), "798 in 3..5 and (120 & 1)", true, "and"},
        // Under or, not and nor the mask test stands behind a jump and is never reached.
        {conditioned("or.mdl", mOR, {between, mask12}), "798 in 3..5", false, "and"},
        {conditioned("not.mdl", mNOT, {between, mask12}), "798 not in 3..5", false, "and"},
        {conditioned("nor.mdl", mNOR, {between, mask12}), "798 not in 3..5", false, "and"},
        {conditioned("or2.mdl", mOR, {between, other}), "120 in 1..4 or 798 in 3..5", true, "or"},
        {conditioned("not2.mdl", mNOT, {between, other}), "not (120 in 1..4 or 798 in 3..5)", true,
         "not"},
        {conditioned("nor2.mdl", mNOR, {between, other}), "not (120 in 1..4 and 798 in 3..5)", true,
         "nor"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.path);
        const json guard = info(c.path)["guard"];
        EXPECT_EQ(guard["formula"], c.formula);
        EXPECT_EQ(guard["editor"]["canRewrite"], c.canRewrite);
        EXPECT_EQ(guard["editor"]["combine"], c.combine);
        const ToolRun text = runTool("info " + q(c.path));
        EXPECT_NE(text.out.find("drawn when " + c.formula + " ("), std::string::npos) << text.out;
    }
    const json mixedGuard = info(cases[1].path)["guard"];
    EXPECT_EQ(mixedGuard["otherCommands"][0]["opcode"], "SETWRD");
    EXPECT_FALSE(info(cases[3].path)["guard"]["tests"][1]["reachable"].get<bool>());
}

TEST_F(ToolTest, EditRefusesToLoseCommandsUnlessForcedAndChecksWhatItWrote) {
    StreamAssembler ifin2;
    ifin2.add(velmora::IFIN2, {jw(2), w(798), w(3), w(5), w(906), w(1), w(365)});
    ifin2.add(velmora::BGL_CALL_32, {jl(3)});
    ifin2.add(velmora::BGL_END);
    appendBody(ifin2);
    const std::string input = write("ifin2.mdl", modelOf(ifin2));
    const std::string before = readFile(input);
    const std::string out = dir.file("out.mdl");
    struct Case {
        std::string args;
        const char* message;
    };
    const Case refusals[] = {
        {q(input) + " --condition 'mask 120 1'",
         "command 1 (IFIN2 (798 in 3..5 and 906 in "
         "1..365)) would be deleted"},
        {q(input) + " --rotate user", "would be deleted"},
        {q(sample("building.mdl")) + " --clear-conditions --condition 'between 798 3 5' "
                                     "--condition 'mask 120 1' --combine or",
         "command 4 (IFMSK (120 & 1)) could never be reached"},
    };
    for (const Case& c : refusals) {
        const ToolRun run = runTool("edit " + c.args + " -o " + q(out));
        EXPECT_EQ(run.status, 1) << c.args;
        EXPECT_NE(run.err.find(c.message), std::string::npos) << run.err;
        EXPECT_NE(run.err.find("--force"), std::string::npos) << run.err;
        EXPECT_FALSE(stdfs::exists(out)) << c.args;
    }
    EXPECT_EQ(readFile(input), before) << "the input is untouched";
    // A mask behind the jumps of or: the way out is to combine with and.
    const ToolRun mask = runTool("edit " + refusals[2].args + " -o " + q(out));
    EXPECT_NE(mask.err.find("behind the jumps of or, not and nor; combine it with and"),
              std::string::npos)
        << mask.err;
    // The editor misreads an or whose mask is never reached; cleared, nothing is misread.
    const std::string misread =
        conditioned("misread.mdl", velmora::mOR,
                    {condition(velmora::Between, "798", 3, 5), condition(velmora::mask, "120", 1)});
    const ToolRun kept = runTool("edit " + q(misread) + " --condition 'between 798 1 2'");
    EXPECT_EQ(kept.status, 1);
    EXPECT_NE(kept.err.find("reads it as"), std::string::npos) << kept.err;
    const ToolRun cleared =
        runTool("edit " + q(misread) + " --clear-conditions --condition 'between 798 1 2' -o " +
                q(dir.file("cleared.mdl")));
    EXPECT_EQ(cleared.status, 0) << cleared.err;
    EXPECT_EQ(info(dir.file("cleared.mdl"))["guard"]["formula"], "798 in 1..2");

    const ToolRun forced =
        runTool("edit " + q(input) + " -o " + q(out) + " --condition 'mask 120 1' --force");
    ASSERT_EQ(forced.status, 0) << forced.err;
    EXPECT_NE(forced.out.find("forced: command 1 (IFIN2"), std::string::npos) << forced.out;
    EXPECT_EQ(info(out)["guard"]["formula"], "(120 & 1)");

    // A jump back to the command in front can't be saved (offsets only lead forward): the model
    // written would loop where the loaded one reaches the call, and the read-back refuses it.
    StreamAssembler backwards;
    backwards.add(velmora::IFIN1, {jw(2), w(798), w(3), w(5)});  // fails to the jump back
    backwards.add(velmora::BGL_JUMP_32, {jl(3)});
    backwards.add(
        velmora::BGL_JUMP_32,
        {Field{Field::Long, 0, {}, 1, -8}});  // an offset of -2 or less: the command in front
    backwards.add(velmora::BGL_CALL_32, {jl(5)});
    backwards.add(velmora::BGL_END);
    appendBody(backwards);
    const std::string looped = write("backwards.mdl", modelOf(backwards));
    EXPECT_EQ(info(looped)["guard"]["formula"], "always");
    const ToolRun readBack = runTool("edit " + q(looped) + " -o " + q(out) + " --add-kill-shadow");
    EXPECT_EQ(readBack.status, 1);
    EXPECT_NE(readBack.err.find("reads back with the guard \"798 in 3..5\", not \"always\""),
              std::string::npos)
        << readBack.err;
    EXPECT_EQ(info(out)["guard"]["formula"], "(120 & 1)") << "the old output stays as it was";
}

TEST_F(ToolTest, JsonOfLatinNamesAndTextureSizes) {
    const std::string latin = write("latin.mdl", modelOf(plainCall(), {std::string("hangar_fa\xE7"
                                                                                   "ade_lm.bmp"),
                                                                       "b"}));
    const json texture = info(latin)["textures"][0];
    EXPECT_EQ(texture["name"],
              "hangar_fa\xC3\xA7"
              "ade_lm.bmp");
    EXPECT_EQ(texture["nameBytes"], "68616e6761725f6661e76164655f6c6d2e626d70");
    const ToolRun commands = runTool("commands --json " + q(latin));
    ASSERT_EQ(commands.status, 0);
    const json stream = json::parse(commands.out);
    EXPECT_EQ(stream["commands"][0]["name"], "BGL_CALL_32");
    EXPECT_EQ(stream["commands"][0]["jumps"][0]["target"], 3);

    // A texture no triangle draws keeps its size and is named; the 16-bit limit is named.
    velmora::MDLObject sized;
    sized.readMDL(latin);
    sized.TextureList()->Item(2)->size(7.5f);
    sized.saveMDL(dir.file("sized.mdl"));
    const ToolRun measured = runTool("edit " + q(dir.file("sized.mdl")) + " -o " +
                                     q(dir.file("measured.mdl")) + " --recalc-texture-sizes");
    ASSERT_EQ(measured.status, 0) << measured.err;
    EXPECT_NE(measured.out.find("kept the old size of the textures no triangle draws: b"),
              std::string::npos)
        << measured.out;
    const json sizes = info(dir.file("measured.mdl"))["textures"];
    EXPECT_FLOAT_EQ(sizes[0]["size"].get<float>(), 2.0f);
    EXPECT_FLOAT_EQ(sizes[1]["size"].get<float>(), 7.5f);
    StreamAssembler high = plainCall();
    high.ops[3].fields[0] = w(40000);  // the triangle list is based above vertex 32,767
    const ToolRun limit =
        runTool("edit " + q(write("high.mdl", modelOf(high))) + " --recalc-texture-sizes");
    EXPECT_EQ(limit.status, 1);
    EXPECT_NE(limit.err.find("starts at vertex 40,000"), std::string::npos) << limit.err;
    EXPECT_NE(limit.err.find("32,767"), std::string::npos) << limit.err;
}

TEST_F(ToolTest, EveryCommandFollowsOneRuleForOutputs) {
    const std::string model = q(sample("building.mdl"));
    const std::string readOnly = write("taken", "old bytes");
    chmod(readOnly.c_str(), 0444);
    stdfs::create_directories(dir.file("folder"));
    const std::vector<std::string> commands = {"render " + model, "export-asm " + model,
                                               "export-flt " + model, "export-gltf " + model,
                                               "edit " + model + " --add-kill-shadow"};
    for (const std::string& command : commands) {
        SCOPED_TRACE(command);
        const ToolRun taken = runTool(command + " -o " + q(readOnly));
        EXPECT_EQ(taken.status, 1);
        EXPECT_NE(taken.err.find(readOnly + ": is read-only; remove it or choose another name"),
                  std::string::npos)
            << taken.err;
        EXPECT_EQ(readFile(readOnly), "old bytes");
        const ToolRun folder = runTool(command + " -o " + q(dir.file("folder")));
        EXPECT_EQ(folder.status, 1);
        EXPECT_NE(folder.err.find(": is a folder"), std::string::npos) << folder.err;
        const ToolRun missing = runTool(command + " -o " + q(dir.file("none/x")));
        EXPECT_EQ(missing.status, 1);
        EXPECT_NE(missing.err.find("does not exist"), std::string::npos) << missing.err;
        EXPECT_EQ(missing.out, "") << "nothing is said to be done";
    }
    EXPECT_EQ(runTool("export-asm " + model + " -o -").out.rfind("; ####", 0), 0u);
    EXPECT_EQ(runTool("edit " + model + " -o - --add-kill-shadow").out.substr(0, 4), "RIFF");
    EXPECT_EQ(runTool("export-flt " + model + " -o -").status, 2);
    EXPECT_EQ(runTool("export-gltf " + model + " -o -").out.substr(0, 4), "glTF");
    EXPECT_EQ(runTool("export-gltf " + model + " -o x.gltf --double-sided", dir.path()).status, 0);
    EXPECT_NE(readFile(dir.file("x.gltf")).find("\"doubleSided\": true"), std::string::npos);
    EXPECT_EQ(runTool("export-gltf " + model + " -o x.obj").status, 2);
    EXPECT_EQ(dir.listing(), "folder samples taken x.bin x.gltf") << "no stray files";
}

TEST_F(ToolTest, FailuresSayWhereAndUsageErrorsExitTwo) {
    const std::string cut = write("cut.mdl", readFile(sample("building.mdl")).substr(0, 30));
    const ToolRun damaged = runTool("info " + q(cut));
    EXPECT_EQ(damaged.status, 1);
    EXPECT_EQ(damaged.err, "velmora info: " + cut +
                               ": section \"MDLH\" at byte 12: says 36 bytes, but only 10 follow "
                               "(error 9: Subscript out of range); the file is damaged or is not "
                               "a scenery model\n");
    EXPECT_EQ(runTool("commands " + q(dir.path())).err,
              "velmora commands: " + dir.path() + ": is a folder, not a file\n");
    EXPECT_EQ(runTool("info " + q(dir.file("missing.mdl"))).err,
              "velmora info: " + dir.file("missing.mdl") + ": no such file\n");

    const std::string model = q(sample("building.mdl"));
    const std::string usage[] = {"render " + model + " -o x.png --size 0x0",
                                 "render " + model + " -o x.png --zoom 0",
                                 "render " + model + " -o x.png --zoom -50",
                                 "render " + model + " -o x.png --heading nan",
                                 "edit " + model + " --condition 'between 1'",
                                 "edit " + model + " --rotate sideways",
                                 "edit " + model + " --seasons 'roof.bmp:monsoon=x.bmp'",
                                 "info",
                                 "render " + model + " -o x.png --size 100000x10",
                                 "render " + model + " -o x.png --day 400"};
    for (const std::string& args : usage) {
        const ToolRun run = runTool(args, dir.path());
        EXPECT_EQ(run.status, 2) << args;
        EXPECT_NE(run.err.find("\nusage: velmora "), std::string::npos) << run.err;
    }
    const ToolRun typo = runTool("inf " + model);
    EXPECT_EQ(typo.status, 2);
    EXPECT_NE(typo.err.find("unknown command 'inf'; did you mean 'info'?"), std::string::npos);
    EXPECT_EQ(dir.listing(), "cut.mdl samples");
}

TEST_F(ToolTest, TheReadmeExamplesRunAsShown) {
    std::ifstream readme(VELMORA_SAMPLES_DIR "/../README.md");
    int examples = 0;
    bool inBlock = false;
    for (std::string line; std::getline(readme, line);) {
        if (line.rfind("```", 0) == 0) inBlock = !inBlock;
        if (!inBlock || line.rfind("velmora ", 0) != 0 || line.find('<') != std::string::npos) {
            continue;
        }
        const ToolRun run = runTool(line.substr(8), dir.path());
        EXPECT_EQ(run.status, 0) << line << "\n" << run.err;
        ++examples;
    }
    EXPECT_GE(examples, 7);
    EXPECT_TRUE(stdfs::exists(dir.file("models/model_003.mdl")));
}

#ifdef VELMORA_HAS_PREVIEW
TEST_F(ToolTest, RenderWritesAPictureOrSaysWhyNothingShows) {
    const std::string building = q(sample("building.mdl"));
    const ToolRun run =
        runTool("render " + building + " -o - --size 320x240 --sheet 4 --textures " +
                q(sample("textures")));
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out.substr(1, 3), "PNG");
    EXPECT_EQ(run.out.substr(16, 8), std::string("\0\0\x02\x80\0\0\x01\xE0", 8)) << "640 x 480";
    // Drawn only from complexity 2 up: at 1 nothing shows, and that is no success.
    const ToolRun empty =
        runTool("render " + building + " -o " + q(dir.file("e.png")) + " --set 798=1");
    EXPECT_EQ(empty.status, 1);
    EXPECT_NE(empty.err.find("nothing was drawn"), std::string::npos) << empty.err;
    EXPECT_NE(empty.err.find("--flat"), std::string::npos);
    EXPECT_FALSE(stdfs::exists(dir.file("e.png")));
    EXPECT_EQ(runTool("render " + building + " -o " + q(dir.file("f.png")) + " --set 798=1 --flat")
                  .status,
              0);
    const ToolRun thumbnails = runTool("scan " + q(sample("scenery.bgl")) + " --thumbnails " +
                                       q(dir.file("pictures")) + " --json");
    ASSERT_EQ(thumbnails.status, 0) << thumbnails.err;
    for (const json& model : jsonLines(thumbnails.out))
        EXPECT_GT(model["thumbnailPixels"].get<int>(), 1000) << model;
    EXPECT_EQ(dir.listing("pictures"), "model_001.png model_002.png model_003.png");
}
#endif
