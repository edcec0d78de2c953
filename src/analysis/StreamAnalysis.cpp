#include <velmora/StreamAnalysis.h>

#include <velmora/BGLCommandList.h>
#include <velmora/SceneryVariables.h>

#include "analysis/StreamTests.h"
#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "bgl/SeasonalBlockSearch.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace velmora {

namespace {

using detail::CommandSlots;

const BGLCommand& at(const KeyedCollection<BGLCommand>& commands, int32_t position) {
    return *commands.at0(static_cast<std::size_t>(position - 1));
}

int32_t integerOr(const BGLCommand& command, int index, int32_t otherwise) {
    try {
        return detail::parameterAsInt32(command, index);
    } catch (const Error&) {
        return otherwise;
    }
}

double numberOr(const BGLCommand& command, int index, double otherwise) {
    try {
        return CommandSlots::number(command, index);
    } catch (const Error&) {
        return otherwise;
    }
}

SeasonalVariant variantAt(const KeyedCollection<BGLCommand>& commands, int32_t position) {
    const BGLCommand& set = at(commands, position);
    SeasonalVariant variant{position, integerOr(set, 0, -1),   integerOr(set, 1, -1), -1,
                            -1,       "no other variant's day"};
    if (position > 1 && detail::isDayTest(at(commands, position - 1))) {
        const BGLCommand& test = at(commands, position - 1);
        variant.firstDay = integerOr(test, 2, -1);
        variant.lastDay = integerOr(test, 3, -1);
        variant.selectedBy = detail::readTest(test).text;
    }
    return variant;
}

SizeTest sizeTestAt(const BGLCommand& command, int32_t position) {
    const detail::TestReading reading = detail::readTest(command);
    return {
        position,    command.opcode(), reading.size, reading.pixels, CommandSlots::jump(command, 0),
        reading.text};
}

}  // namespace

StreamAnalysis::StreamAnalysis(const BGLCommandList& list) : guard_(list) {
    const KeyedCollection<BGLCommand>& commands = list.commands();
    std::vector<int32_t> dayTests;
    for (int32_t p = 1; p <= commands.Count(); ++p) {
        const BGLCommand& command = at(commands, p);
        switch (command.opcode()) {
            case IFIN1:
                if (detail::isDayTest(command)) dayTests.push_back(p);
                break;
            case IFSIZEV:
            case IFSIZEH:
                sizeTests_.push_back(sizeTestAt(command, p));
                break;
            case BGL_LIGHT:
                readLight(list, p);
                break;
            default:
                break;
        }
    }
    findRuns(list, dayTests);
    findBranches(list);
}

// A run grows from a day test over its neighbours of the kinds a seasonal block is made of, the
// kinds that findSeasonalBlock steps over.
void StreamAnalysis::findRuns(const BGLCommandList& list, const std::vector<int32_t>& dayTests) {
    const KeyedCollection<BGLCommand>& commands = list.commands();
    const int32_t count = commands.Count();
    for (const int32_t test : dayTests) {
        if (!runs_.empty() && test <= runs_.back().last) continue;
        SeasonalRun run{test, test, {}};
        while (run.first > 1 && detail::belongsToSeasonalBlock(at(commands, run.first - 1)))
            --run.first;
        while (run.last < count && detail::belongsToSeasonalBlock(at(commands, run.last + 1)))
            ++run.last;
        for (int32_t k = run.first; k <= run.last; ++k) {
            if (at(commands, k).opcode() == SET_MATERIAL)
                run.variants.push_back(variantAt(commands, k));
        }
        if (!run.variants.empty()) runs_.push_back(std::move(run));
    }
}

