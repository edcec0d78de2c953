#include "foundation/OutputFile.h"

#include "foundation/Errors.h"
#include "foundation/FileSystem.h"
#include "foundation/NativeFiles.h"

#include <cerrno>

namespace velmora {

OutputFile::OutputFile(std::string path) : path_(std::move(path)) {
    errno = 0;
    file_ = fs::openFile(path_, "wb");
    if (file_ == nullptr) raiseOpenError(errno, path_);
}

OutputFile::~OutputFile() {
    if (file_ == nullptr) return;
    try {
        writer_.flush();
    } catch (const Error&) {
        // Released on the way out of an error: what can't be written doesn't add to it.
    }
    std::fclose(file_);
}

void OutputFile::write(std::string_view bytes) {
    if (file_ == nullptr) raisePlatformError(kPathFileAccessError, "the file is closed");
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_) != bytes.size()) {
        raiseFileError(errno, path_);
    }
}

void OutputFile::close() {
    if (file_ == nullptr) return;
    writer_.flush();
    const bool flushed = std::fflush(file_) == 0;
    const int error = errno;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!flushed || !closed) raiseFileError(error, path_);
}

}  // namespace velmora
