#include <velmora/MDLObject.h>
#include <velmora/OpenFlightWriter.h>
#include <velmora/Version.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

using namespace velmora;
using namespace modelbytes;

namespace {

// The names of the commands of bgltest::everyOpcode, in order.
// clang-format off
const char* const kNames[] = {
    "BGL_TAG", "VAR_BASE_32", "VAR_BASE_OVERRIDE", "MATERIAL_LIST_BEGIN", "TEXTURE_LIST_BEGIN",
    "SETWRD", "BGL_ZBIAS", "BGL_SET_MATRIX_INDIRECT", "IFIN1", "SET_MATERIAL", "IFIN2", "IFIN3",
    "IFIN_BOX_PLANE", "IFIN_INSTANCED_BOX_PLANE", "IFINBOXP", "IFMSK", "IFSIZEV", "IFSIZEH",
    "SEPARATION_PLANE", "SPRITE_VICALL", "BGL_ANIMATE", "BGL_INTERPOLATE", "DRAW_TRI_LIST_BEGIN",
    "DRAW_TRI_LIST_ITEM", "DRAW_TRI_LIST_ITEM", "BGL_LIGHT", "DRAW_LINE_LIST_BEGIN",
    "DRAW_LINE_LIST_ITEM", "DRAW_LINE_LIST_ITEM", "JUMP", "BGL_JUMP_32", "BGL_CALL_32", "BGL_CALL",
    "BGL_RETURN", "BGL_RETURN", "BGL_END"};
// clang-format on

// The big-endian value of a field: 'h' 16 and 'i' 32 bits signed, 'f' single, 'd' double.
double fieldValue(const std::string& db, std::size_t at, char kind) {
    const std::size_t width = kind == 'h' ? 2 : kind == 'd' ? 8 : 4;
    uint64_t bits = 0;
    for (std::size_t i = 0; i < width; ++i)
        bits = bits << 8 | static_cast<uint8_t>(db.at(at + i));
    const auto low = static_cast<uint32_t>(bits);
    float single;
    double real;
    std::memcpy(&single, &low, 4);
    std::memcpy(&real, &bits, 8);
    return kind == 'h'   ? static_cast<int16_t>(bits)
           : kind == 'i' ? static_cast<int32_t>(low)
           : kind == 'f' ? single
                         : real;
}

// Two materials, two textures, six vertices and three faces: one before any material, one
// untextured, one textured.
Model smallModel() {
    Model m;
    m.materials = {
        {{1, 0, 0, 1}, {0.1f, 0.2f, 0.3f, 1}, {0.4f, 0.5f, 0.6f, 1}, {0.7f, 0.8f, 0.9f, 1}, 12.5f},
        {{0, 1, 0, 0.5f}, {}, {}, {}, 0}};
    m.textures = {"Wall.bmp", "ROOF.BMP"};
    for (int i = 0; i < 6; ++i)
        m.vertices.push_back({1.0f + i, 2, 3, 0.25f, 0.5f, 0.75f, 0.125f, 0.875f});
    m.draw(0, {{0, 1, 2}});
    m.commands += setMaterial(1, -1);
    m.draw(3, {{0, 1, 2}});
    m.commands += zBias(2) + setMaterial(0, 1);
    m.draw(3, {{2, 1, 0}});
    m.commands += bglEnd();
    return m;
}

}  // namespace

