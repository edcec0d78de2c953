#include <velmora/BGLCommandList.h>
#include <velmora/ModelEdit.h>
#include <velmora/TextureList.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"

namespace velmora {

namespace {

using editing::EditIntent;

void append(std::vector<std::string>& to, const std::vector<std::string>& lines) {
    to.insert(to.end(), lines.begin(), lines.end());
}

[[noreturn]] void raiseReadBack(const std::string& detail) {
    throw Error(100, editing::kEditSource, "The model written does not read back as edited")
        .setDetail(detail);
}

// One season alone is written without a test and reads back as no season at all; the season
// that runs over the new year reads back with the days the others leave.
bool readsBack(const seasonalTextures& written, const seasonalTextures& read) {
    int active = 0;
    for (const bool a : written.active)
        active += a ? 1 : 0;
    for (std::size_t s = 0; s < 5; ++s) {
        if (active == 1) {
            if (read.active[s]) return false;
            continue;
        }
        if (read.active[s] != written.active[s]) return false;
        if (written.active[s] && written.dayStart[s] <= written.dayEnd[s] &&
            (read.dayStart[s] != written.dayStart[s] || read.dayEnd[s] != written.dayEnd[s])) {
            return false;
        }
    }
    return true;
}

void checkSeasons(MDLObject& written, const EditIntent::Seasons& seasons) {
    TextureList& textures = *written.TextureList();
    for (const auto& [position, variant] : seasons.variants) {
        textures.Item(position)->parent(seasons.group);
        textures.Item(position)->textureVariant(static_cast<textureVariant>(variant));
    }
    if (!readsBack(seasons.record, written.readSeasonalDates(seasons.group))) {
        raiseReadBack("the seasonal run written doesn't read back with the days it was given");
    }
}

std::vector<std::string> editShadowAndLights(MDLObject& model, const EditRequest& request) {
    std::vector<std::string> done;
    if (request.addKillShadow) {
        model.addKillShadow();
        done.push_back("kill shadow added");
    }
    if (request.removeKillShadow) {
        model.removeKillShadow();
        done.push_back("kill shadow removed");
    }
    if (request.fixLights) {
        const int32_t before = model.BGLCommandList()->Count();
        model.fixLights();
        done.push_back("lights freed of the tests in front of them (" +
                       std::to_string(before - model.BGLCommandList()->Count()) +
                       " commands removed)");
    }
    return done;
}

}  // namespace

struct EditResult::Intent : editing::EditIntent {};

EditResult::EditResult() : intent_(std::make_unique<Intent>()) {}
EditResult::~EditResult() = default;
EditResult::EditResult(EditResult&&) noexcept = default;
EditResult& EditResult::operator=(EditResult&&) noexcept = default;

EditResult editModel(MDLObject& model, const EditRequest& request) {
    if (request.addKillShadow && request.removeKillShadow) {
        editing::raiseNotUnderstood("a kill shadow can't be both added and removed");
    }
    EditResult result;
    EditIntent& intent = *result.intent_;
    if (request.changesConditions())
        append(result.said_, editing::editConditions(model, request, intent));
    for (const SeasonsEdit& seasons : request.seasons)
        append(result.said_, editing::editSeasons(model, seasons, intent));
    append(result.said_, editShadowAndLights(model, request));
    if (request.cleanDict) {
        model.cleanDICT();
        result.said_.push_back("DICT emptied");
    }
    if (request.isft) {
        model.setISFT(*request.isft);
        result.said_.push_back("ISFT set");
    }
    append(result.said_, editing::editTextureSizes(model, request));
    if (result.said_.empty()) result.said_.push_back("no edit asked for");
    intent.meant = std::make_unique<GuardAnalysis>(*model.BGLCommandList());
    return result;
}

void EditResult::checkWritten(const std::string& path) const {
    MDLObject written;
    written.readMDL(path);
    const GuardAnalysis guard(*written.BGLCommandList());
    const bool guardHolds = intent_->conditions ? guard.means(*intent_->conditions)
                                                : guard.meansTheSameAs(*intent_->meant);
    if (!guardHolds) {
        raiseReadBack("the model written reads back with the guard \"" + guard.formula() +
                      "\", not \"" + intent_->meant->formula() + "\"");
    }
    for (const EditIntent::Seasons& seasons : intent_->seasons)
        checkSeasons(written, seasons);
}

}  // namespace velmora
