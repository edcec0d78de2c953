#include "ModelReport.h"

#include <velmora/FrontFace.h>

#include <iomanip>
#include <iostream>
#include <sstream>

namespace tool {

namespace {

// A parameter as a number where its text is one, with the text beside it where JSON writes the
// number otherwise ("1E+10"); a text that is no number as it is.
json parameterJson(const std::string& text) {
    const json number = jsonNumber(text);
    if (number.is_null()) {
        json param;
        putModelText(param, "text", text);
        return param.size() == 1 ? param["text"] : param;
    }
    if (number.dump() == text) return number;
    return {{"value", number}, {"text", text}};
}

// A parameter's text as a number where it is one.
json numberOrText(const std::string& text) {
    const json number = jsonNumber(text);
    return number.is_null() ? json(text) : number;
}

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
json lightsReport(const velmora::StreamAnalysis& analysis) {
    json lights = json::array();
    for (const velmora::LightReport& light : analysis.lights()) {
        json tests = json::array();
        for (const auto& guard : light.guards) {
            if (!guard.text.empty()) tests.push_back(guard.text);
        }
        json entry{{"position", light.position},
                   {"type", light.type},
                   {"at", {light.at[0], light.at[1], light.at[2]}},
                   {"colour", nullptr},
                   {"tests", tests}};
        if (light.colour) {
            char rgb[8];
            std::snprintf(rgb, sizeof rgb, "#%06X", *light.colour & 0xFFFFFFu);
            entry["colour"] = rgb;
            entry["alpha"] = *light.colour >> 24;
        }
        lights.push_back(entry);
    }
    return lights;
}

json sizeTestsReport(const velmora::StreamAnalysis& analysis) {
    json tests = json::array();
    for (const velmora::SizeTest& test : analysis.sizeTests()) {
        tests.push_back({{"position", test.position},
                         {"opcode", velmora::BGLOpcodeDictionary::nameOf(test.opcode)},
                         {"size", test.size},
                         {"pixels", test.pixels},
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
                                            {"variable", numberOrText(condition->var())},
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
    putModelText(out, "isft", model.isftText());
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
    out["lights"] = lightsReport(analysis);
    out["sizeTests"] = sizeTestsReport(analysis);
    out["killShadow"] = velmora::shadowKindOf(model) == velmora::ShadowKind::KillShadow;
    out["reversedTriangles"] = velmora::reversedTriangles(model);
    return out;
}

json commandsReport(const std::string& path, const velmora::BGLCommandList& list) {
    json commands = json::array();
    int32_t position = 0;
    for (const auto& command : list) {
        ++position;
        const velmora::BGLCommandDictEntry* row =
            velmora::BGLOpcodeDictionary::row(command->opcode());
        json entry{{"position", position},
                   {"opcode", command->opcode()},
                   {"name", velmora::BGLOpcodeDictionary::nameOf(command->opcode())}};
        json params = json::array();
        json jumps = json::array();
        for (int16_t i = 0; row != nullptr && i < row->numParam; ++i)
            params.push_back(parameterJson(command->param(i)));
        for (int16_t i = 0; row != nullptr && i < row->numParam; ++i) {
            if (row->isJump[static_cast<std::size_t>(i)]) {
                jumps.push_back({{"param", i}, {"target", command->jumpDest(i)}});
            }
        }
        entry["params"] = params;
        entry["jumps"] = jumps;
        if (command->parent() != 0) entry["list"] = command->parent();
        commands.push_back(entry);
    }
    return {{"format", kJsonFormat}, {"file", path}, {"commands", commands}};
}

std::string commandsListing(const velmora::BGLCommandList& list) {
    std::ostringstream out;
    int32_t position = 0;
    for (const auto& command : list) {
        ++position;
        const velmora::BGLCommandDictEntry* row =
            velmora::BGLOpcodeDictionary::row(command->opcode());
        out << position << "  " << velmora::BGLOpcodeDictionary::nameOf(command->opcode());
        const int16_t count = row != nullptr ? row->numParam : 0;
        for (int16_t i = 0; i < count; ++i) {
            out << (i == 0 ? " " : ", ") << modelText(command->param(i));
            if (row->isJump[static_cast<std::size_t>(i)]) out << " -> " << command->jumpDest(i);
        }
        if (command->parent() != 0) out << "  (list " << command->parent() << ")";
        out << "\n";
    }
    return out.str();
}

json compiledModelReport(const std::string& file, int index, const velmora::MDLObject& model) {
    json entry{{"file", file},
               {"model", index},
               {"size", model.getRIFFSectionSize(0) + 8},
               {"vertices", model.VertexList()->Count()},
               {"materials", model.MaterialList()->Count()},
               {"textures", model.TextureList()->Count()},
               {"commands", model.BGLCommandList()->Count()}};
    const std::string guid = velmora::guidText(model.sceneryGuid());
    entry["guid"] = guid.empty() ? json(nullptr) : json(guid);
    putModelText(entry, "isft", model.isftText());
    const velmora::GuardAnalysis guard(*model.BGLCommandList());
    entry["guard"] = guard.guardedCall() == 0 ? json(nullptr) : json(guard.formula());
    return entry;
}

namespace {

std::string grouped(int64_t value) {
    std::string digits = std::to_string(value < 0 ? -value : value);
    for (int i = static_cast<int>(digits.size()) - 3; i > 0; i -= 3)
        digits.insert(static_cast<std::size_t>(i), 1, ',');
    return (value < 0 ? "-" : "") + digits;
}

// Characters a UTF-8 text shows, for columns.
std::size_t shown(const std::string& text) {
    std::size_t count = 0;
    for (const char c : text)
        count += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    return count;
}

// `text` and blanks up to `width` characters.
std::string padded(const std::string& text, std::size_t width) {
    return text + std::string(width > shown(text) ? width - shown(text) : 0, ' ');
}

// The width of a column: its widest entry and two blanks.
std::size_t widthOf(const json& rows, const char* key) {
    std::size_t width = 0;
    for (const auto& row : rows)
        width = std::max(width, shown(row[key].get<std::string>()));
    return width + 2;
}

// A text up to its terminating zero: the rest is no part of it.
std::string untilZero(const std::string& text) {
    return text.substr(0, text.find('\0'));
}

void line(std::ostream& out, const std::string& label, const std::string& text) {
    out << padded(label, 16) << text << "\n";
}

std::string commandAt(int position, std::size_t width) {
    return "  command " + padded(std::to_string(position), width);
}

void printGuardTests(std::ostream& out, const json& guard) {
    std::size_t width = 0;
    for (const char* key : {"tests", "otherCommands"}) {
        for (const auto& entry : guard[key])
            width = std::max(width, std::to_string(entry["position"].get<int>()).size() + 2);
    }
    const std::size_t opcodes = widthOf(guard["tests"], "opcode");
    for (const auto& test : guard["tests"]) {
        std::string note = test["editable"].get<bool>() ? "" : "  not written back by the editor";
        if (!test["reachable"].get<bool>()) note += "  never reached";
        out << commandAt(test["position"], width) << padded(test["opcode"], opcodes)
            << test["text"].get<std::string>() << note << "\n";
    }
    for (const auto& other : guard["otherCommands"]) {
        out << commandAt(other["position"], width) << other["opcode"].get<std::string>()
            << "  in front of the call\n";
    }
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
    printGuardTests(out, guard);
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

void printTables(std::ostream& out, const json& report) {
    out << "Model " << report["file"].get<std::string>() << "\n\nSections\n";
    for (const auto& section : report["sections"]) {
        out << "  " << padded("\"" + section["tag"].get<std::string>() + "\"", 8) << std::right
            << std::setw(12) << grouped(section["size"].get<int64_t>()) << " bytes\n";
    }
    out << "\n";
    const std::string isft = untilZero(report["isft"]);
    if (!isft.empty()) line(out, "ISFT", isft);
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
}

void printTextures(std::ostream& out, const json& textures) {
    out << "Textures\n";
    const std::size_t names = widthOf(textures, "name");
    const std::size_t types = widthOf(textures, "type");
    for (const auto& texture : textures) {
        out << "  " << std::right << std::setw(3) << texture["index"].get<int>() << "  "
            << padded(untilZero(texture["name"]), names) << padded(texture["type"], types)
            << "size " << texture["size"].get<double>() << "\n";
    }
}

void printSeasons(std::ostream& out, const json& runs) {
    if (runs.empty()) line(out, "Seasons", "none");
    for (const auto& run : runs) {
        line(out, "Seasons",
             "commands " + std::to_string(run["first"].get<int>()) + " to " +
                 std::to_string(run["last"].get<int>()) + ":");
        for (const auto& variant : run["variants"]) {
            const std::string days = variant["days"].is_null()
                                         ? std::string("other days")
                                         : "days " + std::to_string(variant["days"][0].get<int>()) +
                                               " to " +
                                               std::to_string(variant["days"][1].get<int>());
            out << "  " << padded(days, 20) << "texture " << variant["texture"].get<int>() << " "
                << variant["name"].get<std::string>() << "\n";
        }
    }
}

std::string numberText(const json& value) {
    if (value.is_null()) return "?";
    std::ostringstream out;
    out << value.get<double>();
    return out.str();
}

void printLights(std::ostream& out, const json& lights) {
    line(out, "Lights", lights.empty() ? "none" : std::to_string(lights.size()));
    for (const auto& light : lights) {
        std::string tests;
        for (const auto& test : light["tests"])
            tests += (tests.empty() ? "" : " and ") + test.get<std::string>();
        out << "  command " << light["position"].get<int>() << " at (" << numberText(light["at"][0])
            << ", " << numberText(light["at"][1]) << ", " << numberText(light["at"][2])
            << "), colour "
            << (light["colour"].is_null() ? std::string("?") : light["colour"].get<std::string>())
            << (tests.empty() ? "" : ", shown when " + tests) << "\n";
    }
}

void printSizeTests(std::ostream& out, const json& tests) {
    line(out, "Size tests", tests.empty() ? "none" : "");
    for (const auto& test : tests) {
        out << "  command " << test["position"].get<int>() << " "
            << test["opcode"].get<std::string>() << " size " << test["size"].get<int>() << ", "
            << test["pixels"].get<int>() << " px, fails to command " << test["failsTo"].get<int>()
            << "\n";
    }
}

// The count, the first few positions, and the fix.
void printReversed(std::ostream& out, const json& positions) {
    if (positions.empty()) {
        line(out, "Reversed", "no triangles");
        return;
    }
    constexpr std::size_t kShown = 8;
    std::string list;
    for (std::size_t i = 0; i < positions.size() && i < kShown; ++i)
        list += (i == 0 ? "" : ", ") + std::to_string(positions[i].get<int>());
    if (positions.size() > kShown) list += ", ...";
    const bool one = positions.size() == 1;
    line(out, "Reversed",
         grouped(static_cast<int64_t>(positions.size())) +
             (one ? " triangle (command " : " triangles (commands ") + list +
             (one ? ") faces" : ") face") +
             " against its normals; velmora edit --fix-winding turns them round");
}

}  // namespace

void printReport(const json& report, std::ostream& out) {
    printTables(out, report);
    printTextures(out, report["textures"]);
    printGuard(out, report["guard"]);
    printSeasons(out, report["seasons"]);
    printLights(out, report["lights"]);
    printSizeTests(out, report["sizeTests"]);
    line(out, "Kill shadow", report["killShadow"].get<bool>() ? "yes" : "no");
    printReversed(out, report["reversedTriangles"]);
}

}  // namespace tool
