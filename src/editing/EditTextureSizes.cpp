#include <velmora/BGLCommandList.h>
#include <velmora/StreamAnalysis.h>
#include <velmora/TextureList.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <set>

namespace velmora::editing {

namespace {

// The triangle list that a failing command belongs to, for the message.
std::string listOf(const BGLCommandList& commands, int32_t position) {
    for (int32_t p = std::min(position, commands.Count()); p >= 1; --p) {
        const auto& command = *commands.Item(p);
        if (command.opcode() != DRAW_TRI_LIST_BEGIN) continue;
        int32_t vertex = 0;
        const std::string base = command.param(0);
        return "the triangle list at command " + std::to_string(p) + " starts at vertex " +
               (numbers::parseCanonicalInteger(base, vertex) ? numbers::formatGrouped(vertex)
                                                             : base);
    }
    return "command " + std::to_string(position) + " names a vertex";
}

void measure(MDLObject& model, const std::set<int32_t>& measured) {
    TextureList& textures = *model.TextureList();
    // updateTextureSize works on the groups that `parent` names: the seasonal runs' textures.
    const std::vector<int32_t> groups =
        StreamAnalysis(*model.BGLCommandList()).textureGroups(textures.Count());
    for (int32_t t = 1; t <= textures.Count(); ++t)
        textures.Item(t)->parent(static_cast<int16_t>(groups[static_cast<std::size_t>(t - 1)] + 1));
    for (const int32_t t : measured) {
        const int16_t group = textures.Item(t)->parent();
        for (const auto& entry : textures) {
            if (entry->parent() == group) entry->size(0);
        }
    }
    try {
        model.updateTextureSize();
    } catch (const Error& e) {
        if (e.number() != 6) throw;
        Error overflow = platformError(kOverflow);
        overflow.setCommand(e.command());
        throw overflow.setDetail(
            "cannot measure texture sizes: " + listOf(*model.BGLCommandList(), e.command()) +
            ", and sizes are measured with 16-bit vertex numbers, which end at 32,767; set the "
            "sizes by hand instead");
    }
}

// Measures the textures of `measured` (1-based positions) from scratch; the others keep their
// sizes, and so do those no triangle draws, whose names it gives.
std::vector<std::string> measureSizes(MDLObject& model, const std::set<int32_t>& measured) {
    TextureList& textures = *model.TextureList();
    std::vector<float> old;
    for (const auto& entry : textures)
        old.push_back(entry->size());
    const auto restore = [&] {
        for (int32_t t = 1; t <= textures.Count(); ++t) {
            textures.Item(t)->size(old[static_cast<std::size_t>(t - 1)]);
            textures.Item(t)->parent(0);
        }
    };
    try {
        measure(model, measured);
    } catch (...) {
        restore();
        throw;
    }
    std::vector<std::string> undrawn;
    for (int32_t t = 1; t <= textures.Count(); ++t) {
        texture& entry = *textures.Item(t);
        const float before = old[static_cast<std::size_t>(t - 1)];
        if (measured.count(t) == 0) {
            entry.size(before);
        } else if (entry.size() == 0) {
            entry.size(before);
            undrawn.push_back(textureName(model, t - 1));
        }
        entry.parent(0);
    }
    return undrawn;
}

int32_t requiredTexture(const MDLObject& model, const std::string& name) {
    const int32_t texture = findTexture(model, name);
    if (texture == 0) {
        raiseNotApplicable("the model has no texture '" + name +
                           "'; velmora info lists its textures");
    }
    return texture;
}

// A step that finds the sizes the edit left in what it reads back, and says `said`.
EditStep sizesStep(const MDLObject& model, std::vector<std::string> said) {
    std::vector<float> sizes;
    for (const auto& entry : *model.TextureList())
        sizes.push_back(entry->size());
    EditStep step;
    step.readBack = [sizes, said](const MDLObject& written) {
        std::vector<float> read;
        for (const auto& entry : *written.TextureList())
            read.push_back(entry->size());
        if (read != sizes) raiseReadBack("the model written holds other texture sizes");
        return said;
    };
    return step;
}

}  // namespace

void editTextureSizes(MDLObject& model, const EditRequest& request, EditSteps& steps) {
    std::vector<std::string> done;
    TextureList& textures = *model.TextureList();
    for (const TextureSizeEdit& setting : request.textureSizes) {
        const int32_t texture = requiredTexture(model, setting.texture);
        textures.Item(texture)->size(setting.size);
        done.push_back("size of " + textureName(model, texture - 1) + " set to " +
                       numbers::formatSingle(setting.size));
    }
    std::set<int32_t> measured;
    for (int32_t t = 1; request.measureAllTextureSizes && t <= textures.Count(); ++t)
        measured.insert(t);
    for (const std::string& name : request.measureTextureSizes)
        measured.insert(requiredTexture(model, name));
    if (!measured.empty()) {
        const std::vector<std::string> undrawn = measureSizes(model, measured);
        done.push_back("texture sizes measured from the geometry: " +
                       std::to_string(measured.size() - undrawn.size()) + " of " +
                       std::to_string(measured.size()));
        if (!undrawn.empty()) {
            std::string names;
            for (const std::string& name : undrawn)
                names += (names.empty() ? "" : ", ") + name;
            done.push_back("kept the old size of the textures no triangle draws: " + names);
        }
    }
    if (!done.empty()) steps.steps.push_back(sizesStep(model, std::move(done)));
}

}  // namespace velmora::editing
