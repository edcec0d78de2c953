#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace velmora {

// A byte stream addressed by 0-based offsets. Reads past the end give zero bytes; writes past
// the end extend the stream.
class BinaryStream {
public:
    virtual ~BinaryStream() = default;
    // Reads `count` bytes; the bytes beyond the end of the stream come out as zeros.
    virtual void read(void* target, std::size_t count) = 0;
    virtual void write(const void* source, std::size_t count) = 0;
    virtual void seek(int64_t offset) = 0;
    virtual int64_t offset() const = 0;
    virtual int64_t length() const = 0;
    virtual void close() = 0;
};

// A stream over bytes in memory: a read-only view of the caller's bytes, or an owned buffer.
class MemoryStream final : public BinaryStream {
public:
    MemoryStream() = default;
    explicit MemoryStream(std::string_view view) : view_(view), viewOnly_(true) {}

    void read(void* target, std::size_t count) override;
    void write(const void* source, std::size_t count) override;
    void seek(int64_t offset) override { offset_ = offset; }
    int64_t offset() const override { return offset_; }
    int64_t length() const override { return static_cast<int64_t>(bytes().size()); }
    void close() override {}

    std::string take();
    std::string_view bytes() const { return viewOnly_ ? view_ : std::string_view(buffer_); }

private:
    void makeOwned();

    std::string_view view_;
    bool viewOnly_ = false;
    std::string buffer_;
    int64_t offset_ = 0;
};

// A stream over a file on disk.
class FileStream final : public BinaryStream {
public:
    // Opens `path`. With `writable` the file is opened for reading and writing and created
    // empty when it does not exist; otherwise it is opened for reading only.
    FileStream(const std::string& path, bool writable);
    ~FileStream() override;

    void read(void* target, std::size_t count) override;
    void write(const void* source, std::size_t count) override;
    void seek(int64_t offset) override;
    int64_t offset() const override { return offset_; }
    int64_t length() const override;
    void close() override;

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
