// Loading and saving a model of the largest size a model file allows (65,535 vertices) with
// about 30,000 commands, beside the floor: the same bytes read and written with plain streams.
#include <velmora/MDLObject.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <unistd.h>

using namespace velmora;

namespace {

constexpr int kVertices = 65535;
constexpr int kBlocks = 1000;           // SET_MATERIAL, a list header and its triangles
constexpr int kTrianglesPerBlock = 28;  // 1000 x 30 commands + BGL_END

std::shared_ptr<BGLCommand> addCommand(BGLCommandList& list, BGLOpcode opcode,
                                       std::initializer_list<int> params) {
    auto command = list.Add();
    command->opcode(opcode);
    int16_t slot = 0;
    for (int value : params)
        command->param(slot++, std::to_string(value));
    return command;
}

// Builds the model through the public interface and saves it once.
class SyntheticModel {
  public:
    SyntheticModel() {
        const auto folder = std::filesystem::temp_directory_path();
        const std::string stem = "velmora-bench-" + std::to_string(getpid());
        path_ = (folder / (stem + ".mdl")).string();
        copyPath_ = (folder / (stem + "-copy.mdl")).string();

        MDLObject model;
        const std::string emptyModel = std::string("RIFF\x04\0\0\0MDL9", 12);
        model.readMDLBytes(emptyModel, path_);
        model.MDLHeader()->param(0, 1);
        model.BoundingBox()->xmax(100);
        for (int i = 0; i < 8; ++i) {
            auto shade = model.MaterialList()->Add();
            shade->Diffuse()->r(static_cast<float>(i) / 8);
            shade->Power(10);
        }
        for (int i = 0; i < 16; ++i) {
            model.TextureList()->Add()->bitmap("texture" + std::to_string(i) + ".bmp");
        }
        for (int i = 0; i < kVertices; ++i) {
            auto vertex = model.VertexList()->Add();
            vertex->x(static_cast<float>(i % 256));
            vertex->y(static_cast<float>(i / 256));
            vertex->nz(1);
            vertex->tx(static_cast<float>(i % 7) / 7);
        }
        BGLCommandList& commands = *model.BGLCommandList();
        for (int block = 0; block < kBlocks; ++block) {
            addCommand(commands, SET_MATERIAL, {block % 8, block % 16});
            addCommand(commands, DRAW_TRI_LIST_BEGIN,
                       {(block * 60) % 60000, 0, kTrianglesPerBlock * 3});
            for (int t = 0; t < kTrianglesPerBlock; ++t) {
                addCommand(commands, DRAW_TRI_LIST_ITEM, {t, t + 1, t + 2});
            }
        }
        addCommand(commands, BGL_END, {});
        model.saveMDL(path_);
        bytes_ = static_cast<int64_t>(std::filesystem::file_size(path_));
    }

    ~SyntheticModel() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
        std::filesystem::remove(copyPath_, ignored);
    }

    const std::string& path() const { return path_; }
    const std::string& copyPath() const { return copyPath_; }
    int64_t bytes() const { return bytes_; }

  private:
    std::string path_;
    std::string copyPath_;
    int64_t bytes_ = 0;
};

const SyntheticModel& syntheticModel() {
    static const SyntheticModel model;
    return model;
}

void BM_ReadMDL(benchmark::State& state) {
    const SyntheticModel& source = syntheticModel();
    for (auto _ : state) {
        MDLObject model;
        model.readMDL(source.path());
        benchmark::DoNotOptimize(model.VertexList()->Count());
    }
    state.SetBytesProcessed(state.iterations() * source.bytes());
}
BENCHMARK(BM_ReadMDL)->Unit(benchmark::kMillisecond);

void BM_SaveMDL(benchmark::State& state) {
    const SyntheticModel& source = syntheticModel();
    MDLObject model;
    model.readMDL(source.path());
    for (auto _ : state)
        model.saveMDL(source.copyPath());
    state.SetBytesProcessed(state.iterations() * source.bytes());
}
BENCHMARK(BM_SaveMDL)->Unit(benchmark::kMillisecond);

// What any load and save costs at least: the file read into memory and written out again.
void BM_ModelFileFloor(benchmark::State& state) {
    const SyntheticModel& source = syntheticModel();
    for (auto _ : state) {
        std::ifstream in(source.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(in),
                                std::istreambuf_iterator<char>()};
        std::ofstream out(source.copyPath(), std::ios::binary | std::ios::trunc);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        benchmark::DoNotOptimize(bytes.data());
    }
    state.SetBytesProcessed(state.iterations() * source.bytes());
}
BENCHMARK(BM_ModelFileFloor)->Unit(benchmark::kMillisecond);

}  // namespace
