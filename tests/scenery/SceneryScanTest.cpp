#include <velmora/BGLObject.h>
#include <velmora/Host.h>
#include <velmora/MDLObject.h>

#include "support/Bytes.h"
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

// A scan test: the scratch folder is a fresh one, and after the test neither it nor the folder
// of the compiled files holds anything the scan made. The damaged files are BadInputTest's.
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
    const std::vector<std::string> models_ = {savedModel(1), savedModel(2), savedModel(3),
                                              savedModel(4)};
};

}  // namespace

TEST_F(Scan, TwoSubsectionsOfTwoModelsGiveFourModelsThatSaveToTheirBytes) {
    // The airport section's "model" is never read: only mdl sections are.
    const std::string path =
        write("a.bgl", compiledFile({{airport, {{"not a model"}}},
                                     {mdl, {{models_[0], models_[1]}, {models_[2], models_[3]}}}}));
    BGLObject scan;
    EXPECT_TRUE(scan.isXMLBGL(path));
    scan.readXMLBGL(path);
    const auto models = scan.ModelList();
    EXPECT_EQ(names(*models), "model 1;model 2;model 3;model 4;");
    for (int i = 1; i <= 4; ++i) {
        models->Item(i)->saveMDL(files_.file("saved.mdl"));
        EXPECT_EQ(hex(readFile(files_.file("saved.mdl"))), hex(models_[i - 1])) << "model " << i;
    }
    written_ = "a.bgl saved.mdl";
}

TEST_F(Scan, FileVariants) {
    const std::pair<std::string, const char*> cases[] = {
        {compiledFile(
             {{mdl, {{models_[0]}}}, {NameList, {{}}}, {mdl, {{models_[1]}, {models_[2]}}}}),
         "model 2;model 3;"},  // each mdl section's models replace those before
        {compiledFile({{mdl, {{models_[0]}}}, {mdl, {}}}), ""},
        {compiledFile({}), ""},
        {bytes({0x01, 0x02, 0x07}), ""},  // too short: counts read as 0
    };
    char name = 'a';
    for (const auto& [bytes, models] : cases) {
        const std::string path = write(std::string(1, name++) + ".bgl", bytes);
        BGLObject scan;
        EXPECT_TRUE(scan.isXMLBGL(path));
        scan.readXMLBGL(path);
        EXPECT_EQ(names(*scan.ModelList()), models);
    }
    BGLObject scan;
    EXPECT_FALSE(scan.isXMLBGL(write("e.bgl", compiledFile({}, nullptr, bytes({0x02, 0x01})))));
    scan.readXMLBGL(files_.file("missing.bgl"));  // a missing file does nothing
    EXPECT_FALSE(scan.isXMLBGL(files_.file("missing.bgl")));
    EXPECT_EQ(scan.ModelList()->Count(), 0);
}
