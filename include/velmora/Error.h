#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace velmora {

// Every failure of the library. The library's own errors carry number 100 and a source such as
// "Velmora.MDLObject"; errors of the platform keep their usual numbers with the source "Velmora".
class Error : public std::runtime_error {
  public:
    Error(int32_t number, std::string source, std::string description);

    int32_t number() const noexcept { return number_; }
    const std::string& source() const noexcept { return source_; }
    const std::string& description() const noexcept { return description_; }

    // Where the fault lies, as far as the code that raised or passed the error
    // knew it. Empty texts, -1 for the offset and 0 for the positions mean "not known".
    const std::string& file() const noexcept { return file_; }
    // The RIFF tag of the model section being read ("VERT", "BGL ").
    const std::string& section() const noexcept { return section_; }
    // Byte offset where reading stopped: in the file when file() is known, else in the bytes
    // that the failing member was given.
    int64_t offset() const noexcept { return offset_; }
    // 1-based positions in the command list, the texture list, the material list, the vertex list.
    int32_t command() const noexcept { return command_; }
    int32_t texture() const noexcept { return texture_; }
    int32_t material() const noexcept { return material_; }
    int32_t vertex() const noexcept { return vertex_; }
    // What happened, in plain words ("says 4,096 bytes but the file ends at byte 1,204").
    const std::string& detail() const noexcept { return detail_; }

    // The description alone when nothing is known of the place; otherwise one line that a person
    // can act on: `building.mdl: section "VERT" at byte 1,196: says 4,096 bytes but ... (error 9:
    // Subscript out of range)`.
    const char* what() const noexcept override;

    // Filled in on the way out by the code that knows; a field already set is kept, since the
    // code nearest the fault knows best.
    Error& setFile(const std::string& path);
    Error& setSection(const std::string& tag);
    Error& setOffset(int64_t offset);
    // Turns an offset counted in a part of the input into one counted in the whole of it.
    Error& shiftOffset(int64_t start);
    Error& setCommand(int32_t position);
    Error& setTexture(int32_t position);
    Error& setMaterial(int32_t position);
    Error& setVertex(int32_t position);
    Error& setDetail(const std::string& detail);
    // Puts the outer part in front of what the detail says ("model 3: says 4,096 bytes ...").
    Error& prependDetail(const std::string& outer);

  private:
    void compose();

    int32_t number_;
    std::string source_;
    std::string description_;
    std::string file_;
    std::string section_;
    int64_t offset_ = -1;
    int32_t command_ = 0;
    int32_t texture_ = 0;
    int32_t material_ = 0;
    int32_t vertex_ = 0;
    std::string detail_;
    std::string message_;
};

namespace detail {
// Raises one of the platform's errors (5, 6, 9, 13, ...) with its usual description.
[[noreturn]] void raisePlatformError(int32_t number);
}  // namespace detail

}  // namespace velmora
