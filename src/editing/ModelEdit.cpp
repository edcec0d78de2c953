#include <velmora/BGLCommandList.h>
#include <velmora/ModelEdit.h>
#include <velmora/TextureList.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"
#include "foundation/Errors.h"
#include "model/SectionIndex.h"

#include <array>

namespace velmora {

namespace {

using editing::EditStep;
using editing::EditSteps;

// What the edits may change of a model, kept so that a refused or failed edit leaves the model
// as it was: the commands and textures (the same objects, with their values), the section
// sizes, and the sections the edits write.
class ModelSnapshot {
  public:
    explicit ModelSnapshot(MDLObject& model) : model_(model) {
        for (const auto& command : *model.BGLCommandList())
            commands_.emplace_back(command, *command);
        for (const auto& entry : *model.TextureList())
            textures_.emplace_back(entry, *entry);
        for (int i = 0; i < sections::kTableSlots; ++i)
            sizes_[static_cast<std::size_t>(i)] = model.section(i).size;
        for (const int i : {sections::ISFT, sections::DICT, sections::SHAD})
            data_[static_cast<std::size_t>(i)] = model.section(i).data;
    }

    void restore() {
        std::vector<std::shared_ptr<BGLCommand>> commands;
        for (auto& [object, value] : commands_) {
            *object = value;
            commands.push_back(object);
        }
        model_.BGLCommandList()->commands().assign(std::move(commands));
        TextureList& textures = *model_.TextureList();
        while (textures.Count() > static_cast<int32_t>(textures_.size()))
            textures.Remove(textures.Count());
        for (auto& [object, value] : textures_)
            *object = value;
        for (int i = 0; i < sections::kTableSlots; ++i)
            model_.section(i).size = sizes_[static_cast<std::size_t>(i)];
        for (const int i : {sections::ISFT, sections::DICT, sections::SHAD})
            model_.section(i).data = data_[static_cast<std::size_t>(i)];
    }

  private:
    MDLObject& model_;
    std::vector<std::pair<std::shared_ptr<BGLCommand>, BGLCommand>> commands_;
    std::vector<std::pair<std::shared_ptr<texture>, texture>> textures_;
    std::array<int32_t, sections::kTableSlots> sizes_{};
    std::array<std::string, sections::kTableSlots> data_{};
};

// A step that finds what `held` gives of the edited model in what it reads back.
EditStep holdingStep(const MDLObject& model, std::string (*held)(const MDLObject&),
                     std::string said, std::string otherwise) {
    EditStep step;
    step.readBack = [held, value = held(model), said, otherwise](const MDLObject& written) {
        if (held(written) != value) editing::raiseReadBack(otherwise);
        return std::vector<std::string>{said};
    };
    return step;
}

std::string dictionaryOf(const MDLObject& model) {
    const RIFFSection& dict = model.section(sections::DICT);
    return dict.size > 0 ? dict.data : std::string();
}

std::string isftOf(const MDLObject& model) {
    return model.getISFT();
}

void applyEdits(MDLObject& model, const EditRequest& request, EditSteps& steps) {
    if (request.changesConditions()) editing::editConditions(model, request, steps);
    for (const SeasonsEdit& seasons : request.seasons)
        editing::editSeasons(model, seasons, request.force, steps);
    editing::editShadow(model, request, steps);
    if (request.fixLights) editing::editLights(model, steps);
    if (request.fixWinding) editing::editWinding(model, steps);
    if (request.cleanDict) {
        model.cleanDICT();
        steps.steps.push_back(holdingStep(model, dictionaryOf, "DICT emptied",
                                          "the model written holds another DICT section"));
    }
    if (request.isft) {
        model.setISFT(*request.isft);
        steps.steps.push_back(
            holdingStep(model, isftOf, "ISFT set", "the model written holds another ISFT text"));
    }
    editing::editTextureSizes(model, request, steps);
}

std::vector<std::string> describe(const MDLObject& model, const EditSteps& steps) {
    std::vector<std::string> lines;
    for (const EditStep& step : steps.steps) {
        const std::vector<std::string> state = step.readBack(model);
        lines.insert(lines.end(), state.begin(), state.end());
        lines.insert(lines.end(), step.notes.begin(), step.notes.end());
    }
    if (lines.empty()) lines.push_back("no edit asked for");
    return lines;
}

}  // namespace

struct EditResult::Intent : EditSteps {};

EditResult::EditResult() : intent_(std::make_unique<Intent>()) {}
EditResult::~EditResult() = default;
EditResult::EditResult(EditResult&&) noexcept = default;
EditResult& EditResult::operator=(EditResult&&) noexcept = default;

EditResult editModel(MDLObject& model, const EditRequest& request) {
    if (request.addKillShadow && request.removeKillShadow) {
        editing::raiseNotUnderstood("a kill shadow can't be both added and removed");
    }
    if (!model.BGLCommandList() || !model.TextureList()) raisePlatformError(kObjectNotSet);
    EditResult result;
    ModelSnapshot snapshot(model);
    try {
        applyEdits(model, request, *result.intent_);
        result.intent_->meant = std::make_unique<GuardAnalysis>(*model.BGLCommandList());
        result.said_ = describe(model, *result.intent_);
    } catch (...) {
        snapshot.restore();
        throw;
    }
    return result;
}

std::vector<std::string> EditResult::checkWritten(const std::string& path) const {
    MDLObject written;
    written.readMDL(path);
    const GuardAnalysis guard(*written.BGLCommandList());
    if (!guard.meansTheSameAs(*intent_->meant)) {
        editing::raiseReadBack("the model written reads back with the guard \"" + guard.formula() +
                               "\", not \"" + intent_->meant->formula() + "\"");
    }
    return describe(written, *intent_);
}

}  // namespace velmora
