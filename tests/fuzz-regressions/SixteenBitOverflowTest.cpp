#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// The 16-bit counters and fields that overflow on long lists do so with error 6; this program
// runs under UndefinedBehaviorSanitizer, so a wrap or a bad cast on the way fails it as well.
namespace {

using namespace velmora;

std::shared_ptr<BGLCommand> command(BGLOpcode opcode, const std::vector<std::string>& params = {}) {
    auto made = std::make_shared<BGLCommand>();
    made->opcode(opcode);
    int16_t slot = 0;
    for (const auto& value : params)
        made->param(slot++, value);
    return made;
}

// `fillers` harmless commands, then the given tail.
void fill(BGLCommandList& list, int fillers, const std::vector<std::shared_ptr<BGLCommand>>& tail) {
    for (int i = 0; i < fillers; ++i)
        list.Add(command(SETWRD, {"1", "2"}));
    for (const auto& c : tail)
        list.Add(c);
}

std::shared_ptr<MDLObject> emptyModel() {
    auto model = std::make_shared<MDLObject>();
    model->readMDLBytes(testbytes::riff(""));
    return model;
}

}  // namespace

// The walks that index commands with 16 bits: a guarded call, a seasonal texture or a light
// beyond position 32,767 ends in error 6.
TEST(SixteenBitOverflow, LongCommandListsOverflowTheWalks) {
    {
        BGLCommandList reachable;
        fill(reachable, 32766, {command(BGL_CALL_32)});
        EXPECT_EQ(reachable.getConditions(-1)->commandEnd(), 32767);
        BGLCommandList beyond;
        fill(beyond, 32767, {command(BGL_CALL_32)});
        EXPECT_TRUE(throwsPlatform([&] { beyond.getConditions(-1); }, 6));
    }
    {
        auto model = emptyModel();
        model->TextureList()->Add()->parent(1);
        fill(*model->BGLCommandList(), 32767, {command(SET_MATERIAL, {"0", "0"})});
        EXPECT_TRUE(throwsPlatform([&] { model->readSeasonalDates(1); }, 6));
        seasonalTextures seasons;
        seasons.active[0] = true;
        EXPECT_TRUE(
            throwsPlatform([&] { model->BGLCommandList()->addSeasonalTextures(seasons); }, 6));
        EXPECT_EQ(model->BGLCommandList()->Count(), 32768);
    }
    {
        // The mask test in front of the light goes; its repair would name position 40,001.
        auto model = emptyModel();
        fill(*model->BGLCommandList(), 39999,
             {command(IFMSK, {"0", "100", "1"}), command(BGL_LIGHT)});
        EXPECT_TRUE(throwsPlatform([&] { model->fixLights(); }, 6));
        EXPECT_EQ(model->BGLCommandList()->Count(), 40000);
        EXPECT_EQ(model->BGLCommandList()->Item(40000)->opcode(), BGL_LIGHT);
    }
}

// Counts written in 16 bits: 32,767 textures and materials, 65,535 vertices (unsigned) and
// 32,767 commands in a saved stream.
TEST(SixteenBitOverflow, SavedCountsStopAtTheirWidth) {
    VertexList vertices;
    for (int i = 0; i < 65535; ++i)
        vertices.Add();
    EXPECT_EQ(vertices.asString().size(), 32u * 65535 + 10);
    vertices.Add();
    EXPECT_TRUE(throwsPlatform([&] { vertices.asString(); }, 6));

    TempDir folder;
    auto model = emptyModel();
    fill(*model->BGLCommandList(), 32767, {});
    model->saveMDL(folder.file("fits.mdl"));
    model->BGLCommandList()->Add(command(BGL_END));
    writeFile(folder.file("kept.mdl"), "old");
    EXPECT_TRUE(throwsPlatform([&] { model->saveMDL(folder.file("kept.mdl")); }, 6));
    EXPECT_EQ(readFile(folder.file("kept.mdl")), "old");
}
