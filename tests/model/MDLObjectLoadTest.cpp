#include <velmora/Host.h>
#include <velmora/MDLObject.h>

#include "ModelBytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <vector>

using namespace velmora;
using namespace modelbytes;

namespace {

const char* const kNotAModel = "This is not a valid RIFF scenery MDL file";

::testing::AssertionResult failsAsNotAModel(MDLObject& model, const std::string& bytes) {
    return throwsError([&] { model.readMDLBytes(bytes, "bad.mdl"); }, 100, "Velmora.MDLObject",
                       kNotAModel);
}

}  // namespace

TEST(MDLObject, ConstructedTableAndLookups) {
    MDLObject model;
    EXPECT_EQ(model.getNumRIFFSections(), 19);
    EXPECT_EQ(model.getRIFFSectionIndex("RIFF"), 0);
    EXPECT_EQ(model.getRIFFSectionIndex("EXTE"), 7);
    EXPECT_EQ(model.getRIFFSectionIndex("BGL "), 11);
    EXPECT_EQ(model.getRIFFSectionIndex("PLAT"), 18);
    EXPECT_EQ(model.getRIFFSectionIndex("BGL"), -1);
    EXPECT_EQ(model.getRIFFSectionIndex("mdlh"), -1);
    EXPECT_EQ(model.getRIFFSectionIndex(""), -1);
    EXPECT_EQ(model.section(0).parent, -1);
    EXPECT_EQ(model.section(7).parent, 0);
    EXPECT_EQ(model.section(8).parent, 7);
    EXPECT_EQ(model.section(18).parent, 7);

    EXPECT_EQ(model.getRIFFSectionSize(19), 0);
    EXPECT_EQ(model.getRIFFSectionTag(19), "");
    for (int16_t bad : {int16_t{20}, int16_t{-1}}) {
        EXPECT_TRUE(throwsPlatform([&] { (void)model.getRIFFSectionSize(bad); }, 9));
        EXPECT_TRUE(throwsPlatform([&] { (void)model.getRIFFSectionTag(bad); }, 9));
        EXPECT_TRUE(throwsPlatform([&] { (void)model.getRIFFSectionData(bad); }, 9));
    }
    EXPECT_FALSE(model.Loaded());
    EXPECT_EQ(model.LoadingStatus(), loadingHEAD);
    EXPECT_EQ(model.TextureList(), nullptr);
    EXPECT_EQ(model.BGLCommandList(), nullptr);

    model.setISFT(std::string("a\0b", 3));
    EXPECT_EQ(model.getISFT(), std::string("a\0b", 3));
    EXPECT_EQ(model.getRIFFSectionSize(2), 3);
    EXPECT_EQ(model.getRIFFSectionSize(0), 0) << "RIFF follows only on saving";
}

