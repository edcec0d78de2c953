#include "analysis/TruthTable.h"

#include <algorithm>
#include <bit>
#include <set>
#include <utility>

namespace velmora::analysis {

namespace {

// A product of literals: the atoms of `care` take the values of `bits`.
struct Implicant {
    uint32_t bits = 0;
    uint32_t care = 0;
    bool operator<(const Implicant& other) const {
        return std::pair(care, bits) < std::pair(other.care, other.bits);
    }
    bool covers(uint32_t row) const { return (row & care) == bits; }
};

// The prime implicants of the rows that hold, by merging implicants that differ in one atom.
std::vector<Implicant> primeImplicants(const std::vector<uint32_t>& minterms, uint32_t allAtoms) {
    std::set<Implicant> current;
    for (const uint32_t m : minterms)
        current.insert({m, allAtoms});
    std::vector<Implicant> primes;
    while (!current.empty()) {
        std::set<Implicant> next;
        std::set<Implicant> merged;
        for (auto a = current.begin(); a != current.end(); ++a) {
            for (auto b = std::next(a); b != current.end(); ++b) {
                if (a->care != b->care) continue;
                const uint32_t difference = a->bits ^ b->bits;
                if (std::popcount(difference) != 1) continue;
                next.insert({a->bits & ~difference, a->care & ~difference});
                merged.insert(*a);
                merged.insert(*b);
            }
        }
        for (const Implicant& i : current) {
            if (merged.count(i) == 0) primes.push_back(i);
        }
        current = std::move(next);
    }
    return primes;
}

// A small set of primes that covers every minterm: the essential ones, then greedily.
std::vector<Implicant> cover(const std::vector<Implicant>& primes,
                             const std::vector<uint32_t>& minterms) {
    std::vector<Implicant> chosen;
    std::set<uint32_t> open(minterms.begin(), minterms.end());
    const auto take = [&](const Implicant& prime) {
        chosen.push_back(prime);
        for (auto it = open.begin(); it != open.end();)
            it = prime.covers(*it) ? open.erase(it) : std::next(it);
    };
    for (const uint32_t m : minterms) {
        const Implicant* only = nullptr;
        int coverers = 0;
        for (const Implicant& p : primes) {
            if (p.covers(m)) {
                ++coverers;
                only = &p;
            }
        }
        if (coverers == 1 && open.count(m) != 0) take(*only);
    }
    while (!open.empty()) {
        const Implicant* best = nullptr;
        std::size_t bestCount = 0;
        for (const Implicant& p : primes) {
            std::size_t count = 0;
            for (const uint32_t m : open)
                count += p.covers(m) ? 1 : 0;
            if (count > bestCount || (count == bestCount && best != nullptr &&
                                      std::popcount(p.care) < std::popcount(best->care))) {
                best = &p;
                bestCount = count;
            }
        }
        take(*best);
    }
    // In table order: the product whose first atom comes first leads.
    std::sort(chosen.begin(), chosen.end(), [](const Implicant& a, const Implicant& b) {
        return std::countr_zero(a.care) < std::countr_zero(b.care) ||
               (std::countr_zero(a.care) == std::countr_zero(b.care) && a.bits > b.bits);
    });
    return chosen;
}

}  // namespace

TruthTable::TruthTable(std::vector<std::string> atoms, std::vector<uint8_t> rows)
    : atoms_(std::move(atoms)), rows_(std::move(rows)) {}

TruthTable TruthTable::of(std::vector<std::string> atoms,
                          const std::function<bool(uint32_t row)>& value) {
    std::vector<uint8_t> rows(std::size_t{1} << atoms.size());
    for (uint32_t r = 0; r < rows.size(); ++r)
        rows[r] = value(r) ? 1 : 0;
    return TruthTable(std::move(atoms), std::move(rows));
}

bool TruthTable::always() const {
    return std::all_of(rows_.begin(), rows_.end(), [](uint8_t v) { return v != 0; });
}

bool TruthTable::never() const {
    return std::none_of(rows_.begin(), rows_.end(), [](uint8_t v) { return v != 0; });
}

std::string TruthTable::formula(
    const std::function<std::string(std::size_t atom, bool holds)>& literal) const {
    if (always()) return "always";
    if (never()) return "never";
    if (atoms_.size() > kMostWrittenAtoms) {
        return "a function of " + std::to_string(atoms_.size()) + " tests";
    }
    std::vector<uint32_t> minterms;
    for (uint32_t r = 0; r < rows_.size(); ++r) {
        if (rows_[r] != 0) minterms.push_back(r);
    }
    const uint32_t allAtoms = (uint32_t{1} << atoms_.size()) - 1;
    const std::vector<Implicant> products = cover(primeImplicants(minterms, allAtoms), minterms);

    const auto atomsOf = [](const Implicant& p) {
        std::vector<std::size_t> out;
        for (std::size_t i = 0; i < 32; ++i) {
            if ((p.care >> i) & 1u) out.push_back(i);
        }
        return out;
    };
    const auto negative = [](const Implicant& p, std::size_t i) {
        return ((p.bits >> i) & 1u) == 0;
    };
    const auto join = [](const std::vector<std::string>& parts, const char* glue) {
        std::string out;
        for (const std::string& part : parts)
            out += (out.empty() ? "" : glue) + part;
        return out;
    };

    // One product of negations only: "not (a or b)".
    if (products.size() == 1 && atomsOf(products[0]).size() > 1) {
        const auto atoms = atomsOf(products[0]);
        if (std::all_of(atoms.begin(), atoms.end(),
                        [&](std::size_t i) { return negative(products[0], i); })) {
            std::vector<std::string> parts;
            for (const std::size_t i : atoms)
                parts.push_back(literal(i, true));
            return "not (" + join(parts, " or ") + ")";
        }
    }
    // Single negations only: "not (a and b)".
    if (products.size() > 1 &&
        std::all_of(products.begin(), products.end(), [&](const Implicant& p) {
            const auto atoms = atomsOf(p);
            return atoms.size() == 1 && negative(p, atoms[0]);
        })) {
        std::vector<std::string> parts;
        for (const Implicant& p : products)
            parts.push_back(literal(atomsOf(p)[0], true));
        return "not (" + join(parts, " and ") + ")";
    }
    std::vector<std::string> terms;
    for (const Implicant& p : products) {
        std::vector<std::string> parts;
        for (const std::size_t i : atomsOf(p))
            parts.push_back(literal(i, !negative(p, i)));
        const std::string product = join(parts, " and ");
        terms.push_back(products.size() > 1 && parts.size() > 1 ? "(" + product + ")" : product);
    }
    return join(terms, " or ");
}

bool TruthTable::sameFunction(const TruthTable& other) const {
    std::vector<std::string> all = atoms_;
    for (const std::string& atom : other.atoms_) {
        if (std::find(all.begin(), all.end(), atom) == all.end()) all.push_back(atom);
    }
    if (all.size() > kMostAtoms) return false;
    // Where each table's atoms stand in the union.
    const auto placesOf = [&all](const std::vector<std::string>& atoms) {
        std::vector<std::size_t> places;
        for (const std::string& atom : atoms)
            places.push_back(
                static_cast<std::size_t>(std::find(all.begin(), all.end(), atom) - all.begin()));
        return places;
    };
    const auto mine = placesOf(atoms_);
    const auto theirs = placesOf(other.atoms_);
    const auto rowIn = [](uint32_t row, const std::vector<std::size_t>& places) {
        uint32_t local = 0;
        for (std::size_t i = 0; i < places.size(); ++i)
            local |= ((row >> places[i]) & 1u) << i;
        return local;
    };
    for (uint32_t row = 0; row < (uint32_t{1} << all.size()); ++row) {
        if (holds(rowIn(row, mine)) != other.holds(rowIn(row, theirs))) return false;
    }
    return true;
}

}  // namespace velmora::analysis
