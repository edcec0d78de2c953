// Scanning a compiled scenery file of 500 small models, beside the floor: the same models
// loaded one by one from their bytes in memory.
#include <velmora/BGLObject.h>
#include <velmora/MDLObject.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include <unistd.h>

using namespace velmora;

namespace {

constexpr int kModels = 500;
constexpr int kModelsPerSubSection = 50;

std::string le32(int64_t value) {
    const auto v = static_cast<uint32_t>(value);
    std::string out(4, '\0');
    for (int i = 0; i < 4; ++i)
        out[static_cast<std::size_t>(i)] = static_cast<char>(v >> (8 * i));
    return out;
}

// A small model of a dozen vertices and one triangle list, saved by the library.
std::string smallModel(const std::string& path, int number) {
    MDLObject model;
    model.readMDLBytes(std::string("RIFF\x04\0\0\0MDL9", 12));
    model.MaterialList()->Add()->Power(static_cast<float>(number % 16));
    model.TextureList()->Add()->bitmap("texture" + std::to_string(number % 8) + ".bmp");
    for (int i = 0; i < 12; ++i) {
        auto vertex = model.VertexList()->Add();
        vertex->x(static_cast<float>(i));
        vertex->y(static_cast<float>(number));
    }
    auto& commands = *model.BGLCommandList();
    auto material = commands.Add();
    material->opcode(SET_MATERIAL);
    material->param(0, "0");
    material->param(1, "0");
    auto list = commands.Add();
    list->opcode(DRAW_TRI_LIST_BEGIN);
    list->param(0, "0");
    list->param(1, "0");
    list->param(2, "12");
    for (int t = 0; t < 4; ++t) {
        auto item = commands.Add();
        item->opcode(DRAW_TRI_LIST_ITEM);
        for (int16_t p = 0; p < 3; ++p)
            item->param(p, std::to_string(t * 3 + p));
    }
    commands.Add()->opcode(BGL_END);
    model.saveMDL(path);
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// One mdl section of ten subsections of fifty models each.
class CompiledFile {
  public:
    CompiledFile() {
        const auto folder = std::filesystem::temp_directory_path();
        path_ = (folder / ("velmora-bench-" + std::to_string(getpid()) + ".bgl")).string();
        const std::string modelPath = path_ + ".mdl";
        for (int i = 0; i < kModels; ++i)
            models_.push_back(smallModel(modelPath, i));
        std::filesystem::remove(modelPath);

        constexpr int subSections = kModels / kModelsPerSubSection;
        const int64_t subTable = 56 + 20;
        std::string body;
        int64_t next = subTable + 16 * subSections;
        std::string records;
        std::string tables;
        for (int k = 0; k < subSections; ++k) {
            records += le32(0) + le32(kModelsPerSubSection) + le32(next) + le32(0);
            std::string entries;
            std::string data;
            int64_t dataOffset = 24 * kModelsPerSubSection;
            for (int j = 0; j < kModelsPerSubSection; ++j) {
                const std::string& model =
                    models_[static_cast<std::size_t>(k * kModelsPerSubSection + j)];
                entries += le32(0) + le32(0) + le32(0) + le32(0) + le32(dataOffset) +
                           le32(static_cast<int64_t>(model.size()));
                data += model;
                dataOffset += static_cast<int64_t>(model.size());
            }
            tables += entries + data;
            next += static_cast<int64_t>(entries.size() + data.size());
        }
        const std::string file = std::string("\x01\x02", 2) + std::string(18, '\0') + le32(1) +
                                 std::string(32, '\0') + le32(mdl) + le32(0) + le32(subSections) +
                                 le32(subTable) + le32(0) + records + tables;
        std::ofstream(path_, std::ios::binary)
            .write(file.data(), static_cast<std::streamsize>(file.size()));
        bytes_ = static_cast<int64_t>(file.size());
    }
    ~CompiledFile() {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }

    const std::string& path() const { return path_; }
    const std::vector<std::string>& models() const { return models_; }
    int64_t bytes() const { return bytes_; }

  private:
    std::string path_;
    std::vector<std::string> models_;
    int64_t bytes_ = 0;
};

const CompiledFile& compiledFile() {
    static const CompiledFile file;
    return file;
}

void BM_ReadXMLBGL500Models(benchmark::State& state) {
    const CompiledFile& file = compiledFile();
    for (auto _ : state) {
        BGLObject scan;
        scan.readXMLBGL(file.path());
        if (scan.ModelList()->Count() != kModels) state.SkipWithError("models missing");
        benchmark::DoNotOptimize(scan.ModelList());
    }
    state.SetBytesProcessed(state.iterations() * file.bytes());
}
BENCHMARK(BM_ReadXMLBGL500Models)->Unit(benchmark::kMillisecond);

// The floor: the same models loaded straight from their bytes.
void BM_Load500ModelsFromBytes(benchmark::State& state) {
    const CompiledFile& file = compiledFile();
    for (auto _ : state) {
        for (const std::string& bytes : file.models()) {
            MDLObject model;
            model.readMDLBytes(bytes);
            benchmark::DoNotOptimize(model.VertexList());
        }
    }
}
BENCHMARK(BM_Load500ModelsFromBytes)->Unit(benchmark::kMillisecond);

}  // namespace
