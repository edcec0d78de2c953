#include <velmora/BGLCommandList.h>
#include <velmora/Host.h>

#include "StreamAssembler.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using bgltest::describe;
using testbytes::bytes;
using testbytes::le16;

namespace {

std::string decoded(const std::string& data) {
    BGLCommandList list;
    list.readList(data);
    return describe(list);
}

::testing::AssertionResult unrecognised(BGLCommandList& list, const std::string& data,
                                        const std::string& opcode) {
    return throwsError([&] { list.readList(data); }, 100, "Velmora.BGLCommandList",
                       "Unrecognised BGL Opcode: " + opcode);
}

}  // namespace

TEST(BGLCommandListDecoding, PlainCommandsAndATriangleList) {
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded(bytes({0xB8, 0x00, 0x02, 0x00, 0xFF, 0xFF, 0xB9, 0x00, 0x0A, 0x00, 0x03,
                             0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x02, 0x00, 0xBD, 0x00})),
              "184:2,-1 185:10,3,3 256:0,1,2 189:");
    EXPECT_EQ(decoded(bytes({0xBD, 0x00})), "189:");
    EXPECT_EQ(decoded(bytes({0x22, 0x00})), "34:");
    EXPECT_EQ(decoded(bytes({0x22, 0x00, 0xBD, 0x00})), "34: 189:")
        << "neither command stops the decoder";
}

TEST(BGLCommandListDecoding, ListCountsRoundHalfToEven) {
    const auto tri = [](int indices, const std::string& items) {
        return le16(185) + le16(0) + le16(0) + le16(indices) + items;
    };
    const std::string item = le16(1) + le16(2) + le16(3);
    EXPECT_EQ(decoded(tri(0, "")), "185:0,0,0");
    EXPECT_EQ(decoded(tri(6, item + item)), "185:0,0,6 256:1,2,3 256:1,2,3");
    EXPECT_EQ(decoded(tri(4, item)), "185:0,0,4 256:1,2,3");
    EXPECT_EQ(decoded(tri(5, item + item)), "185:0,0,5 256:1,2,3 256:1,2,3");

    const auto line = [](int indices, int items) {
        std::string out = le16(186) + le16(7) + le16(8) + le16(indices);
        for (int i = 0; i < items; ++i)
            out += le16(i) + le16(i + 1);
        return out;
    };
    EXPECT_EQ(decoded(line(5, 2)), "186:7,8,5 257:0,1 257:1,2");
    EXPECT_EQ(decoded(line(7, 4)), "186:7,8,7 257:0,1 257:1,2 257:2,3 257:3,4");

    // 65535 / 2 rounds to 32768, which no 16-bit count holds: the header isn't added.
    BGLCommandList list;
    EXPECT_TRUE(throwsPlatform([&] { list.readList(le16(189) + line(65535, 0)); }, 6));
    EXPECT_EQ(describe(list), "189:");
}

TEST(BGLCommandListDecoding, ListWordsAreUnsignedAndPlainWordsSigned) {
    EXPECT_EQ(decoded(le16(185) + le16(0xFFFF) + le16(0x8000) + le16(3) + le16(0xFFFF) + le16(0) +
                      le16(0x8001)),
              "185:65535,32768,3 256:65535,0,32769");
    EXPECT_EQ(decoded(le16(186) + le16(0) + le16(0) + le16(2) + le16(0xFFFF) + le16(0xFFFE)),
              "186:0,0,2 257:65535,65534");
    EXPECT_EQ(decoded(bytes({0xB8, 0x00, 0xFF, 0xFF, 0xFF, 0xFF})), "184:-1,-1");
}

TEST(BGLCommandListDecoding, ParametersOfEveryEncodingBecomeText) {
    const std::string name = std::string("ROOF\0\0\0\0\0\0\0\0\0\0\0\0", 16);
    BGLCommandList list;
    list.readList(le16(177) + name + testbytes::f32(2.5f) +                    // BGL_TAG
                  le16(173) + testbytes::le32(-70000) + testbytes::le32(30) +  // BGL_ANIMATE
                  testbytes::le32(2147483647) + testbytes::le32(-30) + testbytes::f32(0.1f) +
                  testbytes::f32(-1e10f) + testbytes::f32(1.0f / 3) + le16(189));
    ASSERT_EQ(list.Count(), 3);
    const auto tagCommand = list.Item(1);
    EXPECT_EQ(tagCommand->param(0), name) << "all 16 bytes stay, NULs included";
    EXPECT_EQ(tagCommand->param(0).size(), 16u);
    EXPECT_EQ(tagCommand->param(1), "2.5");
    const auto animate = list.Item(2);
    EXPECT_EQ(animate->param(0), "-70000");
    EXPECT_EQ(animate->param(2), "2147483647");
    EXPECT_EQ(animate->param(4), "0.1");
    EXPECT_EQ(animate->param(5), "-1E+10");
    EXPECT_EQ(animate->param(6), "0.3333333");
    EXPECT_EQ(animate->param(7), "") << "slots behind the row's parameters stay empty";
    EXPECT_EQ(animate->jumpDest(1), 3) << "30 bytes on from BGL_ANIMATE is BGL_END";
    EXPECT_EQ(animate->jumpDest(3), 1) << "a backward offset gives the command in front";
}

