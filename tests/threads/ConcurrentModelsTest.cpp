#include <velmora/velmora.h>

#include "support/Bytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace testbytes;

namespace {

// A model with a guarded call, a triangle list, a light behind a test and a texture.
std::string modelBytes(int variant) {
    std::string vertices;
    for (int i = 0; i < 3 + variant; ++i) {
        for (float value : {float(i), float(variant), 1.0f, 0.0f, 1.0f, 0.0f, 0.5f, 0.25f})
            vertices += f32(value);
    }
    std::string texture = le32(6) + bytes({255, 255, 255, 255}) + le32(0) + f32(0) + "wall.bmp" +
                          std::string(56, '\0');
    std::string material;
    for (int i = 0; i < 17; ++i)
        material += f32(0.5f);
    const std::string light = le16(178) + le16(1) + f32(1) + f32(2) + f32(3) + le32(-1) +
                              f32(0.5f) + f32(0.5f) + le32(0) + f32(0) + f32(0) + f32(1);
    const std::string stream = le16(138) + le32(8) +                      // BGL_CALL_32 -> 3
                               le16(189) +                                // BGL_END
                               le16(184) + le16(0) + le16(0) +            // SET_MATERIAL 0, 0
                               le16(185) + le16(0) + le16(3) + le16(3) +  // one triangle
                               le16(0) + le16(1) + le16(2) + le16(57) + le16(8 + 44) + le16(100) +
                               le16(1) +  // IFMSK over the light
                               light + le16(34);
    const std::string exte =
        section("TEXT", le16(183) + le16(1) + le32(0) + texture + le16(34)) +
        section("MATE", le16(182) + le16(1) + le32(0) + material + le16(34)) +
        section("VERT", le16(181) + le16(3 + variant) + le32(0) + vertices + le16(34)) +
        section("BGL ", stream);
    return riff(section("MDLH", std::string(36, '\0')) + section("BBOX", std::string(24, '\0')) +
                "EXTE" + le32(static_cast<int64_t>(exte.size())) + exte);
}

// Loads, edits and saves one model, and gives the saved bytes.
std::string editAndSave(const std::string& bytes, const std::string& path, int variant) {
    velmora::MDLObject model;
    model.readMDLBytes(bytes);
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
    const int kRounds = 20;
    std::vector<std::string> sequential(2);
    for (int t = 0; t < 2; ++t)
        sequential[t] = editAndSave(modelBytes(t), dir.file("seq" + std::to_string(t)), t);

    std::vector<std::string> concurrent(2);
    std::vector<std::thread> threads;
    for (int t = 0; t < 2; ++t) {
        threads.emplace_back([&, t] {
            for (int round = 0; round < kRounds; ++round) {
                concurrent[t] = editAndSave(modelBytes(t), dir.file("par" + std::to_string(t)), t);
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(concurrent[0], sequential[0]);
    EXPECT_EQ(concurrent[1], sequential[1]);
    EXPECT_NE(sequential[0], sequential[1]);
}
