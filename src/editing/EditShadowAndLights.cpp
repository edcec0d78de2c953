#include <velmora/BGLCommandList.h>
#include <velmora/StreamAnalysis.h>

#include "editing/EditErrors.h"
#include "editing/ModelEditing.h"
#include "model/SectionIndex.h"

#include <algorithm>
#include <map>

namespace velmora::editing {

namespace {

std::string bytesOf(const MDLObject& model) {
    return std::to_string(model.section(sections::SHAD).size) + " bytes";
}

// A step that finds `kind` of shadow in what it reads back and says `said`.
EditStep shadowStep(ShadowKind kind, std::string said) {
    EditStep step;
    step.readBack = [kind, said](const MDLObject& written) -> std::vector<std::string> {
        if (shadowKindOf(written) != kind) {
            raiseReadBack(kind == ShadowKind::None ? "the model written has a shadow still"
                                                   : "the model written has no kill shadow");
        }
        return {said};
    };
    return step;
}

// Adds or removes the kill shadow; the model's own shadow goes only when forced.
EditStep changeKillShadow(MDLObject& model, bool add, bool force) {
    const ShadowKind kind = shadowKindOf(model);
    const ShadowKind wanted = add ? ShadowKind::KillShadow : ShadowKind::None;
    if (kind == wanted) {
        return shadowStep(kind, add ? "kill shadow: the model has one already; nothing changed"
                                    : "kill shadow: the model has no shadow; nothing removed");
    }
    std::string said = add ? "kill shadow added" : "kill shadow removed";
    if (kind == ShadowKind::Own) {
        const std::string own = "the model's own shadow (" + bytesOf(model) + ")";
        if (!force) {
            throw EditRefused({own + (add ? " would be replaced by the kill shadow"
                                          : " is no kill shadow and would be removed")},
                              "", add ? "to replace it anyway" : "to remove it anyway");
        }
        said = add ? said + " in place of " + own : own + " removed";
    }
    if (add) {
        model.addKillShadow();
    } else {
        model.removeKillShadow();
    }
    return shadowStep(wanted, said);
}

// "4", "4 and 8", "4, 8 and 12"; beyond a dozen, how many more.
std::string positionsText(const std::vector<int32_t>& positions) {
    const std::size_t shown = std::min<std::size_t>(positions.size(), 12);
    std::string out;
    for (std::size_t i = 0; i < shown; ++i) {
        const bool last = i + 1 == shown && shown == positions.size();
        out += (i == 0 ? "" : last ? " and " : ", ") + std::to_string(positions[i]);
    }
    if (shown < positions.size()) {
        out += " and " + std::to_string(positions.size() - shown) + " more";
    }
    return out;
}

// Why a test stays in front of a light after the fix.
std::string whyKept(const LightReport::Guard& guard) {
    if (guard.opcode == IFMSK) {
        return "a mask test on a variable above " +
               std::to_string(variables::kHighestFreedLightVariable) + " stays";
    }
    return "only mask tests and overrides directly in front of a light are freed";
}

// The lights still behind tests, grouped by their nearest test: a line each.
std::vector<std::string> keptLights(const StreamAnalysis& analysis) {
    std::map<std::string, std::pair<std::vector<int32_t>, std::string>> kept;
    for (const LightReport& light : analysis.lights()) {
        if (light.guards.empty()) continue;
        const LightReport::Guard& guard = light.guards.front();
        auto& entry = kept[guard.text.empty() ? "VAR_BASE_OVERRIDE" : guard.text];
        entry.first.push_back(light.position);
        entry.second = whyKept(guard);
    }
    std::vector<std::string> lines;
    for (const auto& [test, lights] : kept) {
        lines.push_back("  " + std::to_string(lights.first.size()) + " stay behind " + test +
                        (lights.first.size() == 1 ? " (command " : " (commands ") +
                        positionsText(lights.first) + "): " + lights.second);
    }
    return lines;
}

}  // namespace

void editShadow(MDLObject& model, const EditRequest& request, EditSteps& steps) {
    if (request.addKillShadow) steps.steps.push_back(changeKillShadow(model, true, request.force));
    if (request.removeKillShadow)
        steps.steps.push_back(changeKillShadow(model, false, request.force));
}

void editLights(MDLObject& model, EditSteps& steps) {
    const StreamAnalysis before(*model.BGLCommandList());
    std::vector<int32_t> freed;
    for (const LightReport& light : before.lights()) {
        for (const LightReport::Guard& guard : light.guards) {
            if (!guard.freedByFix) continue;
            freed.push_back(light.position);
            break;
        }
    }
    const int32_t commands = model.BGLCommandList()->Count();
    model.fixLights();
    const int32_t removed = commands - model.BGLCommandList()->Count();
    const std::size_t lights = before.lights().size();

    EditStep step;
    step.readBack = [freed, removed, lights](const MDLObject& written) {
        const StreamAnalysis after(*written.BGLCommandList());
        std::size_t stillBehind = 0;
        for (const LightReport& light : after.lights()) {
            for (const LightReport::Guard& guard : light.guards)
                stillBehind += guard.freedByFix ? 1 : 0;
        }
        if (after.lights().size() != lights || stillBehind != 0) {
            raiseReadBack("the model written holds lights the fix should have freed");
        }
        std::vector<std::string> lines{"lights: " + std::to_string(freed.size()) + " of " +
                                       std::to_string(lights) +
                                       " freed of the tests and overrides in front of them (" +
                                       std::to_string(removed) + " commands removed)"};
        if (!freed.empty()) {
            lines.push_back("  freed: the lights at commands " + positionsText(freed) +
                            " of the model as loaded");
        }
        const std::vector<std::string> kept = keptLights(after);
        lines.insert(lines.end(), kept.begin(), kept.end());
        return lines;
    };
    steps.steps.push_back(std::move(step));
}

}  // namespace velmora::editing
