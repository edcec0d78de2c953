#include <velmora/Host.h>
#include <velmora/MDLObject.h>
#include <velmora/color.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace modelbytes;
using namespace bgltest;

namespace {

std::string headerPayload() {
    std::string payload;
    for (int i = 1; i <= 9; ++i)
        payload += le32(i * 1111);
    return payload;  // 36 bytes
}
std::string boxPayload() {
    return f32(-1) + f32(-2) + f32(-3) + f32(1) + f32(2) + f32(3);
}
std::string texturePayload() {  // 90 bytes; colour bytes blue, alpha, red, green
    return le16(183) + le16(1) + le32(0) + le32(6) + bytes({0x11, 0xFF, 0x80, 0x01}) + le32(0) +
           f32(4.5f) + "brick.bmp" + std::string(55, '\0') + le16(34);
}
std::string materialPayload() {  // 78 bytes
    std::string entry;
    for (int i = 0; i < 17; ++i)
        entry += f32(0.25f * static_cast<float>(i));
    return le16(182) + le16(1) + le32(0) + entry + le16(34);
}
std::string vertexPayload() {  // 106 bytes
    std::string entries;
    for (int i = 0; i < 24; ++i)
        entries += f32(static_cast<float>(i) - 3.5f);
    return le16(181) + le16(3) + le32(0) + entries + le16(34);
}
std::string shortStream() {  // ten commands, 50 bytes
    return setMaterial(0, 0) + triangleList(0, {{0, 1, 2}, {2, 1, 0}}) + le16(38) + le16(100) +
           le16(-5) + zBias(2) + le16(196) + le16(3) + setMaterial(0, -1) + le16(34) + bglEnd();
}

// Every section of the table in table order, with odd sizes and high bytes in the sections
// the library never interprets.
std::string completeModel(const std::string& stream) {
    const std::string inner =
        section("TEXT", texturePayload()) + section("MATE", materialPayload()) +
        section("VERT", vertexPayload()) + section("BGL ", stream) + section("TRAN", "t") +
        section("ANIP", bytes({0, 0xFE})) + section("ANIC", "abc") +
        section("SCEN", bytes({0x80, 0, 0x81, 0})) + section("ATTA", "attac") +
        section("ATTO", bytes({0xFF, 0, 0, 0, 0, 0xFF})) + section("PLAT", "plat\x7F\x80.");
    return riff(
        section("MDLH", headerPayload()) + section("ISFT", std::string("Velmora test\0", 13)) +
        section("DICT", bytes({1, 2, 3, 0, 5, 6, 7})) + section("BBOX", boxPayload()) +
        section("SHAD", bytes({9, 9, 9, 9, 9})) + section("CRAS", "crs") + section("EXTE", inner));
}

}  // namespace

