// Editing a big model: up to 60,000 commands with thousands of seasonal runs and lights, and
// jumps spread over the whole stream. Every operation should grow linearly with the list. The
// seasonal operations and the repairs of fixLights count positions in 16 bits, so they are
// measured up to 28,000 commands (the rebuilt runs make the list longer).
#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/MDLObject.h>

#include <benchmark/benchmark.h>

#include <random>
#include <string>

using namespace velmora;

namespace {

std::shared_ptr<BGLCommand> make(BGLOpcode opcode, std::initializer_list<const char*> params) {
    auto command = std::make_shared<BGLCommand>();
    command->opcode(opcode);
    int16_t i = 0;
    for (const char* p : params)
        command->param(i++, p);
    return command;
}

// A guarded call in front, then blocks of: a seasonal run of texture 0, a light behind a mask
// test and an override, triangles, and a jump somewhere ahead.
void fillBigList(BGLCommandList& list, int commands) {
    std::mt19937 random(7);
    list.Add(make(IFIN1, {"", "141", "1", "5"}))->jumpDest(0, 3);
    list.Add(make(BGL_CALL_32, {"0"}))->jumpDest(0, 4);
    list.Add(make(BGL_END, {}));
    while (list.Count() < commands - 1) {
        list.Add(make(SETWRD, {"1", "2"}));
        list.Add(make(IFIN1, {"", "906", "60", "150"}))->jumpDest(0, list.Count() + 3);
        list.Add(make(SET_MATERIAL, {"0", "0"}));
        list.Add(make(BGL_JUMP_32, {}))->jumpDest(0, list.Count() + 2);
        list.Add(make(SET_MATERIAL, {"0", "1"}));
        list.Add(make(SETWRD, {"1", "2"}));
        list.Add(make(IFMSK, {"", "100", "1"}))->jumpDest(0, list.Count() + 3);
        list.Add(make(VAR_BASE_OVERRIDE, {"0"}));
        list.Add(make(BGL_LIGHT, {"0", "0", "0", "0", "0", "0", "0", "0", "0", "0", "0"}));
        list.Add(make(DRAW_TRI_LIST_BEGIN, {"0", "3", "3"}));
        for (int i = 0; i < 8; ++i)
            list.Add(make(DRAW_TRI_LIST_ITEM, {"0", "1", "2"}));
        const int ahead = std::uniform_int_distribution<int>(1, 400)(random);
        list.Add(make(BGL_JUMP_32, {}))->jumpDest(0, list.Count() + ahead);
    }
    list.Add(make(BGL_RETURN, {}));
    // Jumps that ran past the end lead to the last command.
    for (const auto& c : list) {
        if (c->opcode() == BGL_JUMP_32 && c->jumpDest(0) > list.Count())
            c->jumpDest(0, list.Count());
    }
}

std::shared_ptr<MDLObject> bigModel(int commands) {
    auto model = std::make_shared<MDLObject>();
    std::string header(36, '\0');
    std::string box(24, '\0');
    const auto le32 = [](uint32_t v) {
        return std::string{char(v), char(v >> 8), char(v >> 16), char(v >> 24)};
    };
    const std::string body = "MDLH" + le32(36) + header + "BBOX" + le32(24) + box;
    model->readMDLBytes("RIFF" + le32(static_cast<uint32_t>(4 + body.size())) + "MDL9" + body);
    fillBigList(*model->BGLCommandList(), commands);
    for (int i = 0; i < 3; ++i) {
        auto t = model->TextureList()->Add();
        t->parent(1);
        t->textureVariant(static_cast<textureVariant>(i));
    }
    for (int i = 0; i < 3; ++i) {
        auto v = model->VertexList()->Add();
        v->x(static_cast<float>(i));
        v->tx(0.5f * static_cast<float>(i));
    }
    return model;
}

seasonalTextures twoSeasons() {
    seasonalTextures s;
    s.Material = {0, 1, 2, 0, 0};
    s.dayStart = {60, 151, 301, 0, 0};
    s.dayEnd = {150, 300, 59, 0, 0};
    s.active = {true, true, true, false, false};
    return s;
}

void BM_AddSeasonalTextures(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto model = bigModel(static_cast<int>(state.range(0)));
        state.ResumeTiming();
        model->BGLCommandList()->addSeasonalTextures(twoSeasons());
        benchmark::DoNotOptimize(model->BGLCommandList()->Count());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_AddSeasonalTextures)
    ->Arg(7000)
    ->Arg(14000)
    ->Arg(28000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void BM_FixLights(benchmark::State& state) {
    for (auto _ : state) {
        state.PauseTiming();
        auto model = bigModel(static_cast<int>(state.range(0)));
        state.ResumeTiming();
        model->fixLights();
        benchmark::DoNotOptimize(model->BGLCommandList()->Count());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_FixLights)
    ->Arg(7000)
    ->Arg(14000)
    ->Arg(28000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void BM_RewriteConditions(benchmark::State& state) {
    // Two tests under mOR in front of the call of 60,000 commands, read and written again.
    auto model = bigModel(60000);
    auto first = model->BGLCommandList()->getConditions(-1);
    first->multiCondition(mOR);
    first->Add()->var("142");
    model->BGLCommandList()->addCondition(first);
    for (auto _ : state) {
        model->BGLCommandList()->addCondition(model->BGLCommandList()->getConditions(-1));
        benchmark::DoNotOptimize(model->BGLCommandList()->Count());
    }
}
BENCHMARK(BM_RewriteConditions)->Unit(benchmark::kMillisecond);

void BM_ReadSeasonalDates(benchmark::State& state) {
    auto model = bigModel(30000);
    for (auto _ : state)
        benchmark::DoNotOptimize(model->readSeasonalDates(1));
}
BENCHMARK(BM_ReadSeasonalDates)->Unit(benchmark::kMillisecond);

void BM_UpdateTextureSize(benchmark::State& state) {
    auto model = bigModel(60000);
    for (auto _ : state) {
        model->updateTextureSize();
        benchmark::DoNotOptimize(model->TextureList()->Item(1)->size());
    }
}
BENCHMARK(BM_UpdateTextureSize)->Unit(benchmark::kMillisecond);

}  // namespace
