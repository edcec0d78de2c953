#include <velmora/velmora.h>

#include "support/TempDir.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#ifdef VELMORA_HAS_PREVIEW
#include <FreeImage.h>
#endif

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

namespace {

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the velmora tool with `args` (already quoted for the shell).
ToolRun runTool(const std::string& args) {
    static int counter = 0;
    const std::string errFile = std::filesystem::temp_directory_path().string() +
                                "/velmora-tool-test-" + std::to_string(getpid()) + "-" +
                                std::to_string(counter++) + ".err";
    // Mesa's software renderer keeps a little memory until the process ends; that is not ours.
    const std::string line = "LSAN_OPTIONS=suppressions=" VELMORA_TOOL_TEST_DIR
                             "/lsan-suppressions.txt " +
                             std::string(VELMORA_TOOL) + " " + args + " 2>" + errFile;
    ToolRun run;
    FILE* pipe = popen(line.c_str(), "r");
    std::array<char, 4096> buffer{};
    std::size_t got = 0;
    while ((got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0)
        run.out.append(buffer.data(), got);
    const int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.err = readFile(errFile);
    std::filesystem::remove(errFile);
    return run;
}

std::string quoted(const std::string& path) {
    return "'" + path + "'";
}

// Fresh samples, made by the sample program, in a folder of their own.
class ToolTest : public ::testing::Test {
  protected:
    void SetUp() override {
        const std::string line =
            std::string(VELMORA_MAKE_SAMPLES) + " " + quoted(dir.file("samples")) + " >/dev/null";
        ASSERT_EQ(std::system(line.c_str()), 0);
    }
    std::string sample(const std::string& name) const { return dir.file("samples/" + name); }

    TempDir dir;
};

int countLines(const std::string& text, const std::string& prefix = "") {
    int lines = 0;
    std::size_t start = 0;
    while (start < text.size()) {
        const auto end = text.find('\n', start);
        const std::string line =
            text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (line.rfind(prefix, 0) == 0) ++lines;
        if (end == std::string::npos) break;
        start = end + 1;
    }
    return lines;
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

TEST_F(ToolTest, InfoShowsTablesConditionsAndShadowAsTextAndJson) {
    ToolRun text = runTool("info " + quoted(sample("building.mdl")));
    ASSERT_EQ(text.status, 0) << text.err;
    EXPECT_NE(text.out.find("\"BGL \""), std::string::npos);
    EXPECT_NE(text.out.find("wall_summer.bmp"), std::string::npos);
    EXPECT_NE(text.out.find("drawn when variable 798 between 2 and 5"), std::string::npos)
        << text.out;
    EXPECT_NE(text.out.find("Kill shadow     no"), std::string::npos);

    ToolRun json = runTool("info --json " + quoted(sample("lightpad.mdl")));
    ASSERT_EQ(json.status, 0) << json.err;
    const auto info = nlohmann::json::parse(json.out);
    EXPECT_TRUE(info["killShadow"].get<bool>());
    EXPECT_EQ(info["counts"]["vertices"], 4);
    EXPECT_EQ(info["counts"]["materials"], 1);

    ToolRun tree = runTool("info --json " + quoted(sample("tree.mdl")));
    const auto treeInfo = nlohmann::json::parse(tree.out);
    EXPECT_EQ(treeInfo["conditions"]["list"][0]["type"], "Rotate to user");
}

TEST_F(ToolTest, CommandsListsEveryCommandWithItsJumps) {
    ToolRun run = runTool("commands " + quoted(sample("building.mdl")));
    ASSERT_EQ(run.status, 0) << run.err;
    velmora::MDLObject model;
    model.readMDL(sample("building.mdl"));
    EXPECT_EQ(countLines(run.out), model.BGLCommandList()->Count());
    EXPECT_NE(run.out.find("1  IFIN1 "), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("BGL_CALL_32 "), std::string::npos);
    EXPECT_NE(run.out.find(" -> "), std::string::npos);
}

TEST_F(ToolTest, EditWritesTheChangedModelOnlyWithAnOutput) {
    const std::string out = dir.file("edited.mdl");
    ToolRun dry = runTool("edit " + quoted(sample("building.mdl")) + " --add-kill-shadow");
    EXPECT_EQ(dry.status, 0);
    EXPECT_NE(dry.out.find("nothing written"), std::string::npos);

    ToolRun run =
        runTool("edit " + quoted(sample("lightpad.mdl")) + " -o " + quoted(out) +
                " --remove-kill-shadow --fix-lights --set-isft 'edited' --clear-conditions"
                " --condition 'between 798 1 5' --condition 'mask 120 4' --combine or");
    ASSERT_EQ(run.status, 0) << run.err;
    velmora::MDLObject edited;
    edited.readMDL(out);
    EXPECT_EQ(edited.getISFT(), "edited");
    EXPECT_EQ(edited.getRIFFSectionSize(edited.getRIFFSectionIndex("SHAD")), 0);
    int lights = 0;
    for (const auto& command : *edited.BGLCommandList()) {
        if (command->opcode() == velmora::BGL_LIGHT) ++lights;
        EXPECT_NE(command->opcode(), velmora::VAR_BASE_OVERRIDE)
            << "fixed lights lose their overrides";
    }
    EXPECT_EQ(lights, 4);
    const auto conditions = edited.BGLCommandList()->getConditions(-1);
    ASSERT_EQ(conditions->Count(), 2);
    EXPECT_EQ(conditions->Item(1)->cType(), velmora::Between);
    EXPECT_EQ(conditions->Item(2)->cType(), velmora::mask);
}

TEST_F(ToolTest, ExportsWriteTheListingAndTheDatabase) {
    ToolRun asmRun = runTool("export-asm " + quoted(sample("building.mdl")) + " -o " +
                             quoted(dir.file("b.asm")));
    ASSERT_EQ(asmRun.status, 0) << asmRun.err;
    EXPECT_NE(readFile(dir.file("b.asm")).find("; Start of BGL command list\r\n"),
              std::string::npos);

    ToolRun flt = runTool("export-flt " + quoted(sample("building.mdl")) + " -o " +
                          quoted(dir.file("b.flt")) + " --tex-format png");
    ASSERT_EQ(flt.status, 0) << flt.err;
    EXPECT_GT(std::filesystem::file_size(dir.file("b.flt")), 4880u);
    EXPECT_TRUE(std::filesystem::exists(dir.file("wall_summer.png.attr")));

    ToolRun noAttr = runTool("export-flt " + quoted(sample("tree.mdl")) + " -o " +
                             quoted(dir.file("t.flt")) + " --no-attr");
    EXPECT_EQ(noAttr.status, 0) << noAttr.err;
}

TEST_F(ToolTest, ScanListsAndExtractsTheModelsOfACompiledFile) {
    std::filesystem::create_directories(dir.file("models"));
    ToolRun run = runTool("scan --json " + quoted(sample("scenery.bgl")) + " --extract " +
                          quoted(dir.file("models")));
    ASSERT_EQ(run.status, 0) << run.err;
    const auto scan = nlohmann::json::parse(run.out);
    ASSERT_EQ(scan["models"].size(), 3u);
    EXPECT_EQ(readFile(dir.file("models/model_001.mdl")), readFile(sample("building.mdl")));
    EXPECT_EQ(readFile(dir.file("models/model_003.mdl")), readFile(sample("tree.mdl")));
    ToolRun text = runTool("scan " + quoted(sample("scenery.bgl")));
    EXPECT_NE(text.out.find("3 model(s)"), std::string::npos);
}

TEST_F(ToolTest, BadInputsGiveOneClearLineAndAFailingStatus) {
    writeFile(dir.file("junk.mdl"), "this is not a model");
    ToolRun bad = runTool("info " + quoted(dir.file("junk.mdl")));
    EXPECT_EQ(bad.status, 1);
    EXPECT_EQ(
        bad.err,
        "velmora: error 100 (Velmora.MDLObject): This is not a valid RIFF scenery MDL file\n");

    ToolRun missing = runTool("info " + quoted(dir.file("missing.mdl")));
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(countLines(missing.err), 1);
    EXPECT_NE(missing.err.find("no such file"), std::string::npos);

    ToolRun option = runTool("edit " + quoted(sample("tree.mdl")) + " --rotate sideways");
    EXPECT_EQ(option.status, 2);
    EXPECT_EQ(countLines(option.err), 1) << option.err;

    ToolRun failed = runTool("export-asm " + quoted(sample("tree.mdl")) + " -o " +
                             quoted(dir.file("none/x.asm")));
    EXPECT_NE(failed.status, 0);
    EXPECT_FALSE(std::filesystem::exists(dir.file("none")));

    for (const char* command :
         {"info", "commands", "render", "export-asm", "export-flt", "edit", "scan"}) {
        ToolRun help = runTool(std::string(command) + " --help");
        EXPECT_EQ(help.status, 0) << command;
        EXPECT_NE(help.out.find("Usage"), std::string::npos) << command;
    }
}

#ifdef VELMORA_HAS_PREVIEW
TEST_F(ToolTest, RenderWritesAPictureOfTheModel) {
    const std::string png = dir.file("building.png");
    ToolRun run = runTool("render " + quoted(sample("building.mdl")) + " -o " + quoted(png) +
                          " --size 320x240 --textures " + quoted(sample("textures")));
    ASSERT_EQ(run.status, 0) << run.err;
    FIBITMAP* image = FreeImage_Load(FIF_PNG, png.c_str(), 0);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(FreeImage_GetWidth(image), 320u);
    EXPECT_EQ(FreeImage_GetHeight(image), 240u);
    int coloured = 0;
    for (unsigned y = 0; y < 240; ++y) {
        for (unsigned x = 0; x < 320; ++x) {
            RGBQUAD pixel;
            FreeImage_GetPixelColor(image, x, y, &pixel);
            if (pixel.rgbRed < 250 || pixel.rgbGreen < 250 || pixel.rgbBlue < 250) ++coloured;
        }
    }
    FreeImage_Unload(image);
    EXPECT_GT(coloured, 320 * 240 / 20) << "the model covers part of the frame";
}
#endif
