#include <velmora/Windows1252.h>

#include <gtest/gtest.h>

// The bytes 0x80 to 0x9F are where the code page differs from Latin-1; 0xA0 on it agrees.
TEST(Windows1252, TextsFromModelsBecomeTheirCharacters) {
    EXPECT_EQ(velmora::utf8FromWindows1252("\x80 \x9C \xA0 \xE7 \x9F"),
              "\xE2\x82\xAC \xC5\x93 \xC2\xA0 \xC3\xA7 \xC5\xB8");
    // Undefined bytes keep their number as control characters, so no byte is lost.
    EXPECT_EQ(velmora::utf8FromWindows1252(std::string("\x81\x9D\0a", 4)),
              std::string("\xC2\x81\xC2\x9D\0a", 6));
    EXPECT_TRUE(velmora::isPlainAscii("wall.bmp"));
    EXPECT_FALSE(velmora::isPlainAscii("fa\xE7" "ade.bmp"));
}
