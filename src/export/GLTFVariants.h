#pragma once

#include <velmora/BGLCommandList.h>

#include <cstdint>
#include <string>
#include <vector>

// The parts of a stream that the simulator shows one at a time: the variants of a seasonal run
// (a SET_MATERIAL behind each test of the day of the year, and a default), and the branches of
// a size test (the detailed part where it holds, and, when the detailed part ends in a jump
// over the rest, that rest where it fails). The glTF export gives each a node of its own.
namespace velmora::gltf {

struct SeasonVariant {
    int32_t setAt = 0;  // position of its SET_MATERIAL
    int32_t material = 0;
    int32_t texture = -1;
    int32_t firstDay = -1;  // -1 for the run's default
    int32_t lastDay = -1;
    std::string selectedBy;  // "906 in 152..334", or "no other variant's day"
};

struct SeasonRun {
    int32_t first = 0;
    int32_t last = 0;
    std::vector<SeasonVariant> variants;
};

struct SizeBranch {
    int32_t test = 0;  // position of the size test
    bool holds = true;
    int32_t first = 0;  // the commands of the branch
    int32_t last = 0;
    std::string selectedBy;  // "size(100) >= 40 px" or its negation
};

class Variants {
  public:
    explicit Variants(const BGLCommandList& commands);

    // The run a SET_MATERIAL at `position` belongs to; nullptr for one outside every run.
    const SeasonRun* runOf(int32_t position) const;
    // The innermost size branch that holds `position`; nullptr for none.
    const SizeBranch* branchOf(int32_t position) const;

  private:
    std::vector<SeasonRun> runs_;
    std::vector<SizeBranch> branches_;
};

}  // namespace velmora::gltf
