#include "fuzz/Harnesses.h"

#include <velmora/velmora.h>

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace fuzzing {

namespace {

std::string_view asBytes(const uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// A scratch path of this process for the members that take a path.
std::string scratchPath(const char* name) {
    return (std::filesystem::temp_directory_path() /
            ("velmora-fuzz-" + std::to_string(getpid()) + "-" + name))
        .string();
}

}  // namespace

void loadModel(const uint8_t* data, std::size_t size) {
    velmora::MDLObject model;
    try {
        model.readMDLBytes(asBytes(data, size));
        model.updateData();
    } catch (const velmora::Error&) {
    }
}

void decodeStream(const uint8_t* data, std::size_t size) {
    velmora::BGLCommandList list;
    try {
        list.readList(std::string(asBytes(data, size)));
        const std::string encoded = list.asString();
        velmora::BGLCommandList again;
        again.readList(encoded);
    } catch (const velmora::Error&) {
    }
}

void editChain(const uint8_t* data, std::size_t size) {
    velmora::MDLObject model;
    try {
        model.readMDLBytes(asBytes(data, size));
    } catch (const velmora::Error&) {
        return;
    }
    auto run = [](auto&& step) {
        try {
            step();
        } catch (const velmora::Error&) {
        }
    };
    auto& commands = *model.BGLCommandList();
    run([&] {
        auto conditions = commands.getConditions(-1);
        commands.addCondition(conditions);
    });
    run([&] {
        int16_t group = 0;
        for (const auto& texture : *model.TextureList()) texture->parent(++group);
        auto seasons = model.readSeasonalDates(1);
        seasons.active[0] = seasons.active[2] = true;
        seasons.dayStart[0] = 60, seasons.dayEnd[0] = 300;
        seasons.Material[2] = 1;
        commands.addSeasonalTextures(seasons);
    });
    run([&] { model.fixLights(); });
    run([&] { model.updateTextureSize(); });
    run([&] {
        model.addKillShadow();
        const std::string path = scratchPath("model.mdl");
        model.saveMDL(path);
        velmora::MDLObject reloaded;
        reloaded.readMDL(path);
        std::remove(path.c_str());
    });
}

void scanCompiledScenery(const uint8_t* data, std::size_t size) {
    const std::string path = scratchPath("scenery.bgl");
    if (FILE* file = std::fopen(path.c_str(), "wb")) {
        std::fwrite(data, 1, size, file);
        std::fclose(file);
    }
    velmora::BGLObject bgl;
    try {
        if (bgl.isXMLBGL(path)) bgl.readXMLBGL(path);
    } catch (const velmora::Error&) {
    }
    std::remove(path.c_str());
}

}  // namespace fuzzing
