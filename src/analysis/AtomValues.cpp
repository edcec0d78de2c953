#include "analysis/AtomValues.h"

#include <climits>
#include <map>

namespace velmora::analysis {

namespace {

bool holdsFor(const AtomMeaning& atom, int64_t value) {
    if (atom.mask) return (value & atom.low) != 0;
    return value >= atom.low && value <= atom.high;
}

// For one variable's atoms (at `places` in the table), which of their truth values some value
// gives: bit c of the result's index c is set when a value makes exactly the atoms of c hold.
std::vector<bool> reachableCombinations(const std::vector<AtomMeaning>& atoms,
                                        const std::vector<std::size_t>& places) {
    std::vector<bool> reachable(std::size_t{1} << places.size(), false);
    const auto tryValue = [&](int64_t value) {
        std::size_t combination = 0;
        for (std::size_t i = 0; i < places.size(); ++i) {
            if (holdsFor(atoms[places[i]], value)) combination |= std::size_t{1} << i;
        }
        reachable[combination] = true;
    };
    // Tests take 16-bit operands: every value behaves like one of these.
    for (int64_t value = -32769; value <= 65536; ++value)
        tryValue(value);
    tryValue(INT_MIN);
    tryValue(INT_MAX);
    return reachable;
}

}  // namespace

AtomMeaning meaningOf(const detail::TestReading& test) {
    if (test.kind == detail::TestKind::Range && test.ranges.size() == 1) {
        const detail::RangeTerm& range = test.ranges.front();
        return {true, range.variable, false, range.low, range.high};
    }
    if (test.kind == detail::TestKind::Mask) return {true, test.variable, true, test.mask, 0};
    return {};
}

bool someValuesMakeItHold(const TruthTable& table, const std::vector<AtomMeaning>& atoms) {
    std::map<int32_t, std::vector<std::size_t>> byVariable;
    for (std::size_t i = 0; i < atoms.size(); ++i) {
        if (atoms[i].known) byVariable[atoms[i].variable].push_back(i);
    }
    std::vector<std::pair<std::vector<std::size_t>, std::vector<bool>>> variables;
    for (const auto& [variable, places] : byVariable) {
        if (places.size() > 1) variables.emplace_back(places, reachableCombinations(atoms, places));
    }
    for (uint32_t row = 0; row < (uint32_t{1} << atoms.size()); ++row) {
        if (!table.holds(row)) continue;
        bool consistent = true;
        for (const auto& [places, reachable] : variables) {
            std::size_t combination = 0;
            for (std::size_t i = 0; i < places.size(); ++i)
                combination |= static_cast<std::size_t>((row >> places[i]) & 1u) << i;
            consistent = consistent && reachable[combination];
        }
        if (consistent) return true;
    }
    return false;
}

}  // namespace velmora::analysis
