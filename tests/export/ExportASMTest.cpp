#include <velmora/ASMWriter.h>
#include <velmora/MDLObject.h>
#include <velmora/Version.h>

#include "export/ModelBytes.h"
#include "foundation/HexFunctions.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace velmora;
using testbytes::f32;
using testbytes::le16;
using testbytes::le32;

namespace {

// A command stream and the listing line that each of its commands must give.
struct Stream {
    std::string bytes;
    std::vector<std::string> lines;

    // `params` are the parameter texts with the jump destination of each.
    void add(const std::string& commandBytes, const std::string& name,
             const std::vector<std::pair<std::string, int>>& params = {}) {
        bytes += commandBytes;
        std::string line = name;
        for (const auto& [text, jump] : params) {
            line += " " + text + " JD: " + std::to_string(jump) + ",";
        }
        lines.push_back(line);
    }
};

std::string words(std::initializer_list<int> values) {
    std::string out;
    for (int v : values)
        out += le16(v);
    return out;
}

// Parameters without jumps.
std::vector<std::pair<std::string, int>> plain(std::initializer_list<std::string> texts) {
    std::vector<std::pair<std::string, int>> out;
    for (const auto& t : texts)
        out.emplace_back(t, 0);
    return out;
}

// One command of every row of the dictionary; every jump leads to the command behind it.
Stream everyKindOfCommand() {
    Stream s;
    s.add(words({0xB8, 3, 0}), "SET_MATERIAL", plain({"3", "0"}));
    s.add(words({0x0D, 4}), "JUMP", {{"4", 3}});
    s.add(words({0x1B, 22, 1, 2, 3, 4, 5, 6, 7, 8, 9}), "IFIN_BOX_PLANE",
          {{"22", 4},
           {"1", 0},
           {"2", 0},
           {"3", 0},
           {"4", 0},
           {"5", 0},
           {"6", 0},
           {"7", 0},
           {"8", 0},
           {"9", 0}});
    s.add(words({0x1C, 16, 1, 2, 3, 4, 5, 6}), "IFIN2",
          {{"16", 5}, {"1", 0}, {"2", 0}, {"3", 0}, {"4", 0}, {"5", 0}, {"6", 0}});
    s.add(words({0x21, 22, -1, -2, -3, -4, -5, -6, -7, -8, -9}), "IFIN3",
          {{"22", 6},
           {"-1", 0},
           {"-2", 0},
           {"-3", 0},
           {"-4", 0},
           {"-5", 0},
           {"-6", 0},
           {"-7", 0},
           {"-8", 0},
           {"-9", 0}});
    s.add(words({0x23, 4}), "BGL_CALL", {{"4", 7}});
    s.add(words({0x24, 10, 256, -5, 5}), "IFIN1", {{"10", 8}, {"256", 0}, {"-5", 0}, {"5", 0}});
    s.add(words({0x25, 14, 1, 2, 3}) + le32(100000), "SEPARATION_PLANE",
          {{"14", 9}, {"1", 0}, {"2", 0}, {"3", 0}, {"100000", 0}});
    s.add(words({0x26, 54, 2}), "SETWRD", plain({"54", "2"}));
    s.add(words({0x39, 8, 7, 255}), "IFMSK", {{"8", 11}, {"7", 0}, {"255", 0}});
    s.add(words({0x5F, 8, 100, 200}), "IFSIZEV", {{"8", 12}, {"100", 0}, {"200", 0}});
    s.add(words({0x6D, 8, 300, 400}), "IFSIZEH", {{"8", 13}, {"300", 0}, {"400", 0}});
    s.add(words({0x73, 16, 1, 2, 3, 4, 5, 6}), "IFINBOXP",
          {{"16", 14}, {"1", 0}, {"2", 0}, {"3", 0}, {"4", 0}, {"5", 0}, {"6", 0}});
    s.add(le16(0x88) + le32(6), "BGL_JUMP_32", {{"6", 15}});
    s.add(le16(0x89) + le32(1234), "VAR_BASE_32", plain({"1234"}));
    s.add(le16(0x8A) + le32(6), "BGL_CALL_32", {{"6", 17}});
    s.add(le16(0x9E) + le32(1000) + le16(20) + le32(2000) + le16(20) + le32(3000) + le16(20),
          "BGL_INTERPOLATE",
          {{"1000", 0}, {"20", 18}, {"2000", 0}, {"20", 18}, {"3000", 0}, {"20", 18}});
    s.add(le16(0x9F) + le32(-1), "VAR_BASE_OVERRIDE", plain({"-1"}));
    s.add(words({0xA7, 22, 1, 2, 3, 4, 5, 1, 7, 8, 3188}), "SPRITE_VICALL",
          {{"22", 20},
           {"1", 0},
           {"2", 0},
           {"3", 0},
           {"4", 0},
           {"5", 0},
           {"1", 0},
           {"7", 0},
           {"8", 0},
           {"3188", 0}});
    s.add(words({0xA9, 22, 9, 8, 7, 6, 5, 4, 3, 2, 1}), "IFIN_INSTANCED_BOX_PLANE",
          {{"22", 21},
           {"9", 0},
           {"8", 0},
           {"7", 0},
           {"6", 0},
           {"5", 0},
           {"4", 0},
           {"3", 0},
           {"2", 0},
           {"1", 0}});
    s.add(words({0xAC, 2}), "BGL_ZBIAS", plain({"2"}));
    s.add(
        le16(0xAD) + le32(7) + le32(30) + le32(9) + le32(30) + f32(1.5f) + f32(-2.25f) + f32(0.1f),
        "BGL_ANIMATE",
        {{"7", 0}, {"30", 23}, {"9", 0}, {"30", 23}, {"1.5", 0}, {"-2.25", 0}, {"0.1", 0}});
    const std::string tag = std::string("house") + std::string(11, '\0');
    s.add(le16(0xB1) + tag + f32(3.5f), "BGL_TAG", {{tag, 0}, {"3.5", 0}});
    s.add(le16(0xB2) + le16(1) + f32(1) + f32(2) + f32(3) + le32(5) + f32(0.5f) + f32(0.25f) +
              le32(6) + f32(0) + f32(0) + f32(1),
          "BGL_LIGHT", plain({"1", "1", "2", "3", "5", "0.5", "0.25", "6", "0", "0", "1"}));
    s.add(le16(0xB6) + le16(1) + le32(0), "MATERIAL_LIST_BEGIN", plain({"1", "0"}));
    s.add(le16(0xB7) + le16(2) + le32(0), "TEXTURE_LIST_BEGIN", plain({"2", "0"}));
    s.add(words({0xC4, 3}), "BGL_SET_MATRIX_INDIRECT", plain({"3"}));
    s.add(words({0xB9, 0, 4, 6}), "DRAW_TRI_LIST_BEGIN", plain({"0", "4", "6"}));
    s.add(words({0, 1, 2}), "DRAW_TRI_LIST_ITEM", plain({"0", "1", "2"}));
    s.add(words({2, 3, 0}), "DRAW_TRI_LIST_ITEM", plain({"2", "3", "0"}));
    s.add(words({0xBA, 1, 2, 4}), "DRAW_LINE_LIST_BEGIN", plain({"1", "2", "4"}));
    s.add(words({0, 1}), "DRAW_LINE_LIST_ITEM", plain({"0", "1"}));
    s.add(words({1, 2}), "DRAW_LINE_LIST_ITEM", plain({"1", "2"}));
    s.add(words({0x22}), "BGL_RETURN");
    s.add(words({0xBD}), "BGL_END");
    return s;
}

std::vector<std::string> headerLines() {
    return {"; #######################################################",
            "; ",
            "; This BGLC source file has been created with the",
            "; Velmora DLL version " + std::to_string(versionMajor()) + "." +
                std::to_string(versionMinor()) + "." + std::to_string(versionRevision()),
            "; ",
            "; For the moment this source file can only be used for",
            "; debugging purposes. It does not yet contain all the",
            "; code to create a valid MDL file again.",
            "; ",
            "; #######################################################",
            ""};
}

std::string joinedWithCrLf(const std::vector<std::string>& lines) {
    std::string out;
    for (const auto& line : lines)
        out += line + "\r\n";
    return out;
}

// The lines of a listing; every line must end in CR LF.
std::vector<std::string> linesOf(const std::string& listing) {
    std::vector<std::string> lines;
    std::size_t from = 0;
    for (auto at = listing.find("\r\n"); at != std::string::npos; at = listing.find("\r\n", from)) {
        lines.push_back(listing.substr(from, at - from));
        from = at + 2;
    }
    EXPECT_EQ(from, listing.size()) << "the last line has no CR LF";
    return lines;
}

}  // namespace

