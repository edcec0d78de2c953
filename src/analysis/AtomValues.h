#pragma once

#include "analysis/StreamTests.h"
#include "analysis/TruthTable.h"

#include <cstdint>
#include <vector>

namespace velmora::analysis {

// What a test says of one variable: that it lies in a range (IFIN1), or that it has a bit of a
// mask (IFMSK). Other tests say nothing that values can contradict.
struct AtomMeaning {
    bool known = false;
    int32_t variable = 0;
    bool mask = false;
    int32_t low = 0;  // the range, or the mask in `low`
    int32_t high = 0;
};

AtomMeaning meaningOf(const detail::TestReading& test);

// True when values of the variables exist that make `table` hold: a row where it holds whose
// atoms, true and false as the row says, don't contradict each other ("798 in 1..2" and
// "798 in 3..4" can't both hold).
bool someValuesMakeItHold(const TruthTable& table, const std::vector<AtomMeaning>& atoms);

}  // namespace velmora::analysis
