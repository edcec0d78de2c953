#include <velmora/BGLObject.h>

#include "scenery/ScanFixture.h"
#include "scenery/SceneryFiles.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace sceneryfiles;

namespace {

::testing::AssertionResult damaged(const std::string& path, const std::string& description,
                                   int expectedModels = -1) {
    BGLObject scan;
    auto result =
        throwsError([&] { scan.readXMLBGL(path); }, 100, "Velmora.BGLObject", description);
    if (result && expectedModels >= 0 && scan.ModelList()->Count() != expectedModels) {
        return ::testing::AssertionFailure()
               << scan.ModelList()->Count() << " models kept, expected " << expectedModels;
    }
    return result;
}

}  // namespace

TEST_F(ScanTest, ATableThatCannotFitInTheFileIsDamaged) {
    Layout layout;
    const std::string good =
        compiledFile({{NDB, {{}}}, {mdl, {{model(1), model(2)}, {model(3)}}}}, &layout);
    const auto& section2 = layout.subSectionRecords[1];

    std::string file = good;
    patch32(file, 20, 1000);
    EXPECT_TRUE(damaged(write("a.bgl", file), "The section table of this BGL file is damaged", 0));

    file = good;
    patch32(file, layout.sectionRecords[1] + 8, 0x7FFFFFFF);
    EXPECT_TRUE(damaged(write("b.bgl", file), "The subsection table of section 2 is damaged"));
    file = good;
    patch32(file, layout.sectionRecords[1] + 12, -16);
    EXPECT_TRUE(damaged(write("c.bgl", file), "The subsection table of section 2 is damaged"));

    file = good;
    patch32(file, section2[0] + 4, 0x40000000);
    EXPECT_TRUE(damaged(write("d.bgl", file),
                        "The model table of subsection 1 of section 2 is damaged", 0));

    // A model that runs past the end, or starts before the file, damages its entry; the
    // models of the subsections before it are kept.
    const int64_t entry = layout.modelEntries[1][1][0];
    file = good;
    patch32(file, entry + 20, static_cast<int64_t>(file.size()));
    EXPECT_TRUE(damaged(write("e.bgl", file),
                        "The model table of subsection 2 of section 2 is damaged", 2));
    file = good;
    patch32(file, entry + 16, -0x10000);
    EXPECT_TRUE(damaged(write("f.bgl", file),
                        "The model table of subsection 2 of section 2 is damaged", 2));
    file = good;
    patch32(file, entry + 20, -1);
    EXPECT_TRUE(damaged(write("g.bgl", file),
                        "The model table of subsection 2 of section 2 is damaged", 2));

    // The untouched file scans whole.
    BGLObject scan;
    scan.readXMLBGL(write("h.bgl", good));
    EXPECT_EQ(scan.ModelList()->Count(), 3);
}

TEST_F(ScanTest, ASectionCountAbove32767Overflows) {
    std::string file = compiledFile({});
    patch32(file, 20, 32768);
    BGLObject scan;
    EXPECT_TRUE(throwsPlatform([&] { scan.readXMLBGL(write("a.bgl", file)); }, 6));
}
