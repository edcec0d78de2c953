// The walks over the command stream into the recorder (no OpenGL needed), at 30,000 and 60,000
// commands: the flat walk that draws every part, and the scenario walk that follows the stream.
#include <velmora/DrawListSink.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

using namespace velmora;
using namespace velmora::bench;

namespace {

MDLObject& previewModel(int64_t commands) {
    static std::map<int64_t, std::unique_ptr<MDLObject>> models;
    auto& slot = models[commands];
    if (!slot) {
        slot = std::make_unique<MDLObject>();
        slot->readMDLBytes(modelFile(editShape(static_cast<int>(commands))));
    }
    return *slot;
}

void BM_GlGenerateDrawList(benchmark::State& state) {
    MDLObject& model = previewModel(state.range(0));
    std::size_t operations = 0;
    for (auto _ : state) {
        // A recorder per walk: each walk takes a new list number, and they are 16-bit.
        DrawListRecorder recorder;
        model.glGenerateDrawList(recorder);
        operations = recorder.operations().size();
    }
    state.SetItemsProcessed(state.iterations() * model.BGLCommandList()->Count());
    state.counters["operations"] = static_cast<double>(operations);
}
BENCHMARK(BM_GlGenerateDrawList)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

// The same models under the default scenario: tests decide the way, calls return, jumps are
// taken, so the walk passes over what the scenario doesn't draw.
void BM_ScenarioWalk(benchmark::State& state) {
    MDLObject& model = previewModel(state.range(0));
    const Scenario scenario;
    std::size_t operations = 0;
    for (auto _ : state) {
        DrawListRecorder recorder;
        model.glGenerateDrawList(recorder, scenario);
        operations = recorder.operations().size();
    }
    state.SetItemsProcessed(state.iterations() * model.BGLCommandList()->Count());
    state.counters["operations"] = static_cast<double>(operations);
}
BENCHMARK(BM_ScenarioWalk)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

}  // namespace
