#include "../ModelReport.h"
#include "Studio.h"

namespace tool::studio {

namespace {

// The variables the scenario controls offer for a model: complexity, and each variable of its
// guard, with the values that show the model as the thumbnail does.
json scenarioOfModel(const velmora::MDLObject& model) {
    const velmora::GuardAnalysis guard(*model.BGLCommandList());
    const std::optional<velmora::ScenarioToShow> shown =
        velmora::scenarioToShow(guard, velmora::Scenario());
    const velmora::Scenario scenario = shown ? shown->scenario : velmora::Scenario();
    json variables = json::array();
    std::vector<int32_t> offered = guard.variables();
    if (std::find(offered.begin(), offered.end(), velmora::variables::kComplexity) ==
        offered.end()) {
        offered.insert(offered.begin(), velmora::variables::kComplexity);
    }
    for (const int32_t variable : offered) {
        variables.push_back({{"variable", variable}, {"value", scenario.value(variable)}});
    }
    json drawnWith = json::object();
    if (shown) {
        for (const auto& [variable, value] : shown->changed)
            drawnWith[std::to_string(variable)] = value;
    }
    return {
        {"variables", variables}, {"drawnWith", drawnWith}, {"guardCanHold", shown.has_value()}};
}

// The reversed triangles the glTF of the same scenario holds, their corners in glTF's axes.
json reversedOf(const velmora::MDLObject& model, const std::optional<velmora::Scenario>& scenario) {
    velmora::GeometryCollector geometry;
    model.walk(geometry, scenario);
    json triangles = json::array();
    for (const auto& triangle : geometry.triangles()) {
        if (!velmora::isReversed(triangle.corners)) continue;
        json corners = json::array();
        for (const velmora::Corner& corner : triangle.corners)
            corners.push_back({corner.position[0], corner.position[1], -corner.position[2]});
        triangles.push_back({{"command", triangle.command}, {"corners", corners}});
    }
    return {{"triangles", triangles}};
}

}  // namespace

void addViewRoutes(httplib::Server& server, Studio& studio) {
    const std::string model = R"(/api/models/([0-9a-f]{12}))";
    server.Get(model + "/commands",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                          httplib::Response& response) {
                   const auto loaded = studio.load(entry);
                   loaded->BGLCommandList()->processParent();
                   answerJson(response, commandsReport(entry.path, *loaded->BGLCommandList()));
               }));
    // The same as text, a line a command: a twentieth of the JSON's time and half its size.
    server.Get(model + "/commands.txt",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                          httplib::Response& response) {
                   const auto loaded = studio.load(entry);
                   loaded->BGLCommandList()->processParent();
                   response.set_content(commandsListing(*loaded->BGLCommandList()),
                                        "text/plain; charset=utf-8");
               }));
    server.Get(model + "/scenario",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                          httplib::Response& response) {
                   answerJson(response, scenarioOfModel(*studio.load(entry)));
               }));
    server.Get(model + "/reversed",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request& request,
                                          httplib::Response& response) {
                   const auto scenario = scenarioOf(scenarioOptions(request));
                   answerJson(response, reversedOf(*studio.load(entry), scenario));
               }));
}

}  // namespace tool::studio
