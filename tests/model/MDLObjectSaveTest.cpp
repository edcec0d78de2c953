#include <velmora/MDLObject.h>

#include "ModelBytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace velmora;
using namespace modelbytes;

namespace {

// The tags of a saved file in the order they stand, walking into "EXTE" as the reader does.
std::string tagsOf(const std::string& file) {
    std::string tags;
    std::size_t at = 12;
    while (at + 8 <= file.size()) {
        const std::string tag = file.substr(at, 4);
        tags += (tags.empty() ? "" : ",") + tag;
        const auto size = static_cast<std::size_t>(static_cast<unsigned char>(file[at + 4]) |
                                                   static_cast<unsigned char>(file[at + 5]) << 8);
        at += 8 + (tag == "EXTE" ? 0 : size);
    }
    return tags;
}

}  // namespace

TEST(MDLObjectSave, CompleteModelSavesToTheSameBytesAtItsOwnPath) {
    TempDir dir;
    const std::string path = dir.file("complete.mdl");
    writeFile(path, completeModel());
    MDLObject model;
    model.readMDL(path);
    model.saveMDL(path);
    EXPECT_EQ(hex(readFile(path)), hex(completeModel()));
    EXPECT_EQ(dir.listing(), "complete.mdl") << "nothing left beside the file";
    EXPECT_EQ(model.LoadingStatus(), loadingBGL);
    EXPECT_EQ(model.path(), path);

    MDLObject again;
    again.readMDL(path);
    EXPECT_EQ(again.VertexList()->asString(), vertexPayload());
    EXPECT_EQ(again.BGLCommandList()->Count(), 10);
}

TEST(MDLObjectSave, SizesAreRecomputedAndTheTableOrderRestored) {
    // Sections out of order, "TEXT" and "BGL " outside any "EXTE", "SHAD" of size 0.
    const std::string source =
        riff(section("BGL ", commandPayload()) + section("SHAD", "") +
             section("TEXT", texturePayload()) + section("VERT", vertexPayload()) +
             section("BBOX", boxPayload()) + section("MATE", materialPayload()) +
             section("MDLH", headerPayload()));
    TempDir dir;
    MDLObject model;
    model.readMDLBytes(source, "scrambled.mdl");
    model.saveMDL(dir.file("out.mdl"));
    const std::string saved = readFile(dir.file("out.mdl"));

    EXPECT_EQ(saved.size(), 452u);
    EXPECT_EQ(model.getRIFFSectionSize(7), 356);
    EXPECT_EQ(model.getRIFFSectionSize(0), 444);
    EXPECT_EQ(model.getRIFFSectionSize(11), 50);
    EXPECT_EQ(saved.substr(4, 4), le32(444));
    EXPECT_EQ(tagsOf(saved), "MDLH,BBOX,EXTE,TEXT,MATE,VERT,BGL ");
    EXPECT_EQ(saved.find("EXTE" + le32(356) + "TEXT" + le32(90)), 12u + 44 + 32);

    // cleanDICT and an empty ISFT drop those sections; RIFF shrinks by size + 8 each.
    MDLObject complete;
    complete.readMDLBytes(completeModel());
    complete.cleanDICT();
    complete.setISFT("");
    EXPECT_EQ(complete.getRIFFSectionData(3), "");
    complete.saveMDL(dir.file("trimmed.mdl"));
    const std::string trimmed = readFile(dir.file("trimmed.mdl"));
    EXPECT_EQ(trimmed.size(), completeModel().size() - (7 + 8) - (13 + 8));
    EXPECT_EQ(tagsOf(trimmed),
              "MDLH,BBOX,SHAD,CRAS,EXTE,TEXT,MATE,VERT,BGL ,TRAN,ANIP,ANIC,SCEN,ATTA,ATTO,PLAT");
}

TEST(MDLObjectSave, HeadsAlwaysAgreeWithPayloads) {
    TempDir dir;
    // A model without "TEXT" gets an empty one (and so an "EXTE"); a long "MDLH" and a short
    // "BBOX" are written at their standard sizes.
    MDLObject model;
    model.readMDLBytes(riff(section("MDLH", headerPayload() + "ext!") +
                            section("BBOX", boxPayload().substr(0, 12))));
    model.saveMDL(dir.file("a.mdl"));
    const std::string saved = readFile(dir.file("a.mdl"));
    EXPECT_EQ(tagsOf(saved), "MDLH,BBOX,EXTE,TEXT");
    EXPECT_EQ(saved.substr(12, 8), "MDLH" + le32(36));
    EXPECT_EQ(saved.substr(56, 8), "BBOX" + le32(24));
    EXPECT_EQ(saved.substr(saved.size() - 18),
              "TEXT" + le32(10) + bytes({0xB7, 0, 0, 0, 0, 0, 0, 0, 0x22, 0}));
    EXPECT_EQ(model.getRIFFSectionSize(9), 0) << "no MATE: the model never held one";

    // Lists the host fills are saved with matching heads.
    model.MaterialList()->Add();
    model.VertexList()->Add();
    model.VertexList()->Add();
    model.BGLCommandList()->Add()->opcode(BGL_END);
    model.updateData();
    EXPECT_EQ(model.getRIFFSectionSize(9), 78);
    EXPECT_EQ(model.getRIFFSectionSize(10), 74);
    EXPECT_EQ(model.getRIFFSectionSize(11), 2);
    EXPECT_EQ(model.getRIFFSectionData(10).size(), 74u);
    EXPECT_EQ(model.getRIFFSectionSize(7), (10 + 8) + (78 + 8) + (74 + 8) + (2 + 8));

    for (int i = 0; i < 32767; ++i)
        model.BGLCommandList()->Add();
    EXPECT_TRUE(throwsPlatform([&] { model.updateSectionSize(); }, 6));
}

TEST(MDLObjectSave, FailuresLeaveTheOldFileAlone) {
    TempDir dir;
    const std::string path = dir.file("model.mdl");
    writeFile(path, "old contents");

    MDLObject never;
    EXPECT_TRUE(throwsPlatform([&] { never.updateData(); }, 91));
    EXPECT_TRUE(throwsPlatform([&] { never.updateSectionSize(); }, 91));
    EXPECT_TRUE(throwsPlatform([&] { never.saveMDL(path); }, 91));
    never.cleanDICT();  // needs no load

    MDLObject model;
    model.readMDLBytes(completeModel());
    model.TextureList()->Item(1)->bitmap(std::string(65, 'x'));
    EXPECT_TRUE(throwsError([&] { model.saveMDL(path); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    model.TextureList()->Item(1)->bitmap("ok.bmp");

    std::filesystem::permissions(path, std::filesystem::perms::owner_read);
    EXPECT_TRUE(throwsPlatform([&] { model.saveMDL(path); }, 70));
    EXPECT_EQ(readFile(path), "old contents");
    EXPECT_TRUE(throwsPlatform([&] { model.saveMDL(dir.file("no/such/folder.mdl")); }, 76));
    EXPECT_EQ(dir.listing(), "model.mdl");
}
