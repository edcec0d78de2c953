#include <velmora/BGLCommandList.h>

#include "StreamAssembler.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using bgltest::command;
using testbytes::bytes;
using testbytes::hex;
using testbytes::le16;

namespace {

std::string encoded(std::initializer_list<std::shared_ptr<BGLCommand>> commands) {
    BGLCommandList list;
    for (const auto& c : commands)
        list.Add(c);
    return hex(list.asString());
}

::testing::AssertionResult failsWith(std::shared_ptr<BGLCommand> c, int number) {
    BGLCommandList list;
    list.Add(std::move(c));
    return throwsPlatform([&] { list.asString(); }, number);
}

}  // namespace

TEST(BGLCommandListEncoding, CommandsBecomeTheirBytes) {
    EXPECT_EQ(encoded({}), "");
    EXPECT_EQ(encoded({command(BGL_END)}), "BD 00");
    EXPECT_EQ(encoded({command(DRAW_TRI_LIST_ITEM, {"1", "2", "3"})}), "01 00 02 00 03 00");
    EXPECT_EQ(encoded({command(DRAW_LINE_LIST_ITEM, {"1", "2"})}), "01 00 02 00");
    EXPECT_EQ(encoded({command(DRAW_TRI_LIST_BEGIN, {"0", "4", "40000"})}),
              "B9 00 00 00 04 00 40 9C");
    EXPECT_EQ(encoded({command(SET_MATERIAL, {"0", "-1"})}), "B8 00 00 00 FF FF");
    EXPECT_EQ(
        encoded({command(SET_MATERIAL, {"2", "-1"}), command(DRAW_TRI_LIST_BEGIN, {"10", "3", "3"}),
                 command(DRAW_TRI_LIST_ITEM, {"0", "1", "2"}), command(BGL_END)}),
        "B8 00 02 00 FF FF B9 00 0A 00 03 00 03 00 00 00 01 00 02 00 BD 00");
    EXPECT_EQ(encoded({command(BGL_TAG, {"ABC", "1.5"})}),
              "B1 00 41 42 43 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 C0 3F");
    EXPECT_EQ(encoded({command(VAR_BASE_32, {"-2"})}), "89 00 FE FF FF FF");
    // Opcodes without a row are a bare opcode word, whatever their parameters hold.
    EXPECT_EQ(encoded({command(VERTEX_LIST_BEGIN, {"1", "2"}), command(EOF_)}), "B5 00 00 00");
    // Integer parameters round exact halves to the even neighbour; blanks are allowed.
    EXPECT_EQ(encoded({command(SET_MATERIAL, {"2.5", "3.5"})}), "B8 00 02 00 04 00");
    EXPECT_EQ(encoded({command(SET_MATERIAL, {" 7 ", "-0.6"})}), "B8 00 07 00 FF FF");
    EXPECT_EQ(encoded({command(BGL_LIGHT, {"1", "0.5", "-2", "1E+10", "-1", "0", "0", "65536", "0",
                                           "0", "3"})})
                  .substr(0, 3 * 14 - 1),
              "B2 00 01 00 00 00 00 3F 00 00 00 C0 F9 02");
}

TEST(BGLCommandListEncoding, ConversionErrors) {
    EXPECT_TRUE(failsWith(command(SET_MATERIAL, {"1"}), 13)) << "an empty parameter";
    EXPECT_TRUE(failsWith(command(SET_MATERIAL, {"1", "x"}), 13));
    EXPECT_TRUE(failsWith(command(BGL_LIGHT, {"1", "one"}), 13));
    EXPECT_TRUE(failsWith(command(SET_MATERIAL, {"1", "32768"}), 6));
    EXPECT_TRUE(failsWith(command(VAR_BASE_32, {"2147483648"}), 6));
    EXPECT_TRUE(failsWith(command(BGL_TAG, {"A", "1E+39"}), 6));
    EXPECT_TRUE(failsWith(command(DRAW_LINE_LIST_BEGIN, {"0", "4", "40000"}), 6))
        << "a line list header is written signed";
    EXPECT_TRUE(failsWith(command(DRAW_TRI_LIST_BEGIN, {"0", "4", "65536"}), 6));
    EXPECT_TRUE(failsWith(command(DRAW_TRI_LIST_ITEM, {"40000", "0", "0"}), 6));
    EXPECT_TRUE(failsWith(command(70000), 6)) << "an opcode that doesn't fit 16 bits";
    EXPECT_TRUE(failsWith(command(261), 9));
    EXPECT_TRUE(failsWith(command(-1), 9));

    BGLCommandList list;
    list.Add(command(BGL_TAG, {"seventeen chars!!", "1"}));
    EXPECT_TRUE(throwsError([&] { list.asString(); }, 100, "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    list.Item(1)->param(0, "sixteen chars!!!");
    EXPECT_EQ(list.asString().substr(2, 16), "sixteen chars!!!") << "no NUL behind a full field";
}

TEST(BGLCommandListEncoding, JumpsAreWrittenFromTheirDestinations) {
    BGLCommandList list;
    auto jumpCommand = list.Add(command(jump));
    jumpCommand->jumpDest(0, 3);
    list.Add(command(SET_MATERIAL, {"0", "1"}));
    list.Add(command(BGL_END));
    EXPECT_EQ(hex(list.asString()), "0D 00 0A 00 B8 00 00 00 01 00 BD 00");
    EXPECT_EQ(jumpCommand->param(0), "10") << "the offset text stays";
    const std::string first = list.asString();
    EXPECT_EQ(list.asString(), first);
    EXPECT_EQ(jumpCommand->param(0), "10");
    EXPECT_EQ(list.Item(2)->param(1), "1");
}
