#include "fuzz/Harnesses.h"

#include <velmora/velmora.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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

std::string readWhole(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// True when a list item stands outside the run of items that follows its list header.
bool hasStrayListItem(const velmora::BGLCommandList& list) {
    long expected = 0;
    for (const auto& command : list) {
        const velmora::BGLOpcode opcode = command->opcode();
        if (opcode == velmora::DRAW_TRI_LIST_BEGIN || opcode == velmora::DRAW_LINE_LIST_BEGIN) {
            // Items follow as the decoder counts them: indices over the divisor, halves to even.
            const double divisor = opcode == velmora::DRAW_TRI_LIST_BEGIN ? 3 : 2;
            expected = std::lrint(std::stod(command->param(2)) / divisor);
        } else if (opcode == velmora::DRAW_TRI_LIST_ITEM ||
                   opcode == velmora::DRAW_LINE_LIST_ITEM) {
            if (expected-- <= 0) return true;
        } else {
            expected = 0;
        }
    }
    return false;
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
        // What the list writes, it reads back to the same commands: a second pass is stable.
        // A list item read where an opcode stood is written without its opcode word, so a
        // stream with one needn't read back the same.
        if (hasStrayListItem(list)) return;
        velmora::BGLCommandList again;
        again.readList(encoded);
        if (again.asString() != encoded) std::abort();
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
    // The last byte picks among the variants of each step, so the fuzzer can steer them.
    const uint8_t choice = size > 0 ? data[size - 1] : 0;
    auto run = [](auto&& step) {
        try {
            step();
        } catch (const velmora::Error&) {
        }
    };
    auto& commands = *model.BGLCommandList();
    run([&] { model.updateData(); });
    run([&] {
        // Conditions read and written back, unchanged or with one more test.
        auto conditions = commands.getConditions(-1);
        if (choice & 1) {
            auto test = conditions->Add();
            test->cType(static_cast<velmora::CondType>(choice >> 1 & 3));
            test->var("798");
            test->min(static_cast<int16_t>(choice));
            test->max(static_cast<int16_t>(choice * 3));
            conditions->multiCondition(static_cast<velmora::eMultiCondition>(choice >> 3 & 3));
        }
        commands.addCondition(conditions);
        commands.getConditions(-1);
    });
    run([&] {
        // Seasons read for the first few texture groups (each read walks every command) and
        // written back with new dates.
        int16_t group = 0;
        int reads = 0;
        for (const auto& texture : *model.TextureList()) {
            if (choice & 32) texture->parent(++group);
            if (reads++ < 4) model.readSeasonalDates(texture->parent());
        }
        auto seasons = model.readSeasonalDates(1);
        seasons.active[0] = seasons.active[2] = true;
        seasons.dayStart[0] = static_cast<int16_t>(choice), seasons.dayEnd[0] = 300;
        seasons.Material[2] = static_cast<int16_t>(choice & 3);
        commands.addSeasonalTextures(seasons);
    });
    run([&] { model.fixLights(); });
    run([&] { model.updateTextureSize(); });
    run([&] { choice & 64 ? model.removeKillShadow() : model.addKillShadow(); });
    // An empty scratch folder of this process, for saves and exports.
    const std::string folder = scratchPath("files");
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    run([&] {
        // A saved model loads again and saves to the same bytes.
        const std::string first = folder + "/first.mdl";
        const std::string second = folder + "/second.mdl";
        model.saveMDL(first);
        velmora::MDLObject reloaded;
        reloaded.readMDL(first);
        reloaded.saveMDL(second);
        // A "RIFF" tag met again inside the file replaces the head's form with its payload,
        // and the save writes that payload as it stands: such a file needn't reload the same.
        if (model.section(0).data != "MDL9") return;
        if (readWhole(first) != readWhole(second)) std::abort();
    });
    if (choice & 128) {
        run([&] { model.exportASM(folder + "/model.asm"); });
        run([&] { model.exportFLT(folder + "/model.flt", "bmp", (choice & 16) != 0, choice); });
    }
    std::filesystem::remove_all(folder);
}

void scanCompiledScenery(const uint8_t* data, std::size_t size) {
    const std::string path = scratchPath("scenery.bgl");
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    velmora::BGLObject bgl;
    try {
        if (bgl.isXMLBGL(path)) bgl.readXMLBGL(path);
    } catch (const velmora::Error&) {
    }
    std::remove(path.c_str());
}

}  // namespace fuzzing