TEST(ModelRoundTrip, EverySectionAndEveryOpcodeLoadAndSaveBackByteForByte) {
    const StreamAssembler stream = everyOpcode();
    TempDir dir;
    const std::string path = dir.file("complete.mdl");
    writeFile(path, completeModel(stream.bytes()));

    MDLObject model;
    int turns = 0;
    setYieldHook([&] { ++turns; });
    model.readMDL(path);
    setYieldHook(nullptr);
    // At the start and at four phases, then once per vertex, and per command or list item
    // both in the decode and in the jump pass.
    EXPECT_EQ(turns, 1 + 4 + 3 + 2 * stream.size());
    EXPECT_EQ(model.LoadingStatus(), loadingBGL);

    EXPECT_EQ(model.getISFT(), std::string("Velmora test\0", 13));
    EXPECT_EQ(model.getRIFFSectionData(18), "plat\x7F\x80.");
    EXPECT_EQ(model.MDLHeader()->param(8), 9999);
    EXPECT_EQ(model.BoundingBox()->zmax(), 3.0f);
    EXPECT_EQ(model.MaterialList()->Item(1)->Emmisive()->a(), 3.75f);
    EXPECT_EQ(model.MaterialList()->Item(1)->Power(), 4.0f);
    const auto texture = model.TextureList()->Item(1);
    EXPECT_EQ(texture->bitmap(), "brick.bmp");
    EXPECT_EQ(texture->size(), 4.5f);
    EXPECT_EQ(hex(texture->color()->packedColor()), "FF 11 01 80");
    EXPECT_EQ(model.VertexList()->Item(3)->ty(), 23.0f - 3.5f);
    // The commands' parameters and jump destinations: the listing test in ExportTest shows them.

    model.saveMDL(path);
    EXPECT_EQ(hex(readFile(path)), hex(completeModel(stream.bytes())));
    EXPECT_EQ(dir.listing(), "complete.mdl") << "nothing left beside the file";

    // Commands go in and out; every offset and every size is worked out anew.
    StreamAssembler edited = stream;
    BGLCommandList& list = *model.BGLCommandList();
    list.Add(command(SET_MATERIAL, {"1", "2"}), "", 12);
    list.updateJumpDest(12);
    edited.insert(11, Op{SET_MATERIAL, {w(1), w(2)}});
    list.Add(command(BGL_ZBIAS, {"9"}), "", 1);
    list.updateJumpDest(1);
    edited.insert(0, Op{BGL_ZBIAS, {w(9)}});
    list.Add(command(DRAW_TRI_LIST_ITEM, {"4", "5", "6"}), "", 27);  // a third triangle
    list.updateJumpDest(27);
    edited.insert(26, Op{DRAW_TRI_LIST_ITEM, {w(4), w(5), w(6)}});
    list.Item(25)->param(2, "9");
    edited.ops[24].fields[2] = w(9);
    list.Remove(29);  // BGL_LIGHT: the jump to it now leads to the new triangle in front
    list.updateJumpDest(29, true);
    edited.erase(28);
    list.Remove(3);  // VAR_BASE_32
    list.updateJumpDest(3, true);
    edited.erase(2);
    model.saveMDL(path);
    EXPECT_EQ(hex(readFile(path)), hex(completeModel(edited.bytes())));
}

TEST(ModelRoundTrip, SizesAreRecomputedAndTheTableOrderRestored) {
    // Sections out of order, "TEXT" and "BGL " outside any "EXTE", "SHAD" of size 0.
    const std::string source = riff(
        section("BGL ", shortStream()) + section("SHAD", "") + section("TEXT", texturePayload()) +
        section("VERT", vertexPayload()) + section("BBOX", boxPayload()) +
        section("MATE", materialPayload()) + section("MDLH", headerPayload()));
    TempDir dir;
    MDLObject model;
    model.readMDLBytes(source, "scrambled.mdl");
    model.saveMDL(dir.file("out.mdl"));
    const std::string saved = readFile(dir.file("out.mdl"));
    const std::string inner = section("TEXT", texturePayload()) +
                              section("MATE", materialPayload()) +
                              section("VERT", vertexPayload()) + section("BGL ", shortStream());
    EXPECT_EQ(hex(saved), hex(riff(section("MDLH", headerPayload()) +
                                   section("BBOX", boxPayload()) + section("EXTE", inner))));
}

