#include "Tool.h"

#include <iostream>
#include <sstream>

namespace tool {

namespace {

// Parameter text for people: byte strings (BGL_TAG) shown with their NUL bytes as \0.
std::string printable(const std::string& text) {
    std::string out;
    for (unsigned char c : text) {
        if (c == 0) {
            out += "\\0";
        } else if (c < 32 || c > 126) {
            static const char* digits = "0123456789ABCDEF";
            out += "\\x";
            out.push_back(digits[c >> 4]);
            out.push_back(digits[c & 15]);
        } else {
            out.push_back(static_cast<char>(c));
        }
    }
    return out;
}

}  // namespace

void addCommandsCommand(CLI::App& app) {
    auto* command = app.add_subcommand("commands", "List a model's decoded command stream");
    auto path = std::make_shared<std::string>();
    command->add_option("MODEL", *path, "Model file (.mdl)")->required();
    command->callback([path] {
        const auto model = loadModel(*path);
        std::ostringstream out;
        int32_t position = 0;
        for (const auto& cmd : *model->BGLCommandList()) {
            ++position;
            const velmora::BGLCommandDictEntry* row =
                velmora::BGLOpcodeDictionary::row(cmd->opcode());
            out << position << "  " << opcodeName(cmd->opcode());
            const int16_t count = row != nullptr ? row->numParam : 0;
            for (int16_t i = 0; i < count; ++i) {
                out << (i == 0 ? " " : ", ") << printable(cmd->param(i));
                if (row->isJump[static_cast<std::size_t>(i)]) out << " -> " << cmd->jumpDest(i);
            }
            if (cmd->parent() != 0) out << "  (list " << cmd->parent() << ")";
            out << "\n";
        }
        std::cout << out.str();
    });
}

}  // namespace tool
