#include "Tool.h"

#include <iostream>

int main(int argc, char** argv) {
    CLI::App app{"velmora: look into, change, preview and export scenery MDL models"};
    app.set_version_flag("--version", "velmora " + velmora::versionString());
    app.require_subcommand(1);
    app.fallthrough(false);

    tool::addInfoCommand(app);
    tool::addCommandsCommand(app);
    tool::addRenderCommand(app);
    tool::addExportCommands(app);
    tool::addEditCommand(app);
    tool::addScanCommand(app);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::cerr << "velmora: " << e.what() << " (see velmora --help)\n";
        return 2;
    } catch (const velmora::Error& e) {
        std::cerr << "velmora: error " << e.number() << " (" << e.source()
                  << "): " << e.description() << "\n";
        return 1;
    } catch (const tool::ToolError& e) {
        std::cerr << "velmora: " << e.what() << "\n";
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "velmora: " << e.what() << "\n";
        return 1;
    }
    return 0;
}
