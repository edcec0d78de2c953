#pragma once

#include "support/TempDir.h"

#include <sys/wait.h>
#include <unistd.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

// Runs the built velmora tool as a user would, from a shell.
namespace tooltest {

struct ToolRun {
    int status = -1;
    std::string out;
    std::string err;
};

// Runs the velmora tool with `args` (already quoted for the shell) in `folder`.
inline ToolRun runTool(const std::string& args, const std::string& folder = ".") {
    static int counter = 0;
    const std::string errFile = std::filesystem::temp_directory_path().string() +
                                "/velmora-tool-test-" + std::to_string(getpid()) + "-" +
                                std::to_string(counter++);
    // Mesa's software renderer keeps a little memory until the process ends; that is not ours.
    const std::string line = "cd '" + folder + "' && LSAN_OPTIONS=suppressions=" +
                             VELMORA_TOOL_TEST_DIR "/lsan-suppressions.txt " VELMORA_TOOL " " +
                             args + " 2>" + errFile;
    ToolRun run;
    FILE* pipe = popen(line.c_str(), "r");
    std::array<char, 4096> buffer{};
    for (std::size_t got; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        run.out.append(buffer.data(), got);
    const int raw = pclose(pipe);
    run.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    run.err = readFile(errFile);
    std::filesystem::remove(errFile);
    return run;
}

inline std::string q(const std::string& path) {
    return "'" + path + "'";
}

// Makes fresh samples in `folder` with the sample program; false when it fails.
inline bool makeSamples(const std::string& folder) {
    const std::string line = std::string(VELMORA_MAKE_SAMPLES) + " " + q(folder) + " >/dev/null";
    return std::system(line.c_str()) == 0;
}

// JSON Lines: each line parsed on its own.
inline std::vector<nlohmann::json> jsonLines(const std::string& text) {
    std::vector<nlohmann::json> parsed;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        parsed.push_back(nlohmann::json::parse(line));
    return parsed;
}

}  // namespace tooltest
