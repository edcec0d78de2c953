#pragma once

#include <velmora/velmora.h>

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tool {

using nlohmann::json;

// A failure the tool reports: about which file, what happened in plain words, and the way out.
// Usage errors (a bad option value) exit with 2, everything else with 1.
class ToolError : public std::runtime_error {
  public:
    ToolError(std::string file, const std::string& what, std::string hint = "");
    const std::string& file() const { return file_; }
    const std::string& hint() const { return hint_; }
    // For a failure the library raised: its number, source, description and where it lies, as
    // the JSON of a failure gives them; an empty object otherwise.
    const json& library() const { return library_; }
    ToolError& library(json context) {
        library_ = std::move(context);
        return *this;
    }

  private:
    std::string file_;
    std::string hint_;
    json library_ = json::object();
};

class UsageError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// The library's error as the tool says it: the place and the words of the error, with `file`
// where the error doesn't name one.
ToolError fromLibrary(const velmora::Error& error, const std::string& file,
                      const std::string& hint = "");

// Adds a subcommand with its one-line synopsis ("velmora info MODEL.mdl [--json]"), which usage
// errors show.
CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& synopsis);
// The synopsis of a subcommand, or of the whole tool for "".
std::string synopsisOf(const std::string& name);

// An option given once for each value ("--set 798=2 --set 652=4"): it never takes the words
// behind its value, which are the command's own, and takes "--name=value" too.
CLI::Option* addRepeatable(CLI::App& command, const std::string& name,
                           std::vector<std::string>& values, const std::string& help);
// Checks an option's number against its range; the message names the range and what was given.
CLI::Validator numberFrom(double low, double high, bool whole = false);

// `text` with its ASCII letters made small, for names compared without regard to case.
std::string lowercase(std::string text);

// The edit options as texts, as the command line or the studio gives them.
struct EditTexts {
    velmora::EditRequest request;  // the flags, set directly
    std::vector<std::string> conditions;
    std::string rotate;
    std::string combine;
    std::vector<std::string> seasons;
    std::vector<std::string> textureSizes;
};
// The texts in the library's terms; a text it doesn't understand is a UsageError naming the
// option ("--condition").
velmora::EditRequest editRequestOf(const EditTexts& texts);
// The edit command's options by their long names as a JSON object ({"add-kill-shadow": true,
// "condition": ["between 798 2 5"]}), as the studio and the C interface take them. Anything
// else, or a value of the wrong kind, is a UsageError. Where `save` is given, "save": false
// sets it false (it is true otherwise).
velmora::EditRequest editRequestOfOptions(const json& options, bool* save = nullptr);
// The same options as a JSON text, the body of the studio's edit request.
velmora::EditRequest editRequestOfBody(const std::string& body, bool& save);
// How the tool says a refused edit of the model at `path`: what it would do wrong, and --force.
ToolError editRefusal(const velmora::EditRefused& refused, const std::string& path);
// A ToolError in one line, as the tool prints it after its command's name: "FILE: what; hint".
std::string saidOf(const ToolError& error);

// The subcommands; each file adds its own to the application.
void addInfoCommand(CLI::App& app);
void addCommandsCommand(CLI::App& app);
void addRenderCommand(CLI::App& app);
void addExportCommands(CLI::App& app);
void addEditCommand(CLI::App& app);
void addScanCommand(CLI::App& app);
// Only where the build has an HTTP server library (VELMORA_STUDIO).
void addStudioCommand(CLI::App& app);

// Loads a model file. A folder, a missing file or a damaged model is a ToolError naming it.
std::shared_ptr<velmora::MDLObject> loadModel(const std::string& path);
// Refuses an input that is a folder or doesn't exist.
void checkInputFile(const std::string& path);

// One output file of a command, under one rule for all: it is written beside its target and
// moved into place only when whole; an existing folder or read-only file is refused, and so is
// a target whose folder doesn't exist, before any work is done. "-" means standard output,
// where a command allows it.
class Output {
  public:
    enum class Stream { Refused, Text, Binary };

    // Checks the target at once. `stream` says whether "-" may stand for standard output, and
    // whether what goes there is binary (refused on a terminal); what goes there is first
    // written to a temporary file named like `streamName` (writers that go by the extension).
    Output(std::string target, Stream stream, std::string streamName = "out");

    bool toStandardOutput() const { return toStandardOutput_; }
    const std::string& target() const { return target_; }
    // The target for people: its name, or "standard output".
    std::string said() const;

    // Runs `write(path)` on a temporary path beside the target, then `check(path)` when given,
    // then moves it into place (or copies it to standard output). On any failure the temporary
    // file is removed and the target left as it was.
    void write(const std::function<void(const std::string& path)>& write,
               const std::function<void(const std::string& path)>& check = nullptr) const;

  private:
    std::string target_;
    std::string streamName_;
    bool toStandardOutput_ = false;
};

// A folder to write into: created when missing; a file in its place is refused.
void prepareOutputFolder(const std::string& folder);

// A text from a model for JSON: UTF-8 from Windows-1252, and beside it the raw bytes in hex
// where the text is not plain ASCII.
void putModelText(json& object, const std::string& key, const std::string& bytes);
// The number a text holds (whole numbers as integers), or null when it holds none.
json jsonNumber(const std::string& text);
// A text from a model for people: UTF-8 from Windows-1252, NUL bytes shown as \0.
std::string modelText(const std::string& bytes);

// What differs between POSIX and Windows (Platform.cpp). Paths are UTF-8 text in the tool; on
// Windows they reach the system through its wide API.
std::filesystem::path pathOf(const std::string& utf8);
std::string textOf(const std::filesystem::path& path);
// With "/" between its parts on every system.
std::string genericTextOf(const std::filesystem::path& path);
// Moves a finished file over its target, replacing it.
void replaceWith(const std::string& from, const std::string& to, std::error_code& code);
// True when the file exists and may not be written (no write permission, or read-only).
bool isReadOnlyFile(const std::string& path);
long long processId();
// Opens `url` in the user's browser; false when that could not be started.
bool openInBrowser(const std::string& url);
// The command line as UTF-8 words, whatever the system's code page.
std::vector<std::string> commandLine(int argc, char** argv);
// Standard output and error take bytes as they are (no line-end translation), and a console
// shows them as UTF-8.
void prepareConsole();
// True when standard output or standard error is a terminal.
bool standardOutputIsTerminal();
bool standardErrorIsTerminal();
// Progress on standard error, only when it is a terminal.
void showProgress(const std::string& what, int done, int total);

// Version of the JSON the tool prints (3: JSON Lines, a record a model or file, for one input
// as for many); see docs/json.md.
inline constexpr int kJsonFormat = 3;

}  // namespace tool
