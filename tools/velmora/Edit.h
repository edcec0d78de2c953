#pragma once

#include "Tool.h"

#include <optional>

namespace tool {

struct EditOptions {
    std::string model;
    std::string output;
    bool force = false;
    bool addKillShadow = false;
    bool removeKillShadow = false;
    bool fixLights = false;
    bool cleanDict = false;
    std::string isft;
    bool setIsft = false;
    // Conditions of the guarded call.
    std::vector<std::string> conditions;
    std::string rotate;
    std::string combine;
    bool clearConditions = false;
    // Seasonal textures: "TEXTURE:SEASON=NAME[@FIRST-LAST],...".
    std::vector<std::string> seasons;
    // Texture sizes.
    bool recalcTextureSizes = false;
    std::vector<std::string> recalcTextureSize;
    std::vector<std::string> textureSize;

    bool changesConditions() const {
        return clearConditions || !conditions.empty() || !rotate.empty() || !combine.empty();
    }
};

// What an edit means to leave behind, checked before the model is written and again on the
// file written.
struct EditIntent {
    // The guard the edited model must have: the new conditions, or the old guard unchanged.
    std::shared_ptr<velmora::ConditionList> conditions;
    // Seasonal runs that must read back: the anchor texture (1-based) and the record written.
    struct Seasons {
        int16_t group = 0;
        velmora::seasonalTextures record;
        std::vector<std::pair<int32_t, int32_t>> variants;  // texture position, season
    };
    std::vector<Seasons> seasons;
};

// Changes the guarded call's conditions as asked. Refuses, unless forced, an edit that would
// drop commands the condition editor doesn't write back, misread the guard that is there, or
// write a test that can never be reached. Gives the lines that say what was done.
std::vector<std::string> editConditions(velmora::MDLObject& model, const EditOptions& options,
                                        EditIntent& intent);
// The conditions of "between VAR MIN MAX" or "mask VAR VALUE"; anything else is a usage error.
std::shared_ptr<velmora::Condition> parseCondition(const std::string& text);

// Writes the seasonal runs asked for.
std::vector<std::string> editSeasons(velmora::MDLObject& model, const std::string& request,
                                     EditIntent& intent);
// Checks the spelling of a --seasons value before the model is loaded (a usage error).
void checkSeasonsSpelling(const std::string& request);

// Sets and measures texture sizes as asked.
std::vector<std::string> editTextureSizes(velmora::MDLObject& model, const EditOptions& options);

// The 1-based position of a texture given by name (without regard to case) or by its 0-based
// number; 0 when there is none.
int32_t findTexture(const velmora::MDLObject& model, const std::string& nameOrNumber);

}  // namespace tool
