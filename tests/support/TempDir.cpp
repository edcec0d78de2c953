#include "support/TempDir.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include <unistd.h>

namespace stdfs = std::filesystem;

TempDir::TempDir() {
    static std::atomic<int> counter{0};
    path_ = (stdfs::temp_directory_path() / ("velmora-test-" + std::to_string(getpid()) + "-" +
                                             std::to_string(counter.fetch_add(1))))
                .string();
    stdfs::remove_all(path_);
    stdfs::create_directories(path_);
}

TempDir::~TempDir() {
    std::error_code ignored;
    stdfs::remove_all(path_, ignored);
}

std::string TempDir::listing(const std::string& inside) const {
    std::vector<std::string> names;
    for (const auto& entry : stdfs::directory_iterator(inside.empty() ? path_ : file(inside)))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    std::string out;
    for (const auto& name : names)
        out += (out.empty() ? "" : " ") + name;
    return out;
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw std::runtime_error("cannot write " + path);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

std::string testOutputFolder() {
    const char* configured = std::getenv("VELMORA_TEST_OUTPUT");
    const std::string folder = configured ? configured : "test-output";
    stdfs::create_directories(folder);
    return folder;
}
