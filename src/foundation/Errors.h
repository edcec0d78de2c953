#pragma once

#include <velmora/Error.h>

#include <cstdint>
#include <memory>
#include <string>
#include <system_error>

namespace velmora {

// The platform's error numbers that the library raises.
enum PlatformError : int32_t {
    kInvalidProcedureCall = 5,
    kOverflow = 6,
    kSubscriptOutOfRange = 9,
    kDivisionByZero = 11,
    kTypeMismatch = 13,
    kFileNotFound = 53,
    kPermissionDenied = 70,
    kPathFileAccessError = 75,
    kPathNotFound = 76,
    kObjectNotSet = 91,
    kDuplicateKey = 457,
};

using detail::raisePlatformError;

// One of the platform's errors with its usual description, to be given its place and thrown:
// `throw platformError(9).setCommand(n).setDetail(...)`.
Error platformError(int32_t number);

// A platform error that says what happened.
[[noreturn]] void raisePlatformError(int32_t number, const std::string& detail);

// Raises one of the library's own errors: number 100 with the given source and description.
[[noreturn]] void raiseLibraryError(const std::string& source, const std::string& description);

// Raises the platform error that matches a failure of the operating system on a file, naming
// the file when `path` is given.
[[noreturn]] void raiseFileError(std::error_code code, const std::string& path = "");
[[noreturn]] void raiseFileError(int errnoValue, const std::string& path = "");

// The object behind a shared reference that a member needs; error 91 when there is none.
template <class T>
T& required(const std::shared_ptr<T>& object) {
    if (!object) raisePlatformError(kObjectNotSet);
    return *object;
}

}  // namespace velmora
