#include <velmora/BGLCommandList.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"

#include <algorithm>

namespace velmora::editing {

namespace {

std::string commandText(const GuardAnalysis::Test& test) {
    return "command " + std::to_string(test.position) + " (" +
           BGLOpcodeDictionary::nameOf(test.opcode) + " " + test.text + ")";
}

// What the condition editor would drop or misread of the guard that is there.
std::vector<std::string> lossesOf(const GuardAnalysis& guard, bool clearing) {
    std::vector<std::string> losses;
    for (const auto& test : guard.tests()) {
        if (!test.editable) losses.push_back(commandText(test) + " would be deleted");
    }
    for (const auto& other : guard.others()) {
        losses.push_back("command " + std::to_string(other.position) + " (" +
                         BGLOpcodeDictionary::nameOf(other.opcode) + ") would be deleted");
    }
    // Conditions that are cleared are not read, so a misreading of them loses nothing.
    if (!clearing && guard.workedOut() && losses.empty() && !guard.editorCanRewrite()) {
        losses.push_back("the guard means \"" + guard.formula() +
                         "\" but the condition editor reads it as \"" + guard.editorFormula() +
                         "\", so keeping its conditions would change it (clear the conditions "
                         "to start afresh)");
    }
    return losses;
}

// The conditions the request asks for, from the model's own as the editor reads them.
std::shared_ptr<ConditionList> requested(const BGLCommandList& commands,
                                         const EditRequest& request) {
    const auto list = commands.getConditions(-1);
    if (request.clearConditions) {
        while (list->Count() > 0)
            list->Remove(1);
    }
    for (const Condition& condition : request.conditions)
        list->Add(std::make_shared<Condition>(condition));
    if (request.rotate) {
        // A rotation replaces any rotation the model had.
        for (int32_t i = list->Count(); i >= 1; --i) {
            const CondType kind = list->Item(i)->cType();
            if (kind == RotUser || kind == RotWind) list->Remove(i);
        }
        auto rotation = std::make_shared<Condition>();
        rotation->cType(*request.rotate);
        list->Add(rotation);
    }
    if (request.combine) list->multiCondition(*request.combine);
    return list;
}

// What the guard written would get wrong: tests that can't be reached, another meaning.
std::vector<std::string> faultsOf(const GuardAnalysis& after, const ConditionList& list) {
    std::vector<std::string> faults;
    for (const auto& test : after.tests()) {
        if (!test.reachable) faults.push_back(commandText(test) + " could never be reached");
    }
    if (!after.means(list)) {
        faults.push_back("the guard would mean \"" + after.formula() + "\", not \"" +
                         GuardAnalysis::formulaOf(list) + "\"");
    } else if (!after.canHold()) {
        faults.push_back("the guard \"" + GuardAnalysis::formulaOf(list) +
                         "\" could never hold, so the model would never be drawn");
    }
    return faults;
}

bool masksBehindJumps(const ConditionList& list) {
    return list.multiCondition() != mAND &&
           std::any_of(list.begin(), list.end(), [](const auto& c) { return c->cType() == mask; });
}

BGLCommandList copyOf(const BGLCommandList& list) {
    BGLCommandList copy;
    copy.commands().reserve(static_cast<std::size_t>(list.Count()));
    for (const auto& command : list)
        copy.commands().append(std::make_shared<BGLCommand>(*command));
    return copy;
}

// What the guard of a model says, for people.
std::vector<std::string> guardOf(const GuardAnalysis& guard) {
    std::string said = "guard: " + (guard.formula() == "always" ? std::string("always drawn")
                                                                : "drawn when " + guard.formula());
    if (!guard.rotation().empty()) said += ", turned to the " + guard.rotation();
    return {said};
}

}  // namespace

void editConditions(MDLObject& model, const EditRequest& request, EditSteps& steps) {
    BGLCommandList& commands = *model.BGLCommandList();
    const GuardAnalysis before(commands);
    if (before.guardedCall() == 0) {
        raiseNotApplicable(
            "the model has no guarded call (no BGL_CALL_32 or SPRITE_VICALL), so it has no "
            "conditions to change");
    }
    const std::vector<std::string> losses = lossesOf(before, request.clearConditions);
    if (!losses.empty() && !request.force) {
        throw EditRefused(losses, "the condition editor does not write these back",
                          "to change the conditions anyway");
    }

    // Written on a copy first, so that a refusal leaves the model as it was.
    const auto list = requested(commands, request);
    BGLCommandList trial = copyOf(commands);
    trial.addCondition(list);
    const std::vector<std::string> faults = faultsOf(GuardAnalysis(trial), *list);
    if (!faults.empty() && !request.force) {
        throw EditRefused(faults,
                          masksBehindJumps(*list)
                              ? "a mask condition is written directly in front of the call, "
                                "behind the jumps of or, not and nor; combine it with and"
                              : "",
                          "to write it anyway");
    }
    commands.addCondition(list);

    EditStep step;
    // Forced past a fault, the guard written is not what was asked: it must read back as made.
    const std::shared_ptr<ConditionList> meant = faults.empty() ? list : nullptr;
    step.readBack = [meant](const MDLObject& written) {
        const GuardAnalysis guard(*written.BGLCommandList());
        if (meant && !guard.means(*meant)) {
            raiseReadBack("the model written reads back with the guard \"" + guard.formula() +
                          "\", not \"" + GuardAnalysis::formulaOf(*meant) + "\"");
        }
        return guardOf(guard);
    };
    for (const auto& loss : losses)
        step.notes.push_back("forced: " + loss);
    for (const auto& fault : faults)
        step.notes.push_back("forced: " + fault);
    steps.steps.push_back(std::move(step));
}

}  // namespace velmora::editing