TEST(BGLCommandListDecoding, UnknownOpcodesStopTheDecodeAndKeepWhatCameBefore) {
    BGLCommandList list;
    EXPECT_TRUE(unrecognised(list, le16(189) + le16(0), "0"));
    EXPECT_EQ(describe(list), "189:") << "the commands before the failing one stay";

    BGLCommandList vertexList;
    EXPECT_TRUE(unrecognised(vertexList, bytes({0xB5, 0x00}), "181"));
    EXPECT_EQ(vertexList.Count(), 0);
    BGLCommandList transform;
    EXPECT_TRUE(unrecognised(transform, le16(174), "174"));

    BGLCommandList highBit;
    EXPECT_TRUE(throwsPlatform([&] { highBit.readList(bytes({0xFF, 0xFF})); }, 9));
    BGLCommandList beyondTable;
    EXPECT_TRUE(throwsPlatform([&] { beyondTable.readList(le16(261)); }, 9));

    // Jumps aren't resolved when the decode fails: processJumpDest never ran.
    BGLCommandList jumps;
    EXPECT_TRUE(unrecognised(jumps, le16(13) + le16(4) + le16(189) + le16(2), "2"));
    ASSERT_EQ(jumps.Count(), 2);
    EXPECT_EQ(jumps.Item(1)->jumpDest(0), 0);
}

TEST(BGLCommandListDecoding, AStreamEndingInsideACommandIsCompletedWithZeros) {
    EXPECT_EQ(decoded(bytes({0xB8, 0x00, 0x05})), "184:5,0");
    // A list whose count claims more items than the data holds yields them all.
    EXPECT_EQ(decoded(le16(185) + le16(0) + le16(0) + le16(9) + le16(4)),
              "185:0,0,9 256:4,0,0 256:0,0,0 256:0,0,0");
    // An item word in an opcode position reads its opcode word and its three parameters, while
    // the count of bytes grows by 6 only.
    EXPECT_EQ(decoded(le16(256) + le16(1) + le16(2)), "256:1,2,0");
    BGLCommandList list;
    EXPECT_TRUE(unrecognised(list, le16(256) + le16(1) + le16(2) + le16(3), "0"));
    EXPECT_EQ(describe(list), "256:1,2,3");
}

TEST(BGLCommandListDecoding, ASecondReadAppendsAndResolvesAllJumpsAgain) {
    BGLCommandList list;
    const std::string stream = le16(13) + le16(4) + le16(189);
    list.readList(stream);
    list.Item(1)->jumpDest(0, 77);
    list.readList(stream);
    EXPECT_EQ(describe(list), "13:4 189: 13:4 189:");
    EXPECT_EQ(list.Item(1)->jumpDest(0), 2);
    EXPECT_EQ(list.Item(3)->jumpDest(0), 4);
    EXPECT_NE(list.Item(1), list.Item(3));
}

TEST(BGLCommandListDecoding, YieldsForEveryCommandAndItem) {
    int turns = 0;
    int seenDuringDecode = -1;
    BGLCommandList list;
    setYieldHook([&] {
        ++turns;
        if (turns == 3) seenDuringDecode = list.Count();
    });
    list.readList(le16(189) + le16(185) + le16(0) + le16(0) + le16(6) + std::string(12, '\0') +
                  le16(34));
    setYieldHook(nullptr);
    EXPECT_EQ(list.Count(), 5);
    EXPECT_GE(turns, 5);
    EXPECT_EQ(seenDuringDecode, 2) << "the host sees the list grow, one turn per command";
}

TEST(BGLCommandListDecoding, DecodedCommandsAreIndependentObjects) {
    BGLCommandList list;
    list.readList(le16(184) + le16(1) + le16(2) + le16(184) + le16(3) + le16(4));
    auto first = list.Item(1);
    auto second = list.Item(2);
    first->param(1, "text that is no number");
    EXPECT_EQ(second->param(1), "4");
    list.Remove(1);
    EXPECT_EQ(first->param(1), "text that is no number") << "a removed command stays alive";
    EXPECT_EQ(list.Item(1), second);
    auto added = list.Add();
    EXPECT_EQ(added->opcode(), 0);
    EXPECT_EQ(list.Count(), 2);
}
