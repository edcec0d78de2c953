#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace velmora::analysis {

// A boolean function of a few named atoms, held as its value in every row of the truth table:
// row r gives atom i the value of bit i of r.
class TruthTable {
  public:
    // Beyond this many atoms a guard is not worked out.
    static constexpr std::size_t kMostAtoms = 16;
    // Beyond this many atoms a formula is not written out.
    static constexpr std::size_t kMostWrittenAtoms = 10;

    TruthTable() = default;
    TruthTable(std::vector<std::string> atoms, std::vector<uint8_t> rows);

    // A table of `atoms` filled by `value(row)`.
    static TruthTable of(std::vector<std::string> atoms,
                         const std::function<bool(uint32_t row)>& value);

    const std::vector<std::string>& atoms() const { return atoms_; }
    bool holds(uint32_t row) const { return rows_[row] != 0; }
    bool always() const;
    bool never() const;

    // The function as people write it: "always", "never", or a sum of products with the atoms in
    // table order, such as "a and b", "a or (b and c)", "not (a or b)". `literal(i, holds)` gives
    // the text of atom i or of its negation.
    std::string formula(
        const std::function<std::string(std::size_t atom, bool holds)>& literal) const;

    // True when both give the same value for every assignment of the atoms of both (an atom
    // that one of them lacks doesn't matter to that one). Atoms are compared by name.
    bool sameFunction(const TruthTable& other) const;

  private:
    std::vector<std::string> atoms_;
    std::vector<uint8_t> rows_;
};

}  // namespace velmora::analysis
