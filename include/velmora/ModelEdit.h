#pragma once

#include <velmora/Condition.h>
#include <velmora/ConditionList.h>
#include <velmora/Error.h>
#include <velmora/texture.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

class MDLObject;

// One season of a seasonal edit: the texture it shows and, when given, its days.
struct SeasonEdit {
    textureVariant season = summer;
    std::string texture;    // empty: the texture the edit is for
    int16_t firstDay = -1;  // -1 for both: the season's usual days
    int16_t lastDay = -1;
};

// Seasonal textures for the texture drawn today (which stays the summer texture): each season
// named shows its texture on its days.
struct SeasonsEdit {
    std::string texture;
    std::vector<SeasonEdit> seasons;

    // "TEXTURE:SEASON=NAME[@FIRST-LAST],...", such as "wall.bmp:winter=wall_snow.bmp@335-59";
    // seasons spring, summer, fall (or autumn), winter, heavywinter. A text that says something
    // else is error 5, its detail saying what is wrong.
    static SeasonsEdit parse(const std::string& text);
};

// A texture's size set by hand: "TEXTURE=SIZE", the texture by name or 0-based number.
struct TextureSizeEdit {
    std::string texture;
    float size = 0;
    static TextureSizeEdit parse(const std::string& text);
};

// Changes to a model as a person asks for them. editModel checks them against the model first:
// an edit that would lose commands or tests, write a guard that means something else or can
// never hold, or drop what the model has, is refused unless forced.
struct EditRequest {
    // The guarded call's conditions: the model's own (unless cleared), then these, combined as
    // `combine` says (as the model has them when not given), turned as `rotate` says.
    bool clearConditions = false;
    std::vector<Condition> conditions;
    std::optional<eMultiCondition> combine;
    std::optional<CondType> rotate;  // RotUser or RotWind

    std::vector<SeasonsEdit> seasons;

    bool addKillShadow = false;
    bool removeKillShadow = false;
    bool fixLights = false;
    // Turns every reversed triangle (see FrontFace.h) round by swapping its last two corners.
    bool fixWinding = false;
    bool cleanDict = false;
    std::optional<std::string> isft;

    bool measureAllTextureSizes = false;
    std::vector<std::string> measureTextureSizes;  // names or 0-based numbers
    std::vector<TextureSizeEdit> textureSizes;

    bool force = false;

    bool changesConditions() const;
    bool empty() const;
};

// Turns each reversed triangle of the model round in place, swapping the last two corners of its
// DRAW_TRI_LIST_ITEM, so its front faces the way of its vertex normals; the file keeps its size.
// The positions of the items turned.
std::vector<int32_t> fixWinding(MDLObject& model);

// "between VAR MIN MAX" or "mask VAR VALUE", with whole numbers from -32768 to 32767; anything
// else is error 5, its detail saying what is wrong.
Condition parseCondition(const std::string& text);
// "and", "or", "not", "nor"; error 5 for another word.
eMultiCondition combinationNamed(const std::string& name);
const char* combinationName(eMultiCondition combination);

// An edit that was refused, with what it would have lost or got wrong, before anything of the
// model was changed. Number 100, source "Velmora.ModelEdit".
class EditRefused : public Error {
  public:
    EditRefused(std::vector<std::string> reasons, std::string note, std::string whenForced);

    // What the edit would do wrong, a line each ("command 1 (IFIN2 ...) would be deleted").
    const std::vector<std::string>& reasons() const { return reasons_; }
    // Why, or another way to the same end; "" when there is nothing to add.
    const std::string& note() const { return note_; }
    // What forcing it does: "to change the conditions anyway".
    const std::string& whenForced() const { return whenForced_; }

  private:
    std::vector<std::string> reasons_;
    std::string note_;
    std::string whenForced_;
};

// What an edit did, a line each, and what a model written from it must read back as.
class EditResult {
  public:
    EditResult();
    ~EditResult();
    EditResult(EditResult&&) noexcept;
    EditResult& operator=(EditResult&&) noexcept;

    // What the edited model holds where the edit changed it, and what forcing it dropped.
    const std::vector<std::string>& said() const { return said_; }
    // Reads the model file at `path`, checks that it holds what the edit meant (its guard, its
    // seasonal runs, its shadow, lights, sizes and texts), and says what it holds as said()
    // does; where it differs, error 100 (source "Velmora.ModelEdit") whose detail says what
    // reads back.
    std::vector<std::string> checkWritten(const std::string& path) const;

  private:
    friend EditResult editModel(MDLObject& model, const EditRequest& request);
    struct Intent;

    std::vector<std::string> said_;
    std::unique_ptr<Intent> intent_;
};

// Applies `request` to a loaded model in the order of its fields. Refuses (EditRefused) what
// would lose or misstate something unless `request.force`; a texture the request names that the
// model lacks is error 5 (its detail naming it); the members the edits use fail as they do.
EditResult editModel(MDLObject& model, const EditRequest& request);

}  // namespace velmora
