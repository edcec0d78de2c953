#pragma once

#include <velmora/GuardAnalysis.h>

#include "analysis/AtomValues.h"
#include "analysis/StreamTests.h"
#include "analysis/TruthTable.h"

#include <vector>

namespace velmora {

// When the guarded call is reached, as a function of the distinct tests in front of it (its
// atoms, in the order of the table).
struct GuardAnalysis::Function {
    analysis::TruthTable table;
    std::vector<analysis::AtomMeaning> meanings;  // an atom each
    std::vector<detail::TestReading> readings;    // an atom each
};

}  // namespace velmora
