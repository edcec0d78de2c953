// Scanning a compiled scenery file of 500 small models (~100 commands each), beside its floor
// (the file read into memory) and beside the same models loaded one by one from their bytes.
#include <velmora/BGLObject.h>
#include <velmora/MDLObject.h>

#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

using namespace velmora;
using namespace velmora::bench;

namespace {

constexpr int kModels = 500;
constexpr int kModelsPerSubSection = 50;

// One mdl section of ten subsections of fifty models each.
class CompiledFile {
  public:
    CompiledFile() {
        path_ = benchFile("scenery.bgl");
        const ModelShape shape{100, 100, 4, 4, 2};
        for (int i = 0; i < kModels; ++i)
            models_.push_back(modelFile(shape, static_cast<uint32_t>(i)));

        constexpr int subSections = kModels / kModelsPerSubSection;
        const int64_t subTable = 56 + 20;
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
        writeFile(path_, file);
        bytes_ = static_cast<int64_t>(file.size());
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

void BM_ReadXMLBGL(benchmark::State& state) {
    const CompiledFile& file = compiledFile();
    const FloorSeconds floor = measureFloor(file.path());
    for (auto _ : state) {
        BGLObject scan;
        scan.readXMLBGL(file.path());
        if (scan.ModelList()->Count() != kModels) state.SkipWithError("models missing");
        benchmark::DoNotOptimize(scan.ModelList());
    }
    state.SetBytesProcessed(state.iterations() * file.bytes());
    state.SetItemsProcessed(state.iterations() * kModels);
    reportFloorRatio(state, "x_floor", floor.roundTrip);
    reportFloorRatio(state, "x_read", floor.read);
}
BENCHMARK(BM_ReadXMLBGL)->Unit(benchmark::kMillisecond)->UseRealTime();

// The same models loaded straight from their bytes: what the scan adds is the difference.
void BM_Load500ModelsFromBytes(benchmark::State& state) {
    const CompiledFile& file = compiledFile();
    for (auto _ : state) {
        for (const std::string& bytes : file.models()) {
            MDLObject model;
            model.readMDLBytes(bytes);
            benchmark::DoNotOptimize(model.VertexList());
        }
    }
    state.SetBytesProcessed(state.iterations() * file.bytes());
    state.SetItemsProcessed(state.iterations() * kModels);
}
BENCHMARK(BM_Load500ModelsFromBytes)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
