#include "foundation/Errors.h"

#include <cerrno>

namespace velmora {

namespace {

const char* platformDescription(int32_t number) {
    switch (number) {
        case 5:
            return "Invalid procedure call or argument";
        case 6:
            return "Overflow";
        case 9:
            return "Subscript out of range";
        case 11:
            return "Division by zero";
        case 13:
            return "Type mismatch";
        case 53:
            return "File not found";
        case 70:
            return "Permission denied";
        case 75:
            return "Path/File access error";
        case 76:
            return "Path not found";
        case 91:
            return "Object variable or With block variable not set";
        case 457:
            return "This key is already associated with an element of this collection";
        default:
            return "Application-defined or object-defined error";
    }
}

}  // namespace

namespace detail {

void raisePlatformError(int32_t number) {
    throw Error(number, "Velmora", platformDescription(number));
}

}  // namespace detail

void raiseLibraryError(const std::string& source, const std::string& description) {
    throw Error(100, source, description);
}

void raiseFileError(int errnoValue) {
    switch (errnoValue) {
        case ENOENT:
            raisePlatformError(kFileNotFound);
        case ENOTDIR:
            raisePlatformError(kPathNotFound);
        case EACCES:
        case EPERM:
        case EROFS:
        case ETXTBSY:
            raisePlatformError(kPermissionDenied);
        default:
            raisePlatformError(kPathFileAccessError);
    }
}

void raiseFileError(std::error_code code) {
    if (code.category() == std::generic_category() || code.category() == std::system_category()) {
        raiseFileError(code.value());
    }
    raisePlatformError(kPathFileAccessError);
}

}  // namespace velmora
