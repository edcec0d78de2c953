#include "foundation/Errors.h"

#include "foundation/NumberText.h"

#include <cerrno>
#include <cstring>

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

// The system's words for an errno value, to follow a colon: "no such file or directory".
std::string systemMessage(int errnoValue) {
    std::string text = std::strerror(errnoValue);
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z')
        text[0] = static_cast<char>(text[0] + 32);
    return text;
}

}  // namespace

Error::Error(int32_t number, std::string source, std::string description)
    : std::runtime_error(description),
      number_(number),
      source_(std::move(source)),
      description_(std::move(description)) {}

const char* Error::what() const noexcept {
    return message_.empty() ? description_.c_str() : message_.c_str();
}

void Error::compose() {
    std::string place;
    const auto add = [&place](const std::string& part) {
        if (!place.empty()) place += ", ";
        place += part;
    };
    if (!section_.empty()) place = "section \"" + section_ + "\"";
    if (offset_ >= 0) {
        place += place.empty() ? "byte " : " at byte ";
        place += numbers::formatGrouped(offset_);
    }
    if (command_ > 0) add("command " + numbers::formatGrouped(command_));
    if (texture_ > 0) add("texture " + numbers::formatGrouped(texture_));
    if (material_ > 0) add("material " + numbers::formatGrouped(material_));
    if (vertex_ > 0) add("vertex " + numbers::formatGrouped(vertex_));
    if (file_.empty() && place.empty() && detail_.empty()) {
        message_.clear();
        return;
    }
    std::string line = file_;
    for (const std::string* part : {&place, &detail_}) {
        if (part->empty()) continue;
        if (!line.empty()) line += ": ";
        line += *part;
    }
    line += " (error " + numbers::formatInteger(number_) + ": " + description_ + ")";
    message_ = std::move(line);
}

Error& Error::setFile(const std::string& path) {
    if (file_.empty()) file_ = path;
    compose();
    return *this;
}

Error& Error::setSection(const std::string& tag) {
    if (section_.empty()) section_ = tag;
    compose();
    return *this;
}

Error& Error::setOffset(int64_t offset) {
    if (offset_ < 0) offset_ = offset;
    compose();
    return *this;
}

Error& Error::shiftOffset(int64_t start) {
    if (offset_ >= 0) offset_ += start;
    compose();
    return *this;
}

Error& Error::setCommand(int32_t position) {
    if (command_ == 0) command_ = position;
    compose();
    return *this;
}

Error& Error::setTexture(int32_t position) {
    if (texture_ == 0) texture_ = position;
    compose();
    return *this;
}

Error& Error::setMaterial(int32_t position) {
    if (material_ == 0) material_ = position;
    compose();
    return *this;
}

Error& Error::setVertex(int32_t position) {
    if (vertex_ == 0) vertex_ = position;
    compose();
    return *this;
}

Error& Error::setDetail(const std::string& detail) {
    if (detail_.empty()) detail_ = detail;
    compose();
    return *this;
}

Error platformError(int32_t number) {
    return Error(number, "Velmora", platformDescription(number));
}

Error& Error::prependDetail(const std::string& outer) {
    detail_ = detail_.empty() ? outer : outer + ": " + detail_;
    compose();
    return *this;
}

namespace detail {

void raisePlatformError(int32_t number) {
    throw platformError(number);
}

}  // namespace detail

void raisePlatformError(int32_t number, const std::string& detail) {
    throw platformError(number).setDetail(detail);
}

void raiseLibraryError(const std::string& source, const std::string& description) {
    throw Error(100, source, description);
}

void raiseFileError(int errnoValue, const std::string& path) {
    int32_t number = kPathFileAccessError;
    switch (errnoValue) {
        case ENOENT:
            number = kFileNotFound;
            break;
        case ENOTDIR:
            number = kPathNotFound;
            break;
        case EACCES:
        case EPERM:
        case EROFS:
        case ETXTBSY:
            number = kPermissionDenied;
            break;
        default:
            break;
    }
    Error error = platformError(number);
    if (!path.empty()) error.setFile(path);
    if (errnoValue != 0) error.setDetail(systemMessage(errnoValue));
    throw error;
}

void raiseFileError(std::error_code code, const std::string& path) {
    if (code.category() == std::generic_category() || code.category() == std::system_category()) {
        raiseFileError(code.value(), path);
    }
    Error error = platformError(kPathFileAccessError);
    if (!path.empty()) error.setFile(path);
    error.setDetail(code.message());
    throw error;
}

}  // namespace velmora
