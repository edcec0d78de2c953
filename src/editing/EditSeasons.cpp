#include <velmora/BGLCommandList.h>
#include <velmora/SceneryVariables.h>
#include <velmora/StreamAnalysis.h>
#include <velmora/TextureList.h>

#include "bgl/SeasonalBlockSearch.h"
#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"
#include "editing/SeasonDays.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <map>
#include <set>

namespace velmora::editing {

namespace {

// A season asked for, its texture resolved: a texture the model lacks gets the number it will
// have once added.
struct NamedSeason {
    textureVariant season = summer;
    int32_t texture = 0;
    bool hasDays = false;
    DaySpan days;
};

struct Block {
    int32_t first = 0;
    int32_t last = 0;
};

bool selects(const BGLCommand& command, int32_t texture) {
    return command.opcode() == SET_MATERIAL && command.param(1) == numbers::formatInteger(texture);
}

// The blocks that a rewrite of `texture`'s runs replaces: around each SET_MATERIAL of it, the
// day tests, SET_MATERIALs and jumps next to it, as findSeasonalBlock finds them.
std::vector<Block> blocksOf(const BGLCommandList& list, int32_t texture) {
    std::vector<Block> blocks;
    const int32_t count = list.Count();
    for (int32_t p = 1; p <= count; ++p) {
        if (!selects(*list.Item(p), texture) || (!blocks.empty() && p <= blocks.back().last))
            continue;
        Block block{p, p};
        while (block.first > 1 && detail::belongsToSeasonalBlock(*list.Item(block.first - 1)))
            --block.first;
        while (block.last < count && detail::belongsToSeasonalBlock(*list.Item(block.last + 1)))
            ++block.last;
        blocks.push_back(block);
    }
    return blocks;
}

// What the model draws where it draws `texture`: its first seasonal run that shows it, or the
// texture on every day.
DayMap showsToday(const MDLObject& model, int32_t texture) {
    const StreamAnalysis analysis(*model.BGLCommandList());
    for (const SeasonalRun& run : analysis.seasonalRuns()) {
        for (const SeasonalVariant& variant : run.variants) {
            if (variant.texture == texture) return daysOf(run);
        }
    }
    return everyDay(texture);
}

int32_t anchorOf(const MDLObject& model, const std::string& name) {
    const int32_t anchor = findTexture(model, name);
    if (anchor == 0) {
        raiseNotApplicable("the model has no texture '" + name +
                           "'; velmora info lists its textures");
    }
    if (blocksOf(*model.BGLCommandList(), anchor - 1).empty()) {
        raiseNotApplicable("no SET_MATERIAL selects texture '" + name +
                           "', so there is no place to make seasonal");
    }
    return anchor - 1;
}

std::vector<NamedSeason> resolve(const MDLObject& model, const SeasonsEdit& request, int32_t anchor,
                                 std::vector<std::string>& newNames) {
    std::vector<NamedSeason> named;
    for (const SeasonEdit& s : request.seasons) {
        NamedSeason season{s.season, anchor, s.firstDay >= 0, {s.firstDay, s.lastDay}};
        if (!s.texture.empty() && s.season != summer) {
            season.texture = findTexture(model, s.texture) - 1;
            if (season.texture < 0) {
                const auto known = std::find(newNames.begin(), newNames.end(), s.texture);
                const auto index = static_cast<int32_t>(known - newNames.begin());
                if (known == newNames.end()) newNames.push_back(s.texture);
                season.texture = model.TextureList()->Count() + index;
            }
        }
        named.push_back(season);
    }
    return named;
}

// A season without days runs from its usual first day to the day before the next season's.
DaySpan usualDays(textureVariant season, const std::set<textureVariant>& present) {
    const int32_t first = velmora::seasonOf(season).firstDay;
    int32_t next = first + kDaysInYear;
    for (const textureVariant other : present) {
        int32_t start = velmora::seasonOf(other).firstDay;
        if (start <= first) start += kDaysInYear;
        next = std::min(next, start);
    }
    const int32_t last = next - 1 > kDaysInYear ? next - 1 - kDaysInYear : next - 1;
    return {first, last == 0 ? kDaysInYear : last};
}

// The year after the edit: each season named takes over its own days (those it has today,
// unless new ones are given) with its texture; days no season claims keep what they show.
DayMap merge(const DayMap& today, int32_t anchor, const std::vector<NamedSeason>& named) {
    const std::vector<DaySegment> segments = segmentsOf(today);
    const std::vector<textureVariant> seasons = seasonsOf(segments, anchor);
    std::set<textureVariant> present(seasons.begin(), seasons.end());
    for (const NamedSeason& s : named)
        present.insert(s.season);
    DayMap merged = today;
    for (const NamedSeason& s : named) {
        std::vector<DaySpan> own;
        for (std::size_t i = 0; i < segments.size(); ++i) {
            if (seasons[i] == s.season) own.push_back(segments[i].days);
        }
        if (s.hasDays) {
            for (const DaySpan& days : own)
                paint(merged, days, anchor);
            paint(merged, s.days, s.texture);
        } else if (!own.empty()) {
            for (const DaySpan& days : own)
                paint(merged, days, s.texture);
        } else {
            paint(merged, usualDays(s.season, present), s.texture);
        }
    }
    return merged;
}

// What the rewrite would lose: seasons shown today that no day shows after it (unless named),
// and the other commands of the blocks it replaces.
std::vector<std::string> lossesOf(const MDLObject& model, const DayMap& today, const DayMap& merged,
                                  const std::vector<NamedSeason>& named, int32_t anchor) {
    const auto shown = [](const DayMap& map, int32_t texture) {
        return std::find(map.begin() + 1, map.end(), texture) != map.end();
    };
    std::vector<std::string> losses;
    const std::vector<DaySegment> segments = segmentsOf(today);
    const std::vector<textureVariant> seasons = seasonsOf(segments, anchor);
    for (std::size_t i = 0; i < segments.size(); ++i) {
        const DaySegment& segment = segments[i];
        const textureVariant season = seasons[i];
        const bool replaced = std::any_of(named.begin(), named.end(),
                                          [&](const NamedSeason& s) { return s.season == season; });
        if (shown(merged, segment.texture) || replaced || segment.texture < 0) continue;
        losses.push_back(std::string(velmora::seasonOf(season).name) + " (" +
                         textureName(model, segment.texture) + ", " + daysText(segment.days) +
                         ") would be dropped");
    }
    const BGLCommandList& list = *model.BGLCommandList();
    for (const Block& block : blocksOf(list, anchor)) {
        for (int32_t p = block.first; p <= block.last; ++p) {
            const BGLCommand& command = *list.Item(p);
            const std::string at = "command " + std::to_string(p) + " (";
            if (command.opcode() == BGL_JUMP_32) {
                const int32_t to = command.jumpDest(0);
                if (to < block.first || to > block.last + 1)
                    losses.push_back(at + "BGL_JUMP_32 to " + std::to_string(to) +
                                     ") would be deleted");
            } else if (command.opcode() == SET_MATERIAL) {
                int32_t texture = -1;
                numbers::parseCanonicalInteger(command.param(1), texture);
                if (!shown(merged, texture) && !shown(today, texture))
                    losses.push_back(
                        at + "SET_MATERIAL of " +
                        (texture < 0 ? std::string("no texture") : textureName(model, texture)) +
                        ") would be deleted");
            }
        }
    }
    return losses;
}

// The run that shows `merged`: the anchor's first stretch in slot 0, which is how the run is
// found, the others after it; the stretch over the new year is the run's default.
seasonalTextures recordOf(const DayMap& merged, int32_t anchor) {
    std::vector<DaySegment> segments = segmentsOf(merged);
    const auto first = std::find_if(segments.begin(), segments.end(),
                                    [anchor](const DaySegment& s) { return s.texture == anchor; });
    std::rotate(segments.begin(), first, first + 1);
    seasonalTextures record;
    for (std::size_t slot = 0; slot < segments.size(); ++slot) {
        record.Material[slot] = static_cast<int16_t>(segments[slot].texture);
        record.dayStart[slot] = static_cast<int16_t>(segments[slot].days.first);
        record.dayEnd[slot] = static_cast<int16_t>(segments[slot].days.last);
        record.active[slot] = true;
    }
    return record;
}

void checkWritable(const BGLCommandList& list, const DayMap& merged, int32_t anchor,
                   const std::string& name) {
    for (const Block& block : blocksOf(list, anchor)) {
        if (block.first == 1 || block.last == list.Count()) {
            raiseNotApplicable("the commands around texture " + name + " run to the " +
                               (block.first == 1 ? "first" : "last") +
                               " command of the stream, where a seasonal run can't be written");
        }
    }
    const std::vector<DaySegment> segments = segmentsOf(merged);
    if (std::none_of(segments.begin(), segments.end(),
                     [anchor](const DaySegment& s) { return s.texture == anchor; })) {
        raiseNotApplicable("the texture drawn today, " + name +
                           ", would show on no day; give the seasons days that leave it some");
    }
    if (segments.size() > 5) {
        raiseNotApplicable("the seasons asked for split the year into " +
                           std::to_string(segments.size()) +
                           " parts, and a seasonal run shows at most five textures");
    }
}

// A texture the model doesn't have yet joins its list, like the anchor but for its name.
void addTextures(MDLObject& model, const std::vector<std::string>& names, int32_t anchor) {
    const texture& like = *model.TextureList()->Item(anchor + 1);
    for (const std::string& name : names) {
        auto added = model.TextureList()->Add();
        added->textureType(like.textureType());
        added->color(std::make_shared<velmora::color>(*like.color()));
        added->size(like.size());
        added->bitmap(name);
    }
}

// The material each texture's SET_MATERIAL names in the blocks, the anchor's for the rest.
std::map<int32_t, std::string> materialsOf(const BGLCommandList& list, int32_t anchor) {
    std::map<int32_t, std::string> materials;
    for (const Block& block : blocksOf(list, anchor)) {
        for (int32_t p = block.first; p <= block.last; ++p) {
            const BGLCommand& command = *list.Item(p);
            int32_t texture = -1;
            if (command.opcode() == SET_MATERIAL &&
                numbers::parseCanonicalInteger(command.param(1), texture)) {
                materials.emplace(texture, command.param(0));
            }
        }
    }
    return materials;
}

// The run written names material 0; each SET_MATERIAL gets the material its texture had.
void keepMaterials(BGLCommandList& list, int32_t anchor,
                   const std::map<int32_t, std::string>& materials) {
    const std::string anchorMaterial = materials.at(anchor);
    for (const Block& block : blocksOf(list, anchor)) {
        for (int32_t p = block.first; p <= block.last; ++p) {
            BGLCommand& command = *list.Item(p);
            int32_t texture = -1;
            if (command.opcode() != SET_MATERIAL ||
                !numbers::parseCanonicalInteger(command.param(1), texture))
                continue;
            const auto found = materials.find(texture);
            command.param(0, found != materials.end() ? found->second : anchorMaterial);
        }
    }
}

EditStep readBackOf(int32_t anchor, const DayMap& merged) {
    EditStep step;
    step.readBack = [anchor, merged](const MDLObject& model) -> std::vector<std::string> {
        const DayMap shows = showsToday(model, anchor);
        if (shows != merged) raiseReadBack("the seasonal run written doesn't show the days asked");
        std::string said;
        for (const DaySegment& segment : segmentsOf(shows)) {
            said += (said.empty() ? "" : ", ") + daysText(segment.days) + " " +
                    textureName(model, segment.texture);
        }
        return {"seasons of " + textureName(model, anchor) + ": " + said};
    };
    return step;
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
        if (lower(entry->bitmap()) == wanted || lower(textureName(model, position - 1)) == wanted) {
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

void editSeasons(MDLObject& model, const SeasonsEdit& request, bool force, EditSteps& steps) {
    const int32_t anchor = anchorOf(model, request.texture);
    std::vector<std::string> newNames;
    const std::vector<NamedSeason> named = resolve(model, request, anchor, newNames);
    const DayMap today = showsToday(model, anchor);
    const DayMap merged = merge(today, anchor, named);
    checkWritable(*model.BGLCommandList(), merged, anchor, textureName(model, anchor));
    const std::vector<std::string> losses = lossesOf(model, today, merged, named, anchor);
    if (!losses.empty() && !force) {
        throw EditRefused(losses, "name the seasons to keep, with their days",
                          "to write the seasons anyway");
    }

    BGLCommandList& list = *model.BGLCommandList();
    const std::map<int32_t, std::string> materials = materialsOf(list, anchor);
    addTextures(model, newNames, anchor);
    list.addSeasonalTextures(recordOf(merged, anchor));
    keepMaterials(list, anchor, materials);
    EditStep step = readBackOf(anchor, merged);
    for (const std::string& loss : losses)
        step.notes.push_back("forced: " + loss);
    steps.steps.push_back(std::move(step));
}

}  // namespace velmora::editing
