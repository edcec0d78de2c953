#include "Tool.h"

#include <nlohmann/json.hpp>

#include <iomanip>
#include <iostream>
#include <sstream>

namespace tool {

namespace {

using nlohmann::json;

json conditionsJson(velmora::BGLCommandList& commands) {
    json out;
    out["summary"] = describeConditions(commands);
    try {
        const auto conditions = commands.getConditions(-1);
        static const char* combine[] = {"and", "or", "not", "nor"};
        const auto multi = conditions->multiCondition();
        out["combine"] = (multi >= 0 && multi <= 3) ? combine[multi] : "unknown";
        out["list"] = json::array();
        for (const auto& condition : *conditions) {
            out["list"].push_back({{"type", condition->getTypeString()},
                                   {"variable", condition->var()},
                                   {"min", condition->min()},
                                   {"max", condition->max()}});
        }
    } catch (const velmora::Error&) {
        out["list"] = nullptr;
    }
    return out;
}

json infoJson(const std::string& path, velmora::MDLObject& model) {
    json out;
    out["file"] = path;
    out["sections"] = json::array();
    for (int16_t i = 0; i < model.getNumRIFFSections(); ++i) {
        if (model.getRIFFSectionSize(i) > 0) {
            out["sections"].push_back(
                {{"tag", model.getRIFFSectionTag(i)}, {"size", model.getRIFFSectionSize(i)}});
        }
    }
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
        out["textures"].push_back({{"index", index++},
                                   {"bitmap", texture->bitmap()},
                                   {"type", texture->getTypeString()},
                                   {"typeValue", texture->textureType()},
                                   {"size", texture->size()}});
    }
    out["conditions"] = conditionsJson(*model.BGLCommandList());
    out["killShadow"] = hasKillShadow(model);
    return out;
}

void printText(const json& info) {
    std::cout << "Model " << info["file"].get<std::string>() << "\n\nSections\n";
    for (const auto& section : info["sections"]) {
        std::cout << "  " << std::left << std::setw(6)
                  << ("\"" + section["tag"].get<std::string>() + "\"") << std::right
                  << std::setw(10) << section["size"].get<int>() << " bytes\n";
    }
    std::cout << "\nHeader values  ";
    for (const auto& value : info["header"])
        std::cout << " " << value.get<int>();
    const auto& box = info["boundingBox"];
    std::cout << "\nBounding box    min (" << box["min"][0] << ", " << box["min"][1] << ", "
              << box["min"][2] << ")  max (" << box["max"][0] << ", " << box["max"][1] << ", "
              << box["max"][2] << ")\n";
    const auto& counts = info["counts"];
    std::cout << "Counts          " << counts["vertices"] << " vertices, " << counts["materials"]
              << " materials, " << counts["textures"] << " textures, " << counts["commands"]
              << " commands\n\nTextures\n";
    if (info["textures"].empty()) std::cout << "  (none)\n";
    for (const auto& texture : info["textures"]) {
        std::ostringstream line;
        line << "  " << std::setw(3) << texture["index"].get<int>() << "  " << std::left
             << std::setw(24) << texture["bitmap"].get<std::string>() << std::setw(20)
             << (texture["type"].get<std::string>().empty()
                     ? "type " + std::to_string(texture["typeValue"].get<int>())
                     : texture["type"].get<std::string>())
             << "size " << texture["size"].get<double>();
        std::cout << line.str() << "\n";
    }
    std::cout << "\nConditions      " << info["conditions"]["summary"].get<std::string>() << "\n";
    std::cout << "Kill shadow     " << (info["killShadow"].get<bool>() ? "yes" : "no") << "\n";
}

}  // namespace

void addInfoCommand(CLI::App& app) {
    auto* command = app.add_subcommand("info", "Show a model's sections, tables and conditions");
    auto path = std::make_shared<std::string>();
    auto asJson = std::make_shared<bool>(false);
    command->add_option("MODEL", *path, "Model file (.mdl)")->required();
    command->add_flag("--json", *asJson, "Print JSON for scripts");
    command->callback([path, asJson] {
        const auto model = loadModel(*path);
        const json info = infoJson(*path, *model);
        if (*asJson) {
            std::cout << info.dump(2) << "\n";
        } else {
            printText(info);
        }
    });
}

}  // namespace tool
