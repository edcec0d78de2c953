#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

// The damaged files of the "Bad input" table in README.md, each with the error it gets.
namespace {

using namespace testbytes;

struct DamagedFile {
    const char* what;
    std::string bytes;
    int number;
    std::string source;
    std::string description;
    // The one line the error gives after the file's path and ": "; empty: not checked.
    std::string line = "";
};

// Reads the bytes from a file of that name and gives its path.
using Reader = std::function<void(const std::string& path)>;

void expectError(const DamagedFile& file, const char* name, const Reader& read) {
    SCOPED_TRACE(file.what);
    TempDir folder;
    const std::string path = folder.file(name);
    writeFile(path, file.bytes);
    EXPECT_TRUE(throwsError([&] { read(path); }, file.number, file.source, file.description));
    if (file.line.empty()) return;
    try {
        read(path);
    } catch (const velmora::Error& e) {
        EXPECT_EQ(e.what(), path + ": " + file.line);
        EXPECT_EQ(e.file(), path);
    }
}

void loadModel(const std::string& path) {
    velmora::MDLObject model;
    model.readMDL(path);
}

void scan(const std::string& path) {
    velmora::BGLObject bgl;
    bgl.readXMLBGL(path);
}

std::string setMaterialBytes() {
    return le16(184) + le16(0) + le16(-1);
}

std::string compiledHeader(int32_t sections) {
    return bytes({1, 2}) + std::string(18, '\0') + le32(sections) + std::string(32, '\0');
}

}  // namespace

TEST(BadInput, EachDamagedFileGetsItsError) {
    const std::string overflow = "Overflow";
    const DamagedFile models[] = {
        {"form other than MDL9", riff("", "MDL8"), 100, "Velmora.MDLObject",
         "This is not a valid RIFF scenery MDL file",
         "its form is \"MDL8\", not \"MDL9\" (error 100: This is not a valid RIFF scenery MDL "
         "file)"},
        {"cut short", riff(section("MDLH", std::string(36, '\0'))).substr(0, 30), 9, "Velmora",
         "Subscript out of range",
         "section \"MDLH\" at byte 12: says 36 bytes, but only 10 follow (error 9: Subscript "
         "out of range)"},
        {"negative section size", riff("BBOX" + le32(-24) + std::string(24, '\0')), 5, "Velmora",
         "Invalid procedure call or argument"},
        {"unknown section tag", riff(section("ABCD", "x")), 9, "Velmora", "Subscript out of range",
         "byte 12: unknown section tag \"ABCD\" (error 9: Subscript out of range)"},
        {"vertex section without a vertex list", riff(section("VERT", le16(182) + le16(0))), 100,
         "Velmora.VertexList", "Error while reading vertex list",
         "section \"VERT\" at byte 12 (error 100: Error while reading vertex list)"},
        {"opcode of no command",
         riff(section("BGL ", setMaterialBytes() + le16(0xFFFF) + le16(189))), 9, "Velmora",
         "Subscript out of range",
         "section \"BGL \" at byte 26, command 2: the opcode word 0xFFFF lies outside the opcode "
         "table (0 to 260) (error 9: Subscript out of range)"},
        {"zero bytes behind the commands", riff(section("BGL ", le16(189) + le16(0))), 100,
         "Velmora.BGLCommandList", "Unrecognised BGL Opcode: 0"},
        {"line list of 65,535 indices",
         riff(section("BGL ", le16(186) + le16(0) + le16(0) + le16(0xFFFF))), 6, "Velmora",
         overflow},
    };
    for (const auto& file : models)
        expectError(file, "model.mdl", loadModel);

    // A count that claims more than the bytes hold reads zeros, up to its 16-bit bound.
    velmora::MDLObject model;
    model.readMDLBytes(riff(section("VERT", le16(181) + le16(0xFFFF) + le32(0))));
    EXPECT_EQ(model.VertexList()->Count(), 65535);
    EXPECT_EQ(model.VertexList()->Item(65535)->x(), 0.0f);

    const std::string source = "Velmora.BGLObject";
    const DamagedFile scenery[] = {
        {"compiled file without 01 02", "\x02\x01" + std::string(60, '\0'), 100, source,
         "This is not a valid XML style BGL file"},
        {"more sections than the file holds", compiledHeader(3) + std::string(20, '\0'), 100,
         source, "The section table of this BGL file is damaged"},
        {"section count above 32,767", compiledHeader(32768), 6, "Velmora", overflow},
        {"model table past the end",
         compiledHeader(1) + le32(43) + le32(0) + le32(1) + le32(76) + le32(0) + le32(0) + le32(2) +
             le32(92) + le32(0) + std::string(24, '\0'),
         100, source, "The model table of subsection 1 of section 1 is damaged"},
    };
    for (const auto& file : scenery)
        expectError(file, "scenery.bgl", scan);
}
