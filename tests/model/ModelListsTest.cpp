#include <velmora/MaterialList.h>
#include <velmora/TextureList.h>
#include <velmora/VertexList.h>
#include <velmora/color.h>

#include "support/ErrorMatchers.h"
#include "support/ModelBytes.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace modelbytes;

TEST(ModelLists, EmptyListsAndTheirCanonicalBytes) {
    VertexList vertices;
    vertices.fillCollection(le16(181) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(vertices.asString()), "B5 00 00 00 00 00 00 00 22 00");
    MaterialList materials;
    materials.readList(le16(182) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(materials.asString()), "B6 00 00 00 00 00 00 00 22 00");
    TextureList textures;
    textures.fillCollection(le16(183) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(hex(textures.asString()), "B7 00 00 00 00 00 00 00 22 00");
    EXPECT_EQ(textures.findTextureIndex(0, 0), 0);

    // No closing word, a reserved field that isn't 0, a name with a NUL inside, a count beyond
    // the data: read fine, written back canonical, the missing entries as zeros.
    textures.fillCollection(le16(183) + le16(2) + le32(77) + le32(2) + le32(-1) + le32(1234) +
                            f32(0) + std::string("ab\0cd", 5) + std::string(59, '\0'));
    ASSERT_EQ(textures.Count(), 2);
    EXPECT_EQ(textures.Item(1)->bitmap(), "abcd");
    EXPECT_EQ(textures.Item(2)->bitmap(), "");
    EXPECT_EQ(textures.findTextureIndex(0, 0), 1);
    const std::string saved = textures.asString();
    EXPECT_EQ(saved.size(), 80u * 2 + 10);
    EXPECT_EQ(saved.substr(4, 4) + saved.substr(16, 4), le32(0) + le32(0));
    EXPECT_EQ(saved.substr(saved.size() - 2), le16(34));

    // Counts are signed but for vertices (MemoryBoundTest reads 65,535 of them).
    materials.readList(le16(182) + le16(-3) + le32(0));
    EXPECT_EQ(materials.Count(), 0);
}

TEST(ModelLists, ColourBytesRoundHalvesToEvenAndPackAsFFBlueGreenRed) {
    color c;
    const std::pair<float, int> rounding[] = {{0.5f, 128}, {0.1f, 26}, {2.5f / 255, 2}, {1, 255}};
    for (const auto& [value, expected] : rounding) {
        c.r(value);
        EXPECT_EQ(c.Ri(), expected) << value;
    }
    c.Ri(1);
    c.Gi(2);
    c.Bi(3);
    EXPECT_EQ(hex(c.packedColor()), "FF 03 02 01");
    c.Gi(256);
    EXPECT_TRUE(throwsPlatform([&] { (void)c.packedColor(); }, 5));
    c.r(200.0f);  // 51000 doesn't fit 16 bits
    EXPECT_TRUE(throwsPlatform([&] { (void)c.Ri(); }, 6));

    TextureList textures;
    textures.Add()->color()->r(2.0f);
    EXPECT_TRUE(throwsPlatform([&] { (void)textures.asString(); }, 6));
    textures.Item(1)->color()->r(0);
    textures.Item(1)->bitmap(std::string(64, 'x'));  // exactly 64 characters: no NUL
    EXPECT_EQ(textures.asString().substr(24, 64), std::string(64, 'x'));
}
