#pragma once

#include "Tool.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// One file of a batch: its path, and its path from the folder it was found in (the file's name
// when it was given itself), which names what the batch writes for it.
struct BatchInput {
    std::string path;
    std::string relative;
};

// What one file gave: lines to print (JSON Lines with --json, text otherwise), how many models
// it held, and its failure, if it failed.
struct FileResult {
    std::vector<std::string> lines;
    int64_t models = 0;
    int64_t bytes = 0;
    struct Failure {
        std::string message;  // one line: what happened (error N: description)
        json error;           // the same for JSON Lines
    };
    std::optional<Failure> failure;
};

struct BatchOptions {
    std::vector<std::string> inputs;
    int jobs = 0;  // 0: every core
    bool failFast = false;
    bool followLinks = false;
};

// Adds --jobs, --fail-fast and --follow-links.
void addBatchOptions(CLI::App& command, BatchOptions& options);

// True when the inputs make a batch: more than one, or a folder.
bool isBatch(const std::vector<std::string>& inputs);

// The files of the inputs, in their order: a file as it is, a folder searched through for the
// files whose extension (without regard to case) is one of `extensions`, sorted by path. Links
// are not followed unless asked. A missing input is a ToolError.
std::vector<BatchInput> gatherInputs(const BatchOptions& options,
                                     const std::vector<std::string>& extensions);

// Runs `work` for every input on the jobs, prints each file's lines as soon as it and every file
// before it are done, then a summary (a JSON line with --json), and the failures as a table on
// standard error. Shows progress on standard error when it is a terminal. Gives the exit
// status: 0, or 1 when a file failed.
int runBatch(const std::string& command, const std::vector<BatchInput>& inputs,
             const BatchOptions& options, bool asJson,
             const std::function<FileResult(const BatchInput&)>& work);

// Where a batch writes what it makes of an input under `folder`: the input's path from its
// folder, with `extension` in place of its own (a folder of that name for ""); the folders on
// the way are made.
std::string outputFor(const std::string& folder, const BatchInput& input,
                      const std::string& extension);

// Ends the command with this exit status, its lines said already.
struct ExitStatus {
    int status;
};

// A file's failure from whatever it threw.
FileResult::Failure failureOf(const std::exception_ptr& error, const std::string& file);

// The most bytes the tool held on the heap at once so far.
int64_t peakHeapBytes();

}  // namespace tool
