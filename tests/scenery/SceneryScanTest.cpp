#include <velmora/BGLObject.h>
#include <velmora/Host.h>
#include <velmora/MDLObject.h>

#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace modelbytes;

namespace {

// A small model, told apart by its texture and its number of vertices.
std::string model(int number) {
    modelbytes::Model m;
    m.textures = {"model" + std::to_string(number) + ".bmp"};
    m.vertices.resize(static_cast<std::size_t>(3 + number));
    m.commands = modelbytes::bglEnd();
    return m.bytes();
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
    ASSERT_EQ(scan.ModelList()->Count(), 4);
    for (int i = 1; i <= 4; ++i) {
        scan.ModelList()->Item(i)->saveMDL(files_.file("saved.mdl"));
        EXPECT_EQ(hex(readFile(files_.file("saved.mdl"))), hex(model(i))) << "model " << i;
    }
    written_ = "a.bgl saved.mdl";
}

TEST_F(Scan, FilesWithoutModels) {
    // No section; too short to hold a count (read as 0); a section without subsections.
    char name = 'a';
    for (const std::string& bytes :
         {compiledFile({}), bytes({0x01, 0x02, 0x07}), compiledFile({{mdl, {}}})}) {
        const std::string path = write(std::string(1, name++) + ".bgl", bytes);
        BGLObject scan;
        EXPECT_TRUE(scan.isXMLBGL(path));
        scan.readXMLBGL(path);
        EXPECT_EQ(scan.ModelList()->Count(), 0);
    }
    BGLObject scan;
    EXPECT_FALSE(scan.isXMLBGL(write("e.bgl", compiledFile({}, nullptr, bytes({0x02, 0x01})))));
    scan.readXMLBGL(files_.file("missing.bgl"));  // a missing file does nothing
    EXPECT_FALSE(scan.isXMLBGL(files_.file("missing.bgl")));
    EXPECT_EQ(scan.ModelList()->Count(), 0);
}
