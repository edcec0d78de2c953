// The command stream alone: decoding, encoding and the two jump passes, at a few hundred
// commands and at 30,000 and 60,000 (the doubling shows that each pass is linear).
#include <velmora/BGLCommandList.h>

#include "AllocationCounter.h"
#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>

using namespace velmora;
using namespace velmora::bench;

namespace {

ModelShape shapeOf(int64_t commands) {
    if (commands < 1000) return smallShape();
    return editShape(static_cast<int>(commands));
}

const std::string& stream(int64_t commands) {
    static std::map<int64_t, std::string> streams;
    auto found = streams.find(commands);
    if (found == streams.end())
        found = streams.emplace(commands, streamBytes(shapeOf(commands))).first;
    return found->second;
}

void sizes(benchmark::internal::Benchmark* b) {
    b->Arg(300)->Arg(30000)->Arg(60000)->Unit(benchmark::kMillisecond);
}

void BM_ReadList(benchmark::State& state) {
    const std::string& bytes = stream(state.range(0));
    int64_t count = 0;
    double heldPerCommand = 0;
    for (auto _ : state) {
        const int64_t before = heldBytes();
        BGLCommandList list;
        list.readList(bytes);
        count = list.Count();
        heldPerCommand = static_cast<double>(heldBytes() - before) / static_cast<double>(count);
        benchmark::DoNotOptimize(list.Count());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
    state.SetItemsProcessed(state.iterations() * count);
    state.counters["commands"] = static_cast<double>(count);
    state.counters["bytes_per_command"] = heldPerCommand;
}
BENCHMARK(BM_ReadList)->Apply(sizes);

void BM_AsString(benchmark::State& state) {
    const std::string& bytes = stream(state.range(0));
    BGLCommandList list;
    list.readList(bytes);
    for (auto _ : state)
        benchmark::DoNotOptimize(list.asString());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes.size()));
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_AsString)->Apply(sizes);

void BM_ProcessJumpDest(benchmark::State& state) {
    BGLCommandList list;
    list.readList(stream(state.range(0)));
    for (auto _ : state)
        list.processJumpDest();
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_ProcessJumpDest)->Apply(sizes);

void BM_UpdateJumpSize(benchmark::State& state) {
    BGLCommandList list;
    list.readList(stream(state.range(0)));
    for (auto _ : state)
        list.updateJumpSize();
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_UpdateJumpSize)->Apply(sizes);

}  // namespace
