// A batch over 1,000 compiled scenery files of 20 models each (about 28 KiB a file): the tool's
// scan with one job and with every core, run as a user runs it. Reports files and bytes per
// second and the tool's own count of the most heap it held at once.
#include "SyntheticModels.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

using namespace velmora::bench;

namespace {

constexpr int kFiles = 1000;
constexpr int kModelsAFile = 20;

std::string fileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
}

// A compiled file of one mdl section holding `models`.
std::string compiled(const std::vector<std::string>& models) {
    std::string entries, data;
    int64_t offset = 24 * static_cast<int64_t>(models.size());
    for (const std::string& m : models) {
        entries += std::string(16, '\x5a') + le32(offset) + le32(static_cast<int64_t>(m.size()));
        data += m;
        offset += static_cast<int64_t>(m.size());
    }
    return std::string("\x01\x02", 2) + std::string(18, '\0') + le32(1) + std::string(32, '\0') +
           le32(43) + le32(0) + le32(1) + le32(76) + le32(16) + le32(0) +
           le32(static_cast<int64_t>(models.size())) + le32(92) +
           le32(static_cast<int64_t>(entries.size() + data.size())) + entries + data;
}

// The tree, made once: ten folders of a hundred files.
const std::string& tree() {
    static const std::string root = [] {
        const std::string folder = benchFile("batch");
        std::vector<std::string> samples;
        for (const char* name : {"building.mdl", "lightpad.mdl", "tree.mdl"})
            samples.push_back(fileBytes(std::string(VELMORA_SAMPLES_DIR) + "/" + name));
        for (int f = 0; f < kFiles; ++f) {
            std::vector<std::string> models;
            for (int m = 0; m < kModelsAFile; ++m)
                models.push_back(samples[static_cast<std::size_t>((f + m) % 3)]);
            const std::string sub = folder + "/area" + std::to_string(f / 100);
            std::filesystem::create_directories(sub);
            writeFile(sub + "/scenery" + std::to_string(f) + ".bgl", compiled(models));
        }
        return folder;
    }();
    return root;
}

// Argument: the jobs; 0 for every core.
void BM_BatchScan(benchmark::State& state) {
    const std::string& root = tree();
    const int jobs = state.range(0) > 0 ? static_cast<int>(state.range(0))
                                        : static_cast<int>(std::thread::hardware_concurrency());
    const std::string out = benchFile("batch.jsonl");
    const std::string err = benchFile("batch.err");
    const std::string line = std::string(VELMORA_TOOL) + " scan '" + root + "' --json --jobs " +
                             std::to_string(jobs) + " > '" + out + "' 2> '" + err + "'";
    for (auto _ : state) {
        if (std::system(line.c_str()) != 0) state.SkipWithError("the scan failed");
    }
    int64_t bytes = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
        if (entry.is_regular_file()) bytes += static_cast<int64_t>(entry.file_size());
    }
    // The summary is the JSON line on standard error.
    const std::string lines = fileBytes(err);
    const auto at = lines.rfind("\"peakHeapBytes\":");
    state.counters["jobs"] = jobs;
    state.counters["peakHeapMiB"] =
        at == std::string::npos ? 0 : std::stod(lines.substr(at + 16)) / (1 << 20);
    state.SetItemsProcessed(state.iterations() * kFiles);
    state.SetBytesProcessed(state.iterations() * bytes);
}
BENCHMARK(BM_BatchScan)->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
