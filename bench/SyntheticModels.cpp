#include "SyntheticModels.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <random>
#include <utility>
#include <vector>

#include <unistd.h>

namespace velmora::bench {

std::string le32(int64_t value) {
    const auto v = static_cast<uint32_t>(value);
    std::string out(4, '\0');
    for (std::size_t i = 0; i < 4; ++i)
        out[i] = static_cast<char>(v >> (8 * i));
    return out;
}

namespace {

std::shared_ptr<BGLCommand> addCommand(BGLCommandList& list, BGLOpcode opcode,
                                       std::initializer_list<int> params) {
    auto command = std::make_shared<BGLCommand>();
    command->opcode(opcode);
    int16_t slot = 0;
    for (int value : params)
        command->param(slot++, std::to_string(value));
    list.Add(command);
    return command;
}

std::string section(const std::string& tag, const std::string& payload) {
    return tag + le32(static_cast<int64_t>(payload.size())) + payload;
}

// A jump whose destination is chosen once the stream is complete.
struct PendingJump {
    std::shared_ptr<BGLCommand> command;
    int32_t position;  // of the jumping command
    int32_t reach;     // farthest destination ahead; 0 for anywhere up to the end
};

}  // namespace

ModelShape largeShape() {
    return {};
}

ModelShape saveableShape() {
    ModelShape shape;
    shape.commands = 30000;
    return shape;
}

ModelShape smallShape() {
    return {300, 500, 8, 8, 5};
}

ModelShape editShape(int commands) {
    ModelShape shape;
    shape.commands = commands;
    return shape;
}

seasonalTextures streamSeasons() {
    seasonalTextures seasons;
    seasons.Material = {0, 1, 2, 0, 0};
    seasons.dayStart = {60, 151, 301, 0, 0};
    seasons.dayEnd = {150, 300, 59, 0, 0};
    seasons.active = {true, true, true, false, false};
    return seasons;
}

void buildStream(BGLCommandList& list, const ModelShape& shape, uint32_t seed) {
    std::mt19937 random(seed);
    const auto pick = [&](int low, int high) {
        return std::uniform_int_distribution<int>(low, high)(random);
    };
    std::vector<PendingJump> jumps;
    std::vector<std::pair<std::shared_ptr<BGLCommand>, int32_t>> fixed;  // command, destination

    // The conditions of the model: two range tests and a mask test in front of the call, each
    // leading past it; the call leads to the body.
    for (auto test :
         {addCommand(list, IFIN1, {0, 1000, 0, 100}), addCommand(list, IFIN1, {0, 1004, 1, 5}),
          addCommand(list, IFMSK, {0, 300, 1})}) {
        fixed.emplace_back(test, 5);
    }
    fixed.emplace_back(addCommand(list, BGL_CALL_32, {0}), 6);
    addCommand(list, BGL_END, {});

    const int firstTexture = shape.textures > 3 ? 3 : 0;
    const int lightEvery = shape.lights > 0 ? std::max(1, shape.commands / (shape.lights + 1)) : 0;
    int nextLight = lightEvery;
    int lights = 0;
    while (list.Count() < shape.commands - 1) {
        const int position = list.Count() + 1;
        if (lights < shape.lights && position >= nextLight) {
            // A light behind a mask test (on a low variable for every other light, which
            // fixLights removes) and a variable base override.
            auto test = addCommand(list, IFMSK, {0, lights % 2 == 0 ? 100 : 300, 1});
            fixed.emplace_back(test, position + 3);
            addCommand(list, VAR_BASE_OVERRIDE, {64});
            addCommand(list, BGL_LIGHT, {1, 0, 0, 0, 255, 0, 0, 0, 1, 0, 0});
            ++lights;
            nextLight += lightEvery;
            continue;
        }
        const int kind = pick(0, 99);
        if (kind < 50) {
            const int texture = pick(0, 9) == 0 ? -1 : pick(firstTexture, shape.textures - 1);
            addCommand(list, SET_MATERIAL, {pick(0, shape.materials - 1), texture});
            const int items = pick(1, 8);
            addCommand(list, DRAW_TRI_LIST_BEGIN,
                       {pick(0, std::max(0, shape.vertices - 64)), 64, items * 3});
            for (int i = 0; i < items; ++i)
                addCommand(list, DRAW_TRI_LIST_ITEM, {pick(0, 63), pick(0, 63), pick(0, 63)});
        } else if (kind < 65) {
            jumps.push_back({addCommand(list, BGL_JUMP_32, {0}), position, shape.jumpReach});
        } else if (kind < 80) {
            jumps.push_back(
                {addCommand(list, IFIN1, {0, pick(100, 899), 0, pick(1, 50)}), position, 400});
        } else if (kind < 88) {
            jumps.push_back({addCommand(list, IFMSK, {0, pick(201, 899), 1}), position, 400});
        } else if (kind < 90 && shape.textures >= 3) {
            // A seasonal run between two depth biases, which keep its neighbours out of it.
            addCommand(list, BGL_ZBIAS, {0});
            const int run = position + 1;
            const int behind = run + 7;
            fixed.emplace_back(addCommand(list, IFIN1, {0, 906, 60, 150}), run + 3);
            addCommand(list, SET_MATERIAL, {0, 0});
            fixed.emplace_back(addCommand(list, BGL_JUMP_32, {0}), behind);
            fixed.emplace_back(addCommand(list, IFIN1, {0, 906, 151, 300}), run + 6);
            addCommand(list, SET_MATERIAL, {0, 1});
            fixed.emplace_back(addCommand(list, BGL_JUMP_32, {0}), behind);
            addCommand(list, SET_MATERIAL, {0, 2});
            addCommand(list, BGL_ZBIAS, {0});
        } else {
            addCommand(list, BGL_ZBIAS, {pick(0, 4)});
        }
    }
    addCommand(list, BGL_RETURN, {});

    const int last = list.Count();
    for (auto& [command, destination] : fixed)
        command->jumpDest(0, destination);
    for (const PendingJump& jump : jumps) {
        const int farthest = jump.reach == 0 ? last : std::min(last, jump.position + jump.reach);
        jump.command->jumpDest(0, pick(std::min(last, jump.position + 1), farthest));
    }
}

std::string streamBytes(const ModelShape& shape, uint32_t seed) {
    BGLCommandList list;
    buildStream(list, shape, seed);
    return list.asString();
}

std::string modelFile(const ModelShape& shape, uint32_t seed) {
    MDLObject model;
    model.readMDLBytes(std::string("RIFF\x04\0\0\0MDL9", 12));
    model.MDLHeader()->param(0, 1);
    model.MDLHeader()->param(1, shape.vertices);
    model.BoundingBox()->xmin(-128);
    model.BoundingBox()->xmax(128);
    model.BoundingBox()->ymax(256);
    for (int i = 0; i < shape.materials; ++i) {
        auto entry = model.MaterialList()->Add();
        entry->Diffuse()->r(static_cast<float>(i % 256) / 255);
        entry->Diffuse()->g(static_cast<float>(i / 256) / 4);
        entry->Diffuse()->a(1);
        entry->Power(static_cast<float>(i % 32));
    }
    for (int i = 0; i < shape.textures; ++i) {
        auto entry = model.TextureList()->Add();
        entry->textureType(TEXTURE_BUILDING);
        entry->bitmap("texture" + std::to_string(i) + ".bmp");
        entry->size(64);
    }
    for (int i = 0; i < shape.vertices; ++i) {
        auto vertex = model.VertexList()->Add();
        vertex->x(static_cast<float>(i % 256) - 128);
        vertex->y(static_cast<float>(i / 256));
        vertex->z(static_cast<float>(i % 17));
        vertex->ny(1);
        vertex->tx(static_cast<float>(i % 7) / 7);
        vertex->ty(static_cast<float>(i % 5) / 5);
    }

    const std::string tables = section("TEXT", model.TextureList()->asString()) +
                               section("MATE", model.MaterialList()->asString()) +
                               section("VERT", model.VertexList()->asString()) +
                               section("BGL ", streamBytes(shape, seed));
    // "EXTE" heads the sections it holds, which follow it.
    const std::string body = section("MDLH", model.MDLHeader()->asString()) +
                             section("BBOX", model.BoundingBox()->asString()) + "EXTE" +
                             le32(static_cast<int64_t>(tables.size())) + tables;
    return "RIFF" + le32(static_cast<int64_t>(body.size()) + 4) + "MDL9" + body;
}

namespace {

class BenchFolder {
  public:
    BenchFolder()
        : path_(std::filesystem::temp_directory_path() /
                ("velmora-bench-" + std::to_string(getpid()))) {
        std::filesystem::create_directories(path_);
    }
    ~BenchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    const std::filesystem::path& path() const { return path_; }

