#include "foundation/HexFunctions.h"

#include "foundation/BinaryStream.h"
#include "foundation/Errors.h"
#include "foundation/FileSystem.h"

#include <velmora/Host.h>

#include <array>
#include <bit>
#include <cstring>
#include <memory>

namespace velmora::hex {

namespace {

constexpr int kFileNumbers = 256;

// An open file number: its stream, and the same stream as a MemoryStream when it is one, so
// that the typed reads and writes of in-memory bytes take its inline paths.
struct OpenStream {
    std::unique_ptr<BinaryStream> stream;
    MemoryStream* memory = nullptr;
};
thread_local std::array<OpenStream, kFileNumbers> openStreams;

OpenStream& openStreamOf(int16_t file) {
    if (file < 1 || file >= kFileNumbers || !openStreams[static_cast<std::size_t>(file)].stream) {
        raisePlatformError(kInvalidProcedureCall);
    }
    return openStreams[static_cast<std::size_t>(file)];
}

BinaryStream& streamOf(int16_t file) {
    return *openStreamOf(file).stream;
}

void install(int16_t file, std::unique_ptr<BinaryStream> stream, MemoryStream* memory = nullptr) {
    if (file < 1 || file >= kFileNumbers) raisePlatformError(kInvalidProcedureCall);
    auto& slot = openStreams[static_cast<std::size_t>(file)];
    if (slot.stream) raisePlatformError(kPathFileAccessError);  // number already in use
    slot.stream = std::move(stream);
    slot.memory = memory;
}

void installMemory(int16_t file, std::unique_ptr<MemoryStream> stream) {
    MemoryStream* memory = stream.get();
    install(file, std::move(stream), memory);
}

template <class T>
T readRaw(int16_t file) {
    T value;
    OpenStream& open = openStreamOf(file);
    if (open.memory != nullptr) {
        open.memory->readValue(value);
    } else {
        open.stream->read(&value, sizeof value);
    }
    return value;
}

template <class T>
void writeRaw(int16_t file, T value) {
    OpenStream& open = openStreamOf(file);
    if (open.memory != nullptr) {
        open.memory->writeValue(value);
    } else {
        open.stream->write(&value, sizeof value);
    }
}

template <class T>
T reversed(T value) {
    unsigned char bytes[sizeof(T)];
    std::memcpy(bytes, &value, sizeof(T));
    for (std::size_t i = 0; i < sizeof(T) / 2; ++i)
        std::swap(bytes[i], bytes[sizeof(T) - 1 - i]);
    std::memcpy(&value, bytes, sizeof(T));
    return value;
}

}  // namespace

int16_t nextFreeFile() {
    for (int16_t file = 1; file < kFileNumbers; ++file) {
        if (!openStreams[static_cast<std::size_t>(file)].stream) return file;
    }
    raisePlatformError(kPathFileAccessError);
}

void openBinaryFile(int16_t file, const std::string& path) {
    install(file, std::make_unique<FileStream>(path, true));
}

void openReadOnlyFile(int16_t file, const std::string& path) {
    install(file, std::make_unique<FileStream>(path, false));
}

void openMemoryReader(int16_t file, std::string_view bytes) {
    installMemory(file, std::make_unique<MemoryStream>(bytes));
}

void openMemoryWriter(int16_t file, std::size_t expectedBytes) {
    auto stream = std::make_unique<MemoryStream>();
    if (expectedBytes > 0) stream->reserve(expectedBytes);
    installMemory(file, std::move(stream));
}

std::string takeMemoryBytes(int16_t file) {
    OpenStream& open = openStreamOf(file);
    if (open.memory == nullptr) raisePlatformError(kInvalidProcedureCall);
    std::string bytes = open.memory->take();
    open.stream.reset();
    open.memory = nullptr;
    return bytes;
}

int32_t filePosition(int16_t file) {
    return static_cast<int32_t>(streamOf(file).offset() + 1);
}

int64_t fileLength(int16_t file) {
    return streamOf(file).length();
}

void seekFile(int16_t file, int32_t position) {
    if (position < 1) raisePlatformError(kInvalidProcedureCall);
    streamOf(file).seek(static_cast<int64_t>(position) - 1);
}

void closeFile(int16_t file) {
    auto& slot = openStreams[static_cast<std::size_t>(file < 1 || file >= kFileNumbers ? 0 : file)];
    if (!slot.stream) return;
    std::unique_ptr<BinaryStream> stream = std::move(slot.stream);
    slot.memory = nullptr;
    stream->close();
}

int16_t readInteger(int16_t file) {
    return readRaw<int16_t>(file);
}

int32_t readUInteger(int16_t file) {
    return readRaw<uint16_t>(file);
}

int32_t readLong(int16_t file) {
    return readRaw<int32_t>(file);
}

float readSingle(int16_t file) {
    return readRaw<float>(file);
}

uint8_t readByte(int16_t file) {
    return readRaw<uint8_t>(file);
}

std::string readString(int16_t file, int32_t length) {
    if (length < 0) raisePlatformError(kInvalidProcedureCall);
    std::string value(static_cast<std::size_t>(length), '\0');
    if (length > 0) streamOf(file).read(value.data(), value.size());
    return value;
}

void writeInteger(int16_t file, int16_t value, bool swap) {
    writeRaw<int16_t>(file, swap ? swapInteger(value) : value);
}

void writeUInteger(int16_t file, int32_t value, bool swap) {
    if (value >= 32768 && value <= 65535) value -= 65536;
    if (value < -32768 || value > 32767) raisePlatformError(kOverflow);
    writeInteger(file, static_cast<int16_t>(value), swap);
}

void writeLong(int16_t file, int32_t value, bool swap) {
    writeRaw<int32_t>(file, swap ? swapLong(value) : value);
}

void writeSingle(int16_t file, float value, bool swap) {
    if (swap) {
        const std::string bytes = swapSingle(value);
        streamOf(file).write(bytes.data(), bytes.size());
    } else {
        writeRaw<float>(file, value);
    }
}

void writeDouble(int16_t file, double value, bool swap) {
    writeRaw<double>(file, swap ? swapDouble(value) : value);
}

void writeString(int16_t file, std::string_view value, int16_t length) {
    if (length >= 1 && value.size() > static_cast<std::size_t>(length)) {
        raiseLibraryError("Velmora.HexFunctions",
                          "The string trying to be written is bigger than the specified length");
    }
    BinaryStream& stream = streamOf(file);
    if (!value.empty()) stream.write(value.data(), value.size());
    if (length >= 1 && value.size() < static_cast<std::size_t>(length)) {
        static const char zeros[32768] = {};
        stream.write(zeros, static_cast<std::size_t>(length) - value.size());
    }
}

void writeByte(int16_t file, uint8_t value) {
    writeRaw<uint8_t>(file, value);
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
    return reversed(value);
}

int16_t swapInteger(int16_t value) {
    return reversed(value);
}

std::string swapSingle(float value) {
    const float swapped = reversed(value);
    return std::string(reinterpret_cast<const char*>(&swapped), sizeof swapped);
}

double swapDouble(double value) {
    return reversed(value);
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

ScopedFile::~ScopedFile() {
    try {
        closeFile(file_);
    } catch (const Error&) {
        // An error is already on its way out; the close of the remains doesn't add to it.
    }
}

void ScopedFile::close() {
    closeFile(file_);
}

}  // namespace velmora::hex
