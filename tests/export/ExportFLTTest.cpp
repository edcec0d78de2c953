#include <velmora/MDLObject.h>

#include "export/FltReading.h"
#include "export/ModelBytes.h"
#include "foundation/FileSystem.h"
#include "foundation/HexFunctions.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace fltread;

namespace {

struct Record {
    int16_t opcode;
    std::size_t offset;
};

// The records of a database in file order, found through their length fields.
std::vector<Record> recordsOf(const std::string& db) {
    std::vector<Record> records;
    for (std::size_t at = 0; at + 4 <= db.size();) {
        records.push_back({be16(db, at), at});
        const auto length = static_cast<uint16_t>(be16(db, at + 2));
        if (length < 4) break;
        at += length;
    }
    return records;
}

std::vector<int16_t> opcodesFrom(const std::vector<Record>& records, std::size_t first) {
    std::vector<int16_t> opcodes;
    for (std::size_t i = first; i < records.size(); ++i)
        opcodes.push_back(records[i].opcode);
    return opcodes;
}

std::size_t expectedSize(std::size_t m, std::size_t t, std::size_t v, std::size_t f) {
    return 4880 + 84 * m + 216 * t + 64 * v + 104 * f;
}

std::shared_ptr<BGLCommand> command(BGLOpcode opcode, std::initializer_list<int> params) {
    auto c = std::make_shared<BGLCommand>();
    c->opcode(opcode);
    int16_t i = 0;
    for (int p : params)
        c->param(i++, std::to_string(p));
    return c;
}

constexpr int16_t kFace = 5, kPush = 10, kPop = 11, kVertexList = 72;

}  // namespace

TEST(ExportFLT, DatabaseSizeFollowsTheCountsOfTheModel) {
    TempDir dir;
    modelbytes::Model empty;
    modelbytes::Model big;
    big.materials.assign(3, {0.5f, 0.5f, 0.5f, 1.0f});
    big.textures = {"a.bmp"};
    for (int i = 0; i < 100; ++i)
        big.vertices.push_back({1.0f * i, 0, 0, 0, 1, 0, 0, 0});
    std::vector<std::array<int, 3>> items;
    for (int i = 0; i < 150; ++i)
        items.push_back({i % 98, i % 98 + 1, i % 98 + 2});
    big.setMaterial(2, 0);
    big.drawTriangles(0, items);
    big.end();

    const std::vector<std::pair<modelbytes::Model, std::array<std::size_t, 4>>> shapes = {
        {empty, {0, 0, 0, 0}},
        {modelbytes::texturedHouse(), {2, 2, 8, 4}},
        {modelbytes::untexturedBox(), {1, 0, 5, 3}},
        {big, {3, 1, 100, 150}}};
    for (const auto& [model, counts] : shapes) {
        MDLObject object;
        object.readMDLBytes(model.bytes());
        const std::string path = dir.file("sized.flt");
        object.exportFLT(path, "png", false);
        EXPECT_EQ(readFile(path).size(), expectedSize(counts[0], counts[1], counts[2], counts[3]))
            << counts[0] << " materials, " << counts[3] << " triangles";
    }
}

TEST(ExportFLT, EmptyStreamGivesPalettesAndTheBalancedHierarchy) {
    TempDir dir;
    MDLObject object;
    object.readMDLBytes(modelbytes::Model{}.bytes());
    object.exportFLT(dir.file("empty.flt"), "png");
    const std::string db = readFile(dir.file("empty.flt"));
    const auto records = recordsOf(db);
    ASSERT_EQ(records.size(), 18u);
    EXPECT_EQ(opcodesFrom(records, 0),
              (std::vector<int16_t>{1, 32, 113, 67, kPush, 2, kPush, 2, kPush, 73, kPush, 4, kPush,
                                    kPop, kPop, kPop, kPop, kPop}));
}

