#pragma once

#include <velmora/Error.h>

#include <cstdint>
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

// Raises one of the library's own errors: number 100 with the given source and description.
[[noreturn]] void raiseLibraryError(const std::string& source, const std::string& description);

// Raises the platform error that matches a failure of the operating system on a file.
[[noreturn]] void raiseFileError(std::error_code code);
[[noreturn]] void raiseFileError(int errnoValue);

}  // namespace velmora
