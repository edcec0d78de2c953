#include "foundation/NativeFiles.h"

#include <cerrno>
#include <string_view>

#ifdef _WIN32
#include <windows.h>

#include <io.h>
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace velmora::fs {

namespace stdfs = std::filesystem;

stdfs::path nativePath(const std::string& utf8) {
    return stdfs::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string utf8Path(const stdfs::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

#ifdef _WIN32

namespace {

int errnoOf(DWORD error) {
    switch (error) {
        case ERROR_FILE_NOT_FOUND:
        case ERROR_PATH_NOT_FOUND:
            return ENOENT;
        case ERROR_ACCESS_DENIED:
        case ERROR_SHARING_VIOLATION:
            return EACCES;
        case ERROR_DISK_FULL:
            return ENOSPC;
        default:
            return EIO;
    }
}

}  // namespace

std::FILE* openFile(const std::string& path, const char* mode) {
    const std::wstring wideMode(mode, mode + std::string_view(mode).size());
    return _wfopen(nativePath(path).c_str(), wideMode.c_str());
}

int removeFile(const std::string& path) {
    return _wremove(nativePath(path).c_str()) == 0 ? 0 : errno;
}

int moveOver(const std::string& from, const std::string& to) {
    if (MoveFileExW(nativePath(from).c_str(), nativePath(to).c_str(),
                    MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return 0;
    }
    return errnoOf(GetLastError());
}

bool isReadOnlyFile(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(nativePath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

void copyPermissions(const std::string&, const std::string&) {
    // A read-only file is refused before it is replaced; there is nothing else to carry over.
}

bool isWritableFolder(const std::string& folder) {
    const DWORD attributes = GetFileAttributesW(nativePath(folder).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string programFolder() {
    std::wstring name(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length =
            GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
        if (length == 0) return {};
        if (length < name.size()) {
            name.resize(length);
            break;
        }
        name.resize(name.size() * 2);
    }
    return utf8Path(stdfs::path(name).parent_path());
}

int64_t processId() {
    return static_cast<int64_t>(GetCurrentProcessId());
}

std::tm localTime(std::time_t when) {
    std::tm local{};
    localtime_s(&local, &when);
    return local;
}

#else

std::FILE* openFile(const std::string& path, const char* mode) {
    return std::fopen(path.c_str(), mode);
}

int removeFile(const std::string& path) {
    return std::remove(path.c_str()) == 0 ? 0 : errno;
}

int moveOver(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

bool isReadOnlyFile(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return true;
    return access(path.c_str(), W_OK) != 0 && errno == EACCES;
}

void copyPermissions(const std::string& from, const std::string& to) {
    struct stat old {};
    if (stat(from.c_str(), &old) == 0) chmod(to.c_str(), old.st_mode & 07777);
}

bool isWritableFolder(const std::string& folder) {
    return access(folder.c_str(), W_OK) == 0;
}

std::string programFolder() {
    std::error_code code;
    const stdfs::path program = stdfs::read_symlink("/proc/self/exe", code);
    return code ? std::string() : program.parent_path().string();
}

int64_t processId() {
    return static_cast<int64_t>(getpid());
}

std::tm localTime(std::time_t when) {
    std::tm local{};
    localtime_r(&when, &local);
    return local;
}

#endif

}  // namespace velmora::fs
