// Exports of the saveable model (65,535 vertices, 1,000 materials and textures, ~30,000
// commands): an OpenFlight database counts its faces in 16 bits, so this model, with about
// 17,000 triangles, is near the largest one it takes. Also the small model and the listing.
#include <velmora/MDLObject.h>

#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

using namespace velmora;
using namespace velmora::bench;

namespace {

struct ExportModel {
    MDLObject model;
    int64_t triangles = 0;
};

ExportModel& exportModel(int64_t saveable) {
    static std::array<std::unique_ptr<ExportModel>, 2> models;
    auto& slot = models[static_cast<std::size_t>(saveable)];
    if (!slot) {
        slot = std::make_unique<ExportModel>();
        slot->model.readMDLBytes(modelFile(saveable != 0 ? saveableShape() : smallShape()));
        for (const auto& command : *slot->model.BGLCommandList()) {
            if (command->opcode() == DRAW_TRI_LIST_ITEM) ++slot->triangles;
        }
    }
    return *slot;
}

int64_t fileSize(const std::string& path) {
    return static_cast<int64_t>(std::filesystem::file_size(path));
}

// Arguments: the model (0 small, 1 saveable) and whether the texture attribute files are
// written (one per texture).
void BM_ExportFLT(benchmark::State& state) {
    ExportModel& source = exportModel(state.range(0));
    const std::string path = benchFile("model.flt");
    for (auto _ : state)
        source.model.exportFLT(path, "png", state.range(1) != 0);
    state.SetItemsProcessed(state.iterations() * source.triangles);
    state.SetBytesProcessed(state.iterations() * fileSize(path));
    state.counters["faces"] = static_cast<double>(source.triangles);
}
BENCHMARK(BM_ExportFLT)
    ->ArgNames({"saveable", "attr"})
    ->Args({0, 0})
    ->Args({1, 0})
    ->Args({1, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

void BM_ExportASM(benchmark::State& state) {
    ExportModel& source = exportModel(1);
    const std::string path = benchFile("model.asm");
    for (auto _ : state)
        source.model.exportASM(path);
    state.SetItemsProcessed(state.iterations() * source.model.BGLCommandList()->Count());
    state.SetBytesProcessed(state.iterations() * fileSize(path));
}
BENCHMARK(BM_ExportASM)->Unit(benchmark::kMillisecond)->UseRealTime();

// glTF of the saveable model without images: every part, the seasonal runs as variant nodes.
void BM_ExportGLTF(benchmark::State& state) {
    ExportModel& source = exportModel(1);
    const std::string path = benchFile("model.glb");
    int64_t triangles = 0;
    for (auto _ : state)
        triangles = source.model.exportGLTF(path).triangles;
    state.SetItemsProcessed(state.iterations() * triangles);
    state.SetBytesProcessed(state.iterations() * fileSize(path));
    state.counters["triangles"] = static_cast<double>(triangles);
}
BENCHMARK(BM_ExportGLTF)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
