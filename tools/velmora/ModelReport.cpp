#include "ModelReport.h"

#include <iomanip>
#include <iostream>
#include <sstream>

namespace tool {

namespace {

std::string textureName(const velmora::MDLObject& model, int32_t texture) {
    if (texture < 0 || texture >= model.TextureList()->Count()) return "";
    return velmora::utf8FromWindows1252(model.TextureList()->Item(texture + 1)->bitmap());
}

// Which texture shows on which days.
json seasonsReport(const velmora::MDLObject& model, const velmora::StreamAnalysis& analysis) {
    json runs = json::array();
    for (const velmora::SeasonalRun& run : analysis.seasonalRuns()) {
        json variants = json::array();
        for (const velmora::SeasonalVariant& variant : run.variants) {
            variants.push_back(
                {{"position", variant.position},
                 {"texture", variant.texture},
                 {"name", textureName(model, variant.texture)},
                 // The run's default shows on every other day.
                 {"days", variant.isDefault() ? json(nullptr)
                                              : json::array({variant.firstDay, variant.lastDay})}});
        }
        runs.push_back({{"first", run.first}, {"last", run.last}, {"variants", variants}});
    }
    return runs;
}

// The lights with the tests just in front of them.
json lightsReport(const velmora::BGLCommandList& list, const velmora::StreamAnalysis& analysis) {
    json lights = json::array();
    for (const velmora::LightReport& light : analysis.lights()) {
        const velmora::BGLCommand& command = *list.Item(light.position);
        json tests = json::array();
        for (const auto& guard : light.guards) {
            if (!guard.text.empty()) tests.push_back(guard.text);
        }
        std::ostringstream colour;
        if (light.colour) {
            colour << "0x" << std::hex << std::uppercase << std::setw(8) << std::setfill('0')
                   << *light.colour;
        } else {
            colour << command.param(7);
        }
        lights.push_back({{"position", light.position},
                          {"type", command.param(0)},
                          {"at", {command.param(1), command.param(2), command.param(3)}},
                          {"colour", colour.str()},
                          {"tests", tests}});
    }
    return lights;
}

json sizeTestsReport(const velmora::StreamAnalysis& analysis) {
    json tests = json::array();
    for (const velmora::SizeTest& test : analysis.sizeTests()) {
        tests.push_back({{"position", test.position},
                         {"opcode", velmora::BGLOpcodeDictionary::nameOf(test.opcode)},
                         {"size", std::to_string(test.size)},
                         {"pixels", std::to_string(test.pixels)},
                         {"failsTo", test.failsTo}});
    }
    return tests;
}

// What the condition editor reads of the guard, and whether it can rewrite it.
json editorReport(const velmora::BGLCommandList& commands, const velmora::GuardAnalysis& guard) {
    json editor{{"canRewrite", guard.editorCanRewrite()}, {"limits", guard.editorLimits()}};
    try {
        const auto conditions = commands.getConditions(-1);
        editor["reads"] = guard.editorFormula();
        editor["combine"] = velmora::combinationName(conditions->multiCondition());
        editor["conditions"] = json::array();
        for (const auto& condition : *conditions) {
            editor["conditions"].push_back({{"type", condition->getTypeString()},
                                            {"variable", condition->var()},
                                            {"min", condition->min()},
                                            {"max", condition->max()}});
        }
    } catch (const velmora::Error&) {
        editor["reads"] = nullptr;
    }
    return editor;
}

json guardReport(const velmora::BGLCommandList& commands, const velmora::GuardAnalysis& guard) {
    if (guard.guardedCall() == 0) {
        return {{"guardedCall", nullptr}, {"formula", nullptr}, {"tests", json::array()}};
    }
    json tests = json::array();
    for (const auto& test : guard.tests()) {
        tests.push_back({{"position", test.position},
                         {"opcode", velmora::BGLOpcodeDictionary::nameOf(test.opcode)},
                         {"text", test.text},
                         {"reachable", test.reachable},
                         {"editable", test.editable}});
    }
    json others = json::array();
    for (const auto& other : guard.others()) {
        others.push_back({{"position", other.position},
                          {"opcode", velmora::BGLOpcodeDictionary::nameOf(other.opcode)}});
    }
    return {{"guardedCall", guard.guardedCall()},
            {"callOpcode", velmora::BGLOpcodeDictionary::nameOf(guard.callOpcode())},
            {"rotation", guard.rotation().empty() ? json(nullptr) : json(guard.rotation())},
            {"formula", guard.formula()},
            {"tests", tests},
            {"otherCommands", others},
            {"editor", editorReport(commands, guard)}};
}

}  // namespace

json modelReport(const std::string& path, const velmora::MDLObject& model) {
    json out{{"format", kJsonFormat}, {"file", path}};
    out["sections"] = json::array();
    for (int16_t i = 0; i < model.getNumRIFFSections(); ++i) {
        if (model.getRIFFSectionSize(i) > 0) {
            out["sections"].push_back(
                {{"tag", model.getRIFFSectionTag(i)}, {"size", model.getRIFFSectionSize(i)}});
        }
    }
    putModelText(out, "isft", model.getISFT());
    out["header"] = json::array();
    for (int16_t i = 0; i < 9; ++i)
        out["header"].push_back(model.MDLHeader()->param(i));
    const auto box = model.BoundingBox();
    out["boundingBox"] = {{"min", {box->xmin(), box->ymin(), box->zmin()}},
                          {"max", {box->xmax(), box->ymax(), box->zmax()}}};
    out["counts"] = {{"vertices", model.VertexList()->Count()},
                     {"materials", model.MaterialList()->Count()},
                     {"textures", model.TextureList()->Count()},
                     {"commands", model.BGLCommandList()->Count()}};
    out["textures"] = json::array();
    int index = 0;
    for (const auto& texture : *model.TextureList()) {
        json entry{{"index", index++},
                   {"type", texture->getTypeString()},
                   {"typeValue", texture->textureType()},
                   {"size", texture->size()}};
        putModelText(entry, "name", texture->bitmap());
        out["textures"].push_back(entry);
    }
    const velmora::BGLCommandList& commands = *model.BGLCommandList();
    const velmora::StreamAnalysis analysis(commands);
    out["guard"] = guardReport(commands, analysis.guard());
    out["seasons"] = seasonsReport(model, analysis);
    out["lights"] = lightsReport(commands, analysis);
    out["sizeTests"] = sizeTestsReport(analysis);
    out["killShadow"] = velmora::shadowKindOf(model) == velmora::ShadowKind::KillShadow;
    return out;
}

namespace {

std::string grouped(int64_t value) {
    std::string digits = std::to_string(value < 0 ? -value : value);
    for (int i = static_cast<int>(digits.size()) - 3; i > 0; i -= 3)
        digits.insert(static_cast<std::size_t>(i), 1, ',');
    return (value < 0 ? "-" : "") + digits;
}

void line(std::ostream& out, const std::string& label, const std::string& text) {
    out << std::left << std::setw(16) << label << text << "\n";
}

void printGuard(std::ostream& out, const json& guard) {
    if (guard["guardedCall"].is_null()) {
        line(out, "Guard", "no guarded call (no BGL_CALL_32 or SPRITE_VICALL)");
        return;
    }
    const std::string formula = guard["formula"];
    line(out, "Guard",
         (formula == "always"  ? std::string("always drawn")
          : formula == "never" ? std::string("never drawn")
                               : "drawn when " + formula) +
             " (" + guard["callOpcode"].get<std::string>() + " at command " +
             std::to_string(guard["guardedCall"].get<int>()) + ")");
    for (const auto& test : guard["tests"]) {
        std::string note = test["editable"].get<bool>() ? "" : "  not written back by the editor";
        if (!test["reachable"].get<bool>()) note += "  never reached";
        out << "  command " << std::left << std::setw(6) << test["position"].get<int>()
            << std::setw(8) << test["opcode"].get<std::string>() << " "
            << test["text"].get<std::string>() << note << "\n";
    }
    for (const auto& other : guard["otherCommands"]) {
        out << "  command " << std::left << std::setw(6) << other["position"].get<int>()
            << other["opcode"].get<std::string>() << "  in front of the call\n";
    }
    const json& editor = guard["editor"];
    if (editor["canRewrite"].get<bool>()) {
        line(out, "Editor", "the condition editor can rewrite this guard");
    } else {
        line(out, "Editor", "the condition editor can't rewrite this guard as it is:");
        for (const auto& limit : editor["limits"])
            out << "  " << limit.get<std::string>() << "\n";
    }
    line(out, "Rotation",
         guard["rotation"].is_null()   ? std::string("none")
         : guard["rotation"] == "user" ? std::string("turns to face the user")
                                       : std::string("turns with the wind"));
}

}  // namespace

void printReport(const json& report, std::ostream& out) {
    out << "Model " << report["file"].get<std::string>() << "\n\nSections\n";
    for (const auto& section : report["sections"]) {
        out << "  " << std::left << std::setw(8)
            << ("\"" + section["tag"].get<std::string>() + "\"") << std::right << std::setw(12)
            << grouped(section["size"].get<int64_t>()) << " bytes\n";
    }
    out << "\n";
    if (!report["isft"].get<std::string>().empty()) line(out, "ISFT", report["isft"]);
    std::ostringstream header;
    for (const auto& value : report["header"])
        header << value.get<int64_t>() << " ";
    line(out, "Header", header.str());
    const json& box = report["boundingBox"];
    std::ostringstream extent;
    const char* axes[] = {"x", "y", "z"};
    for (int a = 0; a < 3; ++a) {
        extent << (a ? ", " : "") << axes[a] << " " << box["min"][a].get<double>() << " .. "
               << box["max"][a].get<double>();
    }
    line(out, "Bounding box", extent.str());
    const json& counts = report["counts"];
    line(out, "Counts",
         grouped(counts["vertices"]) + " vertices, " + grouped(counts["materials"]) +
             " materials, " + grouped(counts["textures"]) + " textures, " +
             grouped(counts["commands"]) + " commands");
    out << "Textures\n";
    for (const auto& texture : report["textures"]) {
        out << "  " << std::right << std::setw(3) << texture["index"].get<int>() << "  "
            << std::left << std::setw(34) << texture["name"].get<std::string>() << std::setw(20)
            << texture["type"].get<std::string>() << "size " << texture["size"].get<double>()
            << "\n";
    }
    printGuard(out, report["guard"]);
    if (report["seasons"].empty()) line(out, "Seasons", "none");
    for (const auto& run : report["seasons"]) {
        line(out, "Seasons",
             "commands " + std::to_string(run["first"].get<int>()) + " to " +
                 std::to_string(run["last"].get<int>()) + ":");
        for (const auto& variant : run["variants"]) {
            const std::string days = variant["days"].is_null()
                                         ? std::string("other days")
                                         : "days " + std::to_string(variant["days"][0].get<int>()) +
                                               " to " +
                                               std::to_string(variant["days"][1].get<int>());
            out << "  " << std::left << std::setw(20) << days << "texture "
                << variant["texture"].get<int>() << " " << variant["name"].get<std::string>()
                << "\n";
        }
    }
    line(out, "Lights",
         report["lights"].empty() ? "none" : std::to_string(report["lights"].size()));
    for (const auto& light : report["lights"]) {
        std::string tests;
        for (const auto& test : light["tests"])
            tests += (tests.empty() ? "" : " and ") + test.get<std::string>();
        out << "  command " << light["position"].get<int>() << " at ("
            << light["at"][0].get<std::string>() << ", " << light["at"][1].get<std::string>()
            << ", " << light["at"][2].get<std::string>() << "), colour "
            << light["colour"].get<std::string>() << (tests.empty() ? "" : ", shown when " + tests)
            << "\n";
    }
    line(out, "Size tests", report["sizeTests"].empty() ? "none" : "");
    for (const auto& test : report["sizeTests"]) {
        out << "  command " << test["position"].get<int>() << " "
            << test["opcode"].get<std::string>() << " size " << test["size"].get<std::string>()
            << ", " << test["pixels"].get<std::string>() << " px, fails to command "
            << test["failsTo"].get<int>() << "\n";
    }
    line(out, "Kill shadow", report["killShadow"].get<bool>() ? "yes" : "no");
}

}  // namespace tool
