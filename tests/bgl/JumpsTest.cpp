#include <velmora/BGLCommandList.h>

#include "StreamAssembler.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using namespace bgltest;
using testbytes::hex;
using testbytes::le16;
using testbytes::le32;

namespace {

// JUMP (4 bytes at 0), SET_MATERIAL (6 bytes at 4), BGL_END (2 bytes at 10): where a jump with
// `offset` from the first command leads.
int32_t destinationOf(int offset) {
    BGLCommandList list;
    list.readList(le16(13) + le16(offset) + le16(184) + le16(0) + le16(0) + le16(189));
    return list.Item(1)->jumpDest(0);
}

}  // namespace

TEST(BGLCommandListJumps, OffsetsResolveToTheCommandTheWalkFinds) {
    EXPECT_EQ(destinationOf(4), 2) << "the first byte of a command";
    EXPECT_EQ(destinationOf(10), 3);
    EXPECT_EQ(destinationOf(0), 1) << "0 is the command itself";
    EXPECT_EQ(destinationOf(-1), 1);
    EXPECT_EQ(destinationOf(-2), 0) << "-2 and less: the command in front, 0 for the first";
    EXPECT_EQ(destinationOf(-4), 0);
    EXPECT_EQ(destinationOf(1), 1) << "inside the jump, 3 bytes of it left";
    EXPECT_EQ(destinationOf(2), 1);
    EXPECT_EQ(destinationOf(3), 2) << "the last byte of a command goes on to the next";
    EXPECT_EQ(destinationOf(5), 2);
    EXPECT_EQ(destinationOf(8), 2) << "two bytes of SET_MATERIAL left";
    EXPECT_EQ(destinationOf(9), 3);
    for (int offBeyond : {11, 12, 1000}) {
        BGLCommandList list;
        EXPECT_TRUE(throwsPlatform(
            [&] {
                list.readList(le16(13) + le16(offBeyond) + le16(184) + le16(0) + le16(0) +
                              le16(189));
            },
            9))
            << offBeyond;
        EXPECT_EQ(list.Count(), 3) << "the commands stay after a failed jump";
    }

    // A backward offset from a later command, and the jumps resolved before a failure stay.
    BGLCommandList list;
    EXPECT_TRUE(throwsPlatform(
        [&] {
            list.readList(le16(189) + le16(189) + le16(189) + le16(189) + le16(13) + le16(-4) +
                          le16(13) + le16(4));
        },
        9));
    EXPECT_EQ(list.Item(5)->jumpDest(0), 4);
    EXPECT_EQ(list.Item(6)->jumpDest(0), 0);
    EXPECT_EQ(hex(list.asString().substr(8, 4)), "0D 00 00 00") << "a backward jump writes 0";

    BGLCommandList call;
    EXPECT_TRUE(throwsPlatform([&] { call.readList(le16(189) + le16(138) + le32(6)); }, 9))
        << "a call to the end of the data";

    BGLCommandList notANumber;
    notANumber.Add(command(jump, {"four"}));
    EXPECT_TRUE(throwsPlatform([&] { notANumber.processJumpDest(); }, 13));
}

TEST(BGLCommandListJumps, ListsAndSeveralJumpParameters) {
    StreamAssembler a;
    a.add(IFIN1, {jw(4), w(906), w(1), w(2)});
    a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(6)});
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});
    a.add(DRAW_TRI_LIST_ITEM, {w(1), w(2), w(3)});
    a.add(BGL_ANIMATE, {l(5), jl(6), l(7), jl(2, 3), f(1), f(2), f(3)});
    a.add(BGL_INTERPOLATE, {l(9), jw(5), l(-3), jw(3), l(8), jw(6)});
    a.add(BGL_END);
    BGLCommandList list;
    list.readList(a.bytes());
    EXPECT_EQ(list.Item(1)->jumpDest(0), 5);
    const auto animate = list.Item(5);
    const auto interpolate = list.Item(6);
    EXPECT_EQ(animate->jumpDest(0), 0);
    EXPECT_EQ(animate->jumpDest(1), 7);
    EXPECT_EQ(animate->jumpDest(2), 0);
    EXPECT_EQ(animate->jumpDest(3), 4) << "an offset back into a list: the command in front";
    EXPECT_EQ(interpolate->jumpDest(1), 6);
    EXPECT_EQ(interpolate->jumpDest(3), 5) << "backwards, so the command in front";
    EXPECT_EQ(interpolate->jumpDest(5), 7);
    for (int16_t slot : {0, 2, 4})
        EXPECT_EQ(interpolate->jumpDest(slot), 0);

    // Into a list: a header or an item like any other command.
    StreamAssembler into;
    into.add(jump, {jw(2)});
    into.add(DRAW_LINE_LIST_BEGIN, {w(0), w(0), w(4)});
    into.add(DRAW_LINE_LIST_ITEM, {w(0), w(1)});
    into.add(DRAW_LINE_LIST_ITEM, {w(1), w(2)});
    into.add(BGL_CALL, {jw(1)});
    into.add(BGL_END);
    BGLCommandList intoList;
    intoList.readList(into.bytes());
    EXPECT_EQ(intoList.Item(1)->jumpDest(0), 3);
    EXPECT_EQ(intoList.Item(5)->jumpDest(0), 4) << "a backward call: the command in front";

    // Only jump parameters are written anew; the others keep their text.
    animate->param(0, "1.5");
    interpolate->param(2, "-3.0");
    list.asString();
    EXPECT_EQ(animate->param(0), "1.5");
    EXPECT_EQ(interpolate->param(2), "-3.0");
    EXPECT_EQ(animate->param(1), "50");
    EXPECT_EQ(animate->param(3), "0");
    EXPECT_EQ(interpolate->param(1), "0");
    EXPECT_EQ(interpolate->param(5), "20");
    EXPECT_EQ(list.Item(1)->param(0), "30") << "a jump over a list of 2 items counts 8 + 6 + 6";
}

