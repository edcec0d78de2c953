#include <velmora/GuardAnalysis.h>

#include "analysis/GuardFunction.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace velmora {

namespace {

using ValueOf = std::function<int32_t(int32_t variable)>;

// Beyond this many trials the search gives up.
constexpr int64_t kMostTrials = int64_t{1} << 20;

bool atomHolds(const detail::TestReading& reading, const ValueOf& valueOf) {
    switch (reading.kind) {
        case detail::TestKind::Range:
            return std::all_of(reading.ranges.begin(), reading.ranges.end(),
                               [&valueOf](const detail::RangeTerm& range) {
                                   const int32_t value = valueOf(range.variable);
                                   return value >= range.low && value <= range.high;
                               });
        case detail::TestKind::Mask:
            return (valueOf(reading.variable) & reading.mask) != 0;
        default:
            return true;
    }
}

void addValue(std::vector<int32_t>& values, int64_t value) {
    if (value < INT32_MIN || value > INT32_MAX) return;
    const auto v = static_cast<int32_t>(value);
    if (std::find(values.begin(), values.end(), v) == values.end()) values.push_back(v);
}

// For each variable the tests look at, the values that make a test on it hold or fail: the ends
// of a range and the values just outside it, the lowest bit of a mask, the whole mask and 0.
std::map<int32_t, std::vector<int32_t>> candidatesOf(
    const std::vector<detail::TestReading>& readings) {
    std::map<int32_t, std::vector<int32_t>> out;
    for (const detail::TestReading& reading : readings) {
        if (reading.kind == detail::TestKind::Range) {
            for (const detail::RangeTerm& range : reading.ranges) {
                auto& values = out[range.variable];
                addValue(values, range.low);
                addValue(values, range.high);
                addValue(values, int64_t{range.low} - 1);
                addValue(values, int64_t{range.high} + 1);
            }
        } else if (reading.kind == detail::TestKind::Mask) {
            auto& values = out[reading.variable];
            addValue(values, reading.mask & -reading.mask);
            addValue(values, reading.mask);
            addValue(values, 0);
        }
    }
    return out;
}

// Tries every choice of `count` variables and of their candidate values, in order, until
// `holds` does; the trials left are counted down.
class Search {
  public:
    Search(std::vector<std::pair<int32_t, std::vector<int32_t>>> candidates,
           std::map<int32_t, int32_t>& trial, const std::function<bool()>& holds)
        : candidates_(std::move(candidates)), trial_(trial), holds_(holds) {}

    bool givenUp() const { return trialsLeft_ <= 0; }

    // Chooses `count` more variables after the first `from`, then their values.
    bool choose(std::size_t count, std::size_t from) {
        if (count == 0) return assign(0);
        for (std::size_t i = from; i + count <= candidates_.size(); ++i) {
            chosen_.push_back(i);
            const bool found = choose(count - 1, i + 1);
            chosen_.pop_back();
            if (found || trialsLeft_ <= 0) return found;
        }
        return false;
    }

  private:
    bool assign(std::size_t k) {
        if (k == chosen_.size()) {
            --trialsLeft_;
            return holds_();
        }
        const auto& [variable, values] = candidates_[chosen_[k]];
        for (const int32_t value : values) {
            trial_[variable] = value;
            if (assign(k + 1)) return true;
            if (trialsLeft_ <= 0) break;
        }
        trial_.erase(variable);
        return false;
    }

    std::vector<std::pair<int32_t, std::vector<int32_t>>> candidates_;
    std::map<int32_t, int32_t>& trial_;
    const std::function<bool()>& holds_;
    std::vector<std::size_t> chosen_;
    int64_t trialsLeft_ = kMostTrials;
};

}  // namespace

std::vector<int32_t> GuardAnalysis::variables() const {
    if (!workedOut_ || !function_) return {};
    std::vector<int32_t> out;
    for (const auto& entry : candidatesOf(function_->readings))
        out.push_back(entry.first);
    return out;
}

std::optional<std::map<int32_t, int32_t>> GuardAnalysis::valuesToHold(
    const ValueOf& current, const std::set<int32_t>& fixed) const {
    if (guardedCall_ == 0) return std::map<int32_t, int32_t>{};
    if (!workedOut_) return std::nullopt;
    const std::vector<detail::TestReading>& readings = function_->readings;
    std::map<int32_t, int32_t> trial;
    const ValueOf valueOf = [&](int32_t variable) {
        const auto found = trial.find(variable);
        return found != trial.end() ? found->second : current(variable);
    };
    const std::function<bool()> holds = [&] {
        uint32_t row = 0;
        for (std::size_t i = 0; i < readings.size(); ++i)
            row |= atomHolds(readings[i], valueOf) ? uint32_t{1} << i : 0;
        return function_->table.holds(row);
    };
    if (holds()) return trial;

    std::vector<std::pair<int32_t, std::vector<int32_t>>> candidates;
    for (auto& [variable, values] : candidatesOf(readings)) {
        if (fixed.count(variable) != 0) continue;
        const int32_t now = current(variable);
        values.erase(std::remove(values.begin(), values.end(), now), values.end());
        if (!values.empty()) candidates.emplace_back(variable, std::move(values));
    }
    const std::size_t variables = candidates.size();
    Search search(std::move(candidates), trial, holds);
    for (std::size_t count = 1; count <= variables && !search.givenUp(); ++count) {
        if (search.choose(count, 0)) return trial;
    }
    return std::nullopt;
}

}  // namespace velmora