TEST(ExportASM, ListingShowsTexturesAndEveryCommandLineForLine) {
    TempDir dir;
    const Stream stream = everyKindOfCommand();
    modelbytes::Model model;
    model.textures = {"Wall.bmp", std::string(31, 'b'), std::string(40, 'c')};
    model.commands = stream.bytes;
    MDLObject object;
    object.readMDLBytes(model.bytes());
    ASSERT_EQ(object.BGLCommandList()->Count(), static_cast<int32_t>(stream.lines.size()));

    const std::string path = dir.file("model.asm");
    writeFile(path, std::string(100000, 'x'));  // an older, longer listing is replaced
    object.exportASM(path);

    std::vector<std::string> expected = headerLines();
    expected.push_back("; Start of texture list");
    expected.push_back("Wall.bmp" + std::string(23, ' ') + " 0 ");  // index from column 32
    expected.push_back(std::string(31, 'b') + " 1 ");
    expected.push_back(std::string(40, 'c') + "  2 ");
    expected.push_back("");
    expected.push_back("; Start of BGL command list");
    expected.insert(expected.end(), stream.lines.begin(), stream.lines.end());
    expected.push_back("");

    const std::string listing = readFile(path);
    const auto lines = linesOf(listing);
    ASSERT_EQ(lines.size(), expected.size());
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i], expected[i]) << "line " << i + 1;
    }
    EXPECT_NE(listing.find(std::string("BGL_TAG house\0", 14)), std::string::npos);
    EXPECT_EQ(expected[3], "; Velmora DLL version " + versionString());
}

