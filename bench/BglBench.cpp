// The command stream of a big model: about 30,000 commands, mostly triangle lists, with
// thousands of tests and long 32-bit jumps.
#include <velmora/BGLCommandList.h>

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <random>
#include <string>

using namespace velmora;

namespace {

constexpr int kCommands = 30000;

std::shared_ptr<BGLCommand> make(BGLOpcode opcode, std::initializer_list<const char*> params) {
    auto command = std::make_shared<BGLCommand>();
    command->opcode(opcode);
    int16_t i = 0;
    for (const char* p : params)
        command->param(i++, p);
    return command;
}

// Builds the list with jump destinations and lets the encoder work out the offsets.
const std::string& syntheticStream() {
    static const std::string stream = [] {
        std::mt19937 random(42);
        const auto pick = [&](int low, int high) {
            return std::uniform_int_distribution<int>(low, high)(random);
        };
        BGLCommandList list;
        std::vector<std::pair<std::shared_ptr<BGLCommand>, int>> jumps;  // command, kind
        while (list.Count() < kCommands) {
            const int kind = pick(0, 9);
            if (kind < 5) {
                const int items = pick(1, 12);
                list.Add(make(SET_MATERIAL, {"0", "1"}));
                list.Add(
                    make(DRAW_TRI_LIST_BEGIN, {"0", "100", std::to_string(items * 3).c_str()}));
                for (int i = 0; i < items; ++i)
                    list.Add(make(DRAW_TRI_LIST_ITEM, {"1", "2", "3"}));
            } else if (kind < 7) {
                jumps.emplace_back(list.Add(make(IFIN1, {"0", "906", "0", "1"})), list.Count());
            } else if (kind < 9) {
                jumps.emplace_back(list.Add(make(BGL_JUMP_32, {"0"})), list.Count());
            } else {
                list.Add(make(BGL_LIGHT, {"1", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}));
            }
        }
        list.Add(make(BGL_END, {}));
        const int last = list.Count();
        for (auto& [command, position] : jumps) {
            // Tests skip a few hundred commands at most; 32-bit jumps go anywhere ahead.
            const int reach = command->opcode() == IFIN1 ? std::min(last, position + 500) : last;
            command->jumpDest(0, pick(position, reach));
        }
        return list.asString();
    }();
    return stream;
}

int64_t commandCount() {
    static const int64_t count = [] {
        BGLCommandList list;
        list.readList(syntheticStream());
        return static_cast<int64_t>(list.Count());
    }();
    return count;
}

void BM_BglReadList(benchmark::State& state) {
    const std::string& stream = syntheticStream();
    double bytesPerCommand = 0;
    for (auto _ : state) {
        const size_t before = mallinfo2().uordblks;
        BGLCommandList list;
        list.readList(stream);
        bytesPerCommand = static_cast<double>(mallinfo2().uordblks - before) / list.Count();
        benchmark::DoNotOptimize(list.Count());
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
    state.SetItemsProcessed(state.iterations() * commandCount());
    state.counters["bytes_per_command"] = bytesPerCommand;
}
BENCHMARK(BM_BglReadList)->Unit(benchmark::kMillisecond);

void BM_BglAsString(benchmark::State& state) {
    const std::string& stream = syntheticStream();
    BGLCommandList list;
    list.readList(stream);
    for (auto _ : state)
        benchmark::DoNotOptimize(list.asString());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(stream.size()));
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_BglAsString)->Unit(benchmark::kMillisecond);

void BM_BglProcessJumpDest(benchmark::State& state) {
    BGLCommandList list;
    list.readList(syntheticStream());
    for (auto _ : state)
        list.processJumpDest();
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_BglProcessJumpDest)->Unit(benchmark::kMillisecond);

void BM_BglUpdateJumpSize(benchmark::State& state) {
    BGLCommandList list;
    list.readList(syntheticStream());
    for (auto _ : state)
        list.updateJumpSize();
    state.SetItemsProcessed(state.iterations() * list.Count());
}
BENCHMARK(BM_BglUpdateJumpSize)->Unit(benchmark::kMillisecond);

}  // namespace
