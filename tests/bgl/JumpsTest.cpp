#include <velmora/BGLCommandList.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

#include <random>

using namespace velmora;
using namespace bgltest;
using testbytes::hex;
using testbytes::le16;
using testbytes::le32;

TEST(Jumps, OffsetsResolveToTheCommandTheWalkFinds) {
    // JUMP (4 bytes at 0), SET_MATERIAL (6 bytes at 4), BGL_END (2 bytes at 10).
    const auto stream = [](int offset) {
        return le16(13) + le16(offset) + le16(184) + le16(0) + le16(0) + le16(189);
    };
    const std::pair<int, int32_t> cases[] = {
        {4, 2},  {10, 3},  // the first byte of a command
        {0, 1},  {-1, 1},  // 0 is the command itself
        {-2, 0}, {-4, 0},  // -2 and less: the command in front, 0 for the first
        {1, 1},  {2, 1},   // inside the jump, with 3 and 2 bytes of it left
        {3, 2},  {5, 2},   // the last byte of a command goes on to the next
        {8, 2},  {9, 3},   // two bytes of SET_MATERIAL left, and one
    };
    for (const auto& [offset, destination] : cases) {
        BGLCommandList list;
        list.readList(stream(offset));
        EXPECT_EQ(list.Item(1)->jumpDest(0), destination) << "offset " << offset;
    }
    for (int beyond : {11, 12, 1000}) {
        BGLCommandList list;
        EXPECT_TRUE(throwsPlatform([&] { list.readList(stream(beyond)); }, 9)) << beyond;
        EXPECT_EQ(list.Count(), 3) << "the commands stay after a failed jump";
    }
    BGLCommandList call;
    EXPECT_TRUE(throwsPlatform([&] { call.readList(le16(189) + le16(138) + le32(6)); }, 9))
        << "a call to the end of the data";

    // A backward jump from a later command is written back as 0.
    BGLCommandList back;
    back.readList(le16(189) + le16(189) + le16(13) + le16(-4));
    EXPECT_EQ(back.Item(3)->jumpDest(0), 2);
    EXPECT_EQ(hex(back.asString()), hex(le16(189) + le16(189) + le16(13) + le16(0)));
}

TEST(Jumps, OffsetsAreWrittenFromDestinations) {
    BGLCommandList list;
    auto first = list.Add(command(jump));
    list.Add(command(NOOP, {"5"}));  // no row: counts 0 bytes
    list.Add(command(SET_MATERIAL, {"0", "0"}));
    auto last = list.Add(command(BGL_JUMP_32));
    struct Case {
        std::shared_ptr<BGLCommand> from;
        int32_t destination;
        const char* offset;
    };
    const Case cases[] = {{first, 2, "4"},  {first, 3, "4"},
                          {first, 4, "10"}, {first, 5, "16"},  // Count + 1 is the end of the stream
                          {first, 1, "0"},  {first, -7, "0"},
                          {last, 5, "6"},   {last, 2, "0"}};
    for (const Case& c : cases) {
        c.from->jumpDest(0, c.destination);
        list.updateJumpSize();
        EXPECT_EQ(c.from->param(0), c.offset) << c.destination;
    }
    first->jumpDest(0, 6);
    EXPECT_TRUE(throwsPlatform([&] { list.updateJumpSize(); }, 9));

    // A 16-bit offset that no longer fits once a command goes in.
    BGLCommandList far;
    far.Add(command(jump))->jumpDest(0, 5462);
    for (int i = 0; i < 5461; ++i)
        far.Add(command(SET_MATERIAL, {"0", "0"}));
    EXPECT_EQ(far.asString().substr(0, 4), le16(13) + le16(4 + 5460 * 6));
    far.Add(command(SET_MATERIAL, {"0", "0"}), "", 2);
    far.updateJumpDest(2);
    EXPECT_TRUE(throwsPlatform([&] { far.asString(); }, 6));
}

// A random stream with long and short jumps to the start of a command, into one, to itself and
// backwards; the offsets come from the assembler, not from the library.
TEST(Jumps, ResolutionAgreesWithTheStepByStepWalk) {
    std::mt19937 random(7);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    StreamAssembler a;
    while (a.size() < 2000) {
        const int kind = pick(0, 6);
        const int items = kind == 0 ? pick(0, 4) : 0;
        if (kind == 0) a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(items * 3)});
        for (int i = 0; i < items; ++i)
            a.add(DRAW_TRI_LIST_ITEM, {w(i), w(1), w(2)});
        if (kind == 1) a.add(SET_MATERIAL, {w(0), w(pick(-1, 5))});
        if (kind == 2) a.add(BGL_JUMP_32, {jl(0)});
        if (kind == 3) a.add(IFIN1, {jw(0), w(906), w(0), w(1)});
        if (kind == 4) a.add(BGL_ANIMATE, {l(0), jl(0), l(0), jl(0), f("0"), f("0"), f("0")});
        if (kind == 5) a.add(BGL_INTERPOLATE, {l(0), jw(0), l(0), jw(0), l(0), jw(0)});
        if (kind == 6) a.add(BGL_RETURN);
    }
    a.add(BGL_END);
    const int last = a.size() - 1;
    for (int index = 0; index < last; ++index) {
        for (Field& field : a.ops[static_cast<std::size_t>(index)].fields) {
            if (field.target < 0) continue;
            // Short jumps stay within reach of a 16-bit offset; the last byte of the stream is
            // never a target, as nothing follows it.
            const bool wide = field.kind == Field::Long && pick(0, 2) == 0;
            field.target = pick(0, 9) == 0 ? pick(std::max(0, index - 5), index)
                                           : pick(index, wide ? last : std::min(last, index + 600));
            const int size = a.ops[static_cast<std::size_t>(field.target)].size();
            field.delta = pick(0, 4) == 0 ? pick(0, field.target == last ? size - 2 : size - 1) : 0;
        }
    }

    BGLCommandList list;
    list.readList(a.bytes());
    ASSERT_EQ(list.Count(), a.size());
    list.asString();  // writes every offset back from its destination
    const std::vector<int64_t> at = a.starts();
    int jumps = 0;
    for (int n = 1; n <= a.size(); ++n) {
        const auto& fields = a.ops[static_cast<std::size_t>(n - 1)].fields;
        for (std::size_t p = 0; p < fields.size(); ++p) {
            if (fields[p].target < 0) continue;
            ++jumps;
            // The walk: from the command in front, command after command until the offset is
            // passed, each command's bytes counted from its end.
            int64_t bytes = -2;
            int j = n - 1;
            while (bytes < a.valueOf(n - 1, p)) {
                ++j;
                bytes +=
                    at.at(static_cast<std::size_t>(j)) - at.at(static_cast<std::size_t>(j - 1));
            }
            const auto c = list.Item(n);
            ASSERT_EQ(c->jumpDest(static_cast<int16_t>(p)), j) << n << "/" << p;
            // Written back, a forward offset points at the start of that command, a backward
            // one at the jumping command itself.
            const auto to = static_cast<std::size_t>(std::max(j, n) - 1);
            ASSERT_EQ(c->param(static_cast<int16_t>(p)),
                      std::to_string(at[to] - at[static_cast<std::size_t>(n - 1)]))
                << n << "/" << p;
        }
    }
    EXPECT_GT(jumps, 500);
}
