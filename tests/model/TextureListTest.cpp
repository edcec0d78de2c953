#include <velmora/TextureList.h>
#include <velmora/texture.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace testbytes;

namespace {

std::string textureEntry(int32_t type, std::string colourBytes, float size,
                         const std::string& nameField) {
    std::string field = nameField;
    field.resize(64, '\0');
    return le32(type) + colourBytes + le32(0) + f32(size) + field;
}

std::string textPayload(int16_t count, const std::string& entries) {
    return le16(183) + le16(count) + le32(0) + entries + le16(34);
}

}  // namespace

TEST(Texture, TypeNamesAndBitmap) {
    texture t;
    EXPECT_EQ(t.getTypeString(), "");
    t.textureType(TEXTURE_BUILDING);
    EXPECT_EQ(t.getTypeString(), "TEXTURE_BUILDING");
    t.textureType(TEXTURE2_SHADER);
    EXPECT_EQ(t.getTypeString(), "TEXTURE2_SHADER");
    t.textureType(static_cast<textureType>(9));
    EXPECT_EQ(t.getTypeString(), "");
    EXPECT_EQ(t.getTypeVal("TEXTURE_NIGHTMAP"), 128);
    EXPECT_EQ(t.getTypeVal("texture_map"), 0);
    EXPECT_EQ(t.textureType(), 9);

    t.bitmap(std::string("ab\0cd\0\0", 7));
    EXPECT_EQ(t.bitmap(), "abcd");
    EXPECT_NE(t.color(), nullptr);
}

TEST(TextureList, EmptyListAndRoundTripWithColourOrder) {
    TextureList empty;
    empty.fillCollection(textPayload(0, ""));
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_EQ(hex(empty.asString()), "B7 00 00 00 00 00 00 00 22 00");
    EXPECT_EQ(empty.findTextureIndex(0, 0), 0);

    const std::string name64(64, 'n');
    const std::string payload =
        textPayload(2, textureEntry(6, bytes({0x10, 0x20, 0x30, 0x40}), 12.5f, "wall.bmp") +
                           textureEntry(1, bytes({0, 255, 128, 1}), 0, name64));
    TextureList list;
    list.fillCollection(payload);
    ASSERT_EQ(list.Count(), 2);
    const auto first = list.Item(1);
    EXPECT_EQ(first->textureType(), TEXTURE_BUILDING);
    EXPECT_EQ(first->color()->Bi(), 0x10);
    EXPECT_EQ(first->color()->Ai(), 0x20);
    EXPECT_EQ(first->color()->Ri(), 0x30);
    EXPECT_EQ(first->color()->Gi(), 0x40);
    EXPECT_EQ(first->size(), 12.5f);
    EXPECT_EQ(first->bitmap(), "wall.bmp");
    EXPECT_EQ(list.Item(2)->bitmap(), name64);
    EXPECT_EQ(list.asString(), payload);

    // Every loaded entry has parent 0 and season summer.
    EXPECT_EQ(list.findTextureIndex(0, 0), 1);
    list.Item(1)->textureVariant(winter);
    list.Item(2)->parent(5);
    list.Item(2)->textureVariant(winter);
    EXPECT_EQ(list.findTextureIndex(5, winter), 2);
    EXPECT_EQ(list.findTextureIndex(0, summer), 0);
}

TEST(TextureList, NameFieldJoinsAroundNulAndReservedIsLost) {
    std::string entry = textureEntry(2, bytes({1, 2, 3, 4}), 0, std::string("ab\0cd", 5));
    entry.replace(8, 4, le32(1234));  // reserved field
    TextureList list;
    list.fillCollection(textPayload(1, entry));
    EXPECT_EQ(list.Item(1)->bitmap(), "abcd");
    const std::string saved = list.asString();
    EXPECT_EQ(saved.substr(16, 4), le32(0));
    EXPECT_EQ(saved.size(), 90u);

    // Appends; a negative count adds nothing.
    list.fillCollection(textPayload(-1, ""));
    EXPECT_EQ(list.Count(), 1);
    list.fillCollection(textPayload(2, ""));  // beyond the data: zeros
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(3)->bitmap(), "");
}

TEST(TextureList, Errors) {
    TextureList list;
    EXPECT_TRUE(throwsError([&] { list.fillCollection(le16(182) + le16(0)); }, 100,
                            "Velmora.TextureList", "No valid texture list data in string"));

    list.Add()->bitmap(std::string(65, 'x'));
    EXPECT_TRUE(throwsError([&] { (void)list.asString(); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    list.Item(1)->bitmap(std::string(64, 'x'));
    list.Item(1)->color()->r(2.0f);  // 510 doesn't fit a byte
    EXPECT_TRUE(throwsPlatform([&] { (void)list.asString(); }, 6));

    TextureList big;
    for (int i = 0; i < 32768; ++i)
        big.Add();
    EXPECT_TRUE(throwsPlatform([&] { (void)big.asString(); }, 6));
    EXPECT_TRUE(throwsPlatform([&] { (void)big.findTextureIndex(0, 0); }, 6));
}
