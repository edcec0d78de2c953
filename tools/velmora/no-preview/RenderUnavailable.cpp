#include "../Tool.h"

namespace tool {

// Built without the preview: the render command says so.
void addRenderCommand(CLI::App& app) {
    auto* command = app.add_subcommand("render", "Draw a preview frame (not in this build)");
    command->allow_extras();
    command->callback([] { throw ToolError("this velmora was built without the preview"); });
}

}  // namespace tool
