#include <velmora/BGLCommandList.h>

#include "StreamAssembler.h"
#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

using namespace velmora;
using namespace bgltest;
using testbytes::hex;

namespace {

// Every opcode with a row, both list shapes, and jumps forward, to themselves, to the end of
// a list, into the middle of one and to the last command.
StreamAssembler everyOpcode() {
    StreamAssembler a;
    a.add(BGL_TAG, {tag(std::string("TOWER\0x", 7)), f(0.25f)});                   // 0
    a.add(VAR_BASE_32, {l(0x12345678)});                                           // 1
    a.add(VAR_BASE_OVERRIDE, {l(-5)});                                             // 2
    a.add(MATERIAL_LIST_BEGIN, {w(1), l(100)});                                    // 3
    a.add(TEXTURE_LIST_BEGIN, {w(2), l(-200)});                                    // 4
    a.add(SETWRD, {w(900), w(-7)});                                                // 5
    a.add(BGL_ZBIAS, {w(3)});                                                      // 6
    a.add(BGL_SET_MATRIX_INDIRECT, {w(4)});                                        // 7
    a.add(IFIN1, {jw(10), w(906), w(1), w(2)});                                    // 8
    a.add(SET_MATERIAL, {w(0), w(-1)});                                            // 9
    a.add(IFIN2, {jw(12), w(1), w(2), w(3), w(4), w(5), w(6)});                    // 10
    a.add(IFIN3, {jw(33), w(1), w(2), w(3), w(4), w(5), w(6), w(7), w(8), w(9)});  // 11
    a.add(IFIN_BOX_PLANE,
          {jw(13), w(-1), w(-2), w(-3), w(-4), w(-5), w(-6), w(-7), w(-8), w(-9)});  // 12
    a.add(IFIN_INSTANCED_BOX_PLANE,
          {jw(13), w(1), w(1), w(1), w(1), w(1), w(1), w(1), w(1), w(1)});  // 13 (itself)
    a.add(IFINBOXP, {jw(16), w(10), w(20), w(30), w(40), w(50), w(60)});    // 14
    a.add(IFMSK, {jw(16), w(7), w(0x40)});                                  // 15
    a.add(IFSIZEV, {jw(17), w(3), w(4)});                                   // 16
    a.add(IFSIZEH, {jw(18), w(5), w(6)});                                   // 17
    a.add(SEPARATION_PLANE, {jw(19), w(1), w(2), w(3), l(-123456)});        // 18
    a.add(SPRITE_VICALL, {jw(34), w(0), w(0), w(0), w(0), w(0), w(1), w(0), w(0), w(3188)});  // 19
    a.add(BGL_ANIMATE, {l(1), jl(22), l(2), jl(25), f(1.5f), f(-0.125f), f(1e10f)});          // 20
    a.add(BGL_INTERPOLATE, {l(5), jw(21), l(6), jw(27), l(7), jw(31)});                       // 21
    a.add(DRAW_TRI_LIST_BEGIN, {w(10), w(3), w(6)});                                          // 22
    a.add(DRAW_TRI_LIST_ITEM, {w(0), w(1), w(2)});                                            // 23
    a.add(DRAW_TRI_LIST_ITEM, {w(2), w(1), w(3)});                                            // 24
    a.add(BGL_LIGHT,
          {w(1), f(0.5f), f(-2), f(3), l(0xFF00FF), f(4), f(5), l(-1), f(6), f(7), f(8)});  // 25
    a.add(DRAW_LINE_LIST_BEGIN, {w(5), w(2), w(4)});                                        // 26
    a.add(DRAW_LINE_LIST_ITEM, {w(0), w(1)});                                               // 27
    a.add(DRAW_LINE_LIST_ITEM, {w(1), w(2)});                                               // 28
    a.add(jump, {jw(32)});                                                                  // 29
    a.add(BGL_JUMP_32, {jl(32)});                                                           // 30
    a.add(BGL_CALL_32, {jl(35)});                                                           // 31
    a.add(BGL_CALL, {jw(35)});                                                              // 32
    a.add(BGL_RETURN);                                                                      // 33
    a.add(BGL_RETURN);                                                                      // 34
    a.add(BGL_END);                                                                         // 35
    return a;
}

}  // namespace

