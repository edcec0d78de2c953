#include <velmora/velmora.h>

#include "support/ImageFiles.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"
#include "tool/PadModel.h"
#include "tool/ToolRun.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <vector>

#ifdef VELMORA_HAS_PREVIEW

namespace {

using namespace bgltest;
using namespace tooltest;

// The share of a picture's pixels that are not the background of the tool's pictures.
double coverage(const std::string& png) {
    const imagefiles::Picture picture = imagefiles::readPicture(png);
    if (picture.pixels.empty()) return -1;
    int64_t covered = 0;
    for (const auto& c : picture.pixels)
        covered += (c[0] != 0x9e || c[1] != 0xb9 || c[2] != 0xd9) ? 1 : 0;
    return static_cast<double>(covered) / static_cast<double>(picture.pixels.size());
}

class PictureTest : public ::testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(makeSamples(dir.file("samples"))); }
    std::string write(const std::string& name, const std::string& bytes) const {
        writeFile(dir.file(name), bytes);
        return dir.file(name);
    }
    TempDir dir;
};

}  // namespace

TEST_F(PictureTest, EveryModelIsDrawnAndTheValuesSetForItAreNamed) {
    struct Case {
        std::string model;
        std::string said;  // "" when the defaults show it
    };
    const std::vector<Case> cases = {
        {dir.file("samples/building.mdl"), ""},
        {dir.file("samples/lightpad.mdl"), ""},
        {dir.file("samples/tree.mdl"), ""},
        {write("masked.mdl", padModel({{velmora::IFIN1, {jw(3), w(790), w(0), w(1)}},
                                       {velmora::IFMSK, {jw(3), w(250), w(1)}}})),
         "drawn with 250=1: its guard is 790 in 0..1 and (250 & 1)"},
        {write("bit.mdl", padModel({{velmora::IFMSK, {jw(2), w(240), w(16)}}})),
         "drawn with 240=16: its guard is (240 & 16)"},
        {write("pair.mdl",
               padModel({{velmora::IFIN2, {jw(2), w(1285), w(3), w(4), w(798), w(0), w(5)}}})),
         "drawn with 1285=3: its guard is (1285 in 3..4 and 798 in 0..5)"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.model);
        const ToolRun run = runTool("render " + q(c.model) + " -o - --size 200x150");
        ASSERT_EQ(run.status, 0) << run.err;
        const double covered = coverage(run.out);
        EXPECT_GT(covered, 0.03);
        EXPECT_LT(covered, 0.90);
        if (c.said.empty()) {
            EXPECT_EQ(run.err, "");
        } else {
            EXPECT_NE(run.err.find(c.said), std::string::npos) << run.err;
        }
    }
    // Values the user gives rule, and --as-is keeps the defaults: then nothing shows.
    EXPECT_EQ(runTool("render " + q(dir.file("bit.mdl")) + " -o - --set 240=1").status, 1);
    const ToolRun asIs = runTool("render " + q(dir.file("bit.mdl")) + " -o - --as-is");
    EXPECT_EQ(asIs.status, 1);
    EXPECT_NE(asIs.err.find("nothing was drawn"), std::string::npos) << asIs.err;
    // A fixed frame panned away from the model is as empty as a fitted one.
    const ToolRun away = runTool("render " + q(dir.file("samples/building.mdl")) + " -o " +
                                 q(dir.file("away.png")) + " --fixed-frame --pan-x 1000000");
    EXPECT_EQ(away.status, 1);
    EXPECT_NE(away.err.find("--pan-x"), std::string::npos) << away.err;
    EXPECT_FALSE(std::filesystem::exists(dir.file("away.png")));
}

TEST_F(PictureTest, ReversedTrianglesAreHiddenSaidAndShownOnRequest) {
    const std::string pad = write("reversed.mdl", padModel({}, true));
    EXPECT_EQ(nlohmann::json::parse(runTool("info --json " + q(pad)).out)["reversedTriangles"],
              nlohmann::json::array({5, 6}));
    const std::string above = " -o - --size 200x150 --elevation 60";
    const ToolRun hidden = runTool("render " + q(pad) + above);
    EXPECT_EQ(hidden.status, 1);
    EXPECT_NE(hidden.err.find("2 reversed triangles hidden"), std::string::npos) << hidden.err;
    EXPECT_NE(hidden.err.find("--fix-winding"), std::string::npos) << hidden.err;
    const ToolRun both = runTool("render " + q(pad) + above + " --both-sides");
    ASSERT_EQ(both.status, 0) << both.err;
    EXPECT_GT(coverage(both.out), 0.03);

    // Fixed, the file keeps its size and shows from above.
    const ToolRun fixed = runTool("edit " + q(pad) + " --fix-winding -o " + q(dir.file("f.mdl")));
    ASSERT_EQ(fixed.status, 0) << fixed.err;
    EXPECT_NE(fixed.out.find("2 reversed triangles turned round"), std::string::npos);
    EXPECT_EQ(std::filesystem::file_size(dir.file("f.mdl")), std::filesystem::file_size(pad));
    EXPECT_NE(runTool("info " + q(dir.file("f.mdl"))).out.find("Reversed        no triangles"),
              std::string::npos);
    const ToolRun shown = runTool("render " + q(dir.file("f.mdl")) + above);
    ASSERT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.err, "");
}

#endif
