#include <velmora/BGLOpcodeDictionary.h>

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;

namespace {

int width(const BGLCommandDictEntry& e, int i) {
    switch (e.paramType[static_cast<std::size_t>(i)]) {
        case pByte:
            return 1;
        case pInteger:
        case pUInteger:
            return 2;
        case pLong:
        case pSingle:
            return 4;
        case pString:
            return e.strLength[static_cast<std::size_t>(i)];
    }
    return 0;
}

}  // namespace

TEST(BGLOpcodeDictionary, SlotsOutsideTheTableAreErrorNineAndEmptySlotsAreEmpty) {
    BGLOpcodeDictionary dictionary;
    EXPECT_TRUE(throwsPlatform([&] { dictionary.getEntry(261); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { dictionary.getEntry(-1); }, 9));
    EXPECT_EQ(BGLOpcodeDictionary::row(261), nullptr);
    EXPECT_EQ(BGLOpcodeDictionary::row(-1), nullptr);
    for (int16_t empty : {0, 181, 260, 2, 174, 175}) {
        const BGLCommandDictEntry e = dictionary.getEntry(empty);
        EXPECT_EQ(e.length, 0) << empty;
        EXPECT_EQ(e.numParam, 0) << empty;
        EXPECT_TRUE(e.name.empty()) << empty;
    }
    EXPECT_EQ(dictionary.getEntry(182).name, "MATERIAL_LIST_BEGIN");
    EXPECT_EQ(dictionary.getEntry(183).length, 8);
}

TEST(BGLOpcodeDictionary, RowsHaveTheirShapes) {
    BGLOpcodeDictionary dictionary;
    int filled = 0;
    int withJumps = 0;
    for (int16_t i = 0; i <= 260; ++i) {
        const BGLCommandDictEntry e = dictionary.getEntry(i);
        if (e.length == 0) continue;
        ++filled;
        int bytes = (i == 256 || i == 257) ? 0 : 2;
        bool jumps = false;
        for (int p = 0; p < e.numParam; ++p) {
            bytes += width(e, p);
            jumps = jumps || e.isJump[static_cast<std::size_t>(p)];
        }
        withJumps += jumps ? 1 : 0;
        EXPECT_EQ(e.length, bytes) << e.name;
        EXPECT_EQ(BGLOpcodeDictionary::row(i)->name, e.name);
    }
    EXPECT_EQ(filled, 33);
    EXPECT_EQ(withJumps, 17);

    EXPECT_EQ(dictionary.getEntry(13).name, "JUMP");
    EXPECT_EQ(dictionary.getEntry(33).name, "IFIN3");
    EXPECT_EQ(dictionary.getEntry(256).length, 6);
    EXPECT_EQ(dictionary.getEntry(257).length, 4);
    const BGLCommandDictEntry tag = dictionary.getEntry(177);
    EXPECT_EQ(tag.length, 22);
    EXPECT_EQ(tag.paramType[0], pString);
    EXPECT_EQ(tag.strLength[0], 16);
    EXPECT_EQ(tag.strLength[1], 0);
    for (int16_t bare : {34, 189}) {
        EXPECT_EQ(dictionary.getEntry(bare).numParam, 0);
        EXPECT_EQ(dictionary.getEntry(bare).length, 2);
    }
    EXPECT_EQ(dictionary.getEntry(185).paramType[2], pUInteger);
    EXPECT_EQ(dictionary.getEntry(186).paramType[2], pInteger);

    const BGLCommandDictEntry interpolate = dictionary.getEntry(158);
    const BGLCommandDictEntry animate = dictionary.getEntry(173);
    for (std::size_t p = 0; p < 33; ++p) {
        EXPECT_EQ(interpolate.isJump[p], p == 1 || p == 3 || p == 5) << p;
        EXPECT_EQ(animate.isJump[p], p == 1 || p == 3) << p;
    }
    const BGLCommandDictEntry light = dictionary.getEntry(178);
    EXPECT_EQ(light.numParam, 11);
    EXPECT_EQ(light.paramType[4], pLong);
    EXPECT_EQ(light.paramType[7], pLong);
    EXPECT_EQ(light.paramType[10], pSingle);
}

TEST(BGLOpcodeDictionary, GetEntryGivesACopy) {
    BGLOpcodeDictionary dictionary;
    BGLCommandDictEntry e = dictionary.getEntry(184);
    e.name = "changed";
    e.length = 99;
    e.isJump[0] = true;
    const BGLCommandDictEntry again = BGLOpcodeDictionary().getEntry(184);
    EXPECT_EQ(again.name, "SET_MATERIAL");
    EXPECT_EQ(again.length, 6);
    EXPECT_FALSE(again.isJump[0]);
}
