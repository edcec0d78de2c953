#include <velmora/velmora.h>

#include "support/ErrorMatchers.h"
#include "support/StreamAssembler.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

// The 16-bit counters and fields that overflow on long lists do so with error 6; this program
// runs under UndefinedBehaviorSanitizer, so a wrap or a bad cast on the way fails it as well.
namespace {

using namespace velmora;
using bgltest::command;

// A loaded empty model whose list holds `fillers` harmless commands, then the given tail.
std::shared_ptr<MDLObject> longModel(int fillers,
                                     std::initializer_list<std::shared_ptr<BGLCommand>> tail) {
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(testbytes::riff(""));
    for (int i = 0; i < fillers; ++i)
        model->BGLCommandList()->Add(command(SETWRD, {"1", "2"}));
    for (const auto& c : tail)
        model->BGLCommandList()->Add(c);
    return model;
}

}  // namespace

// The walks that index commands with 16 bits: a guarded call, a seasonal texture or a light
// beyond position 32,767 ends in error 6.
TEST(SixteenBitOverflow, LongCommandListsOverflowTheWalks) {
    EXPECT_EQ(
        longModel(32766, {command(BGL_CALL_32)})->BGLCommandList()->getConditions(-1)->commandEnd(),
        32767);
    auto model = longModel(32767, {command(BGL_CALL_32)});
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->getConditions(-1); }, 6));

    model = longModel(32767, {command(SET_MATERIAL, {"0", "0"})});
    model->TextureList()->Add()->parent(1);
    EXPECT_TRUE(throwsPlatform([&] { model->readSeasonalDates(1); }, 6));
    seasonalTextures seasons;
    seasons.active[0] = true;
    EXPECT_TRUE(throwsPlatform([&] { model->BGLCommandList()->addSeasonalTextures(seasons); }, 6));
    EXPECT_EQ(model->BGLCommandList()->Count(), 32768);

    // The mask test in front of the light goes; its repair would name position 40,001.
    model = longModel(39999, {command(IFMSK, {"0", "100", "1"}), command(BGL_LIGHT)});
    EXPECT_TRUE(throwsPlatform([&] { model->fixLights(); }, 6));
    EXPECT_EQ(model->BGLCommandList()->Count(), 40000);
    EXPECT_EQ(model->BGLCommandList()->Item(40000)->opcode(), BGL_LIGHT);
}

// Counts written in 16 bits: 65,535 vertices (unsigned) and 32,767 commands in a saved stream.
TEST(SixteenBitOverflow, SavedCountsStopAtTheirWidth) {
    VertexList vertices;
    for (int i = 0; i < 65535; ++i)
        vertices.Add();
    EXPECT_EQ(vertices.asString().size(), 32u * 65535 + 10);
    vertices.Add();
    EXPECT_TRUE(throwsPlatform([&] { vertices.asString(); }, 6));

    TempDir folder;
    auto model = longModel(32767, {});
    model->saveMDL(folder.file("fits.mdl"));
    model->BGLCommandList()->Add(command(BGL_END));
    writeFile(folder.file("kept.mdl"), "old");
    EXPECT_TRUE(throwsPlatform([&] { model->saveMDL(folder.file("kept.mdl")); }, 6));
    EXPECT_EQ(readFile(folder.file("kept.mdl")), "old");
}
