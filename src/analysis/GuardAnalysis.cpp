#include <velmora/GuardAnalysis.h>

#include <velmora/BGLCommandList.h>
#include <velmora/ConditionList.h>
#include <velmora/SceneryVariables.h>

#include "analysis/AtomValues.h"
#include "analysis/ConditionReading.h"
#include "analysis/GuardFunction.h"
#include "analysis/StreamTests.h"
#include "analysis/TruthTable.h"
#include "bgl/CommandSlots.h"
#include "foundation/Errors.h"
#include "foundation/NumberText.h"

#include <algorithm>
#include <unordered_map>

namespace velmora {

namespace {

using analysis::TruthTable;

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

// The function a condition list stands for: its tests are atoms (equal ones shared), combined as
// its multiCondition says.
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

// "wind" or "user" for a SPRITE_VICALL that turns what it calls; "" otherwise.
std::string rotationOf(const BGLCommand& call) {
    const auto number = [&call](int index) {
        try {
            return detail::CommandSlots::number(call, index);
        } catch (const Error&) {
            return 0.0;
        }
    };
    if (number(9) == variables::kWindHeading) return "wind";
    if (number(6) == 1) return "user";
    return "";
}

const BGLCommand& at(const KeyedCollection<BGLCommand>& commands, int32_t position) {
    return *commands.at0(static_cast<std::size_t>(position - 1));
}

std::string commandNamed(int32_t position, BGLOpcode opcode) {
    return "command " + std::to_string(position) + " (" + BGLOpcodeDictionary::nameOf(opcode) + ")";
}

}  // namespace

// The tests of the stretch as atoms of the formula: equal tests share one.
struct GuardAnalysis::Atoms {
    std::vector<std::string> names;
    std::vector<Term> terms;
    std::unordered_map<int32_t, std::size_t> atAt;  // position of a test -> its atom
};

GuardAnalysis::~GuardAnalysis() = default;
GuardAnalysis::GuardAnalysis(GuardAnalysis&&) noexcept = default;
GuardAnalysis& GuardAnalysis::operator=(GuardAnalysis&&) noexcept = default;

GuardAnalysis::GuardAnalysis(const BGLCommandList& list) : function_(std::make_unique<Function>()) {
    const KeyedCollection<BGLCommand>& commands = list.commands();
    findGuardedCall(commands);
    if (guardedCall_ == 0) {
        workedOut_ = false;
        return;
    }
    const Atoms atoms = readStretch(commands);
    if (atoms.names.size() > TruthTable::kMostAtoms) {
        workedOut_ = false;
        formula_ = "a guard of " +
                   numbers::formatGrouped(static_cast<int64_t>(atoms.names.size())) +
                   " different tests";
        return;
    }
    followStretch(commands, atoms);
    readAsTheEditorDoes(list);
}

void GuardAnalysis::findGuardedCall(const KeyedCollection<BGLCommand>& commands) {
    for (int32_t p = 1; p <= commands.Count(); ++p) {
        const BGLOpcode opcode = at(commands, p).opcode();
        if (opcode != BGL_CALL_32 && opcode != SPRITE_VICALL) continue;
        guardedCall_ = p;
        callOpcode_ = opcode;
        if (opcode == SPRITE_VICALL) rotation_ = rotationOf(at(commands, p));
        return;
    }
}

GuardAnalysis::Atoms GuardAnalysis::readStretch(const KeyedCollection<BGLCommand>& commands) {
    Atoms atoms;
    for (int32_t p = 1; p < guardedCall_; ++p) {
        const BGLOpcode opcode = at(commands, p).opcode();
        if (detail::isTest(opcode)) {
            const detail::TestReading reading = detail::readTest(at(commands, p));
            auto found = std::find(atoms.names.begin(), atoms.names.end(), reading.text);
            if (found == atoms.names.end()) {
                atoms.names.push_back(reading.text);
                atoms.terms.push_back({reading.text, reading.negated});
                function_->meanings.push_back(analysis::meaningOf(reading));
                function_->readings.push_back(reading);
                found = std::prev(atoms.names.end());
            }
            atoms.atAt[p] = static_cast<std::size_t>(found - atoms.names.begin());
            tests_.push_back({p, opcode, reading.text, false, opcode == IFIN1 || opcode == IFMSK});
        } else if (!detail::isPlainJump(opcode)) {
            others_.push_back({p, opcode});
        }
    }
    return atoms;
}

// Follows the stream under each assignment of the atoms; a walk that loops never arrives.
void GuardAnalysis::followStretch(const KeyedCollection<BGLCommand>& commands, const Atoms& atoms) {
    std::vector<uint8_t> visited(static_cast<std::size_t>(guardedCall_) + 1, 0);
    const int64_t mostSteps = 2 * int64_t{guardedCall_} + 16;
    const auto reaches = [&](uint32_t row) {
        int32_t p = 1;
        for (int64_t step = 0; step <= mostSteps; ++step) {
            if (p == guardedCall_) return true;
            if (p < 1 || p > guardedCall_) return false;
            visited[static_cast<std::size_t>(p)] = 1;
            const BGLCommand& command = at(commands, p);
            const BGLOpcode opcode = command.opcode();
            if (detail::isTest(opcode)) {
                const bool holds = ((row >> atoms.atAt.at(p)) & 1u) != 0;
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
    function_->table = TruthTable::of(atoms.names, reaches);
    formula_ = formulaText(function_->table, atoms.terms);
    for (Test& test : tests_)
        test.reachable = visited[static_cast<std::size_t>(test.position)] != 0;
}

void GuardAnalysis::readAsTheEditorDoes(const BGLCommandList& list) {
    bool readable = true;
    try {
        const ConditionFunction editor = functionOf(*analysis::readConditions(list));
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

std::vector<std::string> GuardAnalysis::editorLimits() const {
    if (guardedCall_ == 0) return {"the stream has no guarded call"};
    std::vector<std::string> limits;
    if (!workedOut_) limits.push_back("the guard holds too many different tests");
    for (const Test& test : tests_) {
        if (!test.editable) {
            limits.push_back(commandNamed(test.position, test.opcode) +
                             " is a test the condition editor does not write back");
        } else if (!test.reachable) {
            limits.push_back(commandNamed(test.position, test.opcode) + " can never be reached");
        }
    }
    for (const Other& other : others_) {
        limits.push_back(commandNamed(other.position, other.opcode) +
                         " stands in front of the call and would be removed");
    }
    if (workedOut_ && limits.empty() && !editorCanRewrite_) {
        limits.push_back("the condition editor reads it as \"" + editorFormula_ +
                         "\", which means something else");
    }
    return limits;
}

bool GuardAnalysis::means(const ConditionList& conditions) const {
    if (!workedOut_) return false;
    return functionOf(conditions).table.sameFunction(function_->table);
}

bool GuardAnalysis::meansTheSameAs(const GuardAnalysis& other) const {
    if (!workedOut_ || !other.workedOut_) return formula_ == other.formula_;
    return function_->table.sameFunction(other.function_->table);
}

bool GuardAnalysis::canHold() const {
    return !workedOut_ || analysis::someValuesMakeItHold(function_->table, function_->meanings);
}

std::string GuardAnalysis::termOf(const BGLCommand& test) {
    return detail::isTest(test.opcode()) ? detail::readTest(test).text : std::string();
}

std::string GuardAnalysis::formulaOf(const ConditionList& conditions) {
    const ConditionFunction function = functionOf(conditions);
    return formulaText(function.table, function.terms);
}

}  // namespace velmora
