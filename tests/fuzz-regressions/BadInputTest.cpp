#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

// The most bytes held at once while `action` ran (MemoryBoundTest.cpp counts them).
std::size_t peakDuring(const std::function<void()>& action);

// The damaged files of the "Bad input" table in README.md and their kin, each with the error it
// gets. Whatever a file claims, reading it holds no more than a few times its size meanwhile.
namespace {

using namespace testbytes;
using namespace velmora;

struct DamagedFile {
    const char* what;
    std::string bytes;
    int number;
    std::string source;
    std::string description;
    // The one line the error gives after the file's path and ": "; empty: not checked.
    std::string line = "";
    int kept = 0;               // models a scan keeps in front of the damage
    std::size_t allowance = 0;  // bytes it may hold beyond the bound for any file
};

// Reads the file as a model (".mdl") or scans it as compiled scenery (".bgl").
void expectError(const DamagedFile& file, const std::string& name) {
    SCOPED_TRACE(file.what);
    TempDir folder;
    const std::string path = folder.file(name);
    writeFile(path, file.bytes);
    velmora::BGLObject scan;
    std::string what, errorFile;
    const auto read = [&] {
        try {
            if (name.ends_with(".mdl")) {
                velmora::MDLObject().readMDL(path);
            } else {
                scan.readXMLBGL(path);
            }
        } catch (const velmora::Error& e) {
            what = e.what();
            errorFile = e.file();
            throw;
        }
    };
    const std::size_t peak = peakDuring(
        [&] { EXPECT_TRUE(throwsError(read, file.number, file.source, file.description)); });
    // Beyond four times the file, a few fixed tables and buffers.
    EXPECT_LE(peak, 4 * file.bytes.size() + 128 * 1024 + file.allowance)
        << "for a file of " << file.bytes.size();
    if (!file.line.empty()) {
        EXPECT_EQ(what, path + ": " + file.line);
        EXPECT_EQ(errorFile, path);
    }
    EXPECT_EQ(scan.ModelList()->Count(), file.kept);
}

std::string model(int number) {
    return riff(section("ISFT", "model " + std::to_string(number)));
}

// `sections` model sections that all name one table of `subSections` records, whose model tables
// all name one table of `models` entries, each naming the same `model` bytes.
std::string sharedTables(int32_t sections, int32_t subSections, int32_t models,
                         const std::string& model) {
    const int64_t subTable = 56 + 20 * int64_t{sections};
    const int64_t modelTable = subTable + 16 * int64_t{subSections};
    std::string file =
        bytes({1, 2}) + std::string(18, '\0') + le32(sections) + std::string(32, '\0');
    for (int32_t i = 0; i < sections; ++i)
        file += le32(mdl) + le32(0) + le32(subSections) + le32(subTable) + le32(0);
    for (int32_t i = 0; i < subSections; ++i)
        file += le32(0) + le32(models) + le32(modelTable) + le32(0);
    for (int32_t i = 0; i < models; ++i)
        file += le32(0) + le32(0) + le32(0) + le32(0) + le32(24 * models) + le32(std::ssize(model));
    return file + model;
}

}  // namespace

