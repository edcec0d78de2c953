#pragma once

#include <velmora/BGLObject.h>
#include <velmora/Host.h>

#include "scenery/SceneryFiles.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// A scan test: the scratch folder is a fresh one, and after the test neither it nor the folder
// of the compiled files holds anything the scan made.
class ScanTest : public ::testing::Test {
  protected:
    void SetUp() override {
        previousFolder_ = velmora::applicationFolder();
        velmora::setApplicationFolder(application_.path());
    }

    void TearDown() override {
        EXPECT_EQ(application_.listing(), "");
        std::string written;
        for (const auto& name : written_)
            written += (written.empty() ? "" : " ") + name;
        EXPECT_EQ(files_.listing(), written);
        velmora::setApplicationFolder(previousFolder_);
    }

    // Writes a compiled file beside the others; names are given in sorted order.
    std::string write(const std::string& name, const std::string& bytes) {
        writeFile(files_.file(name), bytes);
        written_.push_back(name);
        return files_.file(name);
    }

    // The models made once for all tests, numbered from 1.
    static const std::string& model(int number) {
        static const std::vector<std::string> models = [] {
            std::vector<std::string> made;
            for (int i = 1; i <= 5; ++i)
                made.push_back(sceneryfiles::savedModel(i));
            return made;
        }();
        return models.at(static_cast<std::size_t>(number - 1));
    }

    TempDir files_;

  private:
    TempDir application_;
    std::string previousFolder_;
    std::vector<std::string> written_;
};
