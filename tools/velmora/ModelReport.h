#pragma once

#include "Tool.h"

#include <ostream>

namespace tool {

// What the tool tells about a model, as JSON (see docs/json.md): the sections and tables, the
// guard of the guarded call, the seasonal runs, the lights, the size tests and the kill shadow.
json modelReport(const std::string& path, const velmora::MDLObject& model);

// What `commands --json` tells about a command list: each command with its parameters and jumps.
json commandsReport(const std::string& path, const velmora::BGLCommandList& list);
// The command stream as text, a line a command: "4  BGL_CALL_32 8 -> 6", with "  (list N)" after
// a command of a list.
std::string commandsListing(const velmora::BGLCommandList& list);

// What `scan --json` tells about the model at 1-based `index` of the compiled file `file`.
json compiledModelReport(const std::string& file, int index, const velmora::MDLObject& model);

// The report as text for people.
void printReport(const json& report, std::ostream& out);

}  // namespace tool
