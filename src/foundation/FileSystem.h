#pragma once

#include <cstdint>
#include <string>

// The file-system operations the library uses, with failures turned into the platform's
// errors (53 file not found, 70 permission denied, 75 path/file access error, 76 path not found).
namespace velmora::fs {

bool fileExists(const std::string& path);
// Removes a file; with `force` also a read-only one. A read-only file without `force` is error 70.
void deleteFile(const std::string& path, bool force);
// The size of a file in bytes, as a 32-bit value.
int32_t fileSize(const std::string& path);

// Reads a whole file into memory; error 53 when it is missing.
std::string readWholeFile(const std::string& path);
// The first `count` bytes of a file (fewer when it is shorter).
std::string readFileStart(const std::string& path, std::size_t count);

// Writes `bytes` to a new file beside `path` and moves it into place only when it is whole,
// so a failure leaves the old file as it was and nothing else behind. A read-only target is
// error 70, a missing folder error 76.
void replaceFile(const std::string& path, const std::string& bytes);

// Joins a folder and a name with "/".
std::string joinPath(const std::string& folder, const std::string& name);
// Joins a name that comes out of a model to a folder without ever leaving that folder:
// folder parts and ".." of the name are dropped.
std::string joinInside(const std::string& folder, const std::string& name);

}  // namespace velmora::fs

namespace velmora {
// Raises the error for a failed open of `path`: 76 when its folder is missing, else by errno.
[[noreturn]] void raiseOpenError(int errnoValue, const std::string& path);
}  // namespace velmora
