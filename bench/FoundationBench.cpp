// Typed reads and writes of a few megabytes: the library's readers and writers over memory and
// a file, and the same through the file numbers of a file.
#include "foundation/ByteReader.h"
#include "foundation/ByteWriter.h"
#include "foundation/HexFunctions.h"
#include "foundation/OutputFile.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>

using namespace velmora;

namespace {

constexpr int kValues = 1 << 20;  // 4 MB of 32-bit values

void writeValues(int16_t file) {
    for (int i = 0; i < kValues; ++i)
        hex::writeLong(file, i);
}

void BM_WriterWriteLong(benchmark::State& state) {
    for (auto _ : state) {
        ByteWriter out;
        for (int i = 0; i < kValues; ++i)
            out.int32(i);
        benchmark::DoNotOptimize(out.take());
    }
    state.SetBytesProcessed(state.iterations() * kValues * 4);
}
BENCHMARK(BM_WriterWriteLong)->Unit(benchmark::kMillisecond);

void BM_ReaderReadLong(benchmark::State& state) {
    ByteWriter out;
    for (int i = 0; i < kValues; ++i)
        out.int32(i);
    const std::string bytes = out.take();
    for (auto _ : state) {
        ByteReader in(bytes);
        int64_t sum = 0;
        for (int i = 0; i < kValues; ++i)
            sum += in.int32();
        benchmark::DoNotOptimize(sum);
    }
    state.SetBytesProcessed(state.iterations() * kValues * 4);
}
BENCHMARK(BM_ReaderReadLong)->Unit(benchmark::kMillisecond);

std::string benchFile() {
    return (std::filesystem::temp_directory_path() / "velmora-bench.bin").string();
}

void BM_OutputFileWriteLong(benchmark::State& state) {
    const std::string path = benchFile();
    for (auto _ : state) {
        OutputFile file(path);
        for (int i = 0; i < kValues; ++i)
            file.writer().int32(i);
        file.close();
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(state.iterations() * kValues * 4);
}
BENCHMARK(BM_OutputFileWriteLong)->Unit(benchmark::kMillisecond);

void BM_FileWriteLong(benchmark::State& state) {
    const std::string path = benchFile();
    for (auto _ : state) {
        std::remove(path.c_str());
        const int16_t file = hex::nextFreeFile();
        hex::openBinaryFile(file, path);
        writeValues(file);
        hex::closeFile(file);
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(state.iterations() * kValues * 4);
}
BENCHMARK(BM_FileWriteLong)->Unit(benchmark::kMillisecond);

void BM_FileReadLong(benchmark::State& state) {
    const std::string path = benchFile();
    std::remove(path.c_str());
    {
        const int16_t file = hex::nextFreeFile();
        hex::openBinaryFile(file, path);
        writeValues(file);
        hex::closeFile(file);
    }
    for (auto _ : state) {
        const int16_t file = hex::nextFreeFile();
        hex::openBinaryFile(file, path);
        int64_t sum = 0;
        for (int i = 0; i < kValues; ++i)
            sum += hex::readLong(file);
        hex::closeFile(file);
        benchmark::DoNotOptimize(sum);
    }
    std::remove(path.c_str());
    state.SetBytesProcessed(state.iterations() * kValues * 4);
}
BENCHMARK(BM_FileReadLong)->Unit(benchmark::kMillisecond);

}  // namespace
