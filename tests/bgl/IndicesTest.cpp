#include <velmora/BGLCommandList.h>

#include "StreamAssembler.h"
#include "bgl/SeasonalBlockSearch.h"
#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;
using bgltest::command;
using bgltest::describe;

namespace {

std::shared_ptr<BGLCommand> material(const std::string& texture) {
    return command(SET_MATERIAL, {"7", texture});
}

}  // namespace

TEST(BGLCommandListIndices, ProcessParentLinksItemsToTheirOwnKindOfHeader) {
    BGLCommandList list;
    auto orphan = list.Add(command(DRAW_TRI_LIST_ITEM));
    list.Add(command(DRAW_TRI_LIST_BEGIN));
    auto triangle = list.Add(command(DRAW_TRI_LIST_ITEM));
    list.Add(command(DRAW_LINE_LIST_BEGIN));
    auto line = list.Add(command(DRAW_LINE_LIST_ITEM));
    auto afterLine = list.Add(command(DRAW_TRI_LIST_ITEM));
    auto other = list.Add(command(BGL_END));
    other->parent(42);
    list.processParent();
    EXPECT_EQ(orphan->parent(), 0);
    EXPECT_EQ(triangle->parent(), 2);
    EXPECT_EQ(line->parent(), 4);
    EXPECT_EQ(afterLine->parent(), 2) << "a line header doesn't change a triangle item's parent";
    EXPECT_EQ(other->parent(), 42);
}

TEST(BGLCommandListIndices, UpdateMaterialShiftsAndRemovesTextureNumbers) {
    BGLCommandList list;
    for (const char* t : {"1", "2", "-1", "0"})
        list.Add(material(t));
    list.Add(command(BGL_ZBIAS, {"2"}));
    list.updateMaterial(2);
    EXPECT_EQ(describe(list), "184:7,1 184:7,3 184:7,-1 184:7,0 172:2");

    BGLCommandList removal;
    auto jumpCommand = removal.Add(command(jump));
    for (const char* t : {"1", "2", "0", "1", "1", "5"})
        removal.Add(material(t));
    auto end = removal.Add(command(BGL_END));
    jumpCommand->jumpDest(0, 8);
    removal.updateMaterial(2, true);
    EXPECT_EQ(describe(removal), "13: 184:7,2 184:7,0 184:7,1 184:7,4 189:")
        << "the command that moves into a removed one's place is passed over";
    EXPECT_EQ(jumpCommand->jumpDest(0), 6) << "the jumps move down with the list";
    EXPECT_EQ(removal.Item(6), end);

    // Jumps to removed commands lead to the command in front, as after updateJumpDest(i, True).
    BGLCommandList targets;
    auto first = targets.Add(command(jump));
    auto second = targets.Add(command(jump));
    auto third = targets.Add(command(BGL_JUMP_32));
    for (const char* t : {"3", "9", "3", "4", "3"})
        targets.Add(material(t));
    targets.Add(command(BGL_END));
    first->jumpDest(0, 4);
    second->jumpDest(0, 6);
    third->jumpDest(0, 9);
    targets.updateMaterial(4, true);
    EXPECT_EQ(describe(targets), "13: 13: 136: 184:7,9 184:7,4 189:");
    EXPECT_EQ(first->jumpDest(0), 3);
    EXPECT_EQ(second->jumpDest(0), 4);
    EXPECT_EQ(third->jumpDest(0), 6);
}

TEST(BGLCommandListIndices, UpdateMaterialErrors) {
    BGLCommandList list;
    list.Add(material("1"));
    list.Add(material("x"));
    list.Add(material("1"));
    EXPECT_TRUE(throwsPlatform([&] { list.updateMaterial(0); }, 13));
    EXPECT_EQ(describe(list), "184:7,2 184:7,x 184:7,1") << "the commands before stay changed";

    BGLCommandList removing;
    auto jumpCommand = removing.Add(command(jump));
    removing.Add(material("0"));
    removing.Add(material("5"));
    removing.Add(material(""));
    removing.Add(command(BGL_END));
    jumpCommand->jumpDest(0, 5);
    EXPECT_TRUE(throwsPlatform([&] { removing.updateMaterial(1, true); }, 13));
    EXPECT_EQ(describe(removing), "13: 184:7,5 184:7, 189:");
    EXPECT_EQ(jumpCommand->jumpDest(0), 4) << "jumps are repaired for what was removed";

    BGLCommandList big;
    for (int i = 0; i < 32768; ++i)
        big.Add(material("5"));
    EXPECT_TRUE(throwsPlatform([&] { big.updateMaterial(0); }, 6));
    EXPECT_EQ(big.Item(1)->param(1), "5");
}

TEST(BGLCommandListIndices, FindSeasonalBlockFollowsTheRunAroundTheMatch) {
    BGLCommandList list;
    list.Add(command(BGL_ZBIAS, {"0"}));               // 1
    list.Add(command(IFIN1, {"0", "906", "0", "1"}));  // 2
    list.Add(material("3"));                           // 3
    list.Add(command(BGL_JUMP_32, {"0"}));             // 4
    list.Add(command(IFIN1, {"0", "906", "2", "3"}));  // 5
    list.Add(material("4"));                           // 6
    list.Add(command(IFIN1, {"0", "905", "0", "1"}));  // 7
    list.Add(material("4"));                           // 8
    list.Add(material("6"));                           // 9
    const auto& commands = list.commands();
    EXPECT_EQ(detail::findSeasonalBlock(commands, 4, true, 1), 2);
    EXPECT_EQ(detail::findSeasonalBlock(commands, 4, false, 1), 6);
    EXPECT_EQ(detail::findSeasonalBlock(commands, 3, false, 1), 6);
    EXPECT_EQ(detail::findSeasonalBlock(commands, 4, true, 7), 8);
    EXPECT_EQ(detail::findSeasonalBlock(commands, 5, true, 1), -1);
    EXPECT_EQ(detail::findSeasonalBlock(commands, 3, false, 4), -1);
    EXPECT_TRUE(throwsPlatform([&] { detail::findSeasonalBlock(commands, 4, false, 7); }, 9))
        << "the run reaches the end of the list";
    list.Remove(1);
    EXPECT_TRUE(throwsPlatform([&] { detail::findSeasonalBlock(commands, 3, true, 1); }, 9))
        << "the run reaches the start of the list";

    BGLCommandList big;
    for (int i = 0; i < 32768; ++i)
        big.Add(command(BGL_END));
    EXPECT_TRUE(throwsPlatform([&] { detail::findSeasonalBlock(big.commands(), 1, true, 1); }, 6));
}
