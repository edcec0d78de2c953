#include <velmora/OpenFlightWriter.h>

#include "export/FltReading.h"
#include "support/Bytes.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <functional>
#include <regex>

using namespace velmora;
using namespace fltread;

namespace {

// Writes one database with `records` between createDB and closeDB and gives its bytes.
std::string databaseOf(const std::function<void(OpenFlightWriter&)>& records) {
    TempDir dir;
    const std::string path = dir.file("records.flt");
    OpenFlightWriter writer;
    writer.createDB(path);
    records(writer);
    writer.closeDB();
    return readFile(path);
}

}  // namespace

TEST(OpenFlightRecords, ControlRecordsAreFourBytesOfOpcodeAndLength) {
    const std::string db = databaseOf([](OpenFlightWriter& w) {
        w.writePushLevel();
        w.writePopLevel();
        w.writePushSubface();
        w.writePopSubface();
        w.writePushAttribute();
        w.writePopAttribute();
    });
    EXPECT_EQ(testbytes::hex(db),
              "00 0A 00 04 00 0B 00 04 00 13 00 04 00 14 00 04 00 7A 00 04 00 7B 00 04");
}

TEST(OpenFlightRecords, HeaderFieldsStandAtTheirOffsets) {
    const std::string db = databaseOf([](OpenFlightWriter& w) { w.writeHeader(); });
    ASSERT_EQ(db.size(), 324u);
    EXPECT_EQ(be16(db, 0), 1);
    EXPECT_EQ(be16(db, 2), 324);
    EXPECT_EQ(db.substr(4, 8), std::string("db\0\0\0\0\0\0", 8));
    EXPECT_EQ(be32(db, 12), 1600);
    EXPECT_EQ(be32(db, 16), 1);
    EXPECT_TRUE(std::regex_match(fieldText(db, 20, 32), std::regex(R"(\d{1,2}/\d{1,2}/\d{4})")))
        << fieldText(db, 20, 32);
    EXPECT_EQ(db[51], '\0');
    EXPECT_TRUE(allZero(db, 52, 8));
    EXPECT_EQ(be16(db, 60), 1);
    EXPECT_TRUE(allZero(db, 62, 62));
    EXPECT_EQ(be16(db, 124), 0);
    EXPECT_EQ(be16(db, 126), 1);
    EXPECT_EQ(be32(db, 128), 100);
    EXPECT_TRUE(allZero(db, 132, 324 - 132));
}

TEST(OpenFlightRecords, IdsKeepSevenCharactersAndLongerNamesFollowAsLongIds) {
    const std::string shortName = databaseOf([](OpenFlightWriter& w) { w.writeGroup("g1"); });
    ASSERT_EQ(shortName.size(), 44u);
    EXPECT_EQ(be16(shortName, 0), 2);
    EXPECT_EQ(be16(shortName, 2), 44);
    EXPECT_EQ(shortName.substr(4, 8), std::string("g1\0\0\0\0\0\0", 8));
    EXPECT_TRUE(allZero(shortName, 12, 32));

    const std::string seven = databaseOf([](OpenFlightWriter& w) { w.writeGroup("abcdefg"); });
    EXPECT_EQ(seven.size(), 44u) << "exactly seven characters need no Long ID";
    EXPECT_EQ(seven.substr(4, 8), std::string("abcdefg\0", 8));

    const std::string eight = databaseOf([](OpenFlightWriter& w) { w.writeGroup("abcdefgh"); });
    ASSERT_EQ(eight.size(), 44u + 13u);
    EXPECT_EQ(eight.substr(4, 8), std::string("abcdefg\0", 8));
    EXPECT_EQ(be16(eight, 44), 33);
    EXPECT_EQ(be16(eight, 46), 13);
    EXPECT_EQ(eight.substr(48), std::string("abcdefgh\0", 9));

    const std::string object = databaseOf([](OpenFlightWriter& w) { w.writeObject("object-one"); });
    ASSERT_EQ(object.size(), 28u + 4u + 13u);  // 10 characters get a field of 13
    EXPECT_EQ(be16(object, 0), 4);
    EXPECT_EQ(be16(object, 2), 28);
    EXPECT_EQ(object.substr(4, 8), std::string("object-\0", 8));
    EXPECT_TRUE(allZero(object, 12, 16));
    EXPECT_EQ(be16(object, 28), 33);
    EXPECT_EQ(be16(object, 30), 17);
    EXPECT_EQ(object.substr(32), std::string("object-one\0\0\0", 13));

    const std::string lod =
        databaseOf([](OpenFlightWriter& w) { w.writeLOD("level-of-detail", 5000.0, 0.5); });
    ASSERT_EQ(lod.size(), 80u + 4u + 17u);
    EXPECT_EQ(be16(lod, 0), 73);
    EXPECT_EQ(be16(lod, 2), 80);
    EXPECT_EQ(lod.substr(4, 8), std::string("level-o\0", 8));
    EXPECT_EQ(be32(lod, 12), 0);
    EXPECT_EQ(beDouble(lod, 16), 5000.0);
    EXPECT_EQ(beDouble(lod, 24), 0.5);
    EXPECT_TRUE(allZero(lod, 32, 48));
    EXPECT_EQ(be16(lod, 80), 33);
    EXPECT_EQ(be16(lod, 82), 4 + 17);
}

