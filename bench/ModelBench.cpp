// Loading and saving whole models, each beside its floor measured in the same run: the same
// file read into memory and written out again with plain stream calls ("x_floor"), and each
// half alone ("x_read" for a load, "x_write" for a save).
//
// Sizes: small (~300 commands), saveable (65,535 vertices, 1,000 materials and textures,
// ~30,000 commands: the most a save may count) and large (the same tables, ~60,000 commands,
// loaded only).
#include <velmora/MDLObject.h>

#include "AllocationCounter.h"
#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string>

using namespace velmora;
using namespace velmora::bench;

namespace {

enum Size : int { kSmall = 0, kSaveable = 1, kLarge = 2 };

struct ModelFile {
    std::string path;
    std::string bytes;
};

const ModelFile& modelOf(int64_t size) {
    static std::array<ModelFile, 3> files;
    ModelFile& file = files[static_cast<std::size_t>(size)];
    if (file.bytes.empty()) {
        const ModelShape shape = size == kSmall      ? smallShape()
                                 : size == kSaveable ? saveableShape()
                                                     : largeShape();
        static constexpr std::array<const char*, 3> names{"small.mdl", "saveable.mdl", "large.mdl"};
        file.path = benchFile(names[static_cast<std::size_t>(size)]);
        file.bytes = modelFile(shape);
        writeFile(file.path, file.bytes);
    }
    return file;
}

void loadSizes(benchmark::internal::Benchmark* b) {
    b->ArgName("size")->Arg(kSmall)->Arg(kSaveable)->Arg(kLarge);
    b->Unit(benchmark::kMillisecond)->UseRealTime();
}

void saveSizes(benchmark::internal::Benchmark* b) {
    b->ArgName("size")->Arg(kSmall)->Arg(kSaveable);
    b->Unit(benchmark::kMillisecond)->UseRealTime();
}

void BM_ReadMDL(benchmark::State& state) {
    const ModelFile& file = modelOf(state.range(0));
    const FloorSeconds floor = measureFloor(file.path);
    int64_t commands = 0;
    for (auto _ : state) {
        auto model = std::make_unique<MDLObject>();
        model->readMDL(file.path);
        commands = model->BGLCommandList()->Count();
        // The release of the model is not part of the load.
        state.PauseTiming();
        model.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.bytes.size()));
    state.SetItemsProcessed(state.iterations() * commands);
    state.counters["commands"] = static_cast<double>(commands);
    reportFloorRatio(state, "x_floor", floor.roundTrip);
    reportFloorRatio(state, "x_read", floor.read);
}
BENCHMARK(BM_ReadMDL)->Apply(loadSizes);

void BM_SaveMDL(benchmark::State& state) {
    const ModelFile& file = modelOf(state.range(0));
    const std::string target = benchFile("saved.mdl");
    const FloorSeconds floor = measureFloor(file.path);
    MDLObject model;
    model.readMDL(file.path);
    for (auto _ : state)
        model.saveMDL(target);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.bytes.size()));
    state.SetItemsProcessed(state.iterations() * model.BGLCommandList()->Count());
    reportFloorRatio(state, "x_floor", floor.roundTrip);
    reportFloorRatio(state, "x_write", floor.write);
}
BENCHMARK(BM_SaveMDL)->Apply(saveSizes);

// The floor itself, for the table: the round trip and its two halves.
void BM_Floor(benchmark::State& state) {
    const ModelFile& file = modelOf(state.range(0));
    const std::string target = benchFile("floor.mdl");
    for (auto _ : state)
        floorWrite(target, floorRead(file.path));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.bytes.size()));
}
BENCHMARK(BM_Floor)->Apply(loadSizes);

void BM_FloorRead(benchmark::State& state) {
    const ModelFile& file = modelOf(state.range(0));
    for (auto _ : state)
        benchmark::DoNotOptimize(floorRead(file.path));
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.bytes.size()));
}
BENCHMARK(BM_FloorRead)->Apply(loadSizes);

void BM_FloorWrite(benchmark::State& state) {
    const ModelFile& file = modelOf(state.range(0));
    const std::string target = benchFile("floor.mdl");
    for (auto _ : state)
        floorWrite(target, file.bytes);
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(file.bytes.size()));
}
BENCHMARK(BM_FloorWrite)->Apply(loadSizes);

// What a load of the large model holds and needs at most: the peak over the load (the file,
// its sections and the decoded lists at once), and what stays per command and per vertex.
void BM_LargeModelMemory(benchmark::State& state) {
    const ModelFile& file = modelOf(kLarge);
    double peak = 0;
    double held = 0;
    double perCommand = 0;
    double perVertex = 0;
    for (auto _ : state) {
        const int64_t before = heldBytes();
        resetPeak();
        MDLObject model;
        model.readMDL(file.path);
        peak = static_cast<double>(peakHeldBytes() - before);
        held = static_cast<double>(heldBytes() - before);

        const int64_t beforeVertices = heldBytes();
        VertexList vertices;
        vertices.fillCollection(model.getRIFFSectionData(model.getRIFFSectionIndex("VERT")));
        perVertex = static_cast<double>(heldBytes() - beforeVertices) / vertices.Count();

        const int64_t beforeCommands = heldBytes();
        BGLCommandList commands;
        commands.readList(model.getRIFFSectionData(model.getRIFFSectionIndex("BGL ")));
        perCommand = static_cast<double>(heldBytes() - beforeCommands) / commands.Count();
    }
    state.counters["file_MiB"] = static_cast<double>(file.bytes.size()) / (1 << 20);
    state.counters["peak_load_MiB"] = peak / (1 << 20);
    state.counters["held_MiB"] = held / (1 << 20);
    state.counters["bytes_per_command"] = perCommand;
    state.counters["bytes_per_vertex"] = perVertex;
}
BENCHMARK(BM_LargeModelMemory)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace
