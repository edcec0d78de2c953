// Editing the synthetic model (65,535 vertices, 1,000 materials and textures, long jumps all
// over the stream) at two sizes, so that the doubling shows each edit linear in the list.
// The seasonal operations and the repairs of fixLights count positions in 16 bits, so they
// run at 15,000 and 30,000 commands; the conditions, at the head of the list, also at 60,000.
// Every measured edit starts from the model as loaded; the reload is not timed.
#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/MDLObject.h>
#include <velmora/ModelEdit.h>

#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <string>

using namespace velmora;
using namespace velmora::bench;

namespace {

// One light in thirty commands: 500 at 15,000 commands, 1,000 at 30,000.
ModelShape shapeOf(int64_t commands) {
    ModelShape shape = editShape(static_cast<int>(commands));
    shape.lights = static_cast<int>(commands / 30);
    return shape;
}

const std::string& fileOf(int64_t commands) {
    static std::map<int64_t, std::string> files;
    auto found = files.find(commands);
    if (found == files.end()) found = files.emplace(commands, modelFile(shapeOf(commands))).first;
    return found->second;
}

std::unique_ptr<MDLObject> loaded(int64_t commands) {
    auto model = std::make_unique<MDLObject>();
    model->readMDLBytes(fileOf(commands));
    return model;
}

void BM_AddCondition(benchmark::State& state) {
    int64_t count = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto model = loaded(state.range(0));
        // The three tests of the model rewritten under mOR with a fourth one.
        auto conditions = model->BGLCommandList()->getConditions(-1);
        conditions->multiCondition(mOR);
        auto added = conditions->Add();
        added->var("1010");
        added->max(9);
        state.ResumeTiming();
        model->BGLCommandList()->addCondition(conditions);
        count = model->BGLCommandList()->Count();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_AddCondition)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

void BM_AddSeasonalTextures(benchmark::State& state) {
    int64_t count = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto model = loaded(state.range(0));
        state.ResumeTiming();
        model->BGLCommandList()->addSeasonalTextures(streamSeasons());
        count = model->BGLCommandList()->Count();
    }
    state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_AddSeasonalTextures)->Arg(15000)->Arg(30000)->Unit(benchmark::kMillisecond);

void BM_FixLights(benchmark::State& state) {
    int64_t count = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto model = loaded(state.range(0));
        state.ResumeTiming();
        model->fixLights();
        count = model->BGLCommandList()->Count();
    }
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["lights"] = static_cast<double>(shapeOf(state.range(0)).lights);
}
BENCHMARK(BM_FixLights)->Arg(15000)->Arg(30000)->Unit(benchmark::kMillisecond);

void BM_ReadSeasonalDates(benchmark::State& state) {
    auto model = loaded(state.range(0));
    // The seasons are told apart by the textures' group and variant.
    for (int i = 0; i < 3; ++i) {
        auto texture = model->TextureList()->Item(i + 1);
        texture->parent(1);
        texture->textureVariant(static_cast<textureVariant>(i));
    }
    for (auto _ : state)
        benchmark::DoNotOptimize(model->readSeasonalDates(1));
    state.SetItemsProcessed(state.iterations() * model->BGLCommandList()->Count());
}
BENCHMARK(BM_ReadSeasonalDates)->Arg(15000)->Arg(30000)->Unit(benchmark::kMillisecond);

// The texture sizes read the base vertex of a triangle list in 16 bits: this model keeps its
// vertices below 32,768, and its textures in groups of twenty.
void BM_UpdateTextureSize(benchmark::State& state) {
    ModelShape shape = shapeOf(state.range(0));
    shape.vertices = 32000;
    MDLObject model;
    model.readMDLBytes(modelFile(shape));
    int16_t position = 0;
    for (const auto& entry : *model.TextureList())
        entry->parent(static_cast<int16_t>(position++ / 20 + 1));
    for (auto _ : state) {
        model.updateTextureSize();
        benchmark::DoNotOptimize(model.TextureList()->Item(1)->size());
    }
    state.SetItemsProcessed(state.iterations() * model.BGLCommandList()->Count());
}
BENCHMARK(BM_UpdateTextureSize)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

// Finding the reversed triangles (info reports them) and turning them round in place.
void BM_FixWinding(benchmark::State& state) {
    ModelShape shape = shapeOf(state.range(0));
    shape.vertices = 32000;
    const std::string bytes = modelFile(shape);
    MDLObject model;
    int64_t turned = 0;
    for (auto _ : state) {
        state.PauseTiming();
        model.readMDLBytes(bytes);
        state.ResumeTiming();
        turned = static_cast<int64_t>(fixWinding(model).size());
        benchmark::DoNotOptimize(turned);
    }
    state.SetItemsProcessed(state.iterations() * model.BGLCommandList()->Count());
    state.counters["turned"] = static_cast<double>(turned);
}
BENCHMARK(BM_FixWinding)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

}  // namespace
