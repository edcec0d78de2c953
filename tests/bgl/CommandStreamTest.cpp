#include <velmora/BGLCommandList.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/StreamAssembler.h"

#include <gtest/gtest.h>

#include <random>

using namespace velmora;
using namespace bgltest;
using namespace testbytes;

namespace {

// "184:2,-1 189:": each command's opcode and the parameters of its row.
std::string describe(const BGLCommandList& list) {
    std::string out;
    for (const auto& c : list) {
        const auto* row = BGLOpcodeDictionary::row(c->opcode());
        out += (out.empty() ? "" : " ") + std::to_string(static_cast<int>(c->opcode())) + ":";
        for (int i = 0; i < (row ? row->numParam : 0); ++i)
            out += (i ? "," : "") + c->param(static_cast<int16_t>(i));
    }
    return out;
}

std::string triangles(int indices, int items) {
    std::string out = le16(185) + le16(0) + le16(0) + le16(indices);
    for (int i = 0; i < items; ++i)
        out += le16(1) + le16(2) + le16(3);
    return out;
}

// The 22 bytes of a material, a list of one triangle and the end.
const std::string kExample =
    bytes({0xB8, 0x00, 0x02, 0x00, 0xFF, 0xFF, 0xB9, 0x00, 0x0A, 0x00, 0x03,
           0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x02, 0x00, 0xBD, 0x00});

}  // namespace

TEST(StreamDecoding, CommandsListsAndTheirEdgeCases) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {kExample, "184:2,-1 185:10,3,3 256:0,1,2 189:"},
        {le16(34) + le16(189) + le16(34), "34: 189: 34:"},  // neither command stops the decoder
        // Item counts are the index count / 3 (or / 2), rounding halves to even.
        {triangles(4, 1), "185:0,0,4 256:1,2,3"},
        {triangles(5, 2), "185:0,0,5 256:1,2,3 256:1,2,3"},
        {le16(186) + le16(7) + le16(8) + le16(5) + le16(0) + le16(1) + le16(1) + le16(2),
         "186:7,8,5 257:0,1 257:1,2"},
        // List words are unsigned, plain words signed.
        {le16(185) + le16(0xFFFF) + le16(0x8000) + le16(3) + le16(0xFFFF) + le16(0) + le16(0x8001),
         "185:65535,32768,3 256:65535,0,32769"},
        // A stream ending inside a command or a list is completed with zeros.
        {bytes({0xB8, 0x00, 0x05}), "184:5,0"},
        {triangles(9, 0) + le16(4), "185:0,0,9 256:4,0,0 256:0,0,0 256:0,0,0"},
        // A BGL_TAG keeps all 16 bytes, NULs included.
        {le16(177) + "ROOF" + std::string(12, '\0') + testbytes::f32(1.0f / 3),
         "177:ROOF" + std::string(12, '\0') + ",0.3333333"},
    };
    for (const auto& [data, expected] : cases) {
        BGLCommandList list;
        list.readList(data);
        EXPECT_EQ(describe(list), expected) << hex(data);
    }
}

