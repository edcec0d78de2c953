#include "Edit.h"

#include <map>
#include <set>

namespace tool {

namespace {

// The textures that one seasonal run switches between share a size: the first one of the run
// names the group, every other texture is a group of its own.
void groupTextures(velmora::MDLObject& model) {
    auto& textures = *model.TextureList();
    for (int32_t t = 1; t <= textures.Count(); ++t)
        textures.Item(t)->parent(static_cast<int16_t>(t));
    const auto& commands = *model.BGLCommandList();
    int32_t leader = 0;
    for (int32_t p = 1; p <= commands.Count(); ++p) {
        const auto& command = *commands.Item(p);
        const bool inRun = command.opcode() == velmora::BGL_JUMP_32 ||
                           command.opcode() == velmora::SET_MATERIAL ||
                           (command.opcode() == velmora::IFIN1 && command.param(1) == "906");
        if (!inRun) {
            leader = 0;
            continue;
        }
        if (command.opcode() != velmora::SET_MATERIAL) continue;
        int32_t texture = 0;
        try {
            texture = std::stoi(command.param(1)) + 1;
        } catch (const std::exception&) {
        }
        if (texture < 1 || texture > textures.Count()) continue;
        if (leader == 0) leader = texture;
        textures.Item(texture)->parent(static_cast<int16_t>(leader));
    }
}

// The triangle list that a failing command belongs to, for the message.
std::string listOf(const velmora::BGLCommandList& commands, int32_t position) {
    for (int32_t p = std::min(position, commands.Count()); p >= 1; --p) {
        const auto& command = *commands.Item(p);
        if (command.opcode() == velmora::DRAW_TRI_LIST_BEGIN) {
            std::string vertex = command.param(0);
            for (int i = static_cast<int>(vertex.size()) - 3; i > 0; i -= 3)
                vertex.insert(static_cast<std::size_t>(i), ",");
            return "the triangle list at command " + std::to_string(p) + " starts at vertex " +
                   vertex;
        }
    }
    return "command " + std::to_string(position) + " names a vertex";
}

// Measures the textures of `measured` (1-based positions) from scratch; the others keep their
// sizes. Gives the names of those no triangle draws, which keep their old size.
std::vector<std::string> measure(velmora::MDLObject& model, const std::set<int32_t>& measured) {
    auto& textures = *model.TextureList();
    std::vector<float> old;
    for (const auto& texture : textures)
        old.push_back(texture->size());
    groupTextures(model);
    for (const int32_t t : measured) {
        const int16_t group = textures.Item(t)->parent();
        for (const auto& texture : textures) {
            if (texture->parent() == group) texture->size(0);
        }
    }
    try {
        model.updateTextureSize();
    } catch (const velmora::Error& e) {
        for (std::size_t i = 0; i < old.size(); ++i)
            textures.Item(static_cast<int32_t>(i + 1))->size(old[i]);
        if (e.number() == 6) {
            throw ToolError(
                model.path(),
                "cannot measure texture sizes: " + listOf(*model.BGLCommandList(), e.command()) +
                    ", and sizes are measured with 16-bit vertex numbers, which end "
                    "at 32,767 (error 6: Overflow)",
                "set the sizes with --texture-size TEXTURE=SIZE instead");
        }
        throw fromLibrary(e, model.path());
    }
    std::vector<std::string> undrawn;
    for (int32_t t = 1; t <= textures.Count(); ++t) {
        auto& texture = *textures.Item(t);
        const float before = old[static_cast<std::size_t>(t - 1)];
        if (measured.count(t) == 0) {
            texture.size(before);
        } else if (texture.size() == 0) {
            texture.size(before);
            undrawn.push_back(modelText(texture.bitmap()));
        }
        texture.parent(0);
    }
    return undrawn;
}

}  // namespace

std::vector<std::string> editTextureSizes(velmora::MDLObject& model, const EditOptions& o) {
    std::vector<std::string> done;
    auto& textures = *model.TextureList();
    for (const std::string& setting : o.textureSize) {
        const auto equals = setting.rfind('=');
        const int32_t texture = findTexture(model, setting.substr(0, equals));
        if (equals == std::string::npos || texture == 0) {
            throw ToolError(model.path(), "has no texture '" + setting.substr(0, equals) + "'",
                            "give --texture-size TEXTURE=SIZE with a name or number from "
                            "velmora info");
        }
        float size = 0;
        try {
            size = std::stof(setting.substr(equals + 1));
        } catch (const std::exception&) {
            throw UsageError("bad size in --texture-size '" + setting + "'");
        }
        textures.Item(texture)->size(size);
        done.push_back("size of " + modelText(textures.Item(texture)->bitmap()) + " set to " +
                       setting.substr(equals + 1));
    }
    std::set<int32_t> measured;
    if (o.recalcTextureSizes) {
        for (int32_t t = 1; t <= textures.Count(); ++t)
            measured.insert(t);
    }
    for (const std::string& name : o.recalcTextureSize) {
        const int32_t texture = findTexture(model, name);
        if (texture == 0) throw ToolError(model.path(), "has no texture '" + name + "'");
        measured.insert(texture);
    }
    if (measured.empty()) return done;
    const std::vector<std::string> undrawn = measure(model, measured);
    done.push_back("texture sizes measured from the geometry: " +
                   std::to_string(measured.size() - undrawn.size()) + " of " +
                   std::to_string(measured.size()));
    if (!undrawn.empty()) {
        std::string names;
        for (const std::string& name : undrawn)
            names += (names.empty() ? "" : ", ") + name;
        done.push_back("kept the old size of the textures no triangle draws: " + names);
    }
    return done;
}

}  // namespace tool
