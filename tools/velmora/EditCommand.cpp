#include "Tool.h"

#include <iostream>
#include <sstream>
#include <vector>

namespace tool {

namespace {

struct EditOptions {
    std::string model;
    std::string output;
    bool addKillShadow = false;
    bool removeKillShadow = false;
    bool fixLights = false;
    bool cleanDict = false;
    std::string isft;
    bool setIsft = false;
    bool recalcTextureSizes = false;
    std::vector<std::string> conditions;
    std::string rotate;
    std::string combine;
    bool clearConditions = false;
};

int16_t parseShort(const std::string& text, const std::string& what) {
    try {
        std::size_t used = 0;
        const long value = std::stol(text, &used);
        if (used == text.size() && value >= -32768 && value <= 32767)
            return static_cast<int16_t>(value);
    } catch (const std::exception&) {
    }
    throw ToolError("bad " + what + " '" + text + "': give a whole number from -32768 to 32767");
}

// "between VAR MIN MAX" or "mask VAR VALUE".
std::shared_ptr<velmora::Condition> parseCondition(const std::string& text) {
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;)
        words.push_back(word);
    auto condition = std::make_shared<velmora::Condition>();
    if (words.size() == 4 && words[0] == "between") {
        condition->cType(velmora::Between);
        condition->var(std::to_string(parseShort(words[1], "variable")));
        condition->min(parseShort(words[2], "minimum"));
        condition->max(parseShort(words[3], "maximum"));
    } else if (words.size() == 3 && words[0] == "mask") {
        condition->cType(velmora::mask);
        condition->var(std::to_string(parseShort(words[1], "variable")));
        condition->min(parseShort(words[2], "mask value"));
    } else {
        throw ToolError("bad --condition '" + text +
                        "': give \"between VAR MIN MAX\" or \"mask VAR VALUE\"");
    }
    return condition;
}

bool changesConditions(const EditOptions& o) {
    return o.clearConditions || !o.conditions.empty() || !o.rotate.empty() || !o.combine.empty();
}

void editConditions(velmora::MDLObject& model, const EditOptions& o) {
    auto& commands = *model.BGLCommandList();
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
    if (!o.combine.empty()) {
        static const std::pair<const char*, velmora::eMultiCondition> names[] = {
            {"and", velmora::mAND},
            {"or", velmora::mOR},
            {"not", velmora::mNOT},
            {"nor", velmora::mNOR}};
        for (const auto& [name, value] : names) {
            if (o.combine == name) list->multiCondition(value);
        }
    }
    commands.addCondition(list);
}

// Every texture measured as a group of its own, from scratch.
void recalcTextureSizes(velmora::MDLObject& model) {
    int16_t position = 0;
    for (const auto& texture : *model.TextureList()) {
        texture->parent(++position);
        texture->size(0);
    }
    model.updateTextureSize();
}

void edit(const EditOptions& o) {
    if (o.addKillShadow && o.removeKillShadow) {
        throw ToolError("--add-kill-shadow and --remove-kill-shadow exclude each other");
    }
    const auto model = loadModel(o.model);
    std::vector<std::string> done;
    if (changesConditions(o)) {
        editConditions(*model, o);
        done.push_back("conditions: " + describeConditions(*model->BGLCommandList()));
    }
    if (o.addKillShadow) {
        model->addKillShadow();
        done.push_back("kill shadow added");
    }
    if (o.removeKillShadow) {
        model->removeKillShadow();
        done.push_back("kill shadow removed");
    }
    if (o.fixLights) {
        const int32_t before = model->BGLCommandList()->Count();
        model->fixLights();
        done.push_back("lights fixed (" +
                       std::to_string(before - model->BGLCommandList()->Count()) +
                       " commands removed)");
    }
    if (o.cleanDict) {
        model->cleanDICT();
        done.push_back("DICT emptied");
    }
    if (o.setIsft) {
        model->setISFT(o.isft);
        done.push_back("ISFT set");
    }
    if (o.recalcTextureSizes) {
        recalcTextureSizes(*model);
        done.push_back("texture sizes worked out from the geometry");
    }
    for (const auto& line : done)
        std::cout << line << "\n";
    if (done.empty()) std::cout << "no edit asked for\n";
    if (o.output.empty()) {
        std::cout << "nothing written: give -o OUT.mdl to save the edited model\n";
        return;
    }
    model->saveMDL(o.output);
    std::cout << "Saved " << o.output << "\n";
}

}  // namespace

void addEditCommand(CLI::App& app) {
    auto* command = app.add_subcommand("edit", "Change a model and save it");
    auto o = std::make_shared<EditOptions>();
    command->add_option("MODEL", o->model, "Model file (.mdl)")->required();
    command->add_option("-o,--output", o->output, "Where to save the edited model");
    command->add_flag("--add-kill-shadow", o->addKillShadow, "Give the model a kill shadow");
    command->add_flag("--remove-kill-shadow", o->removeKillShadow,
                      "Remove the model's shadow section");
    command->add_flag("--fix-lights", o->fixLights,
                      "Free lights of the tests and overrides in front of them");
    command->add_flag("--clean-dict", o->cleanDict, "Empty the DICT section");
    command->add_option("--set-isft", o->isft, "Set the ISFT text")->each([o](const std::string&) {
        o->setIsft = true;
    });
    command->add_flag("--recalc-texture-sizes", o->recalcTextureSizes,
                      "Work out every texture's size from the geometry");
    command->add_option(
        "--condition", o->conditions,
        "Add a condition: \"between VAR MIN MAX\" or \"mask VAR VALUE\" (repeatable)");
    command->add_option("--rotate", o->rotate, "Rotate the model: user or wind")
        ->check(CLI::IsMember({"user", "wind"}));
    command->add_option("--combine", o->combine, "How the tests combine: and, or, not, nor")
        ->check(CLI::IsMember({"and", "or", "not", "nor"}));
    command->add_flag("--clear-conditions", o->clearConditions,
                      "Remove the model's conditions first");
    command->callback([o] { edit(*o); });
}

}  // namespace tool
