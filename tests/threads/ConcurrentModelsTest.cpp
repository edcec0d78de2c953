#include <velmora/velmora.h>

#include "support/ModelBytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace testbytes;

namespace {

// Loads a model with a guarded call, a triangle list, a light behind a test and a texture, edits
// it, saves it and gives the saved bytes.
std::string editAndSave(int variant, const std::string& path) {
    modelbytes::Model m;
    m.materials = {{{0.5f, 0.5f, 0.5f, 0.5f}}};
    m.textures = {"wall.bmp"};
    for (int i = 0; i < 3 + variant; ++i)
        m.vertices.push_back({float(i), float(variant), 1, 0, 1, 0, 0.5f, 0.25f});
    const std::string light = le16(178) + le16(1) + f32(1) + f32(2) + f32(3) + le32(-1) +
                              f32(0.5f) + f32(0.5f) + le32(0) + f32(0) + f32(0) + f32(1);
    m.commands = le16(138) + le32(8) + le16(189) +  // BGL_CALL_32 to the material, BGL_END
                 modelbytes::setMaterial(0, 0) + modelbytes::triangleList(0, {{0, 1, 2}}) +
                 le16(57) + le16(8 + 44) + le16(100) + le16(1) + light + le16(34);  // IFMSK
    velmora::MDLObject model;
    model.readMDLBytes(m.bytes());
    auto& commands = *model.BGLCommandList();
    auto conditions = commands.getConditions(-1);
    auto test = conditions->Add();
    test->var("798");
    test->min(static_cast<int16_t>(variant));
    test->max(5);
    commands.addCondition(conditions);
    model.TextureList()->Item(1)->parent(1);
    auto seasons = model.readSeasonalDates(1);
    seasons.active[0] = true;
    commands.addSeasonalTextures(seasons);
    model.updateTextureSize();
    model.fixLights();
    model.addKillShadow();
    model.saveMDL(path);
    return readFile(path);
}

}  // namespace

// Models loaded, edited and saved on two threads at once give the same bytes as one after the
// other: nothing of a load or a save is shared between threads.
TEST(ConcurrentModels, TwoThreadsGiveTheSameBytesAsOneAfterTheOther) {
    TempDir dir;
    std::vector<std::string> sequential(2);
    for (int t = 0; t < 2; ++t)
        sequential[t] = editAndSave(t, dir.file("seq" + std::to_string(t)));

    std::vector<std::string> concurrent(2);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < 20; ++round) {
                concurrent[t] = editAndSave(t, dir.file("par" + std::to_string(t)));
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(concurrent[0], sequential[0]);
    EXPECT_EQ(concurrent[1], sequential[1]);
    EXPECT_NE(sequential[0], sequential[1]);
}
