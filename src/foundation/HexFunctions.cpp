#include "foundation/HexFunctions.h"

#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/Errors.h"
#include "foundation/FileStream.h"
#include "foundation/FileSystem.h"

#include <velmora/Host.h>

#include <array>
#include <memory>

namespace velmora::hex {

namespace {

constexpr int kFileNumbers = 256;

// An open file number.
struct OpenStream {
    std::unique_ptr<FileStream> file;

    bool isOpen() const { return file != nullptr; }
};
thread_local std::array<OpenStream, kFileNumbers> openStreams;

OpenStream& openStreamOf(int16_t file) {
    if (file < 1 || file >= kFileNumbers || !openStreams[static_cast<std::size_t>(file)].isOpen()) {
        raisePlatformError(kInvalidProcedureCall);
    }
    return openStreams[static_cast<std::size_t>(file)];
}

OpenStream& freeSlot(int16_t file) {
    if (file < 1 || file >= kFileNumbers) raisePlatformError(kInvalidProcedureCall);
    auto& slot = openStreams[static_cast<std::size_t>(file)];
    if (slot.isOpen()) raisePlatformError(kPathFileAccessError, "file number already in use");
    return slot;
}

// The typed read of T, little-endian.
template <class T>
T readValue(int16_t file) {
    T value;
    openStreamOf(file).file->read(&value, sizeof value);
    return value;
}

// The typed write of T, little-endian.
template <class T>
void writeValue(int16_t file, T value) {
    openStreamOf(file).file->write(&value, sizeof value);
}

void writeBytes(int16_t file, std::string_view bytes) {
    FileStream& stream = *openStreamOf(file).file;
    if (!bytes.empty()) stream.write(bytes.data(), bytes.size());
}

// The scratch file "temp.bin" in the application folder.
std::string tempFilePath() {
    return fs::joinPath(applicationFolder(), "temp.bin");
}

}  // namespace

int16_t nextFreeFile() {
    for (int16_t file = 1; file < kFileNumbers; ++file) {
        if (!openStreams[static_cast<std::size_t>(file)].isOpen()) return file;
    }
    raisePlatformError(kPathFileAccessError, "all file numbers are in use");
}

void openBinaryFile(int16_t file, const std::string& path) {
    OpenStream& slot = freeSlot(file);
    slot.file = std::make_unique<FileStream>(path);
}

int32_t filePosition(int16_t file) {
    return static_cast<int32_t>(openStreamOf(file).file->offset() + 1);
}

void seekFile(int16_t file, int32_t position) {
    if (position < 1) raisePlatformError(kInvalidProcedureCall);
    openStreamOf(file).file->seek(static_cast<int64_t>(position) - 1);
}

void closeFile(int16_t file) {
    auto& slot = openStreams[static_cast<std::size_t>(file < 1 || file >= kFileNumbers ? 0 : file)];
    if (!slot.file) return;
    std::unique_ptr<FileStream> stream = std::move(slot.file);
    stream->close();
}

int16_t readInteger(int16_t file) {
    return readValue<int16_t>(file);
}

int32_t readUInteger(int16_t file) {
    return readValue<uint16_t>(file);
}

int32_t readLong(int16_t file) {
    return readValue<int32_t>(file);
}

float readSingle(int16_t file) {
    return readValue<float>(file);
}

uint8_t readByte(int16_t file) {
    return readValue<uint8_t>(file);
}

std::string readString(int16_t file, int32_t length) {
    if (length < 0) raisePlatformError(kInvalidProcedureCall);
    FileStream& stream = *openStreamOf(file).file;
    std::string value(static_cast<std::size_t>(length), '\0');
    if (length > 0) stream.read(value.data(), value.size());
    return value;
}

void writeInteger(int16_t file, int16_t value, bool swap) {
    writeValue(file, swap ? swapInteger(value) : value);
}

void writeUInteger(int16_t file, int32_t value, bool swap) {
    if (value >= 32768 && value <= 65535) value -= 65536;
    if (value < -32768 || value > 32767) raisePlatformError(kOverflow);
    writeInteger(file, static_cast<int16_t>(value), swap);
}

void writeLong(int16_t file, int32_t value, bool swap) {
    writeValue(file, swap ? swapLong(value) : value);
}

void writeSingle(int16_t file, float value, bool swap) {
    if (swap) {
        writeBytes(file, swapSingle(value));
        return;
    }
    writeValue(file, value);
}

void writeDouble(int16_t file, double value, bool swap) {
    writeValue(file, swap ? swapDouble(value) : value);
}

void writeString(int16_t file, std::string_view value, int16_t length) {
    if (length < 1) {
        writeBytes(file, value);
        return;
    }
    ByteWriter field(static_cast<std::size_t>(length));
    field.field(value, length);
    writeBytes(file, field.take());
}

void writeByte(int16_t file, uint8_t value) {
    writeValue(file, value);
}

void readThrough(int16_t file, const std::function<void(ByteReader&)>& read) {
    FileStream& stream = *openStreamOf(file).file;
    const int64_t position = stream.offset();
    std::string bytes(static_cast<std::size_t>(stream.length()), '\0');
    stream.seek(0);
    if (!bytes.empty()) stream.read(bytes.data(), bytes.size());
    ByteReader in(bytes);
    in.seek(position);
    try {
        read(in);
    } catch (...) {
        stream.seek(in.offset());
        throw;
    }
    stream.seek(in.offset());
}

void openTempFile(int16_t file) {
    const std::string path = tempFilePath();
    if (fs::fileExists(path)) fs::deleteFile(path, true);
    openBinaryFile(file, path);
}

void reopenTempFile(int16_t file) {
    openBinaryFile(file, tempFilePath());
}

void closeTempFile(int16_t file) {
    if (file > 0) closeFile(file);
    const std::string path = tempFilePath();
    if (fs::fileExists(path)) fs::deleteFile(path, true);
}

int32_t tempFileSize() {
    return fs::fileSize(tempFilePath());
}

int32_t swapLong(int32_t value) {
    return ByteWriter::reversed(value);
}

int16_t swapInteger(int16_t value) {
    return ByteWriter::reversed(value);
}

std::string swapSingle(float value) {
    const float swapped = ByteWriter::reversed(value);
    return std::string(reinterpret_cast<const char*>(&swapped), sizeof swapped);
}

double swapDouble(double value) {
    return ByteWriter::reversed(value);
}

}  // namespace velmora::hex
