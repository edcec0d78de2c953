#include "Tool.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace tool {

namespace stdfs = std::filesystem;

std::shared_ptr<velmora::MDLObject> loadModel(const std::string& path) {
    std::error_code code;
    if (!stdfs::is_regular_file(path, code))
        throw ToolError("cannot open '" + path + "': no such file");
    auto model = std::make_shared<velmora::MDLObject>();
    model->readMDL(path);
    return model;
}

void writeWhole(const std::string& target, const std::function<void(const std::string&)>& write) {
    const stdfs::path targetPath(target);
    const stdfs::path folder = targetPath.has_parent_path() ? targetPath.parent_path() : ".";
    std::error_code code;
    if (!stdfs::is_directory(folder, code)) {
        throw ToolError("cannot write '" + target + "': folder '" + folder.string() +
                        "' does not exist");
    }
    // Keep the target's extension: some writers derive names from it.
    const stdfs::path temporary =
        folder / (".velmora-" + std::to_string(getpid()) + "-" + targetPath.filename().string());
    try {
        write(temporary.string());
    } catch (...) {
        stdfs::remove(temporary, code);
        throw;
    }
    stdfs::rename(temporary, targetPath, code);
    if (code) {
        stdfs::remove(temporary, code);
        throw ToolError("cannot write '" + target + "': " + code.message());
    }
}

std::string describeCondition(const velmora::Condition& condition) {
    switch (condition.cType()) {
        case velmora::Between:
            return "variable " + condition.var() + " between " + std::to_string(condition.min()) +
                   " and " + std::to_string(condition.max());
        case velmora::mask:
            return "variable " + condition.var() + " matches mask " +
                   std::to_string(condition.min());
        case velmora::RotUser:
            return "rotated to face the user";
        case velmora::RotWind:
            return "rotated with the wind";
    }
    return "condition of unknown kind " + std::to_string(condition.cType());
}

std::string describeConditions(velmora::BGLCommandList& commands) {
    std::shared_ptr<velmora::ConditionList> conditions;
    try {
        conditions = commands.getConditions(-1);
    } catch (const velmora::Error&) {
        return "no guarded call (no BGL_CALL_32 or SPRITE_VICALL)";
    }
    if (conditions->Count() == 0) return "always drawn";
    std::string joined;
    for (const auto& condition : *conditions) {
        if (!joined.empty()) joined += "; ";
        joined += describeCondition(*condition);
    }
    if (conditions->Count() == 1) return "drawn when " + joined;
    switch (conditions->multiCondition()) {
        case velmora::mAND:
            return "drawn when all hold: " + joined;
        case velmora::mOR:
            return "drawn when any holds: " + joined;
        case velmora::mNOT:
            return "drawn when none holds: " + joined;
        case velmora::mNOR:
            return "drawn when not all hold: " + joined;
    }
    return joined;
}

bool hasKillShadow(const velmora::MDLObject& model) {
    static const std::string killShadow("BGL \0\0\0\0\xBD\0\x22\0", 12);
    const int16_t shadow = model.getRIFFSectionIndex("SHAD");
    return model.getRIFFSectionSize(shadow) > 0 && model.getRIFFSectionData(shadow) == killShadow;
}

std::string opcodeName(int32_t opcode) {
    const velmora::BGLCommandDictEntry* row = velmora::BGLOpcodeDictionary::row(opcode);
    if (row != nullptr && !row->name.empty()) return row->name;
    return "OPCODE " + std::to_string(opcode);
}

void showProgress(const std::string& what, int done, int total) {
    static const bool terminal = isatty(fileno(stderr)) != 0;
    if (!terminal) return;
    std::cerr << "\r" << what << " " << done << "/" << total << (done == total ? "\n" : "")
              << std::flush;
}

}  // namespace tool
