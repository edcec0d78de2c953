#include <velmora/BGLObject.h>
#include <velmora/Host.h>
#include <velmora/MDLObject.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace testbytes;

namespace {

// A small model saved by the library; `number` tells it apart (ISFT, counts).
std::string savedModel(int number) {
    TempDir folder;
    MDLObject model;
    model.readMDLBytes(riff(""));
    model.setISFT("model " + std::to_string(number));
    model.MDLHeader()->param(0, number);
    model.TextureList()->Add()->bitmap("model" + std::to_string(number) + ".bmp");
    for (int i = 0; i < 3 + number; ++i)
        model.VertexList()->Add()->x(static_cast<float>(i));
    model.BGLCommandList()->Add()->opcode(BGL_END);
    model.saveMDL(folder.file("model.mdl"));
    return readFile(folder.file("model.mdl"));
}

const std::string& model(int number) {
    static const std::vector<std::string> models = {savedModel(1), savedModel(2), savedModel(3),
                                                    savedModel(4)};
    return models.at(static_cast<std::size_t>(number - 1));
}

// A section of a compiled file: its type and, for each subsection, the bytes of its models.
struct Section {
    int32_t type;
    std::vector<std::vector<std::string>> subSections;
};

// The header, the section records, then per section its subsection records, and per subsection
// its model table, a few stray bytes and the model data. The dropped fields hold junk, which the
// reader must pass over. `tables` receives the offset of every record and model entry.
std::string compiledFile(const std::vector<Section>& sections,
                         std::vector<int64_t>* tables = nullptr,
                         const std::string& magic = bytes({0x01, 0x02})) {
    const auto recordsEnd = 56 + 20 * static_cast<int64_t>(sections.size());
    std::string records, body;
    for (const Section& section : sections) {
        const int64_t subTable = recordsEnd + static_cast<int64_t>(body.size());
        if (tables) tables->push_back(56 + static_cast<int64_t>(records.size()));
        records += le32(section.type) + le32(0x5A5A5A5A) + le32(std::ssize(section.subSections)) +
                   le32(subTable) + le32(0x40);
        body += std::string(16 * section.subSections.size(), '\0');
        for (std::size_t k = 0; k < section.subSections.size(); ++k) {
            const auto& models = section.subSections[k];
            const auto record = static_cast<std::size_t>(subTable - recordsEnd) + 16 * k;
            if (tables) tables->push_back(recordsEnd + static_cast<int64_t>(record));
            body.replace(record, 16,
                         le32(0x3C3C3C3C) + le32(std::ssize(models)) +
                             le32(recordsEnd + std::ssize(body)) + le32(0x20));
            int64_t dataOffset = 24 * std::ssize(models) + 5;
            std::string data;
            for (const std::string& m : models) {
                if (tables) tables->push_back(recordsEnd + std::ssize(body));
                body +=
                    le32(1) + le32(2) + le32(3) + le32(4) + le32(dataOffset) + le32(std::ssize(m));
                data += m;
                dataOffset += std::ssize(m);
            }
            body += "stray" + data;
        }
    }
    return magic + std::string(18, '\xAB') + le32(std::ssize(sections)) + std::string(32, '\xCD') +
           records + body;
}

// A scan test: the scratch folder is a fresh one, and after the test neither it nor the folder
// of the compiled files holds anything the scan made.
class Scan : public ::testing::Test {
  protected:
    void SetUp() override {
        previous_ = applicationFolder();
        setApplicationFolder(application_.path());
    }
    void TearDown() override {
        EXPECT_EQ(application_.listing(), "");
        EXPECT_EQ(files_.listing(), written_);
        setApplicationFolder(previous_);
    }
    // Writes a compiled file beside the others; names are given in sorted order.
    std::string write(const std::string& name, const std::string& bytes) {
        writeFile(files_.file(name), bytes);
        written_ += (written_.empty() ? "" : " ") + name;
        return files_.file(name);
    }
    static std::string names(const ModelList& models) {
        std::string out;
        for (const auto& m : models)
            out += m->getISFT() + ";";
        return out;
    }

    TempDir files_, application_;
    std::string previous_, written_;
};

}  // namespace

TEST_F(Scan, TwoSubsectionsOfTwoModelsGiveFourModelsThatSaveToTheirBytes) {
    // The airport section's "model" is never read: only mdl sections are.
    const std::string path =
        write("a.bgl", compiledFile({{airport, {{"not a model"}}},
                                     {mdl, {{model(1), model(2)}, {model(3), model(4)}}}}));
    BGLObject scan;
    EXPECT_TRUE(scan.isXMLBGL(path));
    scan.readXMLBGL(path);
    const auto models = scan.ModelList();
    EXPECT_EQ(names(*models), "model 1;model 2;model 3;model 4;");
    for (int i = 1; i <= 4; ++i) {
        models->Item(i)->saveMDL(files_.file("saved.mdl"));
        EXPECT_EQ(hex(readFile(files_.file("saved.mdl"))), hex(model(i))) << "model " << i;
    }
    written_ = "a.bgl saved.mdl";
}