TEST(BGLCommandListRoundTrip, EveryOpcodeComesBackByteForByte) {
    const StreamAssembler a = everyOpcode();
    std::set<int> opcodes;
    for (const Op& op : a.ops)
        opcodes.insert(op.opcode);
    ASSERT_EQ(opcodes.size(), 33u);

    const std::string stream = a.bytes();
    BGLCommandList list;
    list.readList(stream);
    ASSERT_EQ(list.Count(), a.size());
    for (int i = 0; i < a.size(); ++i) {
        const Op& op = a.ops[static_cast<std::size_t>(i)];
        const auto decodedCommand = list.Item(i + 1);
        EXPECT_EQ(decodedCommand->opcode(), op.opcode) << i;
        for (std::size_t p = 0; p < op.fields.size(); ++p) {
            if (op.fields[p].target >= 0) {
                EXPECT_EQ(decodedCommand->jumpDest(static_cast<int16_t>(p)),
                          op.fields[p].target + 1)
                    << "command " << i << " parameter " << p;
            }
        }
    }
    EXPECT_EQ(hex(list.asString()), hex(stream));
    EXPECT_EQ(hex(list.asString()), hex(stream)) << "a second encode is the same";

    // Edits: commands go in and out, and every offset is worked out anew.
    StreamAssembler edited = a;
    list.Add(command(SET_MATERIAL, {"1", "2"}), "", 12);
    list.updateJumpDest(12);
    edited.insert(11, Op{SET_MATERIAL, {w(1), w(2)}, true});
    list.Add(command(BGL_ZBIAS, {"9"}), "", 1);
    list.updateJumpDest(1);
    edited.insert(0, Op{BGL_ZBIAS, {w(9)}, true});
    list.Add(command(DRAW_TRI_LIST_ITEM, {"4", "5", "6"}), "", 27);  // a third triangle
    list.updateJumpDest(27);
    edited.insert(26, Op{DRAW_TRI_LIST_ITEM, {w(4), w(5), w(6)}, false});
    list.Item(25)->param(2, "9");
    edited.ops[24].fields[2] = w(9);
    list.Remove(29);  // BGL_LIGHT: the jump to it now leads to the new triangle in front
    list.updateJumpDest(29, true);
    edited.erase(28);
    list.Remove(3);  // VAR_BASE_32
    list.updateJumpDest(3, true);
    edited.erase(2);
    EXPECT_EQ(hex(list.asString()), hex(edited.bytes()));

    BGLCommandList again;
    again.readList(edited.bytes());
    EXPECT_EQ(describe(again), describe(list));
}

