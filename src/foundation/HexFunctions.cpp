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

// An open file number: a file, or bytes in memory being read or being built.
struct OpenStream {
    std::unique_ptr<FileStream> file;
    std::unique_ptr<ByteReader> reader;
    std::unique_ptr<ByteWriter> writer;

    bool isOpen() const { return file || reader || writer; }
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

[[noreturn]] void raiseWrongDirection() {
    raisePlatformError(kPathFileAccessError, "the file number is open the other way");
}

// The typed read of T from a file or a reader; `fromReader` is the reader's own method.
template <class T, class FromReader>
T readValue(int16_t file, FromReader fromReader) {
    OpenStream& open = openStreamOf(file);
    if (open.reader) return static_cast<T>(fromReader(*open.reader));
    if (!open.file) raiseWrongDirection();
    T value;
    open.file->read(&value, sizeof value);
    return value;
}

// The typed write of T to a file or a writer; `toWriter` is the writer's own method.
template <class T, class ToWriter>
void writeValue(int16_t file, T value, ToWriter toWriter) {
    OpenStream& open = openStreamOf(file);
    if (open.writer) {
        toWriter(*open.writer, value);
        return;
    }
    if (!open.file) raiseWrongDirection();
    open.file->write(&value, sizeof value);
}

void writeBytes(int16_t file, std::string_view bytes) {
    OpenStream& open = openStreamOf(file);
    if (open.writer) {
        open.writer->bytes(bytes);
        return;
    }
    if (!open.file) raiseWrongDirection();
    if (!bytes.empty()) open.file->write(bytes.data(), bytes.size());
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
    slot.file = std::make_unique<FileStream>(path, true);
}

void openReadOnlyFile(int16_t file, const std::string& path) {
    OpenStream& slot = freeSlot(file);
    slot.file = std::make_unique<FileStream>(path, false);
}

void openMemoryReader(int16_t file, std::string_view bytes) {
    OpenStream& slot = freeSlot(file);
    slot.reader = std::make_unique<ByteReader>(bytes);
}

void openMemoryWriter(int16_t file, std::size_t expectedBytes) {
    OpenStream& slot = freeSlot(file);
    slot.writer = std::make_unique<ByteWriter>(expectedBytes);
}

std::string takeMemoryBytes(int16_t file) {
    OpenStream& open = openStreamOf(file);
    if (!open.writer) raisePlatformError(kInvalidProcedureCall);
    std::string bytes = open.writer->take();
    open.writer.reset();
    return bytes;
}

int32_t filePosition(int16_t file) {
    const OpenStream& open = openStreamOf(file);
    const int64_t offset = open.reader   ? open.reader->offset()
                           : open.writer ? open.writer->size()
                                         : open.file->offset();
    return static_cast<int32_t>(offset + 1);
}

int64_t fileLength(int16_t file) {
    const OpenStream& open = openStreamOf(file);
    return open.reader   ? open.reader->size()
           : open.writer ? open.writer->size()
                         : open.file->length();
}

void seekFile(int16_t file, int32_t position) {
    if (position < 1) raisePlatformError(kInvalidProcedureCall);
    OpenStream& open = openStreamOf(file);
    if (open.writer) raisePlatformError(kInvalidProcedureCall, "bytes being built can't seek");
    if (open.reader) {
        open.reader->seek(static_cast<int64_t>(position) - 1);
    } else {
        open.file->seek(static_cast<int64_t>(position) - 1);
    }
}

void closeFile(int16_t file) {
    auto& slot = openStreams[static_cast<std::size_t>(file < 1 || file >= kFileNumbers ? 0 : file)];
    slot.reader.reset();
    slot.writer.reset();
    if (!slot.file) return;
    std::unique_ptr<FileStream> stream = std::move(slot.file);
    stream->close();
}

int16_t readInteger(int16_t file) {
    return readValue<int16_t>(file, [](ByteReader& r) { return r.int16(); });
}

int32_t readUInteger(int16_t file) {
    return readValue<uint16_t>(file, [](ByteReader& r) { return r.uint16(); });
}

int32_t readLong(int16_t file) {
    return readValue<int32_t>(file, [](ByteReader& r) { return r.int32(); });
}

float readSingle(int16_t file) {
    return readValue<float>(file, [](ByteReader& r) { return r.single(); });
}

uint8_t readByte(int16_t file) {
    return readValue<uint8_t>(file, [](ByteReader& r) { return r.byte(); });
}

std::string readString(int16_t file, int32_t length) {
    if (length < 0) raisePlatformError(kInvalidProcedureCall);
    OpenStream& open = openStreamOf(file);
    if (open.reader) return open.reader->text(length);
    if (!open.file) raiseWrongDirection();
    std::string value(static_cast<std::size_t>(length), '\0');
    if (length > 0) open.file->read(value.data(), value.size());
    return value;
}

void writeInteger(int16_t file, int16_t value, bool swap) {
    writeValue(file, swap ? swapInteger(value) : value,
               [](ByteWriter& w, int16_t v) { w.int16(v); });
}

void writeUInteger(int16_t file, int32_t value, bool swap) {
    if (value >= 32768 && value <= 65535) value -= 65536;
    if (value < -32768 || value > 32767) raisePlatformError(kOverflow);
    writeInteger(file, static_cast<int16_t>(value), swap);
}

void writeLong(int16_t file, int32_t value, bool swap) {
    writeValue(file, swap ? swapLong(value) : value, [](ByteWriter& w, int32_t v) { w.int32(v); });
}

void writeSingle(int16_t file, float value, bool swap) {
    if (swap) {
        writeBytes(file, swapSingle(value));
        return;
    }
    writeValue(file, value, [](ByteWriter& w, float v) { w.single(v); });
}

void writeDouble(int16_t file, double value, bool swap) {
    writeValue(file, swap ? swapDouble(value) : value, [](ByteWriter& w, double v) { w.real(v); });
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
    writeValue(file, value, [](ByteWriter& w, uint8_t v) { w.byte(v); });
}

void readThrough(int16_t file, const std::function<void(ByteReader&)>& read) {
    OpenStream& open = openStreamOf(file);
    if (open.reader) {
        read(*open.reader);
        return;
    }
    if (!open.file) raiseWrongDirection();
    FileStream& stream = *open.file;
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

std::string tempFilePath() {
    return fs::joinPath(applicationFolder(), "temp.bin");
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

MemoryReader::MemoryReader(std::string_view bytes) : file_(nextFreeFile()) {
    openMemoryReader(file_, bytes);
}

MemoryReader::~MemoryReader() {
    closeFile(file_);
}

MemoryWriter::MemoryWriter(std::size_t expectedBytes) : file_(nextFreeFile()) {
    openMemoryWriter(file_, expectedBytes);
}

MemoryWriter::~MemoryWriter() {
    closeFile(file_);
}

std::string MemoryWriter::take() {
    return takeMemoryBytes(file_);
}

}  // namespace velmora::hex