TEST(MDLObject, LoadsEverySectionAndDecodesInPhaseOrder) {
    TempDir dir;
    const std::string path = dir.file("complete.mdl");
    writeFile(path, completeModel());

    MDLObject model;
    std::vector<int> statuses;
    int vertexPhaseTurns = 0;
    setYieldHook([&] {
        if (statuses.empty() || statuses.back() != model.LoadingStatus()) {
            statuses.push_back(model.LoadingStatus());
        }
        if (model.LoadingStatus() == loadingVERT) ++vertexPhaseTurns;
    });
    model.readMDL(path);
    setYieldHook(nullptr);

    EXPECT_EQ(statuses, (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(vertexPhaseTurns, 4) << "one on entering the phase, one per vertex";
    EXPECT_EQ(model.LoadingStatus(), loadingBGL);
    EXPECT_FALSE(model.Loaded());
    EXPECT_EQ(model.path(), path);

    EXPECT_EQ(model.getRIFFSectionData(0), "MDL9");
    EXPECT_EQ(model.getRIFFSectionSize(0), static_cast<int32_t>(completeModel().size() - 8));
    EXPECT_EQ(model.getRIFFSectionData(7), "");
    EXPECT_EQ(model.getISFT(), std::string("Velmora test\0", 13));
    EXPECT_EQ(model.getRIFFSectionData(18), "plat\x7F\x80.");
    EXPECT_EQ(model.getRIFFSectionSize(12), 1);

    EXPECT_EQ(model.MDLHeader()->param(8), 9999);
    EXPECT_EQ(model.BoundingBox()->zmax(), 3.0f);
    ASSERT_EQ(model.MaterialList()->Count(), 1);
    EXPECT_EQ(model.MaterialList()->Item(1)->Power(), 4.0f);
    ASSERT_EQ(model.TextureList()->Count(), 1);
    EXPECT_EQ(model.TextureList()->Item(1)->bitmap(), "brick.bmp");
    EXPECT_EQ(model.TextureList()->Item(1)->color()->Ri(), 0x80);
    ASSERT_EQ(model.VertexList()->Count(), 3);
    EXPECT_EQ(model.VertexList()->Item(3)->ty(), 23.0f - 3.5f);
    ASSERT_EQ(model.BGLCommandList()->Count(), 10);
    EXPECT_EQ(model.BGLCommandList()->Item(3)->opcode(), DRAW_TRI_LIST_ITEM);
    EXPECT_EQ(model.BGLCommandList()->Item(10)->opcode(), BGL_END);
    EXPECT_EQ(model.TextureList(), model.TextureList()) << "the live object, not a copy";
}

TEST(MDLObject, ContainerVariantsThatLoad) {
    MDLObject model;
    model.readMDLBytes(riff(""));  // only the 12-byte head
    EXPECT_EQ(model.LoadingStatus(), loadingBGL);
    EXPECT_EQ(model.VertexList()->Count(), 0);
    EXPECT_EQ(model.BGLCommandList()->Count(), 0);
    EXPECT_EQ(model.MDLHeader()->param(0), 0);

    // "TEXT" without "EXTE", a false "EXTE" size, a section of size 0, odd sizes, and five
    // stray bytes at the end of the declared extent.
    const std::string sections = section("ISFT", "odd") + section("TEXT", texturePayload()) +
                                 "EXTE" + le32(-12345) + section("VERT", vertexPayload()) +
                                 section("MATE", "") + section("SHAD", "x") + "12345";
    model.readMDLBytes(riff(sections) + "bytes beyond the extent", "second.mdl");
    EXPECT_EQ(model.TextureList()->Count(), 1);
    EXPECT_EQ(model.VertexList()->Count(), 3);
    EXPECT_EQ(model.MaterialList()->Count(), 0);
    EXPECT_EQ(model.getRIFFSectionSize(7), -12345);
    EXPECT_EQ(model.getRIFFSectionSize(9), 0);
    EXPECT_EQ(model.getRIFFSectionData(5), "x");
    EXPECT_EQ(model.path(), "second.mdl");

    // A second load starts from an empty table.
    model.readMDLBytes(riff(section("CRAS", "c")));
    EXPECT_EQ(model.getISFT(), "");
    EXPECT_EQ(model.getRIFFSectionSize(8), 0);
    EXPECT_EQ(model.getRIFFSectionSize(6), 1);
}

TEST(MDLObject, ContainerErrorsKeepTheEarlierObjects) {
    TempDir dir;
    MDLObject model;
    model.readMDLBytes(completeModel(), "first.mdl");
    const auto textures = model.TextureList();
    const auto commands = model.BGLCommandList();

    EXPECT_TRUE(failsAsNotAModel(model, ""));
    EXPECT_TRUE(failsAsNotAModel(model, "RIFX" + le32(4) + "MDL9"));
    EXPECT_TRUE(failsAsNotAModel(model, riff("", "MDL8")));
    EXPECT_TRUE(failsAsNotAModel(model, riff("", "mdl9")));
    EXPECT_TRUE(throwsError([&] { model.readMDL(dir.file("missing.mdl")); }, 100,
                            "Velmora.MDLObject", kNotAModel));
    EXPECT_TRUE(
        throwsError([&] { model.readMDL(dir.path()); }, 100, "Velmora.MDLObject", kNotAModel));
    EXPECT_EQ(dir.listing(), "") << "a failed read creates nothing";

    const std::string header = section("MDLH", headerPayload());
    // An unknown tag, a pad byte after an odd section, a file shorter than its declared size.
    for (const std::string& bad :
         {riff(header + section("XXXX", "")),
          riff(section("ISFT", "odd") + std::string(1, '\0') + section("CRAS", "c")),
          riff(header + section("CRAS", "c")).substr(0, 12 + 44) + "xx"}) {
        EXPECT_TRUE(throwsPlatform([&] { model.readMDLBytes(bad, "bad.mdl"); }, 9));
    }
    // A size that runs past the end of the data, and a negative size.
    EXPECT_TRUE(throwsPlatform(
        [&] { model.readMDLBytes(riff(header + "CRAS" + le32(0x7FFFFFF0) + "abc")); }, 9));
    EXPECT_TRUE(
        throwsPlatform([&] { model.readMDLBytes(riff(header + "CRAS" + le32(-2) + "ab")); }, 5));

    EXPECT_EQ(model.TextureList(), textures);
    EXPECT_EQ(model.BGLCommandList(), commands);
    EXPECT_EQ(model.LoadingStatus(), loadingHEAD);
    EXPECT_EQ(model.path(), "first.mdl");
    EXPECT_EQ(model.getRIFFSectionSize(1), 36) << "the table keeps what was read";
    EXPECT_EQ(model.getRIFFSectionSize(6), -2);
    EXPECT_EQ(model.getRIFFSectionSize(8), 0);
}

TEST(MDLObject, DecodingErrorsLeaveTheNewObjects) {
    MDLObject model;
    model.readMDLBytes(completeModel(), "first.mdl");
    const auto oldHeader = model.MDLHeader();

    struct Case {
        std::string sections;
        const char* source;
        const char* description;
        LoadingStatus phase;
    };
    const std::string good = section("MDLH", headerPayload()) + section("MATE", materialPayload());
    const Case cases[] = {
        {section("MDLH", headerPayload()) + section("MATE", le16(181)), "Velmora.MaterialList",
         "Data does not contain a valid material list", loadingMATE},
        {good + section("TEXT", le16(0)), "Velmora.TextureList",
         "No valid texture list data in string", loadingTEXT},
        {good + section("VERT", le16(183) + le16(1)), "Velmora.VertexList",
         "Error while reading vertex list", loadingVERT},
    };
    for (const Case& c : cases) {
        EXPECT_TRUE(throwsError([&] { model.readMDLBytes(riff(c.sections), "bad.mdl"); }, 100,
                                c.source, c.description));
        EXPECT_EQ(model.LoadingStatus(), c.phase);
        EXPECT_NE(model.MDLHeader(), oldHeader);
        EXPECT_EQ(model.MDLHeader()->param(0), 1111) << "decoded before the failure";
        EXPECT_EQ(model.BGLCommandList()->Count(), 0);
        EXPECT_EQ(model.path(), "first.mdl");
    }
    EXPECT_EQ(model.MaterialList()->Count(), 1);
    EXPECT_EQ(model.TextureList()->Count(), 0);
}
