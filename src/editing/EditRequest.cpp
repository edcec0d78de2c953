#include <velmora/ModelEdit.h>
#include <velmora/SceneryVariables.h>

#include "editing/EditErrors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace velmora {

namespace {

// A whole number from `low` to `high` written as text; nothing for any other text.
std::optional<int16_t> wholeNumber(const std::string& text, int32_t low, int32_t high) {
    try {
        const double value = numbers::parseNumber(text);
        if (value == std::floor(value) && value >= low && value <= high) {
            return static_cast<int16_t>(value);
        }
    } catch (const Error&) {
    }
    return std::nullopt;
}

int16_t conditionNumber(const std::string& text, const std::string& what, const std::string& in) {
    if (const auto value = wholeNumber(text, -32768, 32767)) return *value;
    editing::raiseNotUnderstood("the " + what + " '" + text + "' in '" + in +
                                "' is no whole number from -32768 to 32767");
}

int16_t dayNumber(const std::string& text, const std::string& in) {
    if (const auto day = wholeNumber(text, 0, 366)) return *day;
    editing::raiseNotUnderstood("bad day '" + text + "' in '" + in + "': give 0 to 366");
}

SeasonEdit seasonItem(std::string item, const std::string& text) {
    SeasonEdit season;
    std::string days;
    const auto at = item.find('@');
    if (at != std::string::npos) {
        days = item.substr(at + 1);
        item = item.substr(0, at);
    }
    const auto equals = item.find('=');
    const std::string name = item.substr(0, equals);
    if (equals != std::string::npos) season.texture = item.substr(equals + 1);
    const std::optional<textureVariant> known = seasonNamed(name);
    if (!known) {
        editing::raiseNotUnderstood("unknown season '" + name + "' in '" + text +
                                    "': give spring, summer, fall, winter or heavywinter");
    }
    season.season = *known;
    if (!days.empty()) {
        const auto dash = days.find('-');
        if (dash == std::string::npos) {
            editing::raiseNotUnderstood("bad days '" + days + "' in '" + text +
                                        "': give FIRST-LAST, such as 60-150");
        }
        season.firstDay = dayNumber(days.substr(0, dash), text);
        season.lastDay = dayNumber(days.substr(dash + 1), text);
    }
    if (season.texture.size() > 64) {
        editing::raiseNotUnderstood("texture name '" + season.texture +
                                    "' is longer than 64 bytes");
    }
    return season;
}

}  // namespace

bool EditRequest::changesConditions() const {
    return clearConditions || !conditions.empty() || combine.has_value() || rotate.has_value();
}

bool EditRequest::empty() const {
    return !changesConditions() && seasons.empty() && !addKillShadow && !removeKillShadow &&
           !fixLights && !fixWinding && !cleanDict && !isft && !measureAllTextureSizes &&
           measureTextureSizes.empty() && textureSizes.empty();
}

Condition parseCondition(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    Condition condition;
    if (words.size() == 4 && words[0] == "between") {
        condition.cType(Between);
        condition.var(numbers::formatInteger(conditionNumber(words[1], "variable", text)));
        condition.min(conditionNumber(words[2], "minimum", text));
        condition.max(conditionNumber(words[3], "maximum", text));
        if (condition.min() > condition.max()) {
            editing::raiseNotUnderstood("the minimum " + words[2] + " is above the maximum " +
                                        words[3] + ", so the test could never hold");
        }
    } else if (words.size() == 3 && words[0] == "mask") {
        condition.cType(mask);
        condition.var(numbers::formatInteger(conditionNumber(words[1], "variable", text)));
        condition.min(conditionNumber(words[2], "mask value", text));
    } else {
        editing::raiseNotUnderstood("'" + text +
                                    "' is no condition: give \"between VAR MIN MAX\" or "
                                    "\"mask VAR VALUE\"");
    }
    return condition;
}

eMultiCondition combinationNamed(const std::string& name) {
    if (name == "and") return mAND;
    if (name == "or") return mOR;
    if (name == "not") return mNOT;
    if (name == "nor") return mNOR;
    editing::raiseNotUnderstood("'" + name + "' is no combination: give and, or, not or nor");
}

const char* combinationName(eMultiCondition combination) {
    switch (combination) {
        case mOR:
            return "or";
        case mNOT:
            return "not";
        case mNOR:
            return "nor";
        default:
            return "and";
    }
}

SeasonsEdit SeasonsEdit::parse(const std::string& text) {
    const auto colon = text.find(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == text.size()) {
        editing::raiseNotUnderstood("'" + text +
                                    "' names no seasons: give TEXTURE:SEASON=NAME[@FIRST-LAST],"
                                    "... such as wall.bmp:winter=wall_winter.bmp");
    }
    SeasonsEdit out{text.substr(0, colon), {}};
    std::istringstream items(text.substr(colon + 1));
    for (std::string item; std::getline(items, item, ',');) {
        SeasonEdit season = seasonItem(item, text);
        if (season.season == summer && !season.texture.empty() && season.texture != out.texture) {
            editing::raiseNotUnderstood("summer shows the texture before the colon in '" + text +
                                        "'; name the summer texture there");
        }
        if (std::any_of(out.seasons.begin(), out.seasons.end(),
                        [&](const SeasonEdit& s) { return s.season == season.season; })) {
            editing::raiseNotUnderstood("season '" + std::string(seasonOf(season.season).name) +
                                        "' given twice in '" + text + "'");
        }
        out.seasons.push_back(season);
    }
    return out;
}

TextureSizeEdit TextureSizeEdit::parse(const std::string& text) {
    const auto equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) {
        editing::raiseNotUnderstood("'" + text + "' sets no size: give TEXTURE=SIZE");
    }
    try {
        const double size = numbers::parseNumber(text.substr(equals + 1));
        if (std::isfinite(size) && size >= 0) {
            return {text.substr(0, equals), numbers::toSingle(size)};
        }
    } catch (const Error&) {
    }
    editing::raiseNotUnderstood("bad size in '" + text + "': give a number of 0 or more");
}

}  // namespace velmora