TEST(BadInput, EachDamagedFileGetsItsError) {
    const std::string notAModel = "This is not a valid RIFF scenery MDL file";
    const std::string outOfRange = "Subscript out of range";
    const std::string mdlh = section("MDLH", std::string(36, '\0'));
    const std::string claimsMore = "RIFF" + le32(0x7FFFFFF0) + "MDL9";
    const DamagedFile models[] = {
        {"empty file", "", 100, "Velmora.MDLObject", notAModel},
        {"RIFX for RIFF", "RIFX" + le32(4) + "MDL9", 100, "Velmora.MDLObject", notAModel,
         "byte 0: it starts with \"RIFX\", not \"RIFF\" (error 100: " + notAModel + ")"},
        {"form other than MDL9", riff("", "MDL8"), 100, "Velmora.MDLObject", notAModel,
         "byte 8: its form is \"MDL8\", not \"MDL9\" (error 100: " + notAModel + ")"},
        {"cut short", riff(mdlh).substr(0, 30), 9, "Velmora", outOfRange,
         "section \"MDLH\" at byte 12: says 36 bytes, but only 10 follow (error 9: Subscript "
         "out of range)"},
        {"huge section size", claimsMore + "MDLH" + le32(0x7FFFFFF0) + std::string(20, 'x'), 9,
         "Velmora", outOfRange},
        {"huge size inside EXTE", claimsMore + "EXTE" + le32(-1) + "BGL " + le32(0x40000000) + "ab",
         9, "Velmora", outOfRange},
        {"RIFF size past the end", claimsMore + "MDLH" + le32(4) + "abcd", 9, "Velmora",
         outOfRange},
        {"negative section size", riff("BBOX" + le32(-24) + std::string(24, '\0')), 5, "Velmora",
         "Invalid procedure call or argument"},
        {"unknown section tag", riff(section("ABCD", "x")), 9, "Velmora", outOfRange,
         "byte 12: unknown section tag \"ABCD\" (error 9: Subscript out of range)"},
        {"material section without a material list", riff(mdlh + section("MATE", le16(181))), 100,
         "Velmora.MaterialList", "Data does not contain a valid material list"},
        {"texture section without a texture list", riff(section("TEXT", le16(0))), 100,
         "Velmora.TextureList", "No valid texture list data in string"},
        {"vertex section without a vertex list", riff(section("VERT", le16(182) + le16(0))), 100,
         "Velmora.VertexList", "Error while reading vertex list",
         "section \"VERT\" at byte 12 (error 100: Error while reading vertex list)"},
        {"opcode of no command",
         riff(section("BGL ", le16(184) + le16(0) + le16(-1) + le16(0xFFFF) + le16(189))), 9,
         "Velmora", outOfRange,
         "section \"BGL \" at byte 26, command 2: the opcode word 0xFFFF lies outside the opcode "
         "table (0 to 260) (error 9: Subscript out of range)"},
        {"zero bytes behind the commands", riff(section("BGL ", le16(189) + le16(0))), 100,
         "Velmora.BGLCommandList", "Unrecognised BGL Opcode: 0"},
        {"line list of 65,535 indices",
         riff(section("BGL ", le16(186) + le16(0) + le16(0) + le16(0xFFFF))), 6, "Velmora",
         "Overflow"},
    };
    for (const auto& file : models)
        expectError(file, "model.mdl");

    // Section 1 holds no subsection; section 2 holds subsection 1 with models 1 and 2, and
    // subsection 2 with model 3. The offsets: the two section records, subsection 1, its models,
    // subsection 2, its model.
    std::vector<int64_t> at;
    const std::string good =
        compiledFile({{NDB, {}}, {mdl, {{model(1), model(2)}, {model(3)}}}}, &at);
    const auto patched = [&](int64_t offset, int64_t value) {
        return std::string(good).replace(static_cast<std::size_t>(offset), 4, le32(value));
    };
    const std::string source = "Velmora.BGLObject";
    const std::string subTable = "The subsection table of section 2 is damaged";
    const std::string modelTable = "The model table of subsection 2 of section 2 is damaged";
    const std::string claiming = riff(section("VERT", le16(181) + le16(0xFFFF) + le32(0)) +
                                      section("TEXT", le16(183) + le16(0x7FFF) + le32(0)));
    const DamagedFile scenery[] = {
        {"compiled file without 01 02", "\x02\x01" + std::string(60, '\0'), 100, source,
         "This is not a valid XML style BGL file"},
        {"more sections than the file holds", patched(20, 32767), 100, source,
         "The section table of this BGL file is damaged"},
        {"one section more than the file holds", compiledFile({{mdl, {}}}).replace(20, 4, le32(2)),
         100, source, "The section table of this BGL file is damaged"},
        {"section count above 32,767", patched(20, 32768), 6, "Velmora", "Overflow"},
        {"subsection table past the end", patched(at[1] + 8, 0x7FFFFFFF), 100, source, subTable},
        {"subsection table before the file", patched(at[1] + 12, -16), 100, source, subTable},
        {"model table past the end", patched(at[2] + 4, 0x40000000), 100, source,
         "The model table of subsection 1 of section 2 is damaged"},
        // A model that runs past the end, or starts before the file; the models before stay.
        {"model data past the end", patched(at[6] + 20, 0x7FFFFFF0), 100, source, modelTable, "",
         2},
        {"model data before the file", patched(at[6] + 16, -0x10000), 100, source, modelTable, "",
         2},
        {"negative model size", patched(at[6] + 20, -1), 100, source, modelTable, "", 2},
        {"model data past the end while the sizes claimed add up to less than the file",
         patched(at[6] + 16, std::ssize(good) - std::ssize(model(3)) / 2 - at[6]), 100, source,
         modelTable, "", 2},
        {"a model that isn't one",
         compiledFile({{mdl, {{model(1)}, {model(2), riff("", "MDL8"), model(3)}}}}), 100,
         "Velmora.MDLObject", notAModel, "", 2},
        // Tables that all name the same bytes would hold their records many times over, and
        // entries that all name the same bytes would load one model a thousand times.
        {"sections sharing a subsection table", sharedTables(200, 100, 0, ""), 100, source,
         "The subsection table of section 4 is damaged"},
        {"subsections sharing a model table",
         sharedTables(200, 1, 1, riff(section("ISFT", std::string(400, 'z')))), 100, source,
         "The model table of subsection 1 of section 11 is damaged"},
        {"models sharing their bytes",
         sharedTables(1, 1, 1000, riff(section("ISFT", std::string(4000, 'z')))), 100, source,
         "The model table of subsection 1 of section 1 is damaged", "", 1},
        // Counts that claim entries beyond the data (read as zeros, 16 MiB at most for one
        // count) are allowed once in a scan, not once per model.
        {"models whose counts all claim entries beyond their data",
         compiledFile({{mdl, {std::vector<std::string>(40, claiming)}}}), 100, source,
         "The model table of subsection 1 of section 1 is damaged", "", 1, 32 << 20},
    };
    for (const auto& file : scenery)
        expectError(file, "scenery.bgl");
}
