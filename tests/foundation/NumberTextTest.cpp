#include "foundation/NumberText.h"

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora::numbers;

TEST(NumberText, AcceptsTheNumberShapesAndRefusesTheRest) {
    EXPECT_EQ(parseNumber("12"), 12);
    EXPECT_EQ(parseNumber("  -7 "), -7);
    EXPECT_EQ(parseNumber("+2.5"), 2.5);
    EXPECT_EQ(parseNumber(".5"), 0.5);
    EXPECT_EQ(parseNumber("-.5"), -0.5);
    EXPECT_EQ(parseNumber("1E+10"), 1e10);
    EXPECT_EQ(parseNumber("3e-2"), 0.03);
    for (const char* bad : {"", " ", "abc", "1x", "1e", "--1", ".", "1.2.3", "0x10"}) {
        EXPECT_TRUE(throwsPlatform([&] { parseNumber(bad); }, 13)) << "'" << bad << "'";
    }
    EXPECT_TRUE(throwsPlatform([] { parseNumber("1e999"); }, 6));
}

TEST(NumberText, IntegerTargetsRoundHalvesToEvenAndOverflowWithError6) {
    EXPECT_EQ(textToInt16("2.5"), 2);
    EXPECT_EQ(textToInt16("3.5"), 4);
    EXPECT_EQ(textToInt16("-2.5"), -2);
    EXPECT_EQ(textToInt16("32767"), 32767);
    EXPECT_EQ(textToInt16("-32768"), -32768);
    EXPECT_TRUE(throwsPlatform([] { textToInt16("32768"); }, 6));
    EXPECT_TRUE(throwsPlatform([] { textToInt16("32767.5"); }, 6));
    EXPECT_EQ(textToInt32("-2147483648"), INT32_MIN);
    EXPECT_TRUE(throwsPlatform([] { textToInt32("2147483648"); }, 6));
    EXPECT_EQ(toByte(255.4), 255);
    EXPECT_TRUE(throwsPlatform([] { toByte(255.5); }, 6));
    EXPECT_TRUE(throwsPlatform([] { narrow16(40000); }, 6));
    EXPECT_TRUE(throwsPlatform([] { toSingle(1e300); }, 6));
}

TEST(NumberText, TextOfNumbersIsLocaleFreeAndCanonical) {
    EXPECT_EQ(formatInteger(-32768), "-32768");
    EXPECT_EQ(formatSingle(1.5f), "1.5");
    EXPECT_EQ(formatSingle(0.1f), "0.1");
    EXPECT_EQ(formatSingle(-0.0f), "0");
    EXPECT_EQ(formatSingle(1e10f), "1E+10");
    EXPECT_EQ(formatSingle(3.14159274f), "3.141593");

    int32_t value = 0;
    EXPECT_TRUE(parseCanonicalInteger("-12", value));
    EXPECT_EQ(value, -12);
    for (const char* notCanonical : {"012", "-0", "+1", " 1", "1.0", "", "-", "2147483648"}) {
        EXPECT_FALSE(parseCanonicalInteger(notCanonical, value)) << notCanonical;
    }
    float single = 0;
    EXPECT_TRUE(parseCanonicalSingle("1.5", single));
    EXPECT_EQ(single, 1.5f);
    EXPECT_FALSE(parseCanonicalSingle("1.50", single));
    EXPECT_FALSE(parseCanonicalSingle("1.2345678", single));
}
