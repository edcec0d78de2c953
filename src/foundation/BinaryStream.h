#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
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
// The typed reads and writes of a few bytes take the inline paths readValue and writeValue.
class MemoryStream final : public BinaryStream {
  public:
    MemoryStream() = default;
    explicit MemoryStream(std::string_view view)
        : data_(view.data()), length_(view.size()), viewOnly_(true) {}

    void read(void* target, std::size_t count) override;
    void write(const void* source, std::size_t count) override;
    void seek(int64_t offset) override { offset_ = offset; }
    int64_t offset() const override { return offset_; }
    int64_t length() const override { return static_cast<int64_t>(length_); }
    void close() override {}

    // Room for `count` bytes in all, so that a writer that knows its size grows only once.
    void reserve(std::size_t count);
    std::string take();
    std::string_view bytes() const { return {data_, length_}; }

    template <class T>
    void readValue(T& value) {
        if (offset_ >= 0 && static_cast<std::size_t>(offset_) + sizeof(T) <= length_) {
            std::memcpy(&value, data_ + offset_, sizeof(T));
            offset_ += static_cast<int64_t>(sizeof(T));
        } else {
            read(&value, sizeof(T));
        }
    }

    template <class T>
    void writeValue(const T& value) {
        const auto end = static_cast<std::size_t>(offset_) + sizeof(T);
        if (!viewOnly_ && offset_ >= 0 && end <= buffer_.size()) {
            std::memcpy(buffer_.data() + offset_, &value, sizeof(T));
            offset_ = static_cast<int64_t>(end);
            if (end > length_) length_ = end;
        } else {
            write(&value, sizeof(T));
        }
    }

  private:
    void makeOwned();
    void grow(std::size_t end);

    // The bytes: the caller's view, or the first length_ bytes of buffer_. An owned buffer is
    // kept longer than its content and zero beyond it, so that writes rarely reallocate and a
    // write past the end finds its gap already filled with zeros.
    const char* data_ = nullptr;
    std::size_t length_ = 0;
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
