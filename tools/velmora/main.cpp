#include "Batch.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

// Edits that turn one word into the other: insertions, deletions, changes.
std::size_t editDistance(const std::string& a, const std::string& b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] != b[j - 1])});
            diagonal = above;
        }
    }
    return row[b.size()];
}

// The nearest command to a mistyped one: one it starts, or one within a few edits.
std::string nearestCommand(const std::string& word, const std::vector<std::string>& commands) {
    std::string best;
    std::size_t bestDistance = 4;
    for (const std::string& command : commands) {
        const std::size_t distance = command.rfind(word, 0) == 0 ? 0 : editDistance(word, command);
        if (distance < bestDistance) {
            best = command;
            bestDistance = distance;
        }
    }
    return best;
}

std::string commandName(const CLI::App& app) {
    for (const CLI::App* sub : app.get_subcommands())
        return sub->get_name();
    return "";
}

int usageFailure(const std::string& command, const std::string& message) {
    std::cerr << "velmora" << (command.empty() ? "" : " " + command) << ": " << message << "\n"
              << "usage: " << tool::synopsisOf(command) << " (see velmora"
              << (command.empty() ? "" : " " + command) << " --help)\n";
    return 2;
}

// Runs the command line; gives the exit status.
int run(CLI::App& app, int argc, char** argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForAllHelp& e) {
        return app.exit(e);
    } catch (const CLI::CallForVersion& e) {
        return app.exit(e);
    } catch (const tool::ExitStatus& e) {
        return e.status;
    } catch (const CLI::ParseError& e) {
        return usageFailure(commandName(app), e.what());
    } catch (const tool::UsageError& e) {
        return usageFailure(commandName(app), e.what());
    } catch (const tool::ToolError& e) {
        std::cerr << "velmora " << commandName(app) << ": " << tool::saidOf(e) << "\n";
        return 1;
    } catch (const velmora::Error& e) {
        const tool::ToolError error = tool::fromLibrary(e, "");
        std::cerr << "velmora " << commandName(app) << ": "
                  << (error.file().empty() ? "" : error.file() + ": ") << error.what() << "\n";
        return 1;
    } catch (const std::exception& e) {
        std::cerr << "velmora " << commandName(app) << ": " << e.what() << "\n";
        return 1;
    }
    return 0;
}

}  // namespace

int main(int count, char** words) {
    tool::prepareConsole();
    std::vector<std::string> line = tool::commandLine(count, words);
    std::vector<char*> pointers;
    for (std::string& word : line)
        pointers.push_back(word.data());
    const int argc = static_cast<int>(pointers.size());
    char** argv = pointers.data();
#ifdef SIGPIPE
    // A closed pipe is a failed write, reported like any other, not a silent end.
    std::signal(SIGPIPE, SIG_IGN);
#endif
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
#ifdef VELMORA_STUDIO
    tool::addStudioCommand(app);
#endif

    std::vector<std::string> commands;
    for (const CLI::App* sub : app.get_subcommands({}))
        commands.push_back(sub->get_name());
    if (argc > 1 && argv[1][0] != '-' &&
        std::find(commands.begin(), commands.end(), argv[1]) == commands.end()) {
        const std::string nearest = nearestCommand(argv[1], commands);
        return usageFailure("", "unknown command '" + std::string(argv[1]) + "'" +
                                    (nearest.empty() ? "" : "; did you mean '" + nearest + "'?"));
    }

    const int status = run(app, argc, argv);
    // Whatever went to standard output must have arrived: a full disk or a closed pipe fails.
    std::cout.flush();
    if (!std::cout && status == 0) {
        std::cerr << "velmora " << commandName(app)
                  << ": standard output: the output could not be written: " << std::strerror(errno)
                  << "\n";
        return 1;
    }
    return status;
}
