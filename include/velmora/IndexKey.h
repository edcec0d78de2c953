#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <utility>

namespace velmora {

// Names an element of a list either by its 1-based position or by its key.
// A default IndexKey and the empty string both mean "none".
class IndexKey {
  public:
    IndexKey() = default;
    template <std::integral Integer>
    IndexKey(Integer position) : kind_(Kind::Position), position_(static_cast<int64_t>(position)) {}
    IndexKey(std::string key) : kind_(Kind::Key), key_(std::move(key)) {}
    IndexKey(const char* key) : kind_(Kind::Key), key_(key ? key : "") {}

    bool isNone() const { return kind_ == Kind::None || (kind_ == Kind::Key && key_.empty()); }
    bool isPosition() const { return kind_ == Kind::Position; }
    bool isKey() const { return kind_ == Kind::Key; }
    // 0 unless the key is a position.
    int64_t position() const { return position_; }
    // Empty unless the key is a key.
    const std::string& key() const { return key_; }

  private:
    // A tag beside both members rather than a std::variant: every member always holds a value,
    // where GCC 12 with the sanitizers at -O2 took the variant's string for uninitialised
    // (-Wmaybe-uninitialized) wherever isNone() was inlined.
    enum class Kind : uint8_t { None, Position, Key };
    Kind kind_ = Kind::None;
    int64_t position_ = 0;
    std::string key_;
};

}  // namespace velmora
