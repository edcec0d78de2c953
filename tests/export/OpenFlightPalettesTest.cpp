#include <velmora/MaterialList.h>
#include <velmora/OpenFlightWriter.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>

#include "export/FltReading.h"
#include "foundation/HexFunctions.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <vector>

using namespace velmora;
using namespace fltread;

namespace {

std::shared_ptr<material> makeMaterial(float r, float g, float b, float a) {
    auto m = std::make_shared<material>();
    m->Diffuse()->r(r);
    m->Diffuse()->g(g);
    m->Diffuse()->b(b);
    m->Diffuse()->a(a);
    m->Ambient()->r(0.1f);
    m->Ambient()->g(0.2f);
    m->Ambient()->b(0.3f);
    m->Specular()->r(0.4f);
    m->Specular()->g(0.5f);
    m->Specular()->b(0.6f);
    m->Emmisive()->r(0.7f);
    m->Emmisive()->g(0.8f);
    m->Emmisive()->b(0.9f);
    m->Power(12.5f);
    return m;
}

std::shared_ptr<TextureList> texturesNamed(std::initializer_list<std::string> names) {
    auto list = std::make_shared<TextureList>();
    for (const auto& name : names)
        list->Add()->bitmap(name);
    return list;
}

// Names of the files in `folder`, sorted and joined by blanks.
std::string listingOf(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    std::string out;
    for (const auto& name : names)
        out += (out.empty() ? "" : " ") + name;
    return out;
}

}  // namespace

TEST(OpenFlightPalettes, ColorAndMaterialPalettesFollowTheMaterials) {
    TempDir dir;
    auto materials = std::make_shared<MaterialList>();
    materials->Add(makeMaterial(1.0f, 0.0f, 0.0f, 1.0f));
    materials->Add(makeMaterial(0.0f, 1.0f, 0.0f, 0.5f));
    materials->Add(makeMaterial(0.0f, 0.0f, 1.0f, 0.25f));
    OpenFlightWriter writer;
    writer.createDB(dir.file("m.flt"));
    writer.writeColorPalette(materials);
    writer.writeMaterialPalette(materials);
    writer.closeDB();
    const std::string db = readFile(dir.file("m.flt"));
    ASSERT_EQ(db.size(), 4228u + 4u * 84u);

    EXPECT_EQ(be16(db, 0), 32);
    EXPECT_EQ(be16(db, 2), 4228);
    EXPECT_TRUE(allZero(db, 4, 128));
    EXPECT_EQ(testbytes::hex(db.substr(132, 12)), "FF 00 00 FF FF 00 FF 00 FF FF 00 00");
    EXPECT_EQ(db.substr(144, 4228 - 144), std::string((1024 - 3) * 4, '\xFF'));

    for (int index = 0; index < 4; ++index) {
        const std::size_t at = 4228 + static_cast<std::size_t>(index) * 84;
        SCOPED_TRACE(index);
        EXPECT_EQ(be16(db, at), 113);
        EXPECT_EQ(be16(db, at + 2), 84);
        EXPECT_EQ(be32(db, at + 4), index);
        EXPECT_EQ(db.substr(at + 8, 12), std::to_string(index) + std::string(11, '\0'));
        EXPECT_EQ(be32(db, at + 20), 1);
        EXPECT_EQ(be32(db, at + 80), 0);
    }
    const std::size_t second = 4228 + 84;
    EXPECT_EQ(beSingle(db, second + 24), 0.1f);  // ambient
    EXPECT_EQ(beSingle(db, second + 32), 0.3f);
    EXPECT_EQ(beSingle(db, second + 36), 0.0f);  // diffuse
    EXPECT_EQ(beSingle(db, second + 40), 1.0f);
    EXPECT_EQ(beSingle(db, second + 48), 0.4f);  // specular
    EXPECT_EQ(beSingle(db, second + 68), 0.9f);  // emissive b
    EXPECT_EQ(beSingle(db, second + 72), 12.5f);
    EXPECT_EQ(beSingle(db, second + 76), 0.5f);  // alpha from the diffuse colour

    const std::size_t white = 4228 + 3 * 84;
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(beSingle(db, white + 24 + 4 * i), 1.0f);
    EXPECT_TRUE(allZero(db, white + 48, 28));
    EXPECT_EQ(beSingle(db, white + 76), 1.0f);
}