TEST_F(Scan, FileVariantsAndTheirErrors) {
    const std::string notMDL9 = riff(section("MDLH", std::string(36, '\0')), "MDL8");
    std::string tooMany = compiledFile({});
    tooMany.replace(20, 4, le32(32768));
    struct Case {
        const char* name;
        std::string bytes;  // empty: no file at all
        const char* models;
        int error;  // 0 for none, 100 with its source and description
        const char* source;
        const char* description;
    };
    const Case cases[] = {
        {"a.bgl",
         compiledFile({{mdl, {{model(1)}}}, {NameList, {{}}}, {mdl, {{model(2)}, {model(3)}}}}),
         "model 2;model 3;", 0, "", ""},
        {"b.bgl", compiledFile({{mdl, {{model(1)}}}, {mdl, {}}}), "", 0, "", ""},
        {"c.bgl", compiledFile({}), "", 0, "", ""},
        {"d.bgl", bytes({0x01, 0x02, 0x07}), "", 0, "", ""},  // too short: counts read as 0
        {"e.bgl", compiledFile({{mdl, {{model(1)}}}}, nullptr, bytes({0x02, 0x01})), "", 100,
         "Velmora.BGLObject", "This is not a valid XML style BGL file"},
        {"f.bgl", compiledFile({{mdl, {{model(1)}, {model(2), notMDL9, model(3)}}}}),
         "model 1;model 2;", 100, "Velmora.MDLObject", "This is not a valid RIFF scenery MDL file"},
        {"g.bgl", tooMany, "", 6, "Velmora", ""},
        {"missing.bgl", "", "", 0, "", ""},  // a missing file does nothing
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string path = c.bytes.empty() ? files_.file(c.name) : write(c.name, c.bytes);
        BGLObject scan;
        if (c.error == 0) {
            scan.readXMLBGL(path);
        } else {
            EXPECT_TRUE(
                throwsError([&] { scan.readXMLBGL(path); }, c.error, c.source, c.description));
        }
        EXPECT_EQ(names(*scan.ModelList()), c.models);
        EXPECT_EQ(scan.isXMLBGL(path), !c.bytes.empty() && c.bytes[0] == 1);
    }
}

TEST_F(Scan, ATableThatCannotFitInTheFileIsDamaged) {
    // Records: section 1, section 2, subsection 1 and its two models, subsection 2 and its model.
    std::vector<int64_t> at;
    const std::string good =
        compiledFile({{NDB, {}}, {mdl, {{model(1), model(2)}, {model(3)}}}}, &at);
    struct Case {
        int64_t offset, value;
        const char* table;
        int kept;
    };
    const Case cases[] = {
        {20, 1000, "The section table of this BGL file is damaged", 0},
        {at[1] + 8, 0x7FFFFFFF, "The subsection table of section 2 is damaged", 0},
        {at[1] + 12, -16, "The subsection table of section 2 is damaged", 0},
        {at[2] + 4, 0x40000000, "The model table of subsection 1 of section 2 is damaged", 0},
        // A model that runs past the end, or starts before the file; the models before stay.
        {at[6] + 20, static_cast<int64_t>(good.size()),
         "The model table of subsection 2 of section 2 is damaged", 2},
        {at[6] + 16, -0x10000, "The model table of subsection 2 of section 2 is damaged", 2},
        {at[6] + 20, -1, "The model table of subsection 2 of section 2 is damaged", 2},
        // Data that runs past the end while the sizes claimed still add up to less than the file.
        {at[6] + 16, std::ssize(good) - std::ssize(model(3)) / 2 - at[6],
         "The model table of subsection 2 of section 2 is damaged", 2},
    };
    int n = 0;
    for (const Case& c : cases) {
        std::string file = good;
        file.replace(static_cast<std::size_t>(c.offset), 4, le32(c.value));
        BGLObject scan;
        const std::string path = write("damaged" + std::to_string(n++) + ".bgl", file);
        EXPECT_TRUE(throwsError([&] { scan.readXMLBGL(path); }, 100, "Velmora.BGLObject", c.table));
        EXPECT_EQ(scan.ModelList()->Count(), c.kept) << c.table;
    }
    BGLObject scan;
    scan.readXMLBGL(write("good.bgl", good));
    EXPECT_EQ(scan.ModelList()->Count(), 3);
}