TEST(OpenFlightRecords, CommentFieldsArePaddedBehindAtLeastOneNul) {
    const std::string empty = databaseOf([](OpenFlightWriter& w) { w.writeComment(""); });
    EXPECT_EQ(testbytes::hex(empty), "00 1F 00 05 00");

    // Field widths: 4 characters get 5 bytes, 5 get 9, 8 get 9, 9 get 13.
    for (const auto& [text, width] : {std::pair<std::string, int>{"abcd", 5},
                                      {"abcde", 9},
                                      {"abcdefgh", 9},
                                      {"abcdefghi", 13}}) {
        const std::string db = databaseOf([&](OpenFlightWriter& w) { w.writeComment(text); });
        ASSERT_EQ(db.size(), static_cast<std::size_t>(width) + 4) << text;
        EXPECT_EQ(be16(db, 0), 31);
        EXPECT_EQ(be16(db, 2), width + 4);
        EXPECT_EQ(fieldText(db, 4, static_cast<std::size_t>(width)), text);
        EXPECT_EQ(db.back(), '\0');
    }
}

TEST(OpenFlightRecords, FaceFieldsStandAtTheirOffsets) {
    const std::string db = databaseOf([](OpenFlightWriter& w) { w.writeFace("p12", 2, 7, 3); });
    ASSERT_EQ(db.size(), 80u);
    EXPECT_EQ(be16(db, 0), 5);
    EXPECT_EQ(be16(db, 2), 80);
    EXPECT_EQ(db.substr(4, 8), std::string("p12\0\0\0\0\0", 8));
    EXPECT_TRUE(allZero(db, 12, 7));  // IR colour, priority, draw type
    EXPECT_EQ(db[19], 1);             // texture white
    EXPECT_TRUE(allZero(db, 20, 6));
    EXPECT_EQ(be16(db, 26), -1);  // detail texture
    EXPECT_EQ(be16(db, 28), 7);   // texture pattern
    EXPECT_EQ(be16(db, 30), 3);   // material
    EXPECT_TRUE(allZero(db, 32, 4));
    EXPECT_EQ(be32(db, 36), -1);  // IR material
    EXPECT_TRUE(allZero(db, 40, 8));
    EXPECT_EQ(db[48], 2);  // light mode
    EXPECT_TRUE(allZero(db, 49, 7));
    EXPECT_EQ(testbytes::hex(db.substr(56, 4)), "FF 00 00 FF");
    EXPECT_EQ(be32(db, 60), 0);
    EXPECT_EQ(be16(db, 64), -1);  // texture mapping
    EXPECT_EQ(be16(db, 66), 0);
    EXPECT_EQ(be32(db, 68), 383);  // colour 2 at full intensity
    EXPECT_EQ(be32(db, 72), -1);
    EXPECT_EQ(be16(db, 76), 0);
    EXPECT_EQ(be16(db, 78), -1);  // shader

    const std::string untextured =
        databaseOf([](OpenFlightWriter& w) { w.writeFace("p1", 0, -1, 0); });
    EXPECT_EQ(be16(untextured, 28), -1);
    EXPECT_EQ(be32(untextured, 68), 127);
}

TEST(OpenFlightRecords, VerticesAndVertexListsUseBigEndianOffsetsIntoThePalette) {
    const std::string db = databaseOf([](OpenFlightWriter& w) {
        w.writeVertex(1.5, -2.0, 1e6, 0.0f, 1.0f, -1.0f, 0.25f, 0.75f);
        w.writeVertexList(0, 2, 65534);
    });
    ASSERT_EQ(db.size(), 64u + 16u);
    EXPECT_EQ(be16(db, 0), 70);
    EXPECT_EQ(be16(db, 2), 64);
    EXPECT_EQ(be32(db, 4), 0);
    EXPECT_EQ(beDouble(db, 8), 1.5);
    EXPECT_EQ(beDouble(db, 16), -2.0);
    EXPECT_EQ(beDouble(db, 24), 1e6);
    EXPECT_EQ(beSingle(db, 32), 0.0f);
    EXPECT_EQ(beSingle(db, 36), 1.0f);
    EXPECT_EQ(beSingle(db, 40), -1.0f);
    EXPECT_EQ(beSingle(db, 44), 0.25f);
    EXPECT_EQ(beSingle(db, 48), 0.75f);
    EXPECT_TRUE(allZero(db, 52, 12));

    EXPECT_EQ(be16(db, 64), 72);
    EXPECT_EQ(be16(db, 66), 16);
    EXPECT_EQ(be32(db, 68), 8);
    EXPECT_EQ(be32(db, 72), 2 * 64 + 8);
    EXPECT_EQ(be32(db, 76), 65534 * 64 + 8);
}

TEST(OpenFlightRecords, CreateReplacesAnOldFileAndCloseFreesTheNumber) {
    TempDir dir;
    const std::string path = dir.file("old.flt");
    writeFile(path, std::string(1000, 'x'));
    {
        OpenFlightWriter writer;
        writer.createDB(path);
        writer.writePushLevel();
        writer.closeDB();
        writer.closeDB();  // a second close does nothing
    }
    EXPECT_EQ(testbytes::hex(readFile(path)), "00 0A 00 04");
}
