#include "export/JsonText.h"

#include <array>
#include <charconv>
#include <cmath>

namespace velmora::gltf {

namespace {

// A string that dump copies as it stands: printable ASCII without quotes or backslashes.
bool needsNoEscapes(const std::string& value) {
    for (const char c : value) {
        if (c < 0x20 || c > 0x7E || c == '"' || c == '\\') return false;
    }
    return true;
}

}  // namespace

void JsonText::newLine(std::size_t depth) {
    text_.push_back('\n');
    text_.append(depth, ' ');
}

void JsonText::beforeValue() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (counts_.empty()) return;
    if (counts_.back()++ > 0) text_.push_back(',');
    if (pretty_) newLine(counts_.size());
}

void JsonText::key(std::string_view name) {
    if (counts_.back()++ > 0) text_.push_back(',');
    if (pretty_) newLine(counts_.size());
    text_.push_back('"');
    text_.append(name);
    text_.append(pretty_ ? "\": " : "\":");
    afterKey_ = true;
}

void JsonText::open(char bracket) {
    beforeValue();
    text_.push_back(bracket);
    counts_.push_back(0);
}

void JsonText::close(char bracket) {
    const bool empty = counts_.back() == 0;
    counts_.pop_back();
    if (pretty_ && !empty) newLine(counts_.size());
    text_.push_back(bracket);
}

void JsonText::number(int64_t value) {
    beforeValue();
    std::array<char, 24> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    text_.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

// The shortest text that reads back as the same double, formatted by the routine dump uses.
void JsonText::number(double value) {
    beforeValue();
    if (!std::isfinite(value)) {
        text_.append("null");
        return;
    }
    std::array<char, 64> digits{};
    const char* end =
        nlohmann::detail::to_chars(digits.data(), digits.data() + digits.size(), value);
    text_.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

void JsonText::boolean(bool value) {
    beforeValue();
    text_.append(value ? "true" : "false");
}

void JsonText::string(const std::string& value) {
    beforeValue();
    if (!needsNoEscapes(value)) {
        text_.append(nlohmann::json(value).dump());
        return;
    }
    text_.push_back('"');
    text_.append(value);
    text_.push_back('"');
}

void JsonText::floats(const float* values, std::size_t count) {
    beginArray();
    for (std::size_t i = 0; i < count; ++i)
        number(static_cast<double>(values[i]));
    endArray();
}

// dump writes a nested value's later lines as if it stood at depth 0; here it stands deeper.
void JsonText::value(const nlohmann::json& value) {
    beforeValue();
    const std::string dumped = value.dump(pretty_ ? 1 : -1);
    if (!pretty_ || counts_.empty()) {
        text_.append(dumped);
        return;
    }
    for (const char c : dumped) {
        text_.push_back(c);
        if (c == '\n') text_.append(counts_.size(), ' ');
    }
}

}  // namespace velmora::gltf
