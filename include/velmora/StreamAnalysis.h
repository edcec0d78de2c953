#pragma once

#include <velmora/BGLOpcodeDictionary.h>
#include <velmora/GuardAnalysis.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

class BGLCommandList;
class MDLObject;

// One texture of a seasonal run: shown on the days of the day test in front of its SET_MATERIAL,
// or, without one, the run's default on the days no other variant claims.
struct SeasonalVariant {
    int32_t position = 0;   // the SET_MATERIAL
    int32_t material = -1;  // 0-based, as the command names it; -1 when it is no number
    int32_t texture = -1;   // 0-based; -1 for none
    int32_t firstDay = -1;  // -1 for the run's default
    int32_t lastDay = -1;
    // The test that selects it ("906 in 152..334"), or "no other variant's day".
    std::string selectedBy;
    bool isDefault() const { return firstDay < 0; }
};

// A run of day tests (IFIN1 on the day of the year), SET_MATERIALs and jumps that shows a texture
// a season; only runs with at least one day test and two variants count.
struct SeasonalRun {
    int32_t first = 0;  // its first and last command
    int32_t last = 0;
    std::vector<SeasonalVariant> variants;
};

// An IFSIZEV or IFSIZEH: the part behind it is drawn when the model covers at least `pixels`.
struct SizeTest {
    int32_t position = 0;
    BGLOpcode opcode = IFSIZEV;
    int32_t size = 0;
    int32_t pixels = 0;
    int32_t failsTo = 0;  // the command the walk goes on at when the test fails
    std::string text;     // "size(100) >= 40 px"
};

// A part a size test chooses: the detailed one where it holds and, when that part ends in a jump
// over the rest, the rest (the coarse part) where it fails.
struct SizeBranch {
    int32_t test = 0;  // the size test's position
    bool holds = true;
    int32_t first = 0;  // the commands of the branch
    int32_t last = 0;
    std::string selectedBy;  // "size(100) >= 40 px" or its negation
};

// A BGL_LIGHT with the run of tests and overrides directly in front of it, nearest first.
struct LightReport {
    struct Guard {
        int32_t position = 0;
        BGLOpcode opcode = EOF_;
        std::string text;       // the test's term; "" for a VAR_BASE_OVERRIDE
        int32_t variable = -1;  // what a mask test tests; -1 otherwise
        // fixLights removes it: an override, or a mask test on a variable up to 200 that its
        // walk back from the light reaches.
        bool freedByFix = false;
    };
    int32_t position = 0;
    int32_t type = 0;
    std::array<double, 3> at{};      // in the model's axes; NaN where a parameter is no number
    std::optional<uint32_t> colour;  // 0xAARRGGBB
    std::vector<Guard> guards;
};

// What a model's kind of shadow is: none, the 12-byte kill shadow, or a shadow of its own.
enum class ShadowKind { None, KillShadow, Own };

// What a command stream means, found in one pass: the guard of its call (with the sprite's
// rotation), the seasonal runs, the size tests and their branches, and the lights with the
// tests in front of them. It holds no reference to the list, which it never changes.
class StreamAnalysis {
  public:
    explicit StreamAnalysis(const BGLCommandList& commands);

    const GuardAnalysis& guard() const { return guard_; }
    const std::vector<SeasonalRun>& seasonalRuns() const { return runs_; }
    const std::vector<SizeTest>& sizeTests() const { return sizeTests_; }
    const std::vector<SizeBranch>& sizeBranches() const { return branches_; }
    const std::vector<LightReport>& lights() const { return lights_; }

    // The seasonal run that holds the command at `position`; nullptr for none.
    const SeasonalRun* runOf(int32_t position) const;
    // The innermost size branch that holds the command at `position`; nullptr for none.
    const SizeBranch* branchOf(int32_t position) const;
    // For each of `count` textures (0-based), the lowest texture number of its group: the
    // textures that the seasonal runs switch between share one (and one size); a texture in no
    // run is a group of its own.
    std::vector<int32_t> textureGroups(int32_t count) const;

  private:
    void findRuns(const BGLCommandList& list, const std::vector<int32_t>& dayTests);
    void findBranches(const BGLCommandList& list);
    void readLight(const BGLCommandList& list, int32_t position);

    GuardAnalysis guard_;
    std::vector<SeasonalRun> runs_;
    std::vector<SizeTest> sizeTests_;
    std::vector<SizeBranch> branches_;
    std::vector<int32_t> branchAt_;  // per command, the index of its innermost branch + 1
    std::vector<LightReport> lights_;
};

// The kind of the model's "SHAD" section.
ShadowKind shadowKindOf(const MDLObject& model);

}  // namespace velmora
