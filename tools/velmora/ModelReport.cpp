#include "ModelReport.h"

#include <iomanip>
#include <iostream>
#include <sstream>

namespace tool {

namespace {

const velmora::BGLCommand& commandAt(const velmora::BGLCommandList& list, int32_t position) {
    return *list.Item(position);
}

bool isDayTest(const velmora::BGLCommand& command) {
    return command.opcode() == velmora::IFIN1 && command.param(1) == "906";
}

bool inSeasonalRun(const velmora::BGLCommand& command) {
    return isDayTest(command) || command.opcode() == velmora::SET_MATERIAL ||
           command.opcode() == velmora::BGL_JUMP_32;
}

std::string textureName(const velmora::MDLObject& model, const std::string& index) {
    try {
        const int position = std::stoi(index) + 1;
        if (position >= 1 && position <= model.TextureList()->Count()) {
            return velmora::utf8FromWindows1252(model.TextureList()->Item(position)->bitmap());
        }
    } catch (const std::exception&) {
    }
    return "";
}

// Runs of day tests and SET_MATERIALs: which texture shows on which days.
json seasonsReport(const velmora::MDLObject& model) {
    const velmora::BGLCommandList& list = *model.BGLCommandList();
    json runs = json::array();
    int32_t lastEnd = 0;
    for (int32_t p = 1; p <= list.Count(); ++p) {
        if (p <= lastEnd || !isDayTest(commandAt(list, p))) continue;
        int32_t first = p;
        while (first > 1 && inSeasonalRun(commandAt(list, first - 1)))
            --first;
        int32_t last = p;
        while (last < list.Count() && inSeasonalRun(commandAt(list, last + 1)))
            ++last;
        json variants = json::array();
        for (int32_t k = first; k <= last; ++k) {
            const velmora::BGLCommand& command = commandAt(list, k);
            if (command.opcode() != velmora::SET_MATERIAL) continue;
            json variant{{"position", k},
                         {"texture", std::stoi(command.param(1))},
                         {"name", textureName(model, command.param(1))}};
            if (k > 1 && isDayTest(commandAt(list, k - 1))) {
                const velmora::BGLCommand& test = commandAt(list, k - 1);
                variant["days"] = {std::stoi(test.param(2)), std::stoi(test.param(3))};
            } else {
                variant["days"] = nullptr;  // the run's default: every other day
            }
            variants.push_back(variant);
        }
        runs.push_back({{"first", first}, {"last", last}, {"variants", variants}});
        lastEnd = last;
    }
    return runs;
}

// The tests that skip a light when they fail: the run of tests and overrides just in front.
json lightsReport(const velmora::BGLCommandList& list) {
    json lights = json::array();
    for (int32_t p = 1; p <= list.Count(); ++p) {
        const velmora::BGLCommand& light = commandAt(list, p);
        if (light.opcode() != velmora::BGL_LIGHT) continue;
        json tests = json::array();
        for (int32_t k = p - 1; k >= 1; --k) {
            const velmora::BGLCommand& before = commandAt(list, k);
            if (before.opcode() == velmora::VAR_BASE_OVERRIDE) continue;
            if (before.opcode() != velmora::IFMSK && before.opcode() != velmora::IFIN1) break;
            tests.push_back(velmora::GuardAnalysis::termOf(before));
        }
        std::ostringstream colour;
        try {
            colour << "0x" << std::hex << std::uppercase << std::setw(8) << std::setfill('0')
                   << static_cast<uint32_t>(std::stol(light.param(7)));
        } catch (const std::exception&) {
            colour.str(light.param(7));
        }
        lights.push_back({{"position", p},
                          {"type", light.param(0)},
                          {"at", {light.param(1), light.param(2), light.param(3)}},
                          {"colour", colour.str()},
                          {"tests", tests}});
    }
    return lights;
}

json sizeTestsReport(const velmora::BGLCommandList& list) {
    json tests = json::array();
    for (int32_t p = 1; p <= list.Count(); ++p) {
        const velmora::BGLCommand& test = commandAt(list, p);
        if (test.opcode() != velmora::IFSIZEV && test.opcode() != velmora::IFSIZEH) continue;
        tests.push_back({{"position", p},
                         {"opcode", opcodeName(test.opcode())},
                         {"size", test.param(1)},
                         {"pixels", test.param(2)},
                         {"failsTo", test.jumpDest(0)}});
    }
    return tests;
}

const char* combineName(velmora::eMultiCondition combination) {
    switch (combination) {
        case velmora::mOR:
            return "or";
        case velmora::mNOT:
            return "not";
        case velmora::mNOR:
            return "nor";
        default:
            return "and";
    }
}

}  // namespace

std::vector<std::string> editorLimits(const velmora::GuardAnalysis& guard) {
    std::vector<std::string> limits;
    if (guard.guardedCall() == 0) return {"the stream has no guarded call"};
    if (!guard.workedOut()) limits.push_back("the guard holds too many different tests");
    for (const auto& test : guard.tests()) {
        const std::string command =
            "command " + std::to_string(test.position) + " (" + opcodeName(test.opcode) + ")";
        if (!test.editable) {
            limits.push_back(command + " is a test the condition editor does not write back");
        } else if (!test.reachable) {
            limits.push_back(command + " can never be reached");
        }
    }
    for (const auto& other : guard.others()) {
        limits.push_back("command " + std::to_string(other.position) + " (" +
                         opcodeName(other.opcode) +
                         ") stands in front of the call and would be removed");
    }
    if (guard.workedOut() && limits.empty() && !guard.editorCanRewrite()) {
        limits.push_back("the condition editor reads it as \"" + guard.editorFormula() +
                         "\", which means something else");
    }
    return limits;
}

json guardReport(const velmora::BGLCommandList& commands) {
    const velmora::GuardAnalysis guard(commands);
    if (guard.guardedCall() == 0) {
        return {{"guardedCall", nullptr}, {"formula", nullptr}, {"tests", json::array()}};
    }
    json tests = json::array();
    for (const auto& test : guard.tests()) {
        tests.push_back({{"position", test.position},
                         {"opcode", opcodeName(test.opcode)},
                         {"text", test.text},
                         {"reachable", test.reachable},
                         {"editable", test.editable}});
    }
    json others = json::array();
    for (const auto& other : guard.others())
        others.push_back({{"position", other.position}, {"opcode", opcodeName(other.opcode)}});
    json editor{{"canRewrite", guard.editorCanRewrite()}, {"limits", editorLimits(guard)}};
    try {
        const auto conditions = commands.getConditions(-1);
        editor["reads"] = guard.editorFormula();
        editor["combine"] = combineName(conditions->multiCondition());
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
    return {{"guardedCall", guard.guardedCall()},
            {"callOpcode", opcodeName(guard.callOpcode())},
            {"rotation", guard.rotation().empty() ? json(nullptr) : json(guard.rotation())},
            {"formula", guard.formula()},
            {"tests", tests},
            {"otherCommands", others},
            {"editor", editor}};
}

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
    out["guard"] = guardReport(*model.BGLCommandList());
    out["seasons"] = seasonsReport(model);
    out["lights"] = lightsReport(*model.BGLCommandList());
    out["sizeTests"] = sizeTestsReport(*model.BGLCommandList());
    out["killShadow"] = hasKillShadow(model);
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
