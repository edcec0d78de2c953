#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <variant>

namespace velmora {

// Names an element of a list either by its 1-based position or by its key.
// A default IndexKey and the empty string both mean "none".
class IndexKey {
  public:
    IndexKey() = default;
    template <std::integral Integer>
    IndexKey(Integer position) : value_(static_cast<int64_t>(position)) {}
    IndexKey(std::string key) : value_(std::move(key)) {}
    IndexKey(const char* key) : value_(std::string(key ? key : "")) {}

    bool isNone() const {
        return std::holds_alternative<std::monostate>(value_) ||
               (isKey() && std::get<std::string>(value_).empty());
    }
    bool isPosition() const { return std::holds_alternative<int64_t>(value_); }
    bool isKey() const { return std::holds_alternative<std::string>(value_); }
    int64_t position() const { return isPosition() ? std::get<int64_t>(value_) : 0; }
    const std::string& key() const {
        static const std::string empty;
        return isKey() ? std::get<std::string>(value_) : empty;
    }

  private:
    std::variant<std::monostate, int64_t, std::string> value_;
};

}  // namespace velmora