TEST(BGLCommandListJumps, OffsetsAreWrittenFromDestinations) {
    BGLCommandList empty;
    empty.processJumpDest();
    empty.updateJumpSize();
    EXPECT_EQ(empty.asString(), "");

    BGLCommandList list;
    auto first = list.Add(command(jump));
    list.Add(command(NOOP, {"5"}));  // no row: counts 0 bytes
    list.Add(command(SET_MATERIAL, {"0", "0"}));
    auto last = list.Add(command(BGL_JUMP_32));
    const auto offsetTo = [&](const std::shared_ptr<BGLCommand>& c, int32_t dest) {
        c->jumpDest(0, dest);
        list.updateJumpSize();
        return c->param(0);
    };
    EXPECT_EQ(offsetTo(first, 2), "4");
    EXPECT_EQ(offsetTo(first, 3), "4") << "the command without a row takes no bytes";
    EXPECT_EQ(offsetTo(first, 4), "10");
    EXPECT_EQ(offsetTo(first, 5), "16") << "Count + 1 is the end of the stream";
    EXPECT_EQ(offsetTo(first, 1), "0");
    EXPECT_EQ(offsetTo(first, -7), "0");
    EXPECT_EQ(offsetTo(last, 5), "6");
    EXPECT_EQ(offsetTo(last, 2), "0");
    first->jumpDest(0, 6);
    EXPECT_TRUE(throwsPlatform([&] { list.updateJumpSize(); }, 9));
    first->jumpDest(0, 2);
    last->jumpDest(0, 6);
    EXPECT_TRUE(throwsPlatform([&] { list.updateJumpSize(); }, 9));
    EXPECT_EQ(first->param(0), "4") << "the commands before the failing one are written";

    // The size of a 16-bit offset is checked when the stream is written.
    BGLCommandList far;
    far.Add(command(jump))->jumpDest(0, 5462);
    for (int i = 0; i < 5461; ++i)
        far.Add(command(SET_MATERIAL, {"0", "0"}));
    EXPECT_EQ(far.asString().substr(0, 4), le16(13) + le16(4 + 5460 * 6));
    far.Add(command(SET_MATERIAL, {"0", "0"}), "", 2);
    far.updateJumpDest(2);
    EXPECT_TRUE(throwsPlatform([&] { far.asString(); }, 6));
}

TEST(BGLCommandListJumps, InsertionsAndRemovalsKeepJumpsOnTheirCommands) {
    // IFIN1 at 1 skips to the call at 4; the call and the jump at 5 lead to BGL_END.
    StreamAssembler a;
    a.add(IFIN1, {jw(3), w(906), w(0), w(1)});
    a.add(SET_MATERIAL, {w(0), w(1)});
    a.add(SET_MATERIAL, {w(0), w(2)});
    a.add(BGL_CALL_32, {jl(5)});
    a.add(BGL_JUMP_32, {jl(5)});
    a.add(BGL_END);
    BGLCommandList list;
    list.readList(a.bytes());
    ASSERT_EQ(list.Item(1)->jumpDest(0), 4);

    auto added = list.Add(command(BGL_ZBIAS, {"1"}), "", 3);
    list.updateJumpDest(3);
    EXPECT_EQ(list.Item(3), added);
    EXPECT_EQ(list.Item(1)->jumpDest(0), 5) << "the jump follows its command";
    EXPECT_EQ(list.Item(5)->jumpDest(0), 7);
    list.asString();
    EXPECT_EQ(list.Item(1)->param(0), "26") << "10 + 6 + 4 + 6: the new command lies inside";
    EXPECT_EQ(list.Item(5)->param(0), "12");

    // Removal with the removed position: a jump to it leads to the command in front.
    list.Remove(5);
    list.updateJumpDest(5, true);
    EXPECT_EQ(list.Item(1)->jumpDest(0), 4);
    EXPECT_EQ(list.Item(5)->jumpDest(0), 6);
    // Removal with the position behind it: a jump to it leads to its successor.
    list.Item(1)->jumpDest(0, 4);
    list.Remove(4);
    list.updateJumpDest(5, true);
    EXPECT_EQ(list.Item(1)->jumpDest(0), 4);
    EXPECT_EQ(list.Item(4)->jumpDest(0), 5);
    EXPECT_EQ(hex(list.asString()),
              hex(le16(36) + le16(20) + le16(906) + le16(0) + le16(1) + le16(184) + le16(0) +
                  le16(1) + le16(172) + le16(1) + le16(136) + le32(6) + le16(189)));
    EXPECT_EQ(bgltest::describe(list), "36:20,906,0,1 184:0,1 172:1 136:6 189:");

    // The bound is the same both ways; values aren't checked against the list.
    BGLCommandList bounds;
    auto two = bounds.Add(command(jump));
    auto three = bounds.Add(command(jump));
    auto zero = bounds.Add(command(jump));
    two->jumpDest(0, 2);
    three->jumpDest(0, 3);
    zero->jumpDest(0, 0);
    bounds.updateJumpDest(3, true);
    EXPECT_EQ(two->jumpDest(0), 2);
    EXPECT_EQ(three->jumpDest(0), 2);
    bounds.updateJumpDest(0, true);
    EXPECT_EQ(zero->jumpDest(0), -1);
    EXPECT_EQ(two->jumpDest(0), 1);
    bounds.updateJumpDest(1);
    EXPECT_EQ(two->jumpDest(0), 2);
    EXPECT_EQ(three->jumpDest(0), 2);
    EXPECT_EQ(zero->jumpDest(0), -1);
}
