#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace velmora {
class ByteReader;
}

// Typed binary access addressed by file numbers, for the members whose interface passes a file
// number (XMLBGLSection.readFromFile and its kin) and for hosts that use the procedures as
// such. The library's own readers and writers pass a ByteReader or ByteWriter instead.
// Every value is little-endian unless a write is told to swap. Reads past the end give 0, or
// a string of the asked length whose missing part is NUL bytes.
//
// File numbers belong to the calling thread: two threads never share one, so models can be
// loaded side by side.
namespace velmora::hex {

// A file number from 1 to 255 that isn't in use on this thread; error 75 when all are taken.
int16_t nextFreeFile();
// Opens `path` for reading and writing at position 1; a missing file is created empty.
void openBinaryFile(int16_t file, const std::string& path);
int32_t filePosition(int16_t file);
void seekFile(int16_t file, int32_t position);
void closeFile(int16_t file);

int16_t readInteger(int16_t file);
int32_t readUInteger(int16_t file);
int32_t readLong(int16_t file);
float readSingle(int16_t file);
std::string readString(int16_t file, int32_t length);
uint8_t readByte(int16_t file);

void writeInteger(int16_t file, int16_t value, bool swap = false);
void writeUInteger(int16_t file, int32_t value, bool swap = false);
void writeLong(int16_t file, int32_t value, bool swap = false);
void writeSingle(int16_t file, float value, bool swap = false);
void writeDouble(int16_t file, double value, bool swap = false);
// `length` of 1 or more writes a fixed field: the value and NUL bytes up to `length`; a longer
// value is error 100 and nothing is written. `length` below 1 writes the value unchanged.
void writeString(int16_t file, std::string_view value, int16_t length);
void writeByte(int16_t file, uint8_t value);

// Runs `read` with a reader over the whole of an open file, placed at the file's
// position; afterwards the file's position is where the reader stopped. This is how the
// members that take a file number share the library's readers.
void readThrough(int16_t file, const std::function<void(ByteReader&)>& read);

// The scratch file "temp.bin" in the application folder.
void openTempFile(int16_t file);
void reopenTempFile(int16_t file);
void closeTempFile(int16_t file);
int32_t tempFileSize();

int32_t swapLong(int32_t value);
int16_t swapInteger(int16_t value);
std::string swapSingle(float value);
double swapDouble(double value);

}  // namespace velmora::hex
