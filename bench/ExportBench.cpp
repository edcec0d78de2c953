// Exporting a model of the largest size a model file allows (65,535 vertices) with about
// 60,000 commands, half of them triangles (a database holds at most 32,767 faces), as an
// OpenFlight database and as a listing.
#include <velmora/MDLObject.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include <unistd.h>

using namespace velmora;

namespace {

constexpr int kVertices = 65535;
constexpr int kBlocks = 1100;           // SET_MATERIAL, a list header, triangles, depth biases
constexpr int kTrianglesPerBlock = 28;  // 1100 x 55 commands
constexpr int kBiasesPerBlock = 25;

void addCommand(BGLCommandList& list, BGLOpcode opcode, std::initializer_list<int> params) {
    auto command = list.Add();
    command->opcode(opcode);
    int16_t slot = 0;
    for (int value : params)
        command->param(slot++, std::to_string(value));
}

struct ExportFixture {
    ExportFixture() {
        const auto folder = std::filesystem::temp_directory_path() /
                            ("velmora-export-bench-" + std::to_string(getpid()));
        std::filesystem::create_directories(folder);
        folder_ = folder.string();
        model.readMDLBytes(std::string("RIFF\x04\0\0\0MDL9", 12));
        for (int i = 0; i < 8; ++i)
            model.MaterialList()->Add()->Diffuse()->g(0.125f * i);
        for (int i = 0; i < 16; ++i) {
            model.TextureList()->Add()->bitmap("texture" + std::to_string(i) + ".bmp");
        }
        for (int i = 0; i < kVertices; ++i) {
            auto vertex = model.VertexList()->Add();
            vertex->x(static_cast<float>(i % 256));
            vertex->y(static_cast<float>(i / 256));
            vertex->nz(1);
        }
        auto& list = *model.BGLCommandList();
        for (int block = 0; block < kBlocks; ++block) {
            addCommand(list, SET_MATERIAL, {block % 8, block % 17 - 1});
            addCommand(list, DRAW_TRI_LIST_BEGIN, {block * 59, 32, kTrianglesPerBlock * 3});
            for (int t = 0; t < kTrianglesPerBlock; ++t) {
                addCommand(list, DRAW_TRI_LIST_ITEM, {t, t + 1, t + 2});
            }
            for (int b = 0; b < kBiasesPerBlock; ++b)
                addCommand(list, BGL_ZBIAS, {b});
        }
    }
    ~ExportFixture() { std::filesystem::remove_all(folder_); }

    std::string file(const std::string& name) const { return folder_ + "/" + name; }

    MDLObject model;
    std::string folder_;
};

ExportFixture& fixture() {
    static ExportFixture shared;
    return shared;
}

void BM_ExportFLT(benchmark::State& state) {
    ExportFixture& f = fixture();
    for (auto _ : state)
        f.model.exportFLT(f.file("model.flt"), "png", true);
    state.SetItemsProcessed(state.iterations() * kBlocks * kTrianglesPerBlock);
}
BENCHMARK(BM_ExportFLT)->Unit(benchmark::kMillisecond);

void BM_ExportASM(benchmark::State& state) {
    ExportFixture& f = fixture();
    for (auto _ : state)
        f.model.exportASM(f.file("model.asm"));
    state.SetItemsProcessed(state.iterations() * f.model.BGLCommandList()->Count());
}
BENCHMARK(BM_ExportASM)->Unit(benchmark::kMillisecond);

}  // namespace
