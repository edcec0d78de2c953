#pragma once

#include <velmora/BGLCommand.h>

#include <cstdint>
#include <string>
#include <vector>

// The tests of the command stream, read off their parameters. A test either holds, and the walk
// goes on with the next command, or fails, and the walk goes on at its jumpDest(0).
namespace velmora::detail {

enum class TestKind {
    Range,  // IFIN1, IFIN2, IFIN3: every variable lies in its range
    Mask,   // IFMSK: the variable has a bit of the mask set
    Size,   // IFSIZEV, IFSIZEH: the model looks at least so many pixels large
    Place,  // IFINBOXP, IFIN_BOX_PLANE, IFIN_INSTANCED_BOX_PLANE, SEPARATION_PLANE
    Other,  // a test whose parameters have no known meaning (IFINF1)
};

struct RangeTerm {
    int32_t variable = 0;
    int32_t low = 0;
    int32_t high = 0;
};

struct TestReading {
    TestKind kind = TestKind::Other;
    std::vector<RangeTerm> ranges;  // Range
    int32_t variable = 0;           // Mask
    int32_t mask = 0;               // Mask
    int32_t size = 0;               // Size: the model's size
    int32_t pixels = 0;             // Size: the least number of pixels it must cover
    bool vertical = true;           // Size: IFSIZEV rather than IFSIZEH
    // The test as a term of a formula: "798 in 3..5", "(120 & 1)"; equal tests give equal texts.
    std::string text;
    // The same term negated: "798 not in 3..5", "not (120 & 1)".
    std::string negated;
};

// True for the opcodes that test and jump when the test fails.
bool isTest(int32_t opcode);
// True for JUMP and BGL_JUMP_32, which always go to jumpDest(0).
bool isPlainJump(int32_t opcode);
// True for the commands that end a walk of the stream: BGL_RETURN and BGL_END.
bool endsWalk(int32_t opcode);

// What a test command looks at; parameters that are no numbers give an Other reading. Without
// `withText` the texts stay empty (for walks that only evaluate tests).
TestReading readTest(const BGLCommand& command, bool withText = true);

// The term of a range test and of a mask test, as readTest writes them.
std::string rangeText(int32_t variable, int32_t low, int32_t high);
std::string maskText(int32_t variable, int32_t mask);

}  // namespace velmora::detail
