#include "export/GLTFVariants.h"

#include "bgl/CommandSlots.h"
#include "bgl/CommandStream.h"
#include "bgl/StreamTests.h"
#include "foundation/Errors.h"

namespace velmora::gltf {

namespace {

using detail::CommandSlots;

constexpr int32_t kDayOfYear = 906;

bool isDayTest(const BGLCommand& command) {
    return command.opcode() == IFIN1 && CommandSlots::equalsInteger(command, 1, kDayOfYear);
}

bool inSeasonalRun(const BGLCommand& command) {
    return isDayTest(command) || command.opcode() == SET_MATERIAL ||
           command.opcode() == BGL_JUMP_32;
}

int32_t numberOf(const BGLCommand& command, int index) {
    try {
        return detail::parameterAsInt32(command, index);
    } catch (const Error&) {
        return -1;
    }
}

}  // namespace

Variants::Variants(const BGLCommandList& list) {
    const auto& commands = list.commands();
    const auto count = static_cast<int32_t>(commands.Count());
    const auto at = [&commands](int32_t p) -> const BGLCommand& {
        return *commands.at0(static_cast<std::size_t>(p - 1));
    };
    for (int32_t p = 1; p <= count; ++p) {
        if (!isDayTest(at(p)) || (!runs_.empty() && p <= runs_.back().last)) continue;
        SeasonRun run{p, p, {}};
        while (run.first > 1 && inSeasonalRun(at(run.first - 1)))
            --run.first;
        while (run.last < count && inSeasonalRun(at(run.last + 1)))
            ++run.last;
        for (int32_t k = run.first; k <= run.last; ++k) {
            const BGLCommand& set = at(k);
            if (set.opcode() != SET_MATERIAL) continue;
            SeasonVariant variant{k,  numberOf(set, 0),        numberOf(set, 1), -1,
                                  -1, "no other variant's day"};
            if (k > 1 && isDayTest(at(k - 1))) {
                variant.firstDay = numberOf(at(k - 1), 2);
                variant.lastDay = numberOf(at(k - 1), 3);
                variant.selectedBy = detail::readTest(at(k - 1)).text;
            }
            run.variants.push_back(variant);
        }
        if (run.variants.size() > 1) runs_.push_back(run);
    }
    for (int32_t p = 1; p <= count; ++p) {
        const BGLCommand& test = at(p);
        if (test.opcode() != IFSIZEV && test.opcode() != IFSIZEH) continue;
        const int32_t target = CommandSlots::jump(test, 0);
        if (target <= p + 1 || target > count + 1) continue;
        const detail::TestReading reading = detail::readTest(test);
        SizeBranch detailed{p, true, p + 1, target - 1, reading.text};
        const BGLCommand& last = at(target - 1);
        const int32_t over = detail::isPlainJump(last.opcode()) ? CommandSlots::jump(last, 0) : 0;
        if (over > target) {
            detailed.last = target - 2;
            branches_.push_back({p, false, target, over - 1, reading.negated});
        }
        branches_.push_back(detailed);
    }
}

const SeasonRun* Variants::runOf(int32_t position) const {
    for (const SeasonRun& run : runs_) {
        if (position >= run.first && position <= run.last) return &run;
    }
    return nullptr;
}

const SizeBranch* Variants::branchOf(int32_t position) const {
    const SizeBranch* innermost = nullptr;
    for (const SizeBranch& branch : branches_) {
        if (position < branch.first || position > branch.last) continue;
        if (innermost == nullptr ||
            branch.last - branch.first < innermost->last - innermost->first) {
            innermost = &branch;
        }
    }
    return innermost;
}

}  // namespace velmora::gltf
