#pragma once

#include <velmora/ConditionList.h>
#include <velmora/GuardAnalysis.h>
#include <velmora/MDLObject.h>
#include <velmora/ModelEdit.h>
#include <velmora/seasonalTextures.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

// The steps of editModel, each a kind of edit: it refuses what it must before it changes
// anything, then changes the model and says what it did.
namespace velmora::editing {

// What a model written after the edit must read back as.
struct EditIntent {
    // The guard the edited model must mean; nullptr when it must mean what `meant` means.
    std::shared_ptr<ConditionList> conditions;
    std::unique_ptr<GuardAnalysis> meant;
    // Each seasonal run written: its group (the anchor texture's position), the record written,
    // and the textures of the run with their seasons.
    struct Seasons {
        int16_t group = 0;
        seasonalTextures record;
        std::vector<std::pair<int32_t, int32_t>> variants;  // texture position, season
    };
    std::vector<Seasons> seasons;
};

std::vector<std::string> editConditions(MDLObject& model, const EditRequest& request,
                                        EditIntent& intent);
std::vector<std::string> editSeasons(MDLObject& model, const SeasonsEdit& seasons,
                                     EditIntent& intent);
std::vector<std::string> editTextureSizes(MDLObject& model, const EditRequest& request);

// The 1-based position of a texture named (without regard to case) or numbered from 0; 0 when
// the model has none such.
int32_t findTexture(const MDLObject& model, const std::string& nameOrNumber);
// A text from the model for people: UTF-8 from Windows-1252.
std::string readable(const std::string& bytes);

}  // namespace velmora::editing
