#include <velmora/BGLObject.h>
#include <velmora/MDLObject.h>

#include "scenery/ScanFixture.h"
#include "scenery/SceneryFiles.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <cstdio>

using namespace velmora;
using namespace sceneryfiles;

namespace {

std::vector<std::string> isftOf(const ModelList& models) {
    std::vector<std::string> names;
    for (const auto& model : models)
        names.push_back(model->getISFT());
    return names;
}

}  // namespace

TEST_F(ScanTest, TwoSubsectionsOfTwoModelsGiveFourModelsInTableOrder) {
    // The airport section's "model" is never read: only mdl sections are.
    const std::string path =
        write("scenery.bgl", compiledFile({{airport, {{"not a model"}}},
                                           {mdl, {{model(1), model(2)}, {model(3), model(4)}}}}));
    BGLObject scan;
    EXPECT_TRUE(scan.isXMLBGL(path));
    scan.readXMLBGL(path);

    const auto models = scan.ModelList();
    ASSERT_EQ(models->Count(), 4);
    EXPECT_EQ(isftOf(*models),
              (std::vector<std::string>{"model 1", "model 2", "model 3", "model 4"}));
    // Each model stands by itself and saves to the bytes that were put in.
    for (int i = 1; i <= 4; ++i) {
        const std::string saved = files_.file("saved.mdl");
        models->Item(i)->saveMDL(saved);
        EXPECT_EQ(hex(readFile(saved)), hex(model(i))) << "model " << i;
        std::remove(saved.c_str());
    }
    EXPECT_EQ(models->Item(4)->VertexList()->Count(), 7);
}

TEST_F(ScanTest, OnlyTheLastMdlSectionsModelsRemain) {
    BGLObject twoSections;
    twoSections.readXMLBGL(write(
        "a.bgl",
        compiledFile({{mdl, {{model(1)}}}, {NameList, {{}}}, {mdl, {{model(2)}, {model(3)}}}})));
    EXPECT_EQ(isftOf(*twoSections.ModelList()), (std::vector<std::string>{"model 2", "model 3"}));

    // A last mdl section without subsections replaces the list with an empty one.
    BGLObject emptyLast;
    const auto before = emptyLast.ModelList();
    emptyLast.readXMLBGL(write("b.bgl", compiledFile({{mdl, {{model(1)}}}, {mdl, {}}})));
    EXPECT_NE(emptyLast.ModelList(), before);
    EXPECT_EQ(emptyLast.ModelList()->Count(), 0);

    // A second scan on one object appends its sections and replaces the list; a reference
    // taken before keeps the old models.
    BGLObject twice;
    const std::string c = write("c.bgl", compiledFile({{mdl, {{model(4), model(5)}}}}));
    twice.readXMLBGL(c);
    const auto first = twice.ModelList();
    twice.readXMLBGL(c);
    EXPECT_NE(twice.ModelList(), first);
    EXPECT_EQ(isftOf(*first), (std::vector<std::string>{"model 4", "model 5"}));
    EXPECT_EQ(isftOf(*twice.ModelList()), (std::vector<std::string>{"model 4", "model 5"}));
    EXPECT_NE(twice.ModelList()->Item(1), first->Item(1));
}

TEST_F(ScanTest, FilesWithoutModelsGiveAnEmptyList) {
    BGLObject noSections;
    const auto list = noSections.ModelList();
    noSections.readXMLBGL(write("a.bgl", compiledFile({})));
    EXPECT_EQ(noSections.ModelList(), list);
    EXPECT_EQ(list->Count(), 0);

    // Too short for its header: the count reads as 0.
    BGLObject shortFile;
    shortFile.readXMLBGL(write("b.bgl", bytes({0x01, 0x02, 0x07, 0x07, 0x07})));
    EXPECT_EQ(shortFile.ModelList()->Count(), 0);

    BGLObject otherSections;
    otherSections.readXMLBGL(write("c.bgl", compiledFile({{GeoPol, {{}, {}}}, {Exclusion, {}}})));
    EXPECT_EQ(otherSections.ModelList()->Count(), 0);
}

TEST_F(ScanTest, OnlyTheMagicTellsACompiledFile) {
    BGLObject scan;
    EXPECT_TRUE(scan.isXMLBGL(write("a.bgl", bytes({0x01, 0x02}))));
    EXPECT_TRUE(scan.isXMLBGL(write("b.bgl", bytes({0x01, 0x02, 0xFF, 0x00, 'x'}))));
    EXPECT_FALSE(scan.isXMLBGL(write("c.bgl", "")));
    EXPECT_FALSE(scan.isXMLBGL(write("d.bgl", bytes({0x01}))));

    const std::string swapped =
        write("e.bgl", compiledFile({{mdl, {{model(1)}}}}, nullptr, bytes({0x02, 0x01})));
    EXPECT_FALSE(scan.isXMLBGL(swapped));

    // A failed scan leaves the list of an earlier one as it was.
    scan.readXMLBGL(write("f.bgl", compiledFile({{mdl, {{model(2)}}}})));
    const auto list = scan.ModelList();
    EXPECT_TRUE(throwsError([&] { scan.readXMLBGL(swapped); }, 100, "Velmora.BGLObject",
                            "This is not a valid XML style BGL file"));
    EXPECT_EQ(scan.ModelList(), list);
    EXPECT_EQ(isftOf(*list), std::vector<std::string>{"model 2"});
}

TEST_F(ScanTest, AMissingFileDoesNothing) {
    BGLObject scan;
    const auto list = scan.ModelList();
    const std::string missing = files_.file("missing.bgl");
    EXPECT_FALSE(scan.isXMLBGL(missing));
    scan.readXMLBGL(missing);
    EXPECT_EQ(scan.ModelList(), list);
    EXPECT_EQ(list->Count(), 0);
    EXPECT_FALSE(scan.isXMLBGL(files_.path()));  // a folder is no file
}

TEST_F(ScanTest, AModelThatIsNoModelStopsTheScanAndKeepsTheModelsBeforeIt) {
    const std::string notMDL9 = riff(section("MDLH", std::string(36, '\0')), "MDL8");
    BGLObject scan;
    const auto before = scan.ModelList();
    const std::string path =
        write("scenery.bgl", compiledFile({{mdl, {{model(1)}, {model(2), notMDL9, model(3)}}}}));
    EXPECT_TRUE(throwsError([&] { scan.readXMLBGL(path); }, 100, "Velmora.MDLObject",
                            "This is not a valid RIFF scenery MDL file"));
    EXPECT_NE(scan.ModelList(), before);
    EXPECT_EQ(isftOf(*scan.ModelList()), (std::vector<std::string>{"model 1", "model 2"}));
}