namespace {

// A random stream with long and short jumps of every kind: to the start of a command, into
// one, to itself and backwards. The offsets come from the assembler, not from the library.
StreamAssembler randomStream(int commands, unsigned seed) {
    std::mt19937 random(seed);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    StreamAssembler a;
    std::vector<int> jumpers;
    while (a.size() < commands) {
        switch (pick(0, 7)) {
            case 0: {
                const int items = pick(0, 4);
                a.add(DRAW_TRI_LIST_BEGIN, {w(0), w(0), w(items * 3)});
                for (int i = 0; i < items; ++i)
                    a.add(DRAW_TRI_LIST_ITEM, {w(i), w(1), w(2)});
                break;
            }
            case 1:
                a.add(SET_MATERIAL, {w(0), w(pick(-1, 5))});
                break;
            case 2:
                a.add(BGL_LIGHT,
                      {w(1), f(0), f(0), f(0), l(0), f(0), f(0), l(0), f(0), f(0), f(0)});
                break;
            case 3:
                jumpers.push_back(a.add(BGL_JUMP_32, {l(0)}));
                break;
            case 4:
                jumpers.push_back(a.add(IFIN1, {w(0), w(906), w(0), w(1)}));
                break;
            case 5:
                jumpers.push_back(a.add(BGL_ANIMATE, {l(0), l(0), l(0), l(0), f(0), f(0), f(0)}));
                break;
            case 6:
                jumpers.push_back(a.add(BGL_INTERPOLATE, {l(0), w(0), l(0), w(0), l(0), w(0)}));
                break;
            default:
                a.add(BGL_RETURN);
                break;
        }
    }
    a.add(BGL_END);
    const int last = a.size() - 1;
    for (int index : jumpers) {
        Op& op = a.ops[static_cast<std::size_t>(index)];
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(op.opcode);
        for (std::size_t p = 0; p < op.fields.size(); ++p) {
            if (!row->isJump[p]) continue;
            const bool wide = op.fields[p].kind == Field::Long;
            // Short jumps stay within reach of a 16-bit offset; the last byte of the stream is
            // never a target, as nothing follows it.
            const int reach = wide && pick(0, 2) == 0 ? last : std::min(last, index + 600);
            const int target =
                pick(0, 9) == 0 ? pick(std::max(0, index - 5), index) : pick(index, reach);
            const int size = a.ops[static_cast<std::size_t>(target)].size();
            const int delta = pick(0, target == last ? size - 2 : size - 1);
            op.fields[p].target = target;
            op.fields[p].delta = pick(0, 4) == 0 ? delta : 0;
        }
    }
    return a;
}

// The walk of the offset table, step by step.
std::vector<int32_t> referenceDestinations(const BGLCommandList& list) {
    BGLOpcodeDictionary dictionary;
    std::vector<int32_t> sizes(1, 0);
    for (const auto& c : list)
        sizes.push_back(dictionary.getEntry(static_cast<int16_t>(c->opcode())).length);
    std::vector<int32_t> out;
    for (int32_t n = 1; n <= list.Count(); ++n) {
        const auto c = list.Item(n);
        const BGLCommandDictEntry row = dictionary.getEntry(static_cast<int16_t>(c->opcode()));
        for (int16_t i = 0; i < row.numParam; ++i) {
            if (!row.isJump[static_cast<std::size_t>(i)]) continue;
            const int64_t offset = std::stoll(c->param(i));
            int64_t walked = -2;
            int32_t j = n - 1;
            while (walked < offset) {
                ++j;
                walked += sizes.at(static_cast<std::size_t>(j));
            }
            out.push_back(j);
        }
    }
    return out;
}

// The jumpDest of every jump parameter in list order. With `asWritten`, a destination in front
// of its command becomes the command itself, as an offset of 0 reads back.
std::vector<int32_t> destinations(const BGLCommandList& list, bool asWritten = false) {
    std::vector<int32_t> out;
    int32_t n = 0;
    for (const auto& c : list) {
        ++n;
        const BGLCommandDictEntry* row = BGLOpcodeDictionary::row(c->opcode());
        for (int16_t i = 0; i < row->numParam; ++i) {
            if (!row->isJump[static_cast<std::size_t>(i)]) continue;
            out.push_back(asWritten ? std::max(c->jumpDest(i), n) : c->jumpDest(i));
        }
    }
    return out;
}

}  // namespace

TEST(BGLCommandListRoundTrip, LargeStreamsResolveLikeTheStepByStepWalk) {
    for (const auto& [commands, seed] : {std::pair{2000, 1u}, std::pair{30000, 7u}}) {
        const StreamAssembler a = randomStream(commands, seed);
        BGLCommandList list;
        list.readList(a.bytes());
        ASSERT_EQ(list.Count(), a.size());
        const std::vector<int32_t> expected = referenceDestinations(list);
        EXPECT_GT(expected.size(), static_cast<std::size_t>(commands / 4));
        EXPECT_EQ(destinations(list), expected) << commands;

        // Written back, every offset points at the start of the command it resolved to, and a
        // backward one at the jumping command itself.
        BGLCommandList again;
        again.readList(list.asString());
        EXPECT_EQ(destinations(again), destinations(list, true));
        const std::vector<int64_t> starts = a.starts();
        for (int32_t n = 1; n <= list.Count(); ++n) {
            const auto c = list.Item(n);
            if (c->opcode() != BGL_JUMP_32) continue;
            const int64_t expectedOffset =
                c->jumpDest(0) <= n ? 0
                                    : starts[static_cast<std::size_t>(c->jumpDest(0) - 1)] -
                                          starts[static_cast<std::size_t>(n - 1)];
            ASSERT_EQ(c->param(0), std::to_string(expectedOffset)) << n;
        }
    }
}
