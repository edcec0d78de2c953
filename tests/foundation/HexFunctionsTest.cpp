#include "foundation/HexFunctions.h"

#include <velmora/Host.h>

#include "support/Bytes.h"
#include "support/ErrorMatchers.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

using namespace velmora;
using namespace testbytes;

namespace {

// Builds a byte string through an in-memory stream, as every asString does.
template <class Body>
std::string build(Body body) {
    hex::MemoryWriter writer;
    body(writer.file());
    return writer.take();
}

}  // namespace

TEST(WriteString, FixedFieldsFillWithNulAndRefuseLongerValues) {
    EXPECT_EQ(build([](int16_t f) { hex::writeString(f, "abc", 3); }), "abc");
    EXPECT_EQ(build([](int16_t f) { hex::writeString(f, "abc", 5); }), std::string("abc\0\0", 5));
    EXPECT_EQ(build([](int16_t f) { hex::writeString(f, "abcd", 0); }), "abcd");

    hex::MemoryWriter writer;
    EXPECT_TRUE(throwsError([&] { hex::writeString(writer.file(), "abcd", 3); }, 100,
                            "Velmora.HexFunctions",
                            "The string trying to be written is bigger than the specified length"));
    EXPECT_EQ(writer.take(), "") << "a refused value writes nothing";
}

TEST(ByteStrings, EveryByteValueSurvivesAWriteAndARead) {
    std::string all;
    for (int b = 0; b < 256; ++b) all.push_back(static_cast<char>(b));
    const std::string written = build([&](int16_t f) { hex::writeString(f, all, 0); });
    ASSERT_EQ(written.size(), 256u);
    hex::MemoryReader reader(written);
    EXPECT_EQ(hex::readString(reader.file(), 256), all);
}

TEST(TypedValues, UnsignedMappingAndBigEndianWrites) {
    EXPECT_EQ(build([](int16_t f) { hex::writeUInteger(f, 32768); }), bytes({0x00, 0x80}));
    EXPECT_EQ(build([](int16_t f) { hex::writeUInteger(f, 65535); }), bytes({0xFF, 0xFF}));
    EXPECT_EQ(build([](int16_t f) { hex::writeUInteger(f, -1); }), bytes({0xFF, 0xFF}));
    {
        hex::MemoryWriter writer;
        EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), 65536); }, 6));
        EXPECT_TRUE(throwsPlatform([&] { hex::writeUInteger(writer.file(), -32769); }, 6));
    }
    const std::string twoWords = bytes({0x00, 0x80, 0xFF, 0xFF});
    hex::MemoryReader reader(twoWords);
    EXPECT_EQ(hex::readUInteger(reader.file()), 32768);
    EXPECT_EQ(hex::readUInteger(reader.file()), 65535);

    EXPECT_EQ(build([](int16_t f) { hex::writeLong(f, 1, true); }), bytes({0, 0, 0, 1}));
    EXPECT_EQ(build([](int16_t f) { hex::writeLong(f, 1, false); }), bytes({1, 0, 0, 0}));
    EXPECT_EQ(build([](int16_t f) { hex::writeSingle(f, 1.0f, true); }), bytes({0x3F, 0x80, 0, 0}));
    EXPECT_EQ(build([](int16_t f) { hex::writeInteger(f, 0x1234, true); }), bytes({0x12, 0x34}));
    EXPECT_EQ(build([](int16_t f) { hex::writeDouble(f, 1.0, true); }),
              bytes({0x3F, 0xF0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(hex::swapSingle(1.0f), bytes({0x3F, 0x80, 0, 0}));
    EXPECT_EQ(hex::swapInteger(0x0102), 0x0201);
    EXPECT_EQ(hex::swapLong(0x01020304), 0x04030201);
}

TEST(TypedValues, ReadsPastTheEndGiveZeros) {
    const std::string oneByte = bytes({0x7F});
    hex::MemoryReader reader(oneByte);
    EXPECT_EQ(hex::readInteger(reader.file()), 0x007F);
    EXPECT_EQ(hex::readLong(reader.file()), 0);
    EXPECT_EQ(hex::readSingle(reader.file()), 0.0f);
    EXPECT_EQ(hex::readString(reader.file(), 3), std::string(3, '\0'));
    EXPECT_EQ(hex::filePosition(reader.file()), 14);
    EXPECT_EQ(hex::readString(reader.file(), 0), "");
    EXPECT_TRUE(throwsPlatform([&] { hex::readString(reader.file(), -1); }, 5));
}

TEST(FileNumbers, SeekAndPositionAreOneBasedOnRealFiles) {
    TempDir dir;
    const std::string path = dir.file("data.bin");
    const int16_t file = hex::nextFreeFile();
    EXPECT_GE(file, 1);
    hex::openBinaryFile(file, path);
    EXPECT_NE(hex::nextFreeFile(), file);
    hex::writeLong(file, 0x11223344);
    hex::writeString(file, "xy", 0);
    EXPECT_EQ(hex::filePosition(file), 7);
    hex::seekFile(file, 2);
    EXPECT_EQ(hex::readByte(file), 0x33);
    hex::seekFile(file, 10);
    hex::writeByte(file, 0xAB);  // beyond the end: the gap fills with zeros
    hex::closeFile(file);
    EXPECT_EQ(readFile(path), le32(0x11223344) + "xy" + bytes({0, 0, 0, 0xAB}));
    EXPECT_EQ(hex::nextFreeFile(), file) << "a closed number is free again";
}

TEST(FileNumbers, ReadOnlyOpenNeitherCreatesNorChangesFiles) {
    TempDir dir;
    const int16_t file = hex::nextFreeFile();
    EXPECT_TRUE(throwsPlatform([&] { hex::openReadOnlyFile(file, dir.file("missing")); }, 53));
    EXPECT_EQ(dir.listing(), "");
    EXPECT_TRUE(throwsPlatform([&] { hex::openBinaryFile(file, dir.file("no/such/x")); }, 76));
}

TEST(ScratchFile, TempFileLifecycle) {
    TempDir dir;
    const std::string before = applicationFolder();
    setApplicationFolder(dir.path());
    const std::string temp = dir.file("temp.bin");

    writeFile(temp, "left over by an earlier run");
    std::filesystem::permissions(temp, std::filesystem::perms::owner_read);
    const int16_t file = hex::nextFreeFile();
    hex::openTempFile(file);  // deletes the read-only leftover and starts empty
    hex::writeString(file, "abc", 0);
    hex::closeFile(file);
    EXPECT_EQ(hex::tempFileSize(), 3);
    hex::reopenTempFile(file);
    EXPECT_EQ(hex::filePosition(file), 1);
    EXPECT_EQ(hex::readString(file, hex::tempFileSize()), "abc");
    hex::closeTempFile(file);
    EXPECT_FALSE(std::filesystem::exists(temp));

    writeFile(temp, "x");
    hex::closeTempFile(0);  // number 0 only deletes
    EXPECT_FALSE(std::filesystem::exists(temp));
    setApplicationFolder(before);
}
