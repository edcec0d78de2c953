#pragma once

#include <string>

// A fresh folder for one test, removed with everything in it when the test ends.
class TempDir {
  public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const { return path_ + "/" + name; }
    // Names of the files in the folder, or in the folder `inside` it, sorted and joined by blanks.
    std::string listing(const std::string& inside = "") const;

  private:
    std::string path_;
};

// Writes and reads whole files for tests.
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

// The folder where tests leave files for a person to look at (PNG frames, say).
std::string testOutputFolder();
