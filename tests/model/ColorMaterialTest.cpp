#include <velmora/MaterialList.h>
#include <velmora/color.h>
#include <velmora/material.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <limits>

using namespace velmora;
using namespace testbytes;

TEST(Color, ByteViewRoundsTheSingleProductHalfToEven) {
    color c;
    c.r(0.5f);  // 127.5 -> 128
    EXPECT_EQ(c.Ri(), 128);
    c.r(0.1f);  // 25.5 as a single -> 26
    EXPECT_EQ(c.Ri(), 26);
    c.g(2.5f / 255.0f);
    EXPECT_EQ(c.Gi(), 2);

    for (int value = 0; value <= 255; ++value) {
        c.Bi(static_cast<int16_t>(value));
        ASSERT_EQ(c.Bi(), value);
    }
    c.Ri(255);
    EXPECT_EQ(c.r(), 1.0f);
    c.Ai(510);  // no range test on writing
    EXPECT_EQ(c.a(), 2.0f);

    c.r(200.0f);  // 51000 doesn't fit 16 bits
    EXPECT_TRUE(throwsPlatform([&] { (void)c.Ri(); }, 6));
    c.r(std::numeric_limits<float>::quiet_NaN());
    EXPECT_TRUE(throwsPlatform([&] { (void)c.Ri(); }, 6));
}

TEST(Color, PackedColorIsFFThenBlueGreenRed) {
    color c;
    c.Ri(1);
    c.Gi(2);
    c.Bi(3);
    c.Ai(99);
    EXPECT_EQ(hex(c.packedColor()), "FF 03 02 01");

    c.Gi(256);
    EXPECT_TRUE(throwsPlatform([&] { (void)c.packedColor(); }, 5));
    c.Gi(-1);
    EXPECT_TRUE(throwsPlatform([&] { (void)c.packedColor(); }, 5));
}

TEST(Material, ColoursAreSharedReferences) {
    material first;
    material second;
    EXPECT_NE(first.Diffuse(), first.Ambient());
    EXPECT_NE(first.Specular(), first.Emmisive());

    auto shared = std::make_shared<color>();
    first.Diffuse(shared);
    second.Diffuse(shared);
    first.Diffuse()->r(0.25f);
    EXPECT_EQ(second.Diffuse()->r(), 0.25f);
    EXPECT_EQ(first.Diffuse(), first.Diffuse());
}

namespace {

std::string materialEntry(float base) {
    std::string entry;
    for (int i = 0; i < 17; ++i)
        entry += f32(base + static_cast<float>(i));
    return entry;
}

}  // namespace

TEST(MaterialList, EmptyListAndRoundTrip) {
    MaterialList empty;
    empty.readList(le16(182) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_EQ(hex(empty.asString()), "B6 00 00 00 00 00 00 00 22 00");

    const std::string payload =
        le16(182) + le16(2) + le32(0) + materialEntry(1) + materialEntry(100) + le16(34);
    MaterialList list;
    list.readList(payload);
    ASSERT_EQ(list.Count(), 2);
    EXPECT_EQ(list.Item(1)->Diffuse()->r(), 1.0f);
    EXPECT_EQ(list.Item(1)->Ambient()->r(), 5.0f);
    EXPECT_EQ(list.Item(1)->Emmisive()->a(), 16.0f);
    EXPECT_EQ(list.Item(2)->Power(), 116.0f);
    EXPECT_EQ(list.asString(), payload);

    // Reading appends; the reserved field is written as 0; a missing closing word is added.
    list.readList(le16(182) + le16(1) + le32(77) + materialEntry(7));
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(3)->Diffuse()->g(), 8.0f);
    EXPECT_EQ(list.asString().substr(4, 4), le32(0));
    EXPECT_EQ(list.asString().size(), 68u * 3 + 10);
}

TEST(MaterialList, BadHeadNegativeAndShortCounts) {
    MaterialList list;
    list.Add();
    EXPECT_TRUE(throwsError([&] { list.readList(le16(181) + le16(1)); }, 100,
                            "Velmora.MaterialList", "Data does not contain a valid material list"));
    EXPECT_TRUE(throwsError([&] { list.readList(""); }, 100, "Velmora.MaterialList",
                            "Data does not contain a valid material list"));
    EXPECT_EQ(list.Count(), 1);

    list.readList(le16(182) + le16(-3) + le32(0));
    EXPECT_EQ(list.Count(), 1);

    // A count beyond the data reads zeros.
    list.readList(le16(182) + le16(2) + le32(0) + f32(0.5f));
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(2)->Diffuse()->r(), 0.5f);
    EXPECT_EQ(list.Item(3)->Power(), 0.0f);
}

TEST(MaterialList, MoreThan32767MaterialsOverflow) {
    MaterialList list;
    for (int i = 0; i < 32768; ++i)
        list.Add();
    EXPECT_TRUE(throwsPlatform([&] { (void)list.asString(); }, 6));
}
