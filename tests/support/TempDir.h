#pragma once

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <unistd.h>

// A fresh folder for one test, removed with everything in it when the test ends.
class TempDir {
  public:
    TempDir() {
        static std::atomic<int> counter{0};
        path_ = (std::filesystem::temp_directory_path() /
                 ("velmora-test-" + std::to_string(getpid()) + "-" +
                  std::to_string(counter.fetch_add(1))))
                    .string();
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempDir() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // Names of the files in the folder, or in the folder `inside` it, sorted and joined by blanks.
    std::string listing(const std::string& inside = "") const {
        std::vector<std::string> names;
        for (const auto& entry :
             std::filesystem::directory_iterator(inside.empty() ? path_ : file(inside)))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        std::string out;
        for (const auto& name : names)
            out += (out.empty() ? "" : " ") + name;
        return out;
    }

  private:
    std::string path_;
};

// Writes and reads whole files for tests.
inline void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw std::runtime_error("cannot write " + path);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

// The folder where tests leave files for a person to look at (PNG frames, say).
inline std::string testOutputFolder() {
    const char* configured = std::getenv("VELMORA_TEST_OUTPUT");
    const std::string folder = configured ? configured : "test-output";
    std::filesystem::create_directories(folder);
    return folder;
}