  private:
    std::filesystem::path path_;
};

template <class Operation>
double medianSeconds(Operation&& operation) {
    std::vector<double> times;
    for (int run = 0; run < 15; ++run) {
        const auto start = std::chrono::steady_clock::now();
        operation();
        times.push_back(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

}  // namespace

std::string benchFile(const std::string& name) {
    static const BenchFolder folder;
    return (folder.path() / name).string();
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string floorRead(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    in.seekg(0, std::ios::end);
    std::string bytes(static_cast<std::size_t>(in.tellg()), '\0');
    in.seekg(0);
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

void floorWrite(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

FloorSeconds measureFloor(const std::string& path) {
    const std::string copy = benchFile("floor-copy.bin");
    const std::string bytes = floorRead(path);
    FloorSeconds floor;
    floor.read = medianSeconds([&] { benchmark::DoNotOptimize(floorRead(path)); });
    floor.write = medianSeconds([&] { floorWrite(copy, bytes); });
    floor.roundTrip = medianSeconds([&] { floorWrite(copy, floorRead(path)); });
    return floor;
}

void reportFloorRatio(benchmark::State& state, const char* name, double floorSeconds) {
    // A rate of iterations x floor over the elapsed time, inverted: time per iteration / floor.
    state.counters[name] =
        benchmark::Counter(static_cast<double>(state.iterations()) * floorSeconds,
                           benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

}  // namespace velmora::bench