TEST(ExportASM, ListingShowsTexturesAndEveryCommandOrStopsAtOneWithoutRow) {
    const bgltest::StreamAssembler stream = bgltest::everyOpcode();
    modelbytes::Model model;
    model.textures = {"Wall.bmp", std::string(31, 'b'), std::string(32, 'd'), std::string(40, 'c')};
    model.commands = stream.bytes();
    MDLObject object;
    object.readMDLBytes(model.bytes());

    std::string expected = "; Start of texture list\r\n" + std::string("Wall.bmp") +
                           std::string(23, ' ') + " 0 \r\n" + std::string(31, 'b') + " 1 \r\n" +
                           std::string(32, 'd') + "  2 \r\n" + std::string(40, 'c') + "  3 \r\n" +
                           "\r\n; Start of BGL command list\r\n";
    // Each parameter is followed by its jump destination, 0 when it is no jump.
    for (int i = 0; i < stream.size(); ++i) {
        expected += kNames[i];
        const auto& fields = stream.ops[static_cast<std::size_t>(i)].fields;
        for (std::size_t p = 0; p < fields.size(); ++p) {
            const int destination = fields[p].target < 0 ? 0 : fields[p].target + 1;
            expected += " " + stream.text(i, p) + " JD: " + std::to_string(destination) + ",";
        }
        expected += "\r\n";
    }
    expected += "\r\n";

    TempDir dir;
    const std::string path = dir.file("model.asm");
    writeFile(path, std::string(100000, 'x'));  // an older, longer listing is replaced
    object.exportASM(path);
    // The banner in front names the version.
    const std::string listing = readFile(path);
    const std::size_t body = listing.find("; Start of texture list\r\n");
    EXPECT_NE(listing.substr(0, body).find("; Velmora DLL version " + versionString() + "\r\n"),
              std::string::npos);
    EXPECT_EQ(listing.substr(body), expected);

    // A command without a row stops the listing; what was written stays.
    MDLObject bad;
    bad.readMDLBytes(modelbytes::Model{}.bytes());
    bad.BGLCommandList()->Add()->opcode(BGL_END);
    bad.BGLCommandList()->Add()->opcode(static_cast<BGLOpcode>(5000));
    EXPECT_TRUE(throwsPlatform([&] { bad.exportASM(path); }, 9));
    EXPECT_EQ(readFile(path).substr(body),
              "; Start of texture list\r\n\r\n; Start of BGL command list\r\nBGL_END\r\n");
}

