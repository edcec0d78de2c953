#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace velmora {

// A file opened under a file number (see HexFunctions.h), addressed by 0-based offsets. Reads
// past the end give zero bytes; writes past the end extend the file, a gap with zeros.
class FileStream {
  public:
    // Opens `path` for reading and writing; a file that does not exist is created empty.
    explicit FileStream(const std::string& path);
    ~FileStream();
    FileStream(const FileStream&) = delete;
    FileStream& operator=(const FileStream&) = delete;

    // Reads `count` bytes; the bytes beyond the end of the file come out as zeros.
    void read(void* target, std::size_t count);
    void write(const void* source, std::size_t count);
    void seek(int64_t offset);
    int64_t offset() const { return offset_; }
    int64_t length() const { return knownLength_; }
    void close();

  private:
    void placeAt(bool forWriting);

    std::FILE* file_ = nullptr;
    std::string path_;
    int64_t offset_ = 0;
    int64_t knownLength_ = 0;
    bool lastWasWrite_ = false;
    bool positioned_ = true;
};

}  // namespace velmora