TEST(ExportASM, EmptyListsGiveTheirHeadingsAndAnEmptyLine) {
    TempDir dir;
    MDLObject object;
    object.readMDLBytes(modelbytes::Model{}.bytes());
    object.exportASM(dir.file("empty.asm"));
    std::vector<std::string> expected = headerLines();
    for (const char* line : {"; Start of texture list", "", "; Start of BGL command list", ""}) {
        expected.push_back(line);
    }
    EXPECT_EQ(readFile(dir.file("empty.asm")), joinedWithCrLf(expected));
}

TEST(ExportASM, WriterClosesOnlyWhatItOpened) {
    TempDir dir;
    ASMWriter never;
    never.closeASM();

    const int16_t freeBefore = hex::nextFreeFile();
    {
        ASMWriter writer;
        writer.createASM(dir.file("a.asm"));
        writer.closeASM();
        writer.closeASM();
        // Another file may take the number now; the writer's going must not close it.
        hex::openBinaryFile(freeBefore, dir.file("other.bin"));
    }
    hex::writeLong(freeBefore, 7);
    hex::closeFile(freeBefore);
    EXPECT_EQ(readFile(dir.file("other.bin")), le32(7));
}

TEST(ExportASM, FailureClosesTheListingAndLeavesWhatWasWritten) {
    TempDir dir;
    MDLObject object;
    object.readMDLBytes(modelbytes::Model{}.bytes());
    auto unknown = std::make_shared<BGLCommand>();
    unknown->opcode(static_cast<BGLOpcode>(5000));
    object.BGLCommandList()->Add(std::make_shared<BGLCommand>(*unknown));
    object.BGLCommandList()->Item(1)->opcode(BGL_END);
    object.BGLCommandList()->Add(unknown);

    const int16_t freeBefore = hex::nextFreeFile();
    const std::string path = dir.file("failed.asm");
    EXPECT_TRUE(throwsPlatform([&] { object.exportASM(path); }, 9));
    EXPECT_EQ(hex::nextFreeFile(), freeBefore) << "the listing is still open";
    std::vector<std::string> expected = headerLines();
    for (const char* line :
         {"; Start of texture list", "", "; Start of BGL command list", "BGL_END"}) {
        expected.push_back(line);
    }
    EXPECT_EQ(readFile(path), joinedWithCrLf(expected));
}