TEST(OpenFlightPalettes, EmptyListsStillGiveTheirFixedRecords) {
    TempDir dir;
    auto materials = std::make_shared<MaterialList>();
    OpenFlightWriter writer;
    writer.createDB(dir.file("e.flt"));
    writer.writeColorPalette(materials);
    writer.writeMaterialPalette(materials);
    writer.writeTexturePalette(std::make_shared<TextureList>(), "png", true);
    writer.writeVertexPalette(std::make_shared<VertexList>(), 0.0f);
    writer.closeDB();
    const std::string db = readFile(dir.file("e.flt"));
    ASSERT_EQ(db.size(), 4228u + 84u + 8u);
    EXPECT_EQ(db.substr(132, 4096), std::string(4096, '\xFF'));
    EXPECT_EQ(be32(db, 4228 + 4), 0) << "the white material alone has index 0";
    EXPECT_EQ(testbytes::hex(db.substr(4228 + 84)), "00 43 00 08 00 00 00 08");
    EXPECT_EQ(dir.listing(), "e.flt");
}

TEST(OpenFlightPalettes, VertexPaletteExchangesTheSecondAndThirdComponents) {
    TempDir dir;
    auto vertices = std::make_shared<VertexList>();
    for (int i = 0; i < 2; ++i) {
        auto v = vertices->Add();
        v->x(1.0f + i);
        v->y(2.0f);
        v->z(3.0f);
        v->nx(0.25f);
        v->ny(0.5f);
        v->nz(0.75f);
        v->tx(0.125f);
        v->ty(0.875f);
    }
    OpenFlightWriter writer;
    writer.createDB(dir.file("v.flt"));
    writer.writeVertexPalette(vertices, 90.0f);
    writer.closeDB();
    const std::string db = readFile(dir.file("v.flt"));
    ASSERT_EQ(db.size(), 8u + 2u * 64u);
    EXPECT_EQ(be16(db, 0), 67);
    EXPECT_EQ(be32(db, 4), 2 * 64 + 8);
    const std::size_t second = 8 + 64;
    EXPECT_EQ(be16(db, second), 70);
    EXPECT_EQ(beDouble(db, second + 8), 2.0);
    EXPECT_EQ(beDouble(db, second + 16), 3.0) << "the file's y is the model's z";
    EXPECT_EQ(beDouble(db, second + 24), 2.0) << "the file's z is the model's y";
    EXPECT_EQ(beSingle(db, second + 32), 0.25f);
    EXPECT_EQ(beSingle(db, second + 36), 0.75f);
    EXPECT_EQ(beSingle(db, second + 40), 0.5f);
    EXPECT_EQ(beSingle(db, second + 44), 0.125f);
    EXPECT_EQ(beSingle(db, second + 48), 0.875f);
}

