#include <velmora/KeyedCollection.h>

#include "foundation/HexFunctions.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>

using namespace velmora;
using namespace testbytes;

TEST(HexFunctions, WritesGiveTheirBytesAndReadsGiveZerosPastTheEnd) {
    using Write = std::function<void(int16_t)>;
    const std::pair<Write, std::string> cases[] = {
        {[](int16_t f) { hex::writeString(f, "abc", 5); }, std::string("abc\0\0", 5)},
        {[](int16_t f) { hex::writeString(f, "abcd", 0); }, "abcd"},
        {[](int16_t f) { hex::writeUInteger(f, 32768); }, bytes({0x00, 0x80})},
        {[](int16_t f) { hex::writeUInteger(f, 65535); }, bytes({0xFF, 0xFF})},
        {[](int16_t f) { hex::writeLong(f, 1, true); }, bytes({0, 0, 0, 1})},
        {[](int16_t f) { hex::writeInteger(f, 0x1234, true); }, bytes({0x12, 0x34})},
        {[](int16_t f) { hex::writeSingle(f, 1.0f, true); }, bytes({0x3F, 0x80, 0, 0})},
        {[](int16_t f) { hex::writeDouble(f, 1.0, true); }, bytes({0x3F, 0xF0, 0, 0, 0, 0, 0, 0})},
    };
    for (const auto& [write, expected] : cases) {
        hex::MemoryWriter writer;
        write(writer.file());
        EXPECT_EQ(testbytes::hex(writer.take()), testbytes::hex(expected));
    }
    hex::MemoryWriter writer;
    EXPECT_TRUE(throwsError([&] { hex::writeString(writer.file(), "abcd", 3); }, 100,
                            "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), 65536); }, 6));
    EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), -32769); }, 6));
    EXPECT_EQ(writer.take(), "") << "a refused value writes nothing";

    const std::string data = bytes({0xFF, 0xFF, 0x7F});
    hex::MemoryReader reader(data);
    EXPECT_EQ(hex::readUInteger(reader.file()), 65535);
    EXPECT_EQ(hex::readInteger(reader.file()), 0x007F);
    EXPECT_EQ(hex::readLong(reader.file()), 0);
    EXPECT_EQ(hex::readString(reader.file(), 3), std::string(3, '\0'));
    EXPECT_TRUE(throwsPlatform([&] { hex::readString(reader.file(), -1); }, 5));

    TempDir dir;
    const int16_t file = hex::nextFreeFile();
    EXPECT_TRUE(throwsPlatform([&] { hex::openReadOnlyFile(file, dir.file("missing")); }, 53));
    EXPECT_TRUE(throwsPlatform([&] { hex::openBinaryFile(file, dir.file("no/such/x")); }, 76));
    EXPECT_EQ(dir.listing(), "") << "reading creates nothing";
}

TEST(KeyedCollection, InsertsRemovesAndKeysWithoutRegardToCase) {
    struct Item {
        int value = 0;
    };
    const auto make = [](int value) { return std::make_shared<Item>(Item{value}); };
    KeyedCollection<Item> list;
    const auto values = [&] {
        std::string out;
        for (const auto& element : list)
            out += std::to_string(element->value);
        return out;
    };
    EXPECT_EQ(list.Add(nullptr, "", "")->value, 0) << "an Add without element makes one";
    list.Add(make(2), "", "");
    list.Add(make(3), "Three", "");
    list.Add(make(9), "", 1);        // in front of a position
    list.Add(make(8), "", "THREE");  // in front of a key
    EXPECT_EQ(values(), "90283");
    EXPECT_EQ(list.Item("three")->value, 3);
    list.Remove(1);
    list.Remove("tHREE");
    list.Add(make(4), "three", "");  // a removed key can be used again
    EXPECT_EQ(values(), "0284");

    // Errors leave the list as it was.
    EXPECT_TRUE(throwsPlatform([&] { list.Item(0); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item(5); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Remove(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item("missing"); }, 5));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "THREE", ""); }, 457));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", 6); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", "nokey"); }, 5));
    EXPECT_EQ(values(), "0284");
}
