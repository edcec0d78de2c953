#include <velmora/GuardAnalysis.h>
#include <velmora/Scenario.h>

namespace velmora {

std::optional<ScenarioToShow> scenarioToShow(const GuardAnalysis& guard, const Scenario& scenario) {
    std::set<int32_t> fixed;
    for (const auto& [variable, value] : scenario.values())
        fixed.insert(variable);
    const auto changed = guard.valuesToHold(
        [&scenario](int32_t variable) { return scenario.value(variable); }, fixed);
    if (!changed) return std::nullopt;
    ScenarioToShow out{scenario, *changed};
    for (const auto& [variable, value] : *changed)
        out.scenario.set(variable, value);
    return out;
}

}  // namespace velmora
