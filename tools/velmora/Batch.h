#pragma once

#include "Tool.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tool {

// One file of a run: its path, and its path from the folder it was found in (the file's name
// when it was given itself), which names what the run writes for it.
struct BatchInput {
    std::string path;
    std::string relative;
};

// What one file gave: with --json each of `records` is a JSON line, else `text` is printed,
// whether the file is given alone or in a batch.
struct FileResult {
    std::vector<json> records;
    std::string text;
    bool textToStandardError = false;   // the file's own output went to standard output
    std::vector<std::string> warnings;  // said on standard error, in the order of the files
    std::vector<std::string> notes;     // the same, said as notes rather than warnings
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

// The files of a folder whose extension, without regard to case, is one of `extensions`, sorted
// by path; links are passed over unless `followLinks`, and those out of the folder always.
std::vector<BatchInput> searchFolder(const std::string& folder, bool followLinks,
                                     const std::vector<std::string>& extensions);

// Adds --jobs, --fail-fast and --follow-links.
void addBatchOptions(CLI::App& command, BatchOptions& options);

// True when the inputs make a batch: more than one, or a folder.
bool isBatch(const std::vector<std::string>& inputs);

// Runs `work` on every file of the inputs: a file given alone in this thread (its failure goes
// to the caller, after its failure line with --json), a batch of files and folders (searched
// through for the files whose extension, without regard to case, is one of `extensions`) on the
// jobs, each file's output printed as soon as it and every file before it are done, then a
// summary (a JSON line on standard error with --json) and the failures. Throws ExitStatus 1 when
// a file of a batch failed.
void runFiles(const std::string& command, const BatchOptions& options, bool asJson,
              const std::vector<std::string>& extensions,
              const std::function<FileResult(const BatchInput&)>& work);

// With --json the records fill standard output, so `output` may not be "-" there.
void refuseJsonBesideOutput(bool asJson, const std::string& output);

// Where a batch writes what it makes of an input under `folder`: the input's path from its
// folder, with `extension` in place of its own (a folder of that name for ""); the folders on
// the way are made.
std::string outputFor(const std::string& folder, const BatchInput& input,
                      const std::string& extension);

// Ends the command with this exit status, its lines said already.
struct ExitStatus {
    int status;
};

// The most bytes the tool held on the heap at once so far.
int64_t peakHeapBytes();

}  // namespace tool
