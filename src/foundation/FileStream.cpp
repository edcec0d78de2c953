#include "foundation/FileStream.h"

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/NativeFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace velmora {

FileStream::FileStream(const std::string& path) : path_(path) {
    errno = 0;
    file_ = fs::openFile(path, "r+b");
    if (file_ == nullptr && errno == ENOENT) file_ = fs::openFile(path, "w+b");
    if (file_ == nullptr) raiseOpenError(errno, path_);
    if (std::fseek(file_, 0, SEEK_END) == 0) knownLength_ = std::ftell(file_);
    std::fseek(file_, 0, SEEK_SET);
}

FileStream::~FileStream() {
    if (file_ != nullptr) std::fclose(file_);
}

void FileStream::placeAt(bool forWriting) {
    // A stdio stream needs a seek between reading and writing.
    if (!positioned_ || lastWasWrite_ != forWriting) {
        if (offset_ > knownLength_ && !forWriting) {
            positioned_ = false;
            return;
        }
        std::fseek(file_, static_cast<long>(offset_), SEEK_SET);
        positioned_ = true;
    }
    lastWasWrite_ = forWriting;
}

void FileStream::read(void* target, std::size_t count) {
    auto* out = static_cast<unsigned char*>(target);
    std::size_t got = 0;
    if (offset_ < knownLength_) {
        placeAt(false);
        got = std::fread(out, 1, count, file_);
    } else {
        positioned_ = false;
    }
    if (got < count) {
        std::memset(out + got, 0, count - got);
        positioned_ = false;
    }
    offset_ += static_cast<int64_t>(count);
}

void FileStream::write(const void* source, std::size_t count) {
    if (offset_ > knownLength_) {
        // Fill the gap that a seek beyond the end left.
        std::fseek(file_, 0, SEEK_END);
        static const char zeros[256] = {};
        int64_t gap = offset_ - knownLength_;
        while (gap > 0) {
            const auto chunk = static_cast<std::size_t>(std::min<int64_t>(gap, sizeof zeros));
            if (std::fwrite(zeros, 1, chunk, file_) != chunk) raiseFileError(errno, path_);
            gap -= static_cast<int64_t>(chunk);
        }
        knownLength_ = offset_;
        positioned_ = true;
        lastWasWrite_ = true;
    }
    placeAt(true);
    if (std::fwrite(source, 1, count, file_) != count) raiseFileError(errno, path_);
    offset_ += static_cast<int64_t>(count);
    if (offset_ > knownLength_) knownLength_ = offset_;
}

void FileStream::seek(int64_t offset) {
    offset_ = offset;
    positioned_ = false;
}

void FileStream::close() {
    if (file_ == nullptr) return;
    const bool failed = std::fflush(file_) != 0;
    const int error = errno;
    const bool closeFailed = std::fclose(file_) != 0;
    file_ = nullptr;
    if (failed || closeFailed) raiseFileError(error, path_);
}

}  // namespace velmora
