#pragma once

#include <velmora/velmora.h>

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>

namespace tool {

// A failure of the tool itself (a missing input, a bad option value), as opposed to an error
// of the library. main() prints either as one line and exits non-zero.
class ToolError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The subcommands; each file adds one (or two) to the application.
void addInfoCommand(CLI::App& app);
void addCommandsCommand(CLI::App& app);
void addRenderCommand(CLI::App& app);
void addExportCommands(CLI::App& app);
void addEditCommand(CLI::App& app);
void addScanCommand(CLI::App& app);

// Loads a model file; a missing file is a ToolError naming it.
std::shared_ptr<velmora::MDLObject> loadModel(const std::string& path);

// Runs `write` with a temporary path beside `target` and moves the result into place only when
// `write` succeeded, so an output is written whole or not at all.
void writeWhole(const std::string& target, const std::function<void(const std::string&)>& write);

// The conditions of a model's guarded call in words, or why there are none.
std::string describeConditions(velmora::BGLCommandList& commands);
std::string describeCondition(const velmora::Condition& condition);

// True when the model's "SHAD" section is the 12-byte kill shadow.
bool hasKillShadow(const velmora::MDLObject& model);

// The name of an opcode for people: the dictionary's name, or "OPCODE n".
std::string opcodeName(int32_t opcode);

// Progress on standard error, only when it is a terminal.
void showProgress(const std::string& what, int done, int total);

}  // namespace tool
