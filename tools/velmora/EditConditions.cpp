#include "Edit.h"
#include "ModelReport.h"

#include <sstream>

namespace tool {

namespace {

int16_t parseShort(const std::string& text, const std::string& what, const std::string& condition) {
    try {
        std::size_t used = 0;
        const long value = std::stol(text, &used);
        if (used == text.size() && value >= -32768 && value <= 32767)
            return static_cast<int16_t>(value);
    } catch (const std::exception&) {
    }
    throw UsageError("bad " + what + " '" + text + "' in --condition '" + condition +
                     "': give a whole number from -32768 to 32767");
}

velmora::eMultiCondition combinationNamed(const std::string& name) {
    if (name == "or") return velmora::mOR;
    if (name == "not") return velmora::mNOT;
    if (name == "nor") return velmora::mNOR;
    return velmora::mAND;
}

std::string commandsText(const std::vector<std::string>& lines) {
    std::string out;
    for (const std::string& line : lines)
        out += (out.empty() ? "" : "; ") + line;
    return out;
}

}  // namespace

std::shared_ptr<velmora::Condition> parseCondition(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    auto condition = std::make_shared<velmora::Condition>();
    if (words.size() == 4 && words[0] == "between") {
        condition->cType(velmora::Between);
        condition->var(std::to_string(parseShort(words[1], "variable", text)));
        condition->min(parseShort(words[2], "minimum", text));
        condition->max(parseShort(words[3], "maximum", text));
    } else if (words.size() == 3 && words[0] == "mask") {
        condition->cType(velmora::mask);
        condition->var(std::to_string(parseShort(words[1], "variable", text)));
        condition->min(parseShort(words[2], "mask value", text));
    } else {
        throw UsageError("bad --condition '" + text +
                         "': give \"between VAR MIN MAX\" or \"mask VAR VALUE\"");
    }
    return condition;
}

std::vector<std::string> editConditions(velmora::MDLObject& model, const EditOptions& o,
                                        EditIntent& intent) {
    auto& commands = *model.BGLCommandList();
    const velmora::GuardAnalysis before(commands);
    if (before.guardedCall() == 0) {
        throw ToolError(o.model,
                        "has no guarded call (no BGL_CALL_32 or SPRITE_VICALL), so it "
                        "has no conditions to change");
    }

    // What the condition editor would drop or misread of the guard that is there.
    std::vector<std::string> losses;
    for (const auto& test : before.tests()) {
        if (!test.editable) {
            losses.push_back("command " + std::to_string(test.position) + " (" +
                             opcodeName(test.opcode) + " " + test.text + ") would be deleted");
        }
    }
    for (const auto& other : before.others()) {
        losses.push_back("command " + std::to_string(other.position) + " (" +
                         opcodeName(other.opcode) + ") would be deleted");
    }
    if (!o.clearConditions && before.workedOut() && losses.empty() && !before.editorCanRewrite()) {
        losses.push_back("the guard means \"" + before.formula() +
                         "\" but the condition editor reads it as \"" + before.editorFormula() +
                         "\", so keeping its conditions would change it (add --clear-conditions "
                         "to start afresh)");
    }
    if (!losses.empty() && !o.force) {
        throw ToolError(
            o.model,
            "refused: " + commandsText(losses) + "; the condition editor does not write these back",
            "use --force to change the conditions anyway");
    }

    const auto list = commands.getConditions(-1);
    if (o.clearConditions) {
        while (list->Count() > 0)
            list->Remove(1);
    }
    for (const auto& text : o.conditions)
        list->Add(parseCondition(text));
    if (!o.rotate.empty()) {
        // A rotation replaces any rotation the model had.
        for (int32_t i = list->Count(); i >= 1; --i) {
            const auto kind = list->Item(i)->cType();
            if (kind == velmora::RotUser || kind == velmora::RotWind) list->Remove(i);
        }
        auto rotation = std::make_shared<velmora::Condition>();
        rotation->cType(o.rotate == "user" ? velmora::RotUser : velmora::RotWind);
        list->Add(rotation);
    }
    if (!o.combine.empty()) list->multiCondition(combinationNamed(o.combine));
    commands.addCondition(list);
    intent.conditions = list;

    // What was written must mean what was asked, with every test reachable.
    const velmora::GuardAnalysis after(commands);
    std::vector<std::string> faults;
    for (const auto& test : after.tests()) {
        if (!test.reachable) {
            faults.push_back("command " + std::to_string(test.position) + " (" +
                             opcodeName(test.opcode) + " " + test.text +
                             ") could never be reached");
        }
    }
    const std::string meant = velmora::GuardAnalysis::formulaOf(*list);
    if (!after.means(*list)) {
        faults.push_back("the guard would mean \"" + after.formula() + "\", not \"" + meant + "\"");
    }
    if (!faults.empty() && !o.force) {
        bool maskCondition = false;
        for (const auto& condition : *list)
            maskCondition = maskCondition || condition->cType() == velmora::mask;
        const bool maskBehindJumps = maskCondition && list->multiCondition() != velmora::mAND;
        throw ToolError(o.model, "refused: " + commandsText(faults),
                        maskBehindJumps
                            ? "a mask condition is written directly in front of the call, behind "
                              "the jumps of or, not and nor; combine it with and, or use --force"
                            : "use --force to write it anyway");
    }
    if (!faults.empty()) intent.conditions = nullptr;  // forced: no read-back check of the guard

    std::vector<std::string> done{"guard: " + (after.formula() == "always"
                                                   ? std::string("always drawn")
                                                   : "drawn when " + after.formula())};
    if (!after.rotation().empty()) done.back() += ", turned to the " + after.rotation();
    for (const auto& loss : losses)
        done.push_back("forced: " + loss);
    for (const auto& fault : faults)
        done.push_back("forced: " + fault);
    return done;
}

}  // namespace tool