TEST(ExportFLT, RecordsStandInOrderWithTheirFieldsAtTheirOffsetsOrFailClosed) {
    TempDir dir;
    MDLObject model;
    model.readMDLBytes(smallModel().bytes());
    model.exportFLT(dir.file("model.flt"), "png", false);
    const std::string db = readFile(dir.file("model.flt"));
    // 4,880 bytes of header, palettes, the white material and groups; 84 a material, 216 a
    // texture, 64 a vertex, 104 a face with its vertex list.
    ASSERT_EQ(db.size(), 4880u + 84 * 2 + 216 * 2 + 64 * 6 + 104 * 3);
    // The records, found through their length fields.
    std::vector<std::size_t> records;
    std::vector<int> opcodes;
    for (std::size_t at = 0; at + 4 <= db.size();
         at += static_cast<std::size_t>(fieldValue(db, at + 2, 'h'))) {
        ASSERT_GE(fieldValue(db, at + 2, 'h'), 4) << at;
        records.push_back(at);
        opcodes.push_back(static_cast<int>(fieldValue(db, at, 'h')));
    }
    // Header, colour palette, two materials and the white one, two textures, the vertex
    // palette and its six vertices, the groups and objects, then each face with its vertex list.
    const std::vector<int> expected = {1,  32, 113, 113, 113, 64, 64, 67, 70, 70, 70, 70, 70, 70,
                                       10, 2,  10,  2,   10,  73, 10, 4,  10, 5,  10, 72, 11, 5,
                                       10, 72, 11,  5,   10,  72, 11, 11, 11, 11, 11, 11};
    ASSERT_EQ(opcodes, expected);

    struct Field {
        std::size_t record, offset;
        char kind;
        double value;
    };
    // clang-format off
    const Field fields[] = {
        {0, 2, 'h', 324}, {0, 12, 'i', 1600}, {0, 16, 'i', 1}, {0, 60, 'h', 1}, {0, 126, 'h', 1},
        {0, 128, 'i', 100}, {1, 2, 'h', 4228},
        // Materials: index, flags, ambient, diffuse, specular, emissive, shininess, alpha; the
        // white one behind them.
        {2, 4, 'i', 0}, {2, 20, 'i', 1}, {2, 24, 'f', 0.1f}, {2, 32, 'f', 0.3f}, {2, 36, 'f', 1},
        {2, 48, 'f', 0.4f}, {2, 68, 'f', 0.9f}, {2, 72, 'f', 12.5f}, {2, 76, 'f', 1},
        {3, 40, 'f', 1}, {3, 76, 'f', 0.5f}, {4, 4, 'i', 2}, {4, 24, 'f', 1}, {4, 48, 'f', 0},
        {4, 76, 'f', 1},
        // Textures: their index; vertices: y and z exchanged, normals likewise.
        {5, 204, 'i', 0}, {6, 204, 'i', 1}, {7, 4, 'i', 6 * 64 + 8}, {9, 8, 'd', 2},
        {9, 16, 'd', 3}, {9, 24, 'd', 2}, {9, 32, 'f', 0.25f}, {9, 36, 'f', 0.75f},
        {9, 40, 'f', 0.5f}, {9, 44, 'f', 0.125f}, {9, 48, 'f', 0.875f},
        // Faces: texture, material (the white one for a textured face), colour, detail texture,
        // IR material, light mode, shader; then their vertex lists (offsets into the palette).
        {23, 28, 'h', 0}, {23, 30, 'h', 2}, {23, 68, 'i', 127}, {23, 26, 'h', -1},
        {23, 36, 'i', -1}, {23, 64, 'h', -1}, {23, 78, 'h', -1}, {25, 4, 'i', 0 * 64 + 8},
        {25, 12, 'i', 2 * 64 + 8}, {27, 28, 'h', -1}, {27, 30, 'h', 1}, {27, 68, 'i', 255},
        {29, 8, 'i', 4 * 64 + 8}, {31, 28, 'h', 1}, {31, 30, 'h', 2}, {31, 68, 'i', 127},
        {33, 4, 'i', 5 * 64 + 8}};
    // clang-format on
    for (const Field& f : fields) {
        EXPECT_EQ(fieldValue(db, records[f.record] + f.offset, f.kind), f.value)
            << "record " << f.record << " offset " << f.offset;
    }
    EXPECT_TRUE(std::regex_match(db.substr(20, db.find('\0', 20) - 20),
                                 std::regex(R"(\d{1,2}/\d{1,2}/\d{4})")));
    EXPECT_EQ(db.substr(4, 8), std::string("db\0\0\0\0\0\0", 8));
    EXPECT_EQ(testbytes::hex(db.substr(records[1] + 132, 12)),
              "FF 00 00 FF FF 00 FF 00 FF FF FF FF")
        << "the colour palette: FF, blue, green, red of each diffuse colour, then FF";
    EXPECT_EQ(db.substr(records[5] + 4, 9), std::string("wall.png\0", 9));
    EXPECT_EQ(db.substr(records[23] + 4, 8), std::string("p1\0\0\0\0\0\0", 8));
    EXPECT_EQ(db.substr(records[2] + 8, 12), "0" + std::string(11, '\0'));

    MDLObject empty;
    empty.readMDLBytes(Model{}.bytes());
    empty.exportFLT(dir.file("empty.flt"), "png", false);
    EXPECT_EQ(readFile(dir.file("empty.flt")).size(), 4880u);

    // A failure closes the database and leaves what was written.
    const std::string path = dir.file("failed.flt");
    model.TextureList()->Item(2)->bitmap(std::string(201, 'x'));
    EXPECT_TRUE(throwsError([&] { model.exportFLT(path, "png"); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    EXPECT_EQ(readFile(path).size(), 324u + 4228u + 3u * 84u + 216u + 4u);
    EXPECT_TRUE(throwsPlatform([&] { MDLObject().exportFLT(path, "png"); }, 91));

    // Names of more than seven characters follow their record as a Long ID.
    OpenFlightWriter writer;
    writer.createDB(path);
    writer.writeGroup("abcdefg");
    writer.writeGroup("abcdefgh");
    writer.closeDB();
    EXPECT_EQ(testbytes::hex(readFile(path).substr(88)),
              testbytes::hex(bytes({0, 33, 0, 13}) + "abcdefgh" + bytes({0})));
    EXPECT_EQ(readFile(path).substr(48, 8), std::string("abcdefg\0", 8));
}

TEST(ExportFLT, AttributeFilesAreIdenticalAndStayInTheDatabaseFolder) {
    TempDir dir;
    std::filesystem::create_directory(dir.file("db"));
    Model model;
    model.textures = {"Wall.BMP", "sub\\Grass.bmp", "../../Escape.bmp", "x.tga"};
    MDLObject object;
    object.readMDLBytes(model.bytes());
    object.exportFLT(dir.file("db/t.flt"), "DDS");
    EXPECT_EQ(dir.listing(), "db");
    EXPECT_EQ(dir.listing("db"), "escape.DDS.attr grass.DDS.attr t.flt wall.DDS.attr x.tga.attr");
    const std::string first = readFile(dir.file("db/wall.DDS.attr"));
    ASSERT_EQ(first.size(), 1608u);
    for (const char* other : {"grass.DDS.attr", "escape.DDS.attr", "x.tga.attr"})
        EXPECT_EQ(readFile(dir.file("db/") + other), first) << other;
    // clang-format off
    const std::pair<std::size_t, int32_t> words[] = {
        {0, 100}, {4, 100}, {8, 1000}, {12, 1000}, {16, 64}, {24, 4}, {28, 6}, {32, 1}, {40, 3},
        {44, 3}, {104, 0x408F4000}, {112, 0x408F4000}, {120, 100}, {124, 1570}, {132, 1},
        {244, 2}, {248, 2}, {320, 0x803F}, {1536, -1}, {1540, -1}, {1544, 1}, {1556, 128},
        {1568, 1}, {1572, 1}, {1592, 1570}};
    // clang-format on
    int nonZero = 0;
    for (std::size_t at = 0; at < 1608; at += 4)
        nonZero += fieldValue(first, at, 'i') != 0;
    EXPECT_EQ(nonZero, 25);
    for (const auto& [at, value] : words)
        EXPECT_EQ(fieldValue(first, at, 'i'), value) << at;
}

// OpenSceneGraph's osgconv, an independent OpenFlight reader, converts the database to
// Wavefront OBJ with every face kept apart: the faces' vertices and triangles in
// face order, and the images of their materials come back.
TEST(OsgconvReadBack, TexturedModelComesBackWithItsFacesVerticesAndTextures) {
    if (std::system("command -v osgconv >/dev/null") != 0) {
        GTEST_SKIP() << "osgconv (package openscenegraph) is not installed";
    }
    // Eight corners of a house with a wall and a roof texture, and four triangles over two lists.
    modelbytes::Model model;
    model.materials = {{{1, 0, 0, 1}}, {{0, 0.5f, 1, 1}}};
    model.textures = {"Wall.bmp", "ROOF.BMP"};
    for (int i = 0; i < 8; ++i) {
        model.vertices.push_back({static_cast<float>(i % 2) * 4 - 2,
                                  static_cast<float>(i / 4) * 3 + 0.5f,
                                  static_cast<float>((i / 2) % 2) * 6 - 3.25f, 0, 1, 0,
                                  static_cast<float>(i % 2), static_cast<float>(i / 4)});
    }
    model.commands += modelbytes::setMaterial(0, 0);
    model.draw(0, {{0, 1, 5}, {0, 5, 4}});
    model.commands += modelbytes::setMaterial(1, 1);
    model.draw(2, {{2, 3, 5}, {0, 1, 4}});
    model.commands += modelbytes::bglEnd();

    TempDir dir;
    MDLObject object;
    object.readMDLBytes(model.bytes());
    // 2 x 2 uncompressed true-colour TGAs, so that the reader finds every texture it is told of.
    const std::string tga =
        testbytes::bytes({0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 2, 0, 24, 0});
    writeFile(dir.file("wall.tga"), tga + std::string(12, '\x7F'));
    writeFile(dir.file("roof.tga"), tga + std::string(12, '\x7F'));
    object.exportFLT(dir.file("model.flt"), "tga", true, 0.0f);
    const int status =
        std::system(("timeout 60 osgconv -O preserveFace '" + dir.file("model.flt") + "' '" +
                     dir.file("model.obj") + "' >'" + dir.file("log") + "' 2>&1")
                        .c_str());
    const std::string log = readFile(dir.file("log"));
    const std::string messages = log.substr(0, log.find("Data written to"));
    ASSERT_EQ(status, 0) << messages;
    EXPECT_EQ(messages, "");

    using Position = std::array<double, 3>;
    std::vector<Position> vertices;
    std::vector<std::array<Position, 3>> triangles;
    std::set<std::string> images;
    std::istringstream text(readFile(dir.file("model.obj")) + readFile(dir.file("model.mtl")));
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::string key, value;
        words >> key;
        if (key == "v")
            words >> vertices.emplace_back()[0] >> vertices.back()[1] >> vertices.back()[2];
        if (key == "map_Kd" && words >> value)
            images.insert(std::filesystem::path(value).filename().string());
        if (key == "f") {
            for (Position& corner : triangles.emplace_back()) {
                words >> value;  // "vertex/texture/normal", 1-based
                corner = vertices.at(std::stoul(value) - 1);
            }
        }
    }
    EXPECT_EQ(images, (std::set<std::string>{"roof.tga", "wall.tga"}));
    // The triangles in the file's frame, where y and z are exchanged.
    ASSERT_EQ(triangles.size(), model.drawn.size());
    for (std::size_t i = 0; i < model.drawn.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            const auto& v = model.vertices.at(static_cast<std::size_t>(model.drawn[i][k]));
            const Position want{v.x, v.z, v.y};
            for (std::size_t axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(triangles[i][k][axis], want[axis], 1e-5) << i << "," << k;
        }
    }
}
