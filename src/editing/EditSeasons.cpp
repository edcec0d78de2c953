#include <velmora/BGLCommandList.h>
#include <velmora/SceneryVariables.h>
#include <velmora/TextureList.h>
#include <velmora/Windows1252.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"
#include "foundation/NumberText.h"

#include <algorithm>

namespace velmora::editing {

namespace {

// Seasons without days run from their usual first day to the day before the next season's.
void workOutDays(std::vector<SeasonEdit>& seasons) {
    std::sort(seasons.begin(), seasons.end(), [](const SeasonEdit& a, const SeasonEdit& b) {
        return seasonOf(a.season).firstDay < seasonOf(b.season).firstDay;
    });
    for (std::size_t i = 0; i < seasons.size(); ++i) {
        SeasonEdit& s = seasons[i];
        if (s.firstDay >= 0) continue;
        const SeasonEdit& next = seasons[(i + 1) % seasons.size()];
        s.firstDay = seasonOf(s.season).firstDay;
        s.lastDay = static_cast<int16_t>(seasonOf(next.season).firstDay - 1);
        if (s.lastDay < 1) s.lastDay = 366;
    }
}

// A texture the model doesn't have yet joins its list, like the anchor but for its name.
int32_t textureFor(MDLObject& model, const std::string& name, int32_t anchor) {
    const int32_t found = findTexture(model, name);
    if (found != 0) return found;
    const texture& like = *model.TextureList()->Item(anchor);
    auto added = model.TextureList()->Add();
    added->textureType(like.textureType());
    added->color(std::make_shared<velmora::color>(*like.color()));
    added->size(like.size());
    added->bitmap(name);
    return model.TextureList()->Count();
}

// The place to make seasonal: a SET_MATERIAL must select the anchor texture.
int32_t anchorOf(const MDLObject& model, const std::string& name) {
    const int32_t anchor = findTexture(model, name);
    if (anchor == 0) {
        raiseNotApplicable("the model has no texture '" + name +
                           "'; velmora info lists its textures");
    }
    const std::string number = numbers::formatInteger(anchor - 1);
    const auto& commands = *model.BGLCommandList();
    const bool drawn = std::any_of(commands.begin(), commands.end(), [&](const auto& c) {
        return c->opcode() == SET_MATERIAL && c->param(1) == number;
    });
    if (!drawn) {
        raiseNotApplicable("no SET_MATERIAL selects texture '" + name +
                           "', so there is no place to make seasonal");
    }
    return anchor;
}

}  // namespace

int32_t findTexture(const MDLObject& model, const std::string& nameOrNumber) {
    const auto lower = [](std::string text) {
        for (char& c : text) {
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        }
        return text;
    };
    const std::string wanted = lower(nameOrNumber);
    int32_t position = 0;
    for (const auto& entry : *model.TextureList()) {
        ++position;
        if (lower(entry->bitmap()) == wanted || lower(readable(entry->bitmap())) == wanted) {
            return position;
        }
    }
    int32_t number = 0;
    if (numbers::parseCanonicalInteger(nameOrNumber, number) && number >= 0 &&
        number < model.TextureList()->Count()) {
        return number + 1;
    }
    return 0;
}

std::string readable(const std::string& bytes) {
    return utf8FromWindows1252(bytes);
}

std::vector<std::string> editSeasons(MDLObject& model, const SeasonsEdit& request,
                                     EditIntent& intent) {
    const int32_t anchor = anchorOf(model, request.texture);
    std::vector<SeasonEdit> seasons = request.seasons;
    // Summer shows the anchor texture, on the days it is given or the days it gets.
    if (std::none_of(seasons.begin(), seasons.end(),
                     [](const SeasonEdit& s) { return s.season == summer; })) {
        seasons.push_back({summer, "", -1, -1});
    }
    workOutDays(seasons);

    EditIntent::Seasons written;
    written.group = static_cast<int16_t>(anchor);
    std::string summary;
    for (const SeasonEdit& s : seasons) {
        const int32_t position =
            s.texture.empty() || s.season == summer ? anchor : textureFor(model, s.texture, anchor);
        const auto v = static_cast<std::size_t>(s.season);
        written.record.Material[v] = static_cast<int16_t>(position - 1);
        written.record.dayStart[v] = s.firstDay;
        written.record.dayEnd[v] = s.lastDay;
        written.record.active[v] = true;
        written.variants.emplace_back(position, s.season);
        summary += (summary.empty() ? "" : ", ") + std::string("days ") +
                   std::to_string(s.firstDay) + "-" + std::to_string(s.lastDay) + " " +
                   readable(model.TextureList()->Item(position)->bitmap());
    }
    model.BGLCommandList()->addSeasonalTextures(written.record);
    intent.seasons.push_back(written);
    return {"seasons of " + request.texture + ": " + summary};
}

}  // namespace velmora::editing