TEST(ExportFLT, FacesFollowTheMaterialAndTriangleCommands) {
    TempDir dir;
    modelbytes::Model model;
    model.materials.assign(5, {1.0f, 1.0f, 1.0f, 1.0f});
    model.textures = {"a.bmp", "b.bmp"};
    for (int i = 0; i < 6; ++i)
        model.vertices.push_back({1.0f * i, 0, 0, 0, 1, 0, 0, 0});
    MDLObject object;
    object.readMDLBytes(model.bytes());
    const auto list = object.BGLCommandList();
    list->Add(command(DRAW_TRI_LIST_ITEM, {0, 1, 2}));  // before any material: texture 0
    list->Add(command(DRAW_TRI_LIST_BEGIN, {3, 0, 6}));
    list->Add(command(SET_MATERIAL, {3, -1}));
    list->Add(command(DRAW_TRI_LIST_ITEM, {0, 1, 2}));  // the list's base stays in force
    list->Add(command(BGL_ZBIAS, {2}));
    list->Add(command(SET_MATERIAL, {2, 1}));
    list->Add(command(DRAW_TRI_LIST_ITEM, {2, 1, 0}));
    list->Add(command(DRAW_LINE_LIST_ITEM, {0, 1}));
    object.exportFLT(dir.file("faces.flt"), "png", false);
    const std::string db = readFile(dir.file("faces.flt"));
    ASSERT_EQ(db.size(), expectedSize(5, 2, 6, 3));

    std::vector<std::size_t> faces;
    for (const auto& r : recordsOf(db)) {
        if (r.opcode == kFace) faces.push_back(r.offset);
    }
    ASSERT_EQ(faces.size(), 3u);
    struct Expected {
        std::string name;
        int16_t texture, material;
        int32_t colorIndex;
        std::array<int32_t, 3> vertices;
    };
    const std::vector<Expected> expected = {{"p1", 0, 5, 127, {0, 1, 2}},
                                            {"p2", -1, 3, 3 * 128 + 127, {3, 4, 5}},
                                            {"p3", 1, 5, 2 * 128 + 127, {5, 4, 3}}};
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const std::size_t at = faces[i];
        SCOPED_TRACE(expected[i].name);
        EXPECT_EQ(fieldText(db, at + 4, 8), expected[i].name);
        EXPECT_EQ(be16(db, at + 28), expected[i].texture);
        EXPECT_EQ(be16(db, at + 30), expected[i].material);
        EXPECT_EQ(be32(db, at + 68), expected[i].colorIndex);
        EXPECT_EQ(be16(db, at + 80), kPush);
        EXPECT_EQ(be16(db, at + 84), kVertexList);
        for (std::size_t k = 0; k < 3; ++k) {
            EXPECT_EQ(be32(db, at + 88 + 4 * k), expected[i].vertices[k] * 64 + 8);
        }
        EXPECT_EQ(be16(db, at + 100), kPop);
    }
}

TEST(ExportFLT, AttributeFilesLieBesideTheDatabaseWhenAsked) {
    TempDir dir;
    MDLObject object;
    object.readMDLBytes(modelbytes::texturedHouse().bytes());
    object.exportFLT(dir.file("house.flt"), "png", false);
    EXPECT_EQ(dir.listing(), "house.flt");
    object.exportFLT(dir.file("house.flt"), "png");
    EXPECT_EQ(dir.listing(), "house.flt roof.png.attr wall.png.attr");
    EXPECT_EQ(readFile(dir.file("roof.png.attr")), readFile(dir.file("wall.png.attr")));
    EXPECT_EQ(readFile(dir.file("roof.png.attr")).size(), 1608u);
}

TEST(ExportFLT, FailuresCloseTheDatabaseAndLeaveWhatWasWritten) {
    TempDir dir;
    const int16_t freeBefore = hex::nextFreeFile();
    const std::string path = dir.file("failed.flt");

    MDLObject object;
    object.readMDLBytes(modelbytes::texturedHouse().bytes());
    object.TextureList()->Item(2)->bitmap(std::string(201, 'x'));
    EXPECT_TRUE(throwsError([&] { object.exportFLT(path, "png"); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    EXPECT_EQ(hex::nextFreeFile(), freeBefore) << "the database is still open";
    EXPECT_EQ(readFile(path).size(), 324u + 4228u + 3u * 84u + 216u + 4u);
    fs::deleteFile(path, false);
    EXPECT_FALSE(fs::fileExists(path));

    MDLObject unloaded;
    EXPECT_TRUE(throwsPlatform([&] { unloaded.exportFLT(path, "png"); }, 91));
    EXPECT_EQ(hex::nextFreeFile(), freeBefore);
    EXPECT_EQ(readFile(path).size(), 324u);
}

TEST(ExportFLT, The32768thTriangleOverflowsTheFaceCounter) {
    TempDir dir;
    modelbytes::Model model;
    model.vertices.assign(3, {0, 0, 0, 0, 1, 0, 0, 0});
    model.drawTriangles(0, std::vector<std::array<int, 3>>(21845, {0, 1, 2}));
    model.drawTriangles(0, std::vector<std::array<int, 3>>(32768 - 21845, {2, 1, 0}));
    MDLObject object;
    object.readMDLBytes(model.bytes());
    const int16_t freeBefore = hex::nextFreeFile();
    const std::string path = dir.file("many.flt");
    EXPECT_TRUE(throwsPlatform([&] { object.exportFLT(path, "png"); }, 6));
    EXPECT_EQ(hex::nextFreeFile(), freeBefore);
    EXPECT_EQ(readFile(path).size(), expectedSize(0, 0, 3, 32767) - 5 * 4);
}
