#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <string>

// The few calls that differ between POSIX and Windows, behind one set of functions. Paths are
// UTF-8 everywhere in the library; on Windows they reach the system through its wide API, so
// any folder or file name works whatever the user's code page.
namespace velmora::fs {

// A path from UTF-8 text, and back.
std::filesystem::path nativePath(const std::string& utf8);
std::string utf8Path(const std::filesystem::path& path);

// std::fopen for a UTF-8 path; nullptr with errno set on failure.
std::FILE* openFile(const std::string& path, const char* mode);
// Removes a file; 0 or the errno of the failure.
int removeFile(const std::string& path);
// Moves `from` over `to`, replacing it when it exists; 0 or the errno of the failure.
int moveOver(const std::string& from, const std::string& to);

// True when the file exists and may not be written: no write permission at all (for everyone,
// root included) on POSIX, the read-only attribute on Windows.
bool isReadOnlyFile(const std::string& path);
// Gives `to` the permissions of `from`, where the system has such permissions.
void copyPermissions(const std::string& from, const std::string& to);
// True when files can be made in the folder.
bool isWritableFolder(const std::string& folder);

// The folder of the running program; empty when the system doesn't say.
std::string programFolder();
int64_t processId();
std::tm localTime(std::time_t when);

}  // namespace velmora::fs
