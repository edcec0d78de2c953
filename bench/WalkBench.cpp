// The walks over the command stream at 30,000 and 60,000 commands: the draw list into the
// recorder (no OpenGL needed), then the flat walk that emits every part and the scenario walk
// that follows the stream into a geometry sink that only counts, to compare the walks themselves.
#include <velmora/DrawListSink.h>
#include <velmora/GeometrySink.h>
#include <velmora/MDLObject.h>
#include <velmora/Scenario.h>

#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <map>
#include <memory>
#include <optional>

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

// A sink that only counts what it gets, so that the walks, not the recording, are measured.
class CountingSink final : public GeometrySink {
  public:
    void atCommand(int32_t) override { ++visited; }
    void surface(const Surface&) override { ++events; }
    void depthBias(float) override { ++events; }
    void triangle(const std::array<Corner, 3>&) override { ++events; }
    void line(const std::array<Vector3, 2>&) override { ++events; }
    void light(const Light&) override { ++events; }
    int64_t events = 0;
    int64_t visited = 0;
};

// The stream shape of the edits, with plain jumps that lead a few commands ahead.
MDLObject& walkModel(int64_t commands) {
    static std::map<int64_t, std::unique_ptr<MDLObject>> models;
    auto& slot = models[commands];
    if (!slot) {
        ModelShape shape = editShape(static_cast<int>(commands));
        shape.jumpReach = 8;
        slot = std::make_unique<MDLObject>();
        slot->readMDLBytes(modelFile(shape));
    }
    return *slot;
}

// Both walks into the counting sink; items are the commands each walk came to. The scenario
// passes the tests in front of the call and the ones inside (variables 100 to 899 set to 1), so
// it follows calls, tests and jumps over nearly every command.
template <bool kScenario>
void walkInto(benchmark::State& state) {
    const MDLObject& model = walkModel(state.range(0));
    std::optional<Scenario> scenario;
    if constexpr (kScenario) {
        scenario = Scenario().set(1004, 3).set(300, 1);
        for (int32_t variable = 100; variable < 900; ++variable)
            scenario->set(variable, 1);
    }
    CountingSink sink;
    for (auto _ : state) {
        sink = CountingSink();
        model.walk(sink, scenario);
    }
    state.SetItemsProcessed(state.iterations() * sink.visited);
    state.counters["visited"] = static_cast<double>(sink.visited);
    state.counters["events"] = static_cast<double>(sink.events);
    if (sink.visited < state.range(0) / 2) state.SkipWithError("the walk skips most of the stream");
}

void BM_FlatWalk(benchmark::State& state) {
    walkInto<false>(state);
}
BENCHMARK(BM_FlatWalk)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

void BM_ScenarioWalk(benchmark::State& state) {
    walkInto<true>(state);
}
BENCHMARK(BM_ScenarioWalk)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);

}  // namespace