// What failed saves and loads leave behind; the load errors themselves are BadInputTest's.
TEST(ModelRoundTrip, FailuresLeaveTheOldFileAndTheEarlierObjects) {
    TempDir dir;
    const std::string path = dir.file("model.mdl");
    writeFile(path, "old contents");
    EXPECT_TRUE(throwsPlatform([&] { MDLObject().saveMDL(path); }, 91));
    MDLObject model;
    model.readMDLBytes(completeModel(shortStream()), "first.mdl");
    model.TextureList()->Item(1)->bitmap(std::string(65, 'x'));
    EXPECT_TRUE(throwsError([&] { model.saveMDL(path); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    model.TextureList()->Item(1)->bitmap("ok.bmp");
    EXPECT_TRUE(throwsPlatform([&] { model.saveMDL(dir.file("no/such/folder.mdl")); }, 76));
    EXPECT_EQ(readFile(path), "old contents");

    const auto textures = model.TextureList();
    EXPECT_TRUE(
        throwsPlatform([&] { model.readMDLBytes(riff(section("XXXX", "")), "bad.mdl"); }, 9));
    EXPECT_TRUE(throwsError([&] { model.readMDL(dir.file("missing.mdl")); }, 100,
                            "Velmora.MDLObject", "This is not a valid RIFF scenery MDL file"));
    EXPECT_EQ(dir.listing(), "model.mdl") << "failed saves and reads create nothing";
    EXPECT_EQ(model.TextureList(), textures) << "the decoded objects stay";
    EXPECT_EQ(model.path(), "first.mdl");
    // A list section with the wrong head: the objects decoded before it are the new ones.
    EXPECT_TRUE(throwsError(
        [&] {
            model.readMDLBytes(riff(section("MDLH", headerPayload()) +
                                    section("MATE", materialPayload()) + section("TEXT", le16(0))));
        },
        100, "Velmora.TextureList", "No valid texture list data in string"));
    EXPECT_NE(model.TextureList(), textures);
    EXPECT_EQ(model.MDLHeader()->param(0), 1111) << "decoded before the failure";
    EXPECT_EQ(model.BGLCommandList()->Count(), 0);

    model.readMDLBytes(completeModel(shortStream()));
    model.readMDLBytes(riff(section("CRAS", "c")));
    EXPECT_EQ(model.getISFT() + model.getRIFFSectionData(3), "") << "a new load starts afresh";
}

TEST(ModelRoundTrip, TheLastFiveBytesOfTheExtentHoldNoSection) {
    for (int stray = 1; stray <= 6; ++stray) {
        MDLObject model;
        const std::string file = riff(section("MDLH", headerPayload()) + std::string(stray, 'x'));
        if (stray <= 5) {
            model.readMDLBytes(file);
            EXPECT_EQ(model.MDLHeader()->param(8), 9999) << stray;
        } else {
            EXPECT_TRUE(throwsPlatform([&] { model.readMDLBytes(file); }, 9));
        }
    }
}

TEST(ModelLists, EmptyListsAndTheirCanonicalBytes) {
    VertexList vertices;
    vertices.fillCollection(le16(181) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(vertices.asString()), "B5 00 00 00 00 00 00 00 22 00");
    MaterialList materials;
    materials.readList(le16(182) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(materials.asString()), "B6 00 00 00 00 00 00 00 22 00");
    TextureList textures;
    textures.fillCollection(le16(183) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(textures.asString()), "B7 00 00 00 00 00 00 00 22 00");
    EXPECT_EQ(textures.findTextureIndex(0, 0), 0);

    // No closing word, a reserved field that isn't 0, a name with a NUL inside, a count beyond
    // the data: read fine, written back canonical, the missing entries as zeros.
    textures.fillCollection(le16(183) + le16(2) + le32(77) + le32(2) + le32(-1) + le32(1234) +
                            f32(0) + std::string("ab\0cd", 5) + std::string(59, '\0'));
    EXPECT_EQ(textures.findTextureIndex(0, 0), 1);
    EXPECT_EQ(hex(textures.asString()),
              hex(le16(183) + le16(2) + le32(0) + le32(2) + le32(-1) + le32(0) + f32(0) + "abcd" +
                  std::string(60 + 80, '\0') + le16(34)));

    // Counts are signed but for vertices (MemoryBoundTest reads 65,535 of them).
    materials.readList(le16(182) + le16(-3) + le32(0));
    EXPECT_EQ(materials.Count(), 0);
}

TEST(ModelLists, ColourBytesRoundHalvesToEvenAndPackAsFFBlueGreenRed) {
    color c;
    const std::pair<float, int> rounding[] = {{0.5f, 128}, {0.1f, 26}, {2.5f / 255, 2}, {1, 255}};
    for (const auto& [value, expected] : rounding) {
        c.r(value);
        EXPECT_EQ(c.Ri(), expected) << value;
    }
    c.Ri(1);
    c.Gi(2);
    c.Bi(3);
    EXPECT_EQ(hex(c.packedColor()), "FF 03 02 01");
    c.Gi(256);
    EXPECT_TRUE(throwsPlatform([&] { (void)c.packedColor(); }, 5));
    c.r(200.0f);  // 51000 doesn't fit 16 bits
    EXPECT_TRUE(throwsPlatform([&] { (void)c.Ri(); }, 6));

    TextureList textures;
    textures.Add()->color()->r(2.0f);
    EXPECT_TRUE(throwsPlatform([&] { (void)textures.asString(); }, 6));
    textures.Item(1)->color()->r(0);
    textures.Item(1)->bitmap(std::string(64, 'x'));  // exactly 64 characters: no NUL
    EXPECT_EQ(textures.asString().substr(24, 64), std::string(64, 'x'));
}
