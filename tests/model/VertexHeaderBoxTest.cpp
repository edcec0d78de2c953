#include <velmora/BoundingBox.h>
#include <velmora/Host.h>
#include <velmora/MDLHeader.h>
#include <velmora/VertexList.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace testbytes;

namespace {

std::string vertexEntry(float base) {
    std::string entry;
    for (int i = 0; i < 8; ++i)
        entry += f32(base + static_cast<float>(i));
    return entry;
}

struct YieldCounter {
    int turns = 0;
    YieldCounter() {
        setYieldHook([this] { ++turns; });
    }
    ~YieldCounter() { setYieldHook(nullptr); }
};

}  // namespace

TEST(VertexList, RoundTripYieldsPerVertexAndAppends) {
    VertexList empty;
    empty.fillCollection(le16(181) + le16(0) + le32(0) + le16(34));
    EXPECT_EQ(empty.Count(), 0);
    EXPECT_EQ(hex(empty.asString()), "B5 00 00 00 00 00 00 00 22 00");

    const std::string payload =
        le16(181) + le16(2) + le32(0) + vertexEntry(1) + vertexEntry(20) + le16(34);
    VertexList list;
    YieldCounter yields;
    list.fillCollection(payload);
    EXPECT_EQ(yields.turns, 2);
    ASSERT_EQ(list.Count(), 2);
    const auto second = list.Item(2);
    EXPECT_EQ(second->x(), 20.0f);
    EXPECT_EQ(second->nz(), 25.0f);
    EXPECT_EQ(second->ty(), 27.0f);
    EXPECT_EQ(list.asString(), payload);

    // No closing word and a non-zero reserved field: read fine, written back canonical.
    list.fillCollection(le16(181) + le16(1) + le32(9) + vertexEntry(5));
    ASSERT_EQ(list.Count(), 3);
    EXPECT_EQ(list.Item(3)->y(), 6.0f);
    const std::string saved = list.asString();
    EXPECT_EQ(saved.substr(4, 4), le32(0));
    EXPECT_EQ(saved.substr(saved.size() - 2), le16(34));

    // Elements stay valid after the list is gone.
    std::shared_ptr<Vertex> kept = list.Item(1);
    list.Remove(1);
    EXPECT_EQ(kept->x(), 1.0f);
}

TEST(VertexList, UnsignedCountShortDataAndErrors) {
    VertexList list;
    // 40,000 is negative as a signed count; the data beyond the payload reads as zeros.
    list.fillCollection(le16(181) + le16(40000) + le32(0) + vertexEntry(3));
    ASSERT_EQ(list.Count(), 40000);
    EXPECT_EQ(list.Item(1)->tx(), 9.0f);
    EXPECT_EQ(list.Item(40000)->x(), 0.0f);
    EXPECT_EQ(list.asString().size(), 32u * 40000 + 10);

    EXPECT_TRUE(throwsError([&] { list.fillCollection(le16(182)); }, 100, "Velmora.VertexList",
                            "Error while reading vertex list"));
    EXPECT_EQ(list.Count(), 40000);

    list.fillCollection(le16(181) + le16(65535) + le32(0));
    EXPECT_EQ(list.Count(), 105535);
    EXPECT_TRUE(throwsPlatform([&] { (void)list.asString(); }, 6));
}

TEST(MDLHeader, NineValuesRoundTripAndBounds) {
    std::string payload;
    for (int i = 0; i < 9; ++i)
        payload += le32(-1000 * i - 7);
    MDLHeader header;
    header.readList(payload);
    EXPECT_EQ(header.param(8), -8007);
    EXPECT_EQ(header.asString(), payload);

    MDLHeader longer;
    longer.readList(payload + le32(5));
    EXPECT_EQ(longer.asString(), payload);
    MDLHeader shorter;
    shorter.readList(payload.substr(0, 8));
    EXPECT_EQ(shorter.param(1), -1007);
    EXPECT_EQ(shorter.param(2), 0);
    EXPECT_EQ(shorter.asString().size(), 36u);

    header.param(0, 42);
    EXPECT_EQ(header.param(0), 42);
    EXPECT_TRUE(throwsPlatform([&] { (void)header.param(9); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { (void)header.param(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { header.param(9, 1); }, 9));
}

TEST(BoundingBox, MinimaThenMaxima) {
    const std::string payload = f32(-1) + f32(-2) + f32(-3) + f32(4) + f32(5) + f32(6);
    BoundingBox box;
    box.readList(payload);
    EXPECT_EQ(box.zmin(), -3.0f);
    EXPECT_EQ(box.xmax(), 4.0f);
    EXPECT_EQ(box.asString(), payload);

    BoundingBox half;
    half.readList(payload.substr(0, 12));
    EXPECT_EQ(half.ymin(), -2.0f);
    EXPECT_EQ(half.zmax(), 0.0f);
    EXPECT_EQ(half.asString(), payload.substr(0, 12) + std::string(12, '\0'));
}
