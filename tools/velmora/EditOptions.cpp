#include "Tool.h"

#include <functional>
#include <map>

namespace tool {

namespace {

bool flagOf(const std::string& name, const json& value) {
    if (!value.is_boolean()) throw UsageError("\"" + name + "\" takes true or false");
    return value.get<bool>();
}

std::string textOfValue(const std::string& name, const json& value) {
    if (!value.is_string()) throw UsageError("\"" + name + "\" takes a text");
    return value.get<std::string>();
}

// A repeatable option: one text or a list of them.
std::vector<std::string> textsOf(const std::string& name, const json& value) {
    if (value.is_string()) return {value.get<std::string>()};
    if (!value.is_array()) throw UsageError("\"" + name + "\" takes a text or a list of texts");
    std::vector<std::string> texts;
    for (const json& item : value)
        texts.push_back(textOfValue(name, item));
    return texts;
}

std::string oneOf(const std::string& name, const json& value,
                  const std::vector<std::string>& words) {
    const std::string text = textOfValue(name, value);
    std::string said;
    for (const std::string& word : words) {
        if (word == text) return text;
        said += (said.empty() ? "" : ", ") + word;
    }
    throw UsageError("bad \"" + name + "\" '" + text + "': give " + said);
}

using Reader = std::function<void(const json& value, EditTexts& texts)>;

std::map<std::string, Reader> readers() {
    const auto flag = [](bool velmora::EditRequest::*member, const std::string& name) {
        return Reader([member, name](const json& value, EditTexts& t) {
            t.request.*member = flagOf(name, value);
        });
    };
    return {
        {"force", flag(&velmora::EditRequest::force, "force")},
        {"add-kill-shadow", flag(&velmora::EditRequest::addKillShadow, "add-kill-shadow")},
        {"remove-kill-shadow", flag(&velmora::EditRequest::removeKillShadow, "remove-kill-shadow")},
        {"fix-lights", flag(&velmora::EditRequest::fixLights, "fix-lights")},
        {"fix-winding", flag(&velmora::EditRequest::fixWinding, "fix-winding")},
        {"clean-dict", flag(&velmora::EditRequest::cleanDict, "clean-dict")},
        {"clear-conditions", flag(&velmora::EditRequest::clearConditions, "clear-conditions")},
        {"recalc-texture-sizes",
         flag(&velmora::EditRequest::measureAllTextureSizes, "recalc-texture-sizes")},
        {"set-isft",
         [](const json& v, EditTexts& t) { t.request.isft = textOfValue("set-isft", v); }},
        {"rotate",
         [](const json& v, EditTexts& t) {
             t.rotate = oneOf("rotate", v, {"user", "wind"});
         }},
        {"combine",
         [](const json& v, EditTexts& t) {
             t.combine = oneOf("combine", v, {"and", "or", "not", "nor"});
         }},
        {"condition", [](const json& v, EditTexts& t) { t.conditions = textsOf("condition", v); }},
        {"seasons", [](const json& v, EditTexts& t) { t.seasons = textsOf("seasons", v); }},
        {"texture-size",
         [](const json& v, EditTexts& t) { t.textureSizes = textsOf("texture-size", v); }},
        {"recalc-texture-size",
         [](const json& v, EditTexts& t) {
             t.request.measureTextureSizes = textsOf("recalc-texture-size", v);
         }},
    };
}

}  // namespace

velmora::EditRequest editRequestOfOptions(const json& options, bool* save) {
    if (!options.is_object()) throw UsageError("the edit options are not a JSON object");
    static const std::map<std::string, Reader> known = readers();
    EditTexts texts;
    if (save != nullptr) *save = true;
    for (const auto& [name, value] : options.items()) {
        if (save != nullptr && name == "save") {
            *save = flagOf(name, value);
            continue;
        }
        const auto reader = known.find(name);
        if (reader == known.end()) throw UsageError("unknown option \"" + name + "\"");
        reader->second(value, texts);
    }
    return editRequestOf(texts);
}

velmora::EditRequest editRequestOfBody(const std::string& body, bool& save) {
    const json options = json::parse(body, nullptr, false);
    if (options.is_discarded() || !options.is_object()) {
        throw UsageError("the body is not a JSON object of edit options");
    }
    return editRequestOfOptions(options, &save);
}

velmora::EditRequest editRequestOf(const EditTexts& o) {
    velmora::EditRequest request = o.request;
    const auto parsed = [](const std::string& option, const std::string& text, auto parse) {
        try {
            return parse(text);
        } catch (const velmora::Error& e) {
            throw UsageError("bad " + option + " '" + text + "': " + e.detail());
        }
    };
    for (const auto& text : o.conditions)
        request.conditions.push_back(parsed("--condition", text, velmora::parseCondition));
    for (const auto& text : o.seasons)
        request.seasons.push_back(parsed("--seasons", text, velmora::SeasonsEdit::parse));
    for (const auto& text : o.textureSizes)
        request.textureSizes.push_back(
            parsed("--texture-size", text, velmora::TextureSizeEdit::parse));
    if (!o.combine.empty()) request.combine = velmora::combinationNamed(o.combine);
    if (!o.rotate.empty())
        request.rotate = o.rotate == "user" ? velmora::RotUser : velmora::RotWind;
    if (request.addKillShadow && request.removeKillShadow) {
        throw UsageError("--add-kill-shadow and --remove-kill-shadow exclude each other");
    }
    return request;
}

ToolError editRefusal(const velmora::EditRefused& refused, const std::string& path) {
    return ToolError(path, refused.detail(), "use --force " + refused.whenForced());
}

std::string saidOf(const ToolError& error) {
    return (error.file().empty() ? "" : error.file() + ": ") + error.what() +
           (error.hint().empty() ? "" : "; " + error.hint());
}

}  // namespace tool
