#include <velmora/GuardAnalysis.h>

#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>

#include "bgl/CommandSlots.h"
#include "bgl/StreamTests.h"
#include "editing/TruthTable.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <map>

namespace velmora {

namespace {

using editing::TruthTable;

// An atom's text and the text of its negation.
struct Term {
    std::string text;
    std::string negated;
};

std::string formulaText(const TruthTable& table, const std::vector<Term>& terms) {
    return table.formula([&terms](std::size_t atom, bool holds) {
        return holds ? terms[atom].text : terms[atom].negated;
    });
}

// The term that the editor writes for a condition, as readTest reads it back.
Term termOf(const Condition& condition) {
    BGLCommand test;
    test.opcode(condition.cType() == mask ? IFMSK : IFIN1);
    test.param(1, condition.var());
    test.param(2, numbers::formatInteger(condition.min()));
    test.param(3, numbers::formatInteger(condition.max()));
    const detail::TestReading reading = detail::readTest(test);
    return {reading.text, reading.negated};
}

struct ConditionFunction {
    TruthTable table;
    std::vector<Term> terms;
};

ConditionFunction functionOf(const ConditionList& conditions) {
    ConditionFunction out;
    std::vector<std::string> atoms;
    std::vector<std::size_t> atomOfTest;
    for (const auto& condition : conditions) {
        if (condition->cType() != Between && condition->cType() != mask) continue;
        const Term term = termOf(*condition);
        auto found = std::find(atoms.begin(), atoms.end(), term.text);
        if (found == atoms.end()) {
            atoms.push_back(term.text);
            out.terms.push_back(term);
            found = std::prev(atoms.end());
        }
        atomOfTest.push_back(static_cast<std::size_t>(found - atoms.begin()));
    }
    const eMultiCondition combination = conditions.multiCondition();
    out.table = TruthTable::of(atoms, [&](uint32_t row) {
        std::size_t holding = 0;
        for (const std::size_t atom : atomOfTest)
            holding += (row >> atom) & 1u;
        switch (combination) {
            case mOR:
                return holding > 0;
            case mNOT:
                return holding == 0;
            case mNOR:
                return holding < atomOfTest.size();
            default:
                return holding == atomOfTest.size();
        }
    });
    return out;
}

}  // namespace

struct GuardAnalysis::Function {
    TruthTable table;
};

GuardAnalysis::~GuardAnalysis() = default;

GuardAnalysis::GuardAnalysis(const BGLCommandList& list) : function_(std::make_unique<Function>()) {
    const auto& commands = list.commands();
    const auto count = static_cast<int32_t>(commands.Count());
    const auto at = [&commands](int32_t position) -> const BGLCommand& {
        return *commands.at0(static_cast<std::size_t>(position - 1));
    };
    for (int32_t p = 1; p <= count; ++p) {
        const BGLOpcode opcode = at(p).opcode();
        if (opcode == BGL_CALL_32 || opcode == SPRITE_VICALL) {
            guardedCall_ = p;
            callOpcode_ = opcode;
            break;
        }
    }
    if (guardedCall_ == 0) {
        workedOut_ = false;
        return;
    }
    if (callOpcode_ == SPRITE_VICALL) {
        const BGLCommand& call = at(guardedCall_);
        const auto number = [&call](int16_t index) {
            try {
                return numbers::parseNumber(call.param(index));
            } catch (const Error&) {
                return 0.0;
            }
        };
        if (number(9) == 3188) {
            rotation_ = "wind";
        } else if (number(6) == 1) {
            rotation_ = "user";
        }
    }

    // The tests of the stretch, each an atom; equal tests share one.
    std::vector<std::string> atoms;
    std::vector<Term> terms;
    std::map<int32_t, std::size_t> atomAt;  // position of a test -> its atom
    for (int32_t p = 1; p < guardedCall_; ++p) {
        const BGLCommand& command = at(p);
        const BGLOpcode opcode = command.opcode();
        if (detail::isTest(opcode)) {
            const detail::TestReading reading = detail::readTest(command);
            auto found = std::find(atoms.begin(), atoms.end(), reading.text);
            if (found == atoms.end()) {
                atoms.push_back(reading.text);
                terms.push_back({reading.text, reading.negated});
                found = std::prev(atoms.end());
            }
            atomAt[p] = static_cast<std::size_t>(found - atoms.begin());
            tests_.push_back({p, opcode, reading.text, false, opcode == IFIN1 || opcode == IFMSK});
        } else if (!detail::isPlainJump(opcode)) {
            others_.push_back({p, opcode});
        }
    }
    if (atoms.size() > TruthTable::kMostAtoms) {
        workedOut_ = false;
        formula_ = "a guard of " + numbers::formatGrouped(static_cast<int64_t>(atoms.size())) +
                   " different tests";
        return;
    }

    // Follows the stream under each assignment of the tests; a walk that loops never arrives.
    std::vector<uint8_t> visited(static_cast<std::size_t>(guardedCall_) + 1, 0);
    const int64_t mostSteps = 2 * int64_t{guardedCall_} + 16;
    const auto reaches = [&](uint32_t row) {
        int32_t p = 1;
        for (int64_t step = 0; step <= mostSteps; ++step) {
            if (p == guardedCall_) return true;
            if (p < 1 || p > guardedCall_) return false;
            visited[static_cast<std::size_t>(p)] = 1;
            const BGLCommand& command = at(p);
            const BGLOpcode opcode = command.opcode();
            if (detail::isTest(opcode)) {
                const bool holds = ((row >> atomAt[p]) & 1u) != 0;
                p = holds ? p + 1 : detail::CommandSlots::jump(command, 0);
            } else if (detail::isPlainJump(opcode)) {
                p = detail::CommandSlots::jump(command, 0);
            } else if (detail::endsWalk(opcode)) {
                return false;
            } else {
                ++p;
            }
        }
        return false;
    };
    function_->table = TruthTable::of(atoms, reaches);
    formula_ = formulaText(function_->table, terms);
    for (Test& test : tests_)
        test.reachable = visited[static_cast<std::size_t>(test.position)] != 0;

    bool readable = true;
    try {
        const std::shared_ptr<ConditionList> reading = list.getConditions(-1);
        const ConditionFunction editor = functionOf(*reading);
        editorFormula_ = formulaText(editor.table, editor.terms);
        readable = editor.table.sameFunction(function_->table);
    } catch (const Error&) {
        editorFormula_.clear();
        readable = false;
    }
    editorCanRewrite_ = readable && others_.empty() &&
                        std::all_of(tests_.begin(), tests_.end(),
                                    [](const Test& t) { return t.editable && t.reachable; });
}

bool GuardAnalysis::means(const ConditionList& conditions) const {
    if (!workedOut_) return false;
    return functionOf(conditions).table.sameFunction(function_->table);
}

bool GuardAnalysis::meansTheSameAs(const GuardAnalysis& other) const {
    if (!workedOut_ || !other.workedOut_) return formula_ == other.formula_;
    return function_->table.sameFunction(other.function_->table);
}

std::string GuardAnalysis::termOf(const BGLCommand& test) {
    return detail::isTest(test.opcode()) ? detail::readTest(test).text : std::string();
}

std::string GuardAnalysis::formulaOf(const ConditionList& conditions) {
    const ConditionFunction function = functionOf(conditions);
    return formulaText(function.table, function.terms);
}

}  // namespace velmora
