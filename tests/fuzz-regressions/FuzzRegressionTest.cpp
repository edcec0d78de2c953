#include "fuzz/Harnesses.h"

#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <filesystem>

// Every file in tests/fuzz-regressions/<harness>/ once made that fuzzer crash, hang or run out
// of memory; each must now end in a model or an error.
TEST(FuzzRegressions, EveryKeptInputRunsCleanly) {
    const std::pair<const char*, void (*)(const uint8_t*, std::size_t)> harnesses[] = {
        {"loadModel", fuzzing::loadModel},
        {"decodeStream", fuzzing::decodeStream},
        {"editChain", fuzzing::editChain},
        {"scanCompiledScenery", fuzzing::scanCompiledScenery},
    };
    int replayed = 0;
    for (const auto& [name, harness] : harnesses) {
        const auto folder = std::filesystem::path(VELMORA_FUZZ_REGRESSIONS) / name;
        if (!std::filesystem::is_directory(folder)) continue;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            const std::string bytes = readFile(entry.path().string());
            SCOPED_TRACE(entry.path().string());
            harness(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
            ++replayed;
        }
    }
    EXPECT_GT(replayed, 0);
}
