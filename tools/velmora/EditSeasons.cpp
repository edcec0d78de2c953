#include "Edit.h"

#include <algorithm>
#include <array>
#include <sstream>

namespace tool {

namespace {

struct SeasonName {
    const char* name;
    int variant;   // textureVariant
    int firstDay;  // where the season starts when no days are given
};

constexpr std::array<SeasonName, 6> kSeasons{{{"heavywinter", velmora::heavywinter, 1},
                                              {"spring", velmora::spring, 60},
                                              {"summer", velmora::summer, 152},
                                              {"fall", velmora::autumn, 244},
                                              {"autumn", velmora::autumn, 244},
                                              {"winter", velmora::winter, 335}}};

struct SeasonItem {
    int variant = 0;
    int firstDay = 0;
    std::string texture;  // empty: the anchor's own texture
    int dayStart = -1;    // -1: worked out
    int dayEnd = -1;
};

struct SeasonsRequest {
    std::string anchor;
    std::vector<SeasonItem> items;
};

int parseDay(const std::string& text, const std::string& request) {
    try {
        std::size_t used = 0;
        const int day = std::stoi(text, &used);
        if (used == text.size() && day >= 0 && day <= 366) return day;
    } catch (const std::exception&) {
    }
    throw UsageError("bad day '" + text + "' in --seasons '" + request + "': give 0 to 366");
}

// "TEXTURE:SEASON=NAME[@FIRST-LAST],..."
SeasonsRequest parseSeasons(const std::string& request) {
    const auto colon = request.find(':');
    if (colon == std::string::npos || colon == 0 || colon + 1 == request.size()) {
        throw UsageError("bad --seasons '" + request +
                         "': give TEXTURE:SEASON=NAME[@FIRST-LAST],... such as "
                         "wall.bmp:winter=wall_winter.bmp");
    }
    SeasonsRequest out{request.substr(0, colon), {}};
    std::istringstream items(request.substr(colon + 1));
    for (std::string item; std::getline(items, item, ',');) {
        SeasonItem season;
        std::string days;
        const auto at = item.find('@');
        if (at != std::string::npos) {
            days = item.substr(at + 1);
            item = item.substr(0, at);
        }
        const auto equals = item.find('=');
        const std::string name = item.substr(0, equals);
        if (equals != std::string::npos) season.texture = item.substr(equals + 1);
        const auto known = std::find_if(kSeasons.begin(), kSeasons.end(),
                                        [&](const SeasonName& s) { return name == s.name; });
        if (known == kSeasons.end()) {
            throw UsageError("unknown season '" + name + "' in --seasons '" + request +
                             "': give spring, summer, fall, winter or heavywinter");
        }
        season.variant = known->variant;
        season.firstDay = known->firstDay;
        if (!days.empty()) {
            const auto dash = days.find('-');
            if (dash == std::string::npos) {
                throw UsageError("bad days '" + days + "' in --seasons '" + request +
                                 "': give FIRST-LAST, such as 60-150");
            }
            season.dayStart = parseDay(days.substr(0, dash), request);
            season.dayEnd = parseDay(days.substr(dash + 1), request);
        }
        if (season.variant == velmora::summer && !season.texture.empty() &&
            season.texture != out.anchor) {
            throw UsageError("summer shows the texture before the colon in --seasons '" + request +
                             "'; name the summer texture there");
        }
        if (std::any_of(out.items.begin(), out.items.end(),
                        [&](const SeasonItem& s) { return s.variant == season.variant; })) {
            throw UsageError("season '" + name + "' given twice in --seasons '" + request + "'");
        }
        if (season.texture.size() > 64) {
            throw UsageError("texture name '" + season.texture + "' is longer than 64 bytes");
        }
        out.items.push_back(season);
    }
    // Summer shows the anchor texture, on the days it is given or the days it gets.
    if (std::none_of(out.items.begin(), out.items.end(),
                     [](const SeasonItem& s) { return s.variant == velmora::summer; })) {
        out.items.push_back({velmora::summer, 152, "", -1, -1});
    }
    return out;
}

// Seasons without days run from their usual first day to the day before the next season.
void workOutDays(std::vector<SeasonItem>& items) {
    std::sort(items.begin(), items.end(),
              [](const SeasonItem& a, const SeasonItem& b) { return a.firstDay < b.firstDay; });
    for (std::size_t i = 0; i < items.size(); ++i) {
        SeasonItem& s = items[i];
        if (s.dayStart >= 0) continue;
        const SeasonItem& next = items[(i + 1) % items.size()];
        s.dayStart = s.firstDay;
        s.dayEnd = next.firstDay - 1;
        if (s.dayEnd < 1) s.dayEnd = 366;
    }
}

int32_t textureFor(velmora::MDLObject& model, const std::string& name, int32_t anchor) {
    const int32_t found = findTexture(model, name);
    if (found != 0) return found;
    // A texture the model doesn't have yet joins its list, like the anchor but for its name.
    const auto& like = *model.TextureList()->Item(anchor);
    auto added = model.TextureList()->Add();
    added->textureType(like.textureType());
    added->color(std::make_shared<velmora::color>(*like.color()));
    added->size(like.size());
    added->bitmap(name);
    return model.TextureList()->Count();
}

}  // namespace

void checkSeasonsSpelling(const std::string& request) {
    parseSeasons(request);
}

int32_t findTexture(const velmora::MDLObject& model, const std::string& nameOrNumber) {
    int32_t position = 0;
    for (const auto& texture : *model.TextureList()) {
        ++position;
        if (lowercase(texture->bitmap()) == lowercase(nameOrNumber)) return position;
    }
    try {
        std::size_t used = 0;
        const int number = std::stoi(nameOrNumber, &used);
        if (used == nameOrNumber.size() && number >= 0 && number < model.TextureList()->Count()) {
            return number + 1;
        }
    } catch (const std::exception&) {
    }
    return 0;
}

std::vector<std::string> editSeasons(velmora::MDLObject& model, const std::string& request,
                                     EditIntent& intent) {
    SeasonsRequest seasons = parseSeasons(request);
    const int32_t anchor = findTexture(model, seasons.anchor);
    if (anchor == 0) {
        throw ToolError(model.path(), "has no texture '" + seasons.anchor + "'",
                        "velmora info lists its textures");
    }
    const std::string anchorNumber = std::to_string(anchor - 1);
    const bool drawn = std::any_of(
        model.BGLCommandList()->begin(), model.BGLCommandList()->end(), [&](const auto& c) {
            return c->opcode() == velmora::SET_MATERIAL && c->param(1) == anchorNumber;
        });
    if (!drawn) {
        throw ToolError(model.path(), "no SET_MATERIAL selects texture '" + seasons.anchor +
                                          "', so there is no place to make seasonal");
    }
    workOutDays(seasons.items);

    EditIntent::Seasons written;
    written.group = static_cast<int16_t>(anchor);
    std::string summary;
    for (const SeasonItem& s : seasons.items) {
        const int32_t position = s.texture.empty() || s.variant == velmora::summer
                                     ? anchor
                                     : textureFor(model, s.texture, anchor);
        const auto v = static_cast<std::size_t>(s.variant);
        written.record.Material[v] = static_cast<int16_t>(position - 1);
        written.record.dayStart[v] = static_cast<int16_t>(s.dayStart);
        written.record.dayEnd[v] = static_cast<int16_t>(s.dayEnd);
        written.record.active[v] = true;
        written.variants.emplace_back(position, s.variant);
        summary += (summary.empty() ? "" : ", ") + std::string("days ") +
                   std::to_string(s.dayStart) + "-" + std::to_string(s.dayEnd) + " " +
                   modelText(model.TextureList()->Item(position)->bitmap());
    }
    model.BGLCommandList()->addSeasonalTextures(written.record);
    intent.seasons.push_back(written);
    return {"seasons of " + seasons.anchor + ": " + summary};
}

}  // namespace tool
