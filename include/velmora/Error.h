#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace velmora {

// Every failure of the library. The library's own errors carry number 100 and a source such as
// "Velmora.MDLObject"; errors of the platform keep their usual numbers with the source "Velmora".
class Error : public std::runtime_error {
  public:
    Error(int32_t number, std::string source, std::string description)
        : std::runtime_error(description),
          number_(number),
          source_(std::move(source)),
          description_(std::move(description)) {}

    int32_t number() const noexcept { return number_; }
    const std::string& source() const noexcept { return source_; }
    const std::string& description() const noexcept { return description_; }

  private:
    int32_t number_;
    std::string source_;
    std::string description_;
};

namespace detail {
// Raises one of the platform's errors (5, 6, 9, 13, ...) with its usual description.
[[noreturn]] void raisePlatformError(int32_t number);
}  // namespace detail

}  // namespace velmora