TEST(StreamDecoding, FailuresKeepTheCommandsBefore) {
    struct Case {
        std::string data;
        int number;
        const char* description;
        const char* kept;
    };
    const Case cases[] = {
        {le16(189) + bytes({0xB5, 0x00}), 100, "Unrecognised BGL Opcode: 181", "189:"},
        {le16(174), 100, "Unrecognised BGL Opcode: 174", ""},
        {bytes({0xFF, 0xFF}), 9, "", ""},
        {le16(261), 9, "", ""},
        // 65535 / 2 rounds to 32768, which no 16-bit count holds: the header isn't added.
        {le16(189) + le16(186) + le16(0) + le16(0) + le16(65535), 6, "", "189:"},
        // Jumps aren't resolved when the decode fails.
        {le16(13) + le16(4) + le16(189) + le16(2), 100, "Unrecognised BGL Opcode: 2", "13:4 189:"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(hex(c.data));
        BGLCommandList list;
        EXPECT_TRUE(throwsError([&] { list.readList(c.data); }, c.number,
                                c.number == 100 ? "Velmora.BGLCommandList" : "Velmora",
                                c.description));
        EXPECT_EQ(describe(list), c.kept);
        if (list.Count() > 0 && list.Item(1)->opcode() == jump) {
            EXPECT_EQ(list.Item(1)->jumpDest(0), 0);
        }
    }
}

TEST(StreamEncoding, CommandsBecomeTheirBytesOrFailWithTheirError) {
    struct Case {
        std::shared_ptr<BGLCommand> command;
        const char* bytes;
        int error = 0;
    };
    const Case cases[] = {
        {command(BGL_END), "BD 00"},
        {command(DRAW_TRI_LIST_ITEM, {"1", "2", "3"}), "01 00 02 00 03 00"},
        {command(DRAW_LINE_LIST_ITEM, {"1", "2"}), "01 00 02 00"},
        {command(DRAW_TRI_LIST_BEGIN, {"0", "4", "40000"}), "B9 00 00 00 04 00 40 9C"},
        {command(SET_MATERIAL, {"0", "-1"}), "B8 00 00 00 FF FF"},
        {command(BGL_TAG, {"ABC", "1.5"}),
         "B1 00 41 42 43 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 C0 3F"},
        {command(VAR_BASE_32, {"-2"}), "89 00 FE FF FF FF"},
        {command(VERTEX_LIST_BEGIN, {"1", "2"}), "B5 00"},  // no row: a bare opcode word
        {command(SET_MATERIAL, {"2.5", " 3.5 "}), "B8 00 02 00 04 00"},  // halves to even
        {command(SET_MATERIAL, {"1"}), "", 13},                          // an empty parameter
        {command(SET_MATERIAL, {"1", "x"}), "", 13},
        {command(SET_MATERIAL, {"1", "32768"}), "", 6},
        {command(VAR_BASE_32, {"2147483648"}), "", 6},
        {command(BGL_TAG, {"A", "1E+39"}), "", 6},
        {command(DRAW_LINE_LIST_BEGIN, {"0", "4", "40000"}), "", 6},  // written signed
        {command(DRAW_TRI_LIST_ITEM, {"40000", "0", "0"}), "", 6},
        {command(70000), "", 6},
        {command(261), "", 9},
    };
    for (const Case& c : cases) {
        BGLCommandList list;
        list.Add(c.command);
        if (c.error != 0) {
            EXPECT_TRUE(throwsPlatform([&] { list.asString(); }, c.error)) << c.command->opcode();
        } else {
            EXPECT_EQ(hex(list.asString()), c.bytes);
        }
    }
    BGLCommandList example;
    example.readList(kExample);
    EXPECT_EQ(hex(example.asString()), hex(kExample));
    BGLCommandList tag;
    tag.Add(command(BGL_TAG, {"seventeen chars!!", "1"}));
    EXPECT_TRUE(throwsError([&] { tag.asString(); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
}

TEST(StreamIndices, ParentsOfListItemsAndTextureNumbers) {
    // List items get their own kind of header; a line header doesn't change a triangle item's.
    BGLCommandList items;
    for (int opcode : {DRAW_TRI_LIST_ITEM, DRAW_TRI_LIST_BEGIN, DRAW_LINE_LIST_BEGIN,
                       DRAW_LINE_LIST_ITEM, DRAW_TRI_LIST_ITEM})
        items.Add(command(opcode));
    items.processParent();
    std::string parents;
    for (const auto& c : items)
        parents += std::to_string(c->parent());
    EXPECT_EQ(parents, "00032");

    // updateMaterial shifts the texture numbers from a position on, or removes one.
    const auto materials = [](std::initializer_list<const char*> textures) {
        BGLCommandList list;
        list.Add(command(jump));
        for (const char* t : textures)
            list.Add(command(SET_MATERIAL, {"7", t}));
        list.Add(command(BGL_END));
        return list;
    };
    BGLCommandList shifted = materials({"1", "2", "-1", "0"});
    shifted.updateMaterial(2);
    EXPECT_EQ(describe(shifted), "13: 184:7,1 184:7,3 184:7,-1 184:7,0 189:");

    // The command that moves into a removed one's place is passed over; jumps move down.
    BGLCommandList removed = materials({"1", "2", "0", "1", "1", "5"});
    removed.Item(1)->jumpDest(0, 8);
    removed.updateMaterial(2, true);
    EXPECT_EQ(describe(removed), "13: 184:7,2 184:7,0 184:7,1 184:7,4 189:");
    EXPECT_EQ(removed.Item(1)->jumpDest(0), 6);
}

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
            const int64_t offset = a.valueOf(n - 1, p);
            int64_t bytes = -2;
            int j = n - 1;
            while (bytes < offset) {
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
