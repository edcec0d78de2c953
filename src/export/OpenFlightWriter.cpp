#include <velmora/OpenFlightWriter.h>

#include "export/BigEndianRecord.h"
#include "export/OpenFlightNames.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/GeneralFunctions.h"
#include "foundation/NativeFiles.h"
#include "foundation/NumberText.h"
#include "foundation/OutputFile.h"

#include <ctime>
#include <string>

namespace velmora {

namespace {

enum Opcode : int16_t {
    kHeader = 1,
    kGroup = 2,
    kObject = 4,
    kFace = 5,
    kPushLevel = 10,
    kPopLevel = 11,
    kPushSubface = 19,
    kPopSubface = 20,
    kComment = 31,
    kLongID = 33,
    kVertexList = 72,
    kLevelOfDetail = 73,
    kVertexWithNormalAndUV = 70,
    kPushAttribute = 122,
    kPopAttribute = 123,
};

constexpr int16_t kIdWidth = 8;
constexpr std::string_view kPrimaryRed{"\xFF\x00\x00\xFF", 4};  // a, b, g, r

// Today's date in the short numeric form month/day/year ("11/22/2026"), without the time.
std::string todaysShortDate() {
    const std::time_t now = std::time(nullptr);
    const std::tm local = fs::localTime(now);
    return std::to_string(local.tm_mon + 1) + "/" + std::to_string(local.tm_mday) + "/" +
           std::to_string(local.tm_year + 1900);
}

// The folder that receives the attribute files. A bare file name lies in the current folder,
// so its attribute files go there rather than under a folder named like the database.
std::string folderOfDatabase(const std::string& file) {
    const auto cut = file.find_last_of("/\\");
    if (cut == std::string::npos) return {};
    if (cut == 0) return file.substr(0, 1);
    return folderOfPath(file);
}

}  // namespace

OpenFlightWriter::OpenFlightWriter() = default;

// A writer released with its database still open (after an error, say) closes it quietly.
OpenFlightWriter::~OpenFlightWriter() = default;

ByteWriter& OpenFlightWriter::db() {
    if (!db_) raisePlatformError(kInvalidProcedureCall, "no database is open (createDB first)");
    return db_->writer();
}

void OpenFlightWriter::createDB(const std::string& file) {
    if (db_) closeDB();
    // An old database is removed first, so a read-only one is refused (error 70).
    if (fs::fileExists(file)) fs::deleteFile(file, false);
    db_ = std::make_unique<OutputFile>(file);
    dbFolder_ = folderOfDatabase(file);
}

void OpenFlightWriter::closeDB() {
    if (!db_) return;
    const std::unique_ptr<OutputFile> database = std::move(db_);
    database->close();
}

void OpenFlightWriter::writePushLevel() {
    flt::BigEndianRecord(db()).head(kPushLevel, 4);
}
void OpenFlightWriter::writePopLevel() {
    flt::BigEndianRecord(db()).head(kPopLevel, 4);
}
void OpenFlightWriter::writePushSubface() {
    flt::BigEndianRecord(db()).head(kPushSubface, 4);
}
void OpenFlightWriter::writePopSubface() {
    flt::BigEndianRecord(db()).head(kPopSubface, 4);
}
void OpenFlightWriter::writePushAttribute() {
    flt::BigEndianRecord(db()).head(kPushAttribute, 4);
}
void OpenFlightWriter::writePopAttribute() {
    flt::BigEndianRecord(db()).head(kPopAttribute, 4);
}

void OpenFlightWriter::writeHeader() {
    flt::BigEndianRecord out(db());
    out.head(kHeader, 324);
    out.text("db", kIdWidth);
    out.int32(1600);  // format revision 16.0
    out.int32(1);     // edit revision
    out.text(todaysShortDate(), 32);
    out.zeros(8);    // next group, LOD, object and face node IDs
    out.int16(1);    // unit multiplier
    out.byte(0);     // vertex units: metres
    out.byte(0);     // no white texture on new faces
    out.zeros(60);   // flags, projection and the words up to offset 124
    out.int16(0);    // next DOF node ID
    out.int16(1);    // vertices stored in double precision
    out.int32(100);  // database origin: OpenFlight
    out.zeros(32);   // south-west corner and deltas
    out.zeros(20);
    out.zeros(4);
    out.zeros(64);  // latitudes and longitudes
    out.zeros(16);
    out.zeros(4);  // earth ellipsoid model
    out.zeros(12);
    out.zeros(16);  // delta z and radius
    out.zeros(4);
    out.zeros(4);
    out.zeros(16);  // earth major and minor axis
}

void OpenFlightWriter::writeGroup(const std::string& name) {
    flt::BigEndianRecord out(db());
    out.head(kGroup, 44);
    out.text(flt::shortID(name), kIdWidth);
    out.zeros(32);  // priority, flags, effects, significance, layer and four words
    if (flt::needsLongID(name)) writeLongID(name);
}

void OpenFlightWriter::writeObject(const std::string& name) {
    flt::BigEndianRecord out(db());
    out.head(kObject, 28);
    out.text(flt::shortID(name), kIdWidth);
    out.zeros(16);  // flags, priority, transparency, effects, significance
    if (flt::needsLongID(name)) writeLongID(name);
}

void OpenFlightWriter::writeFace(const std::string& name, int32_t Color, int16_t Texture,
                                 int16_t Material) {
    const int32_t primaryColorIndex = numbers::narrow32(int64_t{Color} * 128 + 127);
    flt::BigEndianRecord out(db());
    out.head(kFace, 80);
    out.text(flt::shortID(name), kIdWidth);
    out.int32(0);  // IR colour code
    out.int16(0);  // relative priority
    out.byte(0);   // draw type: solid, backface culled
    out.byte(1);   // texture white
    out.int16(0);  // colour name index
    out.int16(0);  // alternate colour name index
    out.byte(0);
    out.byte(0);    // no billboard
    out.int16(-1);  // no detail texture
    out.int16(Texture);
    out.int16(Material);
    out.int16(0);   // surface material code
    out.int16(0);   // feature ID
    out.int32(-1);  // IR material code
    out.int16(0);   // transparency
    out.byte(0);    // LOD generation control
    out.byte(0);    // line style
    out.int32(0);   // flags
    out.byte(2);    // light mode: face colour with vertex normals
    out.zeros(7);
    out.raw(kPrimaryRed);  // packed primary colour
    out.int32(0);          // packed alternate colour
    out.int16(-1);         // no texture mapping
    out.int16(0);
    out.int32(primaryColorIndex);  // palette entry Color at full intensity
    out.int32(-1);                 // alternate colour index
    out.int16(0);
    out.int16(-1);  // no shader
    if (flt::needsLongID(name)) writeLongID(name);
}

void OpenFlightWriter::writeVertexList(int32_t v1, int32_t v2, int32_t v3) {
    // Offsets count from the start of the vertex palette: its 8-byte record, then 64 bytes a
    // vertex.
    const auto offsetOf = [](int32_t v) { return numbers::narrow32(int64_t{v} * 64 + 8); };
    const int32_t o1 = offsetOf(v1), o2 = offsetOf(v2), o3 = offsetOf(v3);
    flt::BigEndianRecord out(db());
    out.head(kVertexList, 16);
    out.int32(o1);
    out.int32(o2);
    out.int32(o3);
}

void OpenFlightWriter::writeLOD(const std::string& name, double switchIn, double switchOut) {
    flt::BigEndianRecord out(db());
    out.head(kLevelOfDetail, 80);
    out.text(flt::shortID(name), kIdWidth);
    out.int32(0);
    out.real(switchIn);
    out.real(switchOut);
    out.zeros(4);   // special effect IDs
    out.int32(0);   // flags
    out.zeros(40);  // centre x, y, z, transition range, significant size
    if (flt::needsLongID(name)) writeLongID(name);
}

void OpenFlightWriter::writeVertex(double x, double y, double z, float nx, float ny, float nz,
                                   float tx, float ty) {
    flt::BigEndianRecord out(db());
    out.head(kVertexWithNormalAndUV, 64);
    out.int16(0);  // colour name index
    out.int16(0);  // flags
    out.real(x);
    out.real(y);
    out.real(z);
    out.single(nx);
    out.single(ny);
    out.single(nz);
    out.single(tx);
    out.single(ty);
    out.zeros(12);  // packed colour, colour index, reserved
}

void OpenFlightWriter::writeComment(const std::string& comment) {
    const int16_t width = flt::paddedLength(comment);
    const int16_t length = numbers::narrow16(int32_t{width} + 4);
    flt::BigEndianRecord out(db());
    out.head(kComment, length);
    out.text(comment, width);
}

void OpenFlightWriter::writeLongID(const std::string& name) {
    const int16_t width = flt::paddedLength(name);
    const int16_t length = numbers::narrow16(int32_t{width} + 4);
    flt::BigEndianRecord out(db());
    out.head(kLongID, length);
    out.text(name, width);
}

}  // namespace velmora
