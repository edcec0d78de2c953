#pragma once

#include <velmora/ConditionList.h>
#include <velmora/GuardAnalysis.h>
#include <velmora/MDLObject.h>
#include <velmora/ModelEdit.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

// The steps of editModel, each a kind of edit: it refuses what it must before it changes
// anything, then changes the model and leaves a step that says what the model now holds.
namespace velmora::editing {

// One edit done. `readBack` looks at a model the edit made (in memory, or read back from the
// file written), fails (error 100) where it doesn't hold what the edit meant, and says what it
// holds, a line each; `notes` say what was done beside that (what forcing it dropped).
struct EditStep {
    std::function<std::vector<std::string>(const MDLObject&)> readBack;
    std::vector<std::string> notes;
};

struct EditSteps {
    std::vector<EditStep> steps;
    // The guard the edited model has: a file written must mean the same.
    std::unique_ptr<GuardAnalysis> meant;
};

void editConditions(MDLObject& model, const EditRequest& request, EditSteps& steps);
void editSeasons(MDLObject& model, const SeasonsEdit& seasons, bool force, EditSteps& steps);
void editShadow(MDLObject& model, const EditRequest& request, EditSteps& steps);
void editLights(MDLObject& model, EditSteps& steps);
void editWinding(MDLObject& model, EditSteps& steps);
void editTextureSizes(MDLObject& model, const EditRequest& request, EditSteps& steps);

// The 1-based position of a texture named (without regard to case) or numbered from 0; 0 when
// the model has none such.
int32_t findTexture(const MDLObject& model, const std::string& nameOrNumber);
// The name of a 0-based texture for people: UTF-8 from Windows-1252.
std::string textureName(const MDLObject& model, int32_t texture);
// Fails the read-back of a file written: what it holds is not what the edit meant.
[[noreturn]] void raiseReadBack(const std::string& detail);

}  // namespace velmora::editing