TEST(OpenFlightPalettes, TextureNamesAndTheirAttributeFiles) {
    TempDir dir;
    std::filesystem::create_directory(dir.file("db"));
    const auto textures =
        texturesNamed({"Wall.BMP", "roof.bmp", "sub\\Grass.bmp.bmp", "../../escape.bmp", "x.tga"});
    OpenFlightWriter writer;
    writer.createDB(dir.file("db/t.flt"));
    writer.writeTexturePalette(textures, "DDS", true);
    writer.closeDB();
    const std::string db = readFile(dir.file("db/t.flt"));
    ASSERT_EQ(db.size(), 5u * 216u);
    const std::vector<std::string> names = {"wall.DDS", "roof.DDS", "sub\\grass.DDS.DDS",
                                            "../../escape.DDS", "x.tga"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        SCOPED_TRACE(names[i]);
        EXPECT_EQ(be16(db, i * 216), 64);
        EXPECT_EQ(be16(db, i * 216 + 2), 216);
        EXPECT_EQ(fieldText(db, i * 216 + 4, 200), names[i]);
        EXPECT_EQ(be32(db, i * 216 + 204), static_cast<int32_t>(i));
        EXPECT_TRUE(allZero(db, i * 216 + 208, 8));
    }

    // Names with folder parts stay in the database's folder; nothing lands outside it.
    EXPECT_EQ(listingOf(dir.file("db")),
              "escape.DDS.attr grass.DDS.DDS.attr roof.DDS.attr t.flt wall.DDS.attr x.tga.attr");
    EXPECT_EQ(dir.listing(), "db");
    const std::string first = readFile(dir.file("db/wall.DDS.attr"));
    ASSERT_EQ(first.size(), 1608u);
    for (const char* other : {"roof.DDS.attr", "grass.DDS.DDS.attr", "escape.DDS.attr"}) {
        EXPECT_EQ(readFile(dir.file(std::string("db/") + other)), first) << other;
    }
    const std::vector<std::pair<std::size_t, int32_t>> words = {
        {0, 100},          {4, 100},          {8, 1000},     {12, 1000},  {16, 64},
        {24, 4},           {28, 6},           {32, 1},       {40, 3},     {44, 3},
        {104, 0x408F4000}, {112, 0x408F4000}, {120, 100},    {124, 1570}, {132, 1},
        {244, 2},          {248, 2},          {320, 0x803F}, {1536, -1},  {1540, -1},
        {1544, 1},         {1556, 128},       {1568, 1},     {1572, 1},   {1592, 1570}};
    int32_t nonZero = 0;
    for (std::size_t at = 0; at < 1608; at += 4)
        nonZero += be32(first, at) != 0 ? 1 : 0;
    EXPECT_EQ(nonZero, static_cast<int32_t>(words.size()));
    for (const auto& [at, value] : words)
        EXPECT_EQ(be32(first, at), value) << "offset " << at;
    EXPECT_EQ(beDouble(first, 104), 1000.0);
}

TEST(OpenFlightPalettes, AttributeFilesOnlyWhenAskedAndReplacedWhenNamedTwice) {
    TempDir dir;
    {
        OpenFlightWriter writer;
        writer.createDB(dir.file("a.flt"));
        writer.writeTexturePalette(texturesNamed({"a.bmp"}), "png", false);
        writer.closeDB();
    }
    EXPECT_EQ(dir.listing(), "a.flt");

    writeFile(dir.file("same.png.attr"), std::string(5000, 'x'));
    OpenFlightWriter writer;
    writer.createDB(dir.file("a.flt"));
    writer.writeTexturePalette(texturesNamed({"same.bmp", "SAME.bmp"}), "png", true);
    writer.closeDB();
    EXPECT_EQ(dir.listing(), "a.flt same.png.attr");
    EXPECT_EQ(readFile(dir.file("same.png.attr")).size(), 1608u);
}

TEST(OpenFlightPalettes, TooLongATextureNameFailsInsideItsCutOffRecord) {
    TempDir dir;
    OpenFlightWriter writer;
    writer.createDB(dir.file("long.flt"));
    writer.writePushLevel();
    const auto textures = texturesNamed({"ok.bmp", std::string(197, 'n') + ".bmp"});
    EXPECT_TRUE(throwsError([&] { writer.writeTexturePalette(textures, "png", true); }, 100,
                            "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    writer.closeDB();
    const std::string db = readFile(dir.file("long.flt"));
    ASSERT_EQ(db.size(), 4u + 216u + 4u) << "the second record stops behind its head";
    EXPECT_EQ(testbytes::hex(db.substr(220)), "00 40 00 D8");
}

TEST(OpenFlightPalettes, ListsThatAreNotSetFailWithError91) {
    TempDir dir;
    OpenFlightWriter writer;
    writer.createDB(dir.file("n.flt"));
    EXPECT_TRUE(throwsPlatform([&] { writer.writeColorPalette(nullptr); }, 91));
    EXPECT_TRUE(throwsPlatform([&] { writer.writeVertexPalette(nullptr, 0.0f); }, 91));
}

TEST(OpenFlightPalettes, BareDatabaseNameKeepsItsAttributeFilesInTheCurrentFolder) {
    TempDir dir;
    const auto previous = std::filesystem::current_path();
    std::filesystem::current_path(dir.path());
    {
        OpenFlightWriter writer;
        writer.createDB("bare.flt");
        writer.writeTexturePalette(texturesNamed({"a.bmp"}), "png", true);
        writer.closeDB();
    }
    std::filesystem::current_path(previous);
    EXPECT_EQ(dir.listing(), "a.png.attr bare.flt");
}
