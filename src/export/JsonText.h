#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace velmora::gltf {

// Writes JSON text straight from the values, as nlohmann::json's dump writes a document of them:
// compact, or pretty with one space an indent; keys as given, so a writer that wants dump's
// order gives them sorted. For the large, regular parts of a document, which are not worth a
// tree of their own; anything else goes in as a nlohmann::json.
class JsonText {
  public:
    explicit JsonText(bool pretty) : pretty_(pretty) {}

    void beginObject() { open('{'); }
    void endObject() { close('}'); }
    void beginArray() { open('['); }
    void endArray() { close(']'); }
    // The key of the next value; plain ASCII that needs no escapes.
    void key(std::string_view name);

    void number(int64_t value);
    void number(double value);
    void boolean(bool value);
    void string(const std::string& value);
    void floats(const float* values, std::size_t count);
    // A value of any shape, as dump writes it at this depth.
    void value(const nlohmann::json& value);

    const std::string& text() const { return text_; }
    std::string take() { return std::move(text_); }

  private:
    void open(char bracket);
    void close(char bracket);
    // Before a value: the separator and the indent an array's element needs.
    void beforeValue();
    void newLine(std::size_t depth);

    bool pretty_;
    bool afterKey_ = false;
    std::vector<int64_t> counts_;  // per open object or array, the entries written so far
    std::string text_;
};

}  // namespace velmora::gltf
