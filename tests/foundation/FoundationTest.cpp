#include <velmora/Host.h>
#include <velmora/KeyedCollection.h>

#include "foundation/FileSystem.h"
#include "foundation/GeneralFunctions.h"
#include "foundation/HexFunctions.h"
#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

using namespace velmora;
using namespace testbytes;

namespace {

// Builds a byte string through an in-memory stream, as every asString does.
std::string build(const std::function<void(int16_t)>& body) {
    hex::MemoryWriter writer;
    body(writer.file());
    return writer.take();
}

}  // namespace

TEST(HexFunctions, WritesGiveTheirBytes) {
    struct Case {
        std::function<void(int16_t)> write;
        std::string bytes;
    };
    const Case cases[] = {
        {[](int16_t f) { hex::writeString(f, "abc", 3); }, "abc"},
        {[](int16_t f) { hex::writeString(f, "abc", 5); }, std::string("abc\0\0", 5)},
        {[](int16_t f) { hex::writeString(f, "abcd", 0); }, "abcd"},
        {[](int16_t f) { hex::writeUInteger(f, 32768); }, bytes({0x00, 0x80})},
        {[](int16_t f) { hex::writeUInteger(f, 65535); }, bytes({0xFF, 0xFF})},
        {[](int16_t f) { hex::writeUInteger(f, -1); }, bytes({0xFF, 0xFF})},
        {[](int16_t f) { hex::writeLong(f, 1, true); }, bytes({0, 0, 0, 1})},
        {[](int16_t f) { hex::writeInteger(f, 0x1234, true); }, bytes({0x12, 0x34})},
        {[](int16_t f) { hex::writeSingle(f, 1.0f, true); }, bytes({0x3F, 0x80, 0, 0})},
        {[](int16_t f) { hex::writeDouble(f, 1.0, true); }, bytes({0x3F, 0xF0, 0, 0, 0, 0, 0, 0})},
    };
    for (const Case& c : cases)
        EXPECT_EQ(testbytes::hex(build(c.write)), testbytes::hex(c.bytes));

    hex::MemoryWriter writer;
    EXPECT_TRUE(throwsError([&] { hex::writeString(writer.file(), "abcd", 3); }, 100,
                            "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), 65536); }, 6));
    EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), -32769); }, 6));
    EXPECT_EQ(writer.take(), "") << "a refused value writes nothing";
}

TEST(HexFunctions, ReadsKeepEveryByteAndGiveZerosPastTheEnd) {
    std::string all;
    for (int b = 0; b < 256; ++b)
        all.push_back(static_cast<char>(b));
    const std::string written = build([&](int16_t f) { hex::writeString(f, all, 0); });
    hex::MemoryReader everything(written);
    EXPECT_EQ(hex::readString(everything.file(), 256), all);

    const std::string data = bytes({0xFF, 0xFF, 0x7F});
    hex::MemoryReader reader(data);
    EXPECT_EQ(hex::readUInteger(reader.file()), 65535);
    EXPECT_EQ(hex::readInteger(reader.file()), 0x007F);
    EXPECT_EQ(hex::readLong(reader.file()), 0);
    EXPECT_EQ(hex::readString(reader.file(), 3), std::string(3, '\0'));
    EXPECT_EQ(hex::filePosition(reader.file()), 12);
    EXPECT_TRUE(throwsPlatform([&] { hex::readString(reader.file(), -1); }, 5));
}

TEST(HexFunctions, ScratchFileAndRealFiles) {
    TempDir dir;
    const std::string before = applicationFolder();
    setApplicationFolder(dir.path());
    const std::string temp = dir.file("temp.bin");
    writeFile(temp, "left over by an earlier run");
    std::filesystem::permissions(temp, std::filesystem::perms::owner_read);
    const int16_t file = hex::nextFreeFile();
    hex::openTempFile(file);  // deletes the read-only leftover and starts empty
    hex::writeString(file, "abc", 0);
    hex::seekFile(file, 6);
    hex::writeByte(file, 0xAB);  // beyond the end: the gap fills with zeros
    hex::closeFile(file);
    EXPECT_EQ(hex::nextFreeFile(), file) << "a closed number is free again";
    EXPECT_EQ(hex::tempFileSize(), 6);
    hex::reopenTempFile(file);
    EXPECT_EQ(hex::filePosition(file), 1);
    EXPECT_EQ(hex::readString(file, 6), "abc" + bytes({0, 0, 0xAB}));
    hex::closeTempFile(file);
    EXPECT_FALSE(std::filesystem::exists(temp));
    writeFile(temp, "x");
    hex::closeTempFile(0);  // number 0 only deletes
    EXPECT_FALSE(std::filesystem::exists(temp));
    setApplicationFolder(before);

    EXPECT_TRUE(throwsPlatform([&] { hex::openReadOnlyFile(file, dir.file("missing")); }, 53));
    EXPECT_TRUE(throwsPlatform([&] { hex::openBinaryFile(file, dir.file("no/such/x")); }, 76));
    EXPECT_EQ(dir.listing(), "") << "reading creates nothing";
}

TEST(Paths, FolderOfPathAndJoinInside) {
    const std::pair<const char*, const char*> folders[] = {
        {"C:\\scenery\\model.mdl", "C:\\scenery"},
        {"/home/a/model.flt", "/home/a"},
        {"a/b\\c", "a/b"},
        {"model.mdl", "model.mdl"},
        {"", ""},
        {"folder\\", "folder"}};
    for (const auto& [path, folder] : folders)
        EXPECT_EQ(folderOfPath(path), folder) << path;
    EXPECT_EQ(fs::joinInside("/db", "wall.bmp"), "/db/wall.bmp");
    EXPECT_EQ(fs::joinInside("/db", "..\\..\\etc\\passwd"), "/db/passwd");
    EXPECT_EQ(fs::joinInside("/db", "../x/y.bmp"), "/db/y.bmp");
}

namespace {

struct Item {
    int value = 0;
};

std::shared_ptr<Item> make(int value) {
    return std::make_shared<Item>(Item{value});
}

std::string values(const KeyedCollection<Item>& list) {
    std::string out;
    for (const auto& element : list)
        out += std::to_string(element->value);
    return out;
}

}  // namespace

TEST(KeyedCollection, InsertsRemovesAndKeysWithoutRegardToCase) {
    KeyedCollection<Item> list;
    EXPECT_EQ(list.Add(nullptr, "", "")->value, 0) << "an Add without element makes one";
    list.Add(make(2), "", "");
    list.Add(make(3), "Three", "");
    list.Add(make(9), "", 1);        // in front of a position
    list.Add(make(8), "", "THREE");  // in front of a key
    EXPECT_EQ(values(list), "90283");
    EXPECT_EQ(list.Item("three")->value, 3);
    list.Remove(1);
    list.Remove("tHREE");
    EXPECT_EQ(values(list), "028");
    list.Add(make(4), "three", "");  // a removed key can be used again
    EXPECT_EQ(values(list), "0284");

    // Errors leave the list as it was.
    EXPECT_TRUE(throwsPlatform([&] { list.Item(0); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item(5); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Remove(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item("missing"); }, 5));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "THREE", ""); }, 457));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", 6); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", "nokey"); }, 5));
    EXPECT_EQ(values(list), "0284");
}