void StreamAnalysis::findBranches(const BGLCommandList& list) {
    const KeyedCollection<BGLCommand>& commands = list.commands();
    const int32_t count = commands.Count();
    for (const SizeTest& test : sizeTests_) {
        const int32_t target = test.failsTo;
        if (target <= test.position + 1 || target > count + 1) continue;
        const std::string negated = detail::readTest(at(commands, test.position)).negated;
        SizeBranch detailed{test.position, true, test.position + 1, target - 1, test.text};
        const BGLCommand& last = at(commands, target - 1);
        const int32_t over = detail::isPlainJump(last.opcode()) ? CommandSlots::jump(last, 0) : 0;
        if (over > target) {
            detailed.last = target - 2;
            branches_.push_back({test.position, false, target, over - 1, negated});
        }
        branches_.push_back(std::move(detailed));
    }
    if (branches_.empty()) return;
    // The widest branches first, so that a narrower one inside marks its commands last.
    std::vector<std::size_t> order(branches_.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [this](std::size_t a, std::size_t b) {
        return branches_[a].last - branches_[a].first > branches_[b].last - branches_[b].first;
    });
    branchAt_.assign(static_cast<std::size_t>(count) + 1, 0);
    for (const std::size_t b : order) {
        const SizeBranch& branch = branches_[b];
        for (int32_t p = std::max(branch.first, 1); p <= std::min(branch.last, count); ++p)
            branchAt_[static_cast<std::size_t>(p)] = static_cast<int32_t>(b) + 1;
    }
}

void StreamAnalysis::readLight(const BGLCommandList& list, int32_t position) {
    const KeyedCollection<BGLCommand>& commands = list.commands();
    const BGLCommand& command = at(commands, position);
    LightReport light;
    light.position = position;
    light.type = integerOr(command, 0, 0);
    for (int i = 0; i < 3; ++i)
        light.at[static_cast<std::size_t>(i)] = numberOr(command, 1 + i, std::nan(""));
    const double colour = numberOr(command, 7, std::nan(""));
    if (std::isfinite(colour) && std::abs(colour) < 4294967296.0)
        light.colour = static_cast<uint32_t>(static_cast<int64_t>(colour));
    // fixLights walks back over overrides and mask tests only; other tests end its walk.
    bool fixReaches = true;
    for (int32_t k = position - 1; k >= 1; --k) {
        const BGLCommand& before = at(commands, k);
        const BGLOpcode opcode = before.opcode();
        LightReport::Guard guard{k, opcode, "", -1, false};
        if (opcode == VAR_BASE_OVERRIDE) {
            guard.freedByFix = fixReaches;
        } else if (opcode == IFMSK) {
            const double variable = numberOr(before, 1, std::nan(""));
            guard.text = detail::readTest(before).text;
            guard.variable = integerOr(before, 1, -1);
            guard.freedByFix = fixReaches && variable <= variables::kHighestFreedLightVariable;
        } else if (detail::isTest(opcode)) {
            guard.text = detail::readTest(before).text;
            fixReaches = false;
        } else {
            break;
        }
        light.guards.push_back(std::move(guard));
    }
    lights_.push_back(std::move(light));
}

const SeasonalRun* StreamAnalysis::runOf(int32_t position) const {
    const auto after =
        std::upper_bound(runs_.begin(), runs_.end(), position,
                         [](int32_t p, const SeasonalRun& run) { return p < run.first; });
    if (after == runs_.begin()) return nullptr;
    const SeasonalRun& run = *std::prev(after);
    return position <= run.last ? &run : nullptr;
}

const SizeBranch* StreamAnalysis::branchOf(int32_t position) const {
    if (position < 1 || static_cast<std::size_t>(position) >= branchAt_.size()) return nullptr;
    const int32_t index = branchAt_[static_cast<std::size_t>(position)];
    return index == 0 ? nullptr : &branches_[static_cast<std::size_t>(index - 1)];
}

std::vector<int32_t> StreamAnalysis::textureGroups(int32_t count) const {
    std::vector<int32_t> leader(static_cast<std::size_t>(std::max(count, 0)));
    std::iota(leader.begin(), leader.end(), 0);
    const auto root = [&leader](int32_t t) {
        while (leader[static_cast<std::size_t>(t)] != t)
            t = leader[static_cast<std::size_t>(t)];
        return t;
    };
    for (const SeasonalRun& run : runs_) {
        int32_t first = -1;
        for (const SeasonalVariant& variant : run.variants) {
            if (variant.texture < 0 || variant.texture >= count) continue;
            if (first < 0) {
                first = variant.texture;
                continue;
            }
            const int32_t a = root(first);
            const int32_t b = root(variant.texture);
            leader[static_cast<std::size_t>(std::max(a, b))] = std::min(a, b);
        }
    }
    for (int32_t t = 0; t < count; ++t)
        leader[static_cast<std::size_t>(t)] = root(t);
    return leader;
}

}  // namespace velmora
