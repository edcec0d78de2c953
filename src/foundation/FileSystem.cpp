#include "foundation/FileSystem.h"

#include "foundation/Errors.h"
#include "foundation/GeneralFunctions.h"
#include "foundation/NativeFiles.h"

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>

namespace velmora {

namespace {

// True when the folder that `path` names a file in doesn't exist.
bool folderIsMissing(const std::string& path) {
    const std::string folder = folderOfPath(path);
    std::error_code ignored;
    return folder != path && !folder.empty() &&
           !std::filesystem::is_directory(fs::nativePath(folder), ignored);
}

[[noreturn]] void raiseMissingFolder(const std::string& path) {
    throw platformError(kPathNotFound)
        .setFile(path)
        .setDetail("the folder \"" + folderOfPath(path) + "\" does not exist");
}

[[noreturn]] void raiseReadOnly(const std::string& path) {
    throw platformError(kPermissionDenied).setFile(path).setDetail("the file is read-only");
}

}  // namespace

void raiseOpenError(int errnoValue, const std::string& path) {
    if (errnoValue == ENOENT && folderIsMissing(path)) raiseMissingFolder(path);
    raiseFileError(errnoValue, path);
}

namespace fs {

namespace stdfs = std::filesystem;

namespace {

bool isReadOnly(const std::string& path) {
    return isReadOnlyFile(path);
}

}  // namespace

bool fileExists(const std::string& path) {
    std::error_code ignored;
    return !path.empty() && stdfs::is_regular_file(nativePath(path), ignored);
}

void deleteFile(const std::string& path, bool force) {
    if (!fileExists(path)) raiseFileError(ENOENT, path);
    if (!force && isReadOnly(path)) raiseReadOnly(path);
    if (const int error = removeFile(path); error != 0) raiseFileError(error, path);
}

int32_t fileSize(const std::string& path) {
    std::error_code code;
    const auto size = stdfs::file_size(nativePath(path), code);
    if (code) raiseFileError(code, path);
    if (size > static_cast<std::uintmax_t>(std::numeric_limits<int32_t>::max())) {
        raisePlatformError(kOverflow);
    }
    return static_cast<int32_t>(size);
}

std::string readWholeFile(const std::string& path) {
    std::FILE* file = openFile(path, "rb");
    if (file == nullptr) raiseOpenError(errno, path);
    std::string bytes;
    if (std::fseek(file, 0, SEEK_END) == 0) {
        const long size = std::ftell(file);
        if (size > 0) bytes.resize(static_cast<std::size_t>(size));
        std::fseek(file, 0, SEEK_SET);
    }
    const std::size_t got = bytes.empty() ? 0 : std::fread(bytes.data(), 1, bytes.size(), file);
    const bool failed = std::ferror(file) != 0;
    const int error = errno;
    std::fclose(file);
    if (failed) raiseFileError(error, path);
    bytes.resize(got);
    return bytes;
}

std::string readFileStart(const std::string& path, std::size_t count) {
    std::FILE* file = openFile(path, "rb");
    if (file == nullptr) raiseOpenError(errno, path);
    std::string bytes(count, '\0');
    bytes.resize(std::fread(bytes.data(), 1, count, file));
    std::fclose(file);
    return bytes;
}

void replaceFile(const std::string& path, const std::string& bytes) {
    if (folderIsMissing(path)) raiseMissingFolder(path);
    if (fileExists(path) && isReadOnly(path)) raiseReadOnly(path);

    static std::atomic<unsigned> counter{0};
    const std::string temporary = path + ".velmora-" + std::to_string(processId()) + "-" +
                                  std::to_string(counter.fetch_add(1)) + ".tmp";
    std::FILE* file = openFile(temporary, "wb");
    if (file == nullptr) raiseOpenError(errno, path);
    const bool written =
        bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    int error = errno;
    const bool flushed = std::fflush(file) == 0;
    if (written && !flushed) error = errno;
    const bool closed = std::fclose(file) == 0;
    if (!written || !flushed || !closed) {
        removeFile(temporary);
        raiseFileError(error, path);
    }
    // Keep the permissions of the file that is replaced.
    copyPermissions(path, temporary);
    if (const int moved = moveOver(temporary, path); moved != 0) {
        removeFile(temporary);
        raiseFileError(moved, path);
    }
}

std::string joinPath(const std::string& folder, const std::string& name) {
    if (folder.empty()) return name;
    if (folder.back() == '/' || folder.back() == '\\') return folder + name;
    return folder + "/" + name;
}

std::string joinInside(const std::string& folder, const std::string& name) {
    // Keep only the last component, whichever separator the name uses.
    std::string last = name;
    const auto cut = last.find_last_of("/\\");
    if (cut != std::string::npos) last = last.substr(cut + 1);
    if (last == ".." || last == ".") last.clear();
    return joinPath(folder, last);
}

}  // namespace fs
}  // namespace velmora
