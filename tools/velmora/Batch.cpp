#include "Batch.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

namespace tool {

namespace {

namespace stdfs = std::filesystem;
using Clock = std::chrono::steady_clock;

// A link that leads out of `root`, or anywhere when links aren't followed.
bool leavesTree(const stdfs::directory_entry& entry, const stdfs::path& root, bool followLinks) {
    if (!entry.is_symlink()) return false;
    if (!followLinks) return true;
    std::error_code code;
    const stdfs::path target = stdfs::canonical(entry.path(), code);
    const stdfs::path base = stdfs::canonical(root, code);
    const auto mismatch = std::mismatch(base.begin(), base.end(), target.begin(), target.end());
    return code || mismatch.first != base.end();
}

std::vector<BatchInput> gatherInputs(const BatchOptions& options,
                                     const std::vector<std::string>& extensions) {
    std::vector<BatchInput> inputs;
    for (const std::string& argument : options.inputs) {
        std::error_code code;
        if (!stdfs::is_directory(pathOf(argument), code)) {
            checkInputFile(argument);
            inputs.push_back({argument, textOf(pathOf(argument).filename())});
            continue;
        }
        const std::vector<BatchInput> found =
            searchFolder(argument, options.followLinks, extensions);
        inputs.insert(inputs.end(), found.begin(), found.end());
    }
    return inputs;
}

FileResult::Failure failureOf(const std::exception_ptr& error, const std::string& file) {
    FileResult::Failure failure;
    json context{{"file", file}};
    try {
        std::rethrow_exception(error);
    } catch (const velmora::Error& e) {
        const ToolError said = fromLibrary(e, file);
        failure.message = said.what();
        context.update(said.library());
        context["file"] = said.file();
    } catch (const ToolError& e) {
        failure.message = std::string(e.what()) + (e.hint().empty() ? "" : "; " + e.hint());
        context.update(e.library());
        context["file"] = e.file().empty() ? file : e.file();
    } catch (const std::exception& e) {
        failure.message = e.what();
    }
    context["message"] = failure.message;
    failure.error = context;
    return failure;
}

void sayWarnings(const std::string& command, const FileResult& result) {
    for (const std::string& note : result.notes)
        std::cerr << "velmora " << command << ": " << note << "\n";
    for (const std::string& warning : result.warnings)
        std::cerr << "velmora " << command << ": warning: " << warning << "\n";
}

// One object on one line; every object the tool prints says its format.
void printJsonLine(std::ostream& out, json object) {
    object["format"] = kJsonFormat;
    out << object.dump() << "\n";
}

void printRecords(const FileResult& result) {
    for (const json& record : result.records)
        printJsonLine(std::cout, record);
}

// A run of many files on several jobs, printing each file's output in the order of the inputs.
class BatchRun {
  public:
    BatchRun(std::string command, std::vector<BatchInput> inputs, const BatchOptions& options,
             bool asJson)
        : command_(std::move(command)),
          inputs_(std::move(inputs)),
          options_(options),
          asJson_(asJson),
          results_(inputs_.size()) {}

    int run(const std::function<FileResult(const BatchInput&)>& work) {
        const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
        jobs_ = std::min<std::size_t>(
            options_.jobs > 0 ? static_cast<std::size_t>(options_.jobs) : cores,
            std::max<std::size_t>(inputs_.size(), 1));
        std::vector<std::thread> threads;
        for (std::size_t j = 1; j < jobs_; ++j)
            threads.emplace_back([&] { takeFiles(work); });
        takeFiles(work);
        for (std::thread& thread : threads)
            thread.join();
        const std::lock_guard lock(mutex_);
        printReady();
        showProgress(true);
        return finish();
    }

  private:
    void takeFiles(const std::function<FileResult(const BatchInput&)>& work) {
        while (!stopping_) {
            const std::size_t index = nextToTake_.fetch_add(1);
            if (index >= inputs_.size()) return;
            FileResult result;
            try {
                result = work(inputs_[index]);
            } catch (...) {
                result.failure = failureOf(std::current_exception(), inputs_[index].path);
            }
            if (result.failure && options_.failFast) stopping_ = true;
            const std::lock_guard lock(mutex_);
            results_[index] = std::move(result);
            printReady();
        }
    }

    // Prints the results that are ready in input order; holds the lock.
    void printReady() {
        while (nextToPrint_ < results_.size() && results_[nextToPrint_]) {
            const FileResult& result = *results_[nextToPrint_];
            sayWarnings(command_, result);
            if (asJson_) {
                printRecords(result);
            } else if (!result.text.empty()) {
                std::cout << result.text << "\n";
            }
            ++files_;
            models_ += result.models;
            bytes_ += result.bytes;
            if (result.failure) {
                failures_.emplace_back(inputs_[nextToPrint_].path, result.failure->message);
                if (asJson_) printJsonLine(std::cout, {{"failure", result.failure->error}});
            }
            std::cout.flush();
            results_[nextToPrint_].reset();  // printed: nothing of it is kept
            ++nextToPrint_;
        }
        showProgress(false);
    }

    void showProgress(bool last) {
        const auto now = Clock::now();
        if (!terminal_ || (!last && now - lastProgress_ < std::chrono::milliseconds(100))) return;
        lastProgress_ = now;
        const double seconds = std::chrono::duration<double>(now - started_).count();
        std::ostringstream line;
        line << "\r" << files_ << "/" << inputs_.size() << " files, " << models_ << " models, "
             << std::fixed << std::setprecision(1)
             << (seconds > 0 ? static_cast<double>(bytes_) / (1 << 20) / seconds : 0.0)
             << " MiB/s, " << failures_.size() << " failed\x1b[K";
        std::cerr << line.str() << (last ? "\n" : "") << std::flush;
    }

    // The summary (on standard error with --json: standard output holds the records alone), and
    // the failures on standard error; gives the exit status.
    int finish() {
        const double seconds = std::chrono::duration<double>(Clock::now() - started_).count();
        if (asJson_) {
            std::cout.flush();
            printJsonLine(std::cerr, {{"summary",
                                       {{"files", files_},
                                        {"models", models_},
                                        {"bytes", bytes_},
                                        {"failures", failures_.size()},
                                        {"seconds", seconds},
                                        {"jobs", jobs_},
                                        {"peakHeapBytes", peakHeapBytes()}}}});
        } else {
            std::cout << files_ << " file(s), " << models_ << " model(s), " << bytes_ << " bytes, "
                      << failures_.size() << " failed, " << std::fixed << std::setprecision(2)
                      << seconds << " s\n";
        }
        std::cout.flush();
        if (failures_.empty()) return 0;
        std::cerr << "velmora " << command_ << ": " << failures_.size() << " of " << files_
                  << " file(s) failed"
                  << (files_ < static_cast<int64_t>(inputs_.size())
                          ? " (stopped at the first: --fail-fast)"
                          : "")
                  << ":\n";
        for (const auto& [file, message] : failures_)
            std::cerr << "  " << file << ": " << message << "\n";
        return 1;
    }

    const std::string command_;
    const std::vector<BatchInput> inputs_;
    const BatchOptions& options_;
    const bool asJson_;
    const bool terminal_ = standardErrorIsTerminal();
    const Clock::time_point started_ = Clock::now();
    Clock::time_point lastProgress_ = started_;
    std::size_t jobs_ = 1;
    std::mutex mutex_;
    std::vector<std::optional<FileResult>> results_;
    std::size_t nextToPrint_ = 0;
    std::atomic<std::size_t> nextToTake_{0};
    std::atomic<bool> stopping_{false};
    int64_t files_ = 0, models_ = 0, bytes_ = 0;
    std::vector<std::pair<std::string, std::string>> failures_;  // file, message
};

// A file given alone: its output is printed as it is, its failure goes to the caller (with
// --json after the failure's line, as a batch gives it; a usage error is no file's failure).
void runAlone(const std::string& command, const BatchInput& input, bool asJson,
              const std::function<FileResult(const BatchInput&)>& work) {
    FileResult result;
    try {
        result = work(input);
    } catch (const UsageError&) {
        throw;
    } catch (...) {
        if (asJson) {
            printJsonLine(std::cout,
                          {{"failure", failureOf(std::current_exception(), input.path).error}});
        }
        throw;
    }
    sayWarnings(command, result);
    if (asJson) return printRecords(result);
    if (result.text.empty()) return;
    (result.textToStandardError ? std::cerr : std::cout)
        << result.text << (result.text.back() == '\n' ? "" : "\n");
}

}  // namespace

std::vector<BatchInput> searchFolder(const std::string& folder, bool followLinks,
                                     const std::vector<std::string>& extensions) {
    std::vector<BatchInput> found;
    std::error_code code;
    const auto follow = followLinks ? stdfs::directory_options::follow_directory_symlink
                                    : stdfs::directory_options::none;
    for (auto it = stdfs::recursive_directory_iterator(pathOf(folder), follow, code);
         !code && it != stdfs::recursive_directory_iterator(); it.increment(code)) {
        if (leavesTree(*it, pathOf(folder), followLinks)) {
            it.disable_recursion_pending();
            continue;
        }
        const std::string extension = lowercase(textOf(it->path().extension()));
        if (!it->is_regular_file() ||
            std::find(extensions.begin(), extensions.end(), extension) == extensions.end()) {
            continue;
        }
        found.push_back(
            {textOf(it->path()), genericTextOf(stdfs::relative(it->path(), pathOf(folder)))});
    }
    if (code) throw ToolError(folder, "can't be searched: " + code.message());
    std::sort(found.begin(), found.end(),
              [](const BatchInput& a, const BatchInput& b) { return a.relative < b.relative; });
    return found;
}

void addBatchOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("--jobs", options.jobs, "Files worked on at once (default: every core)")
        ->check(numberFrom(1, 1024, true));
    command.add_flag("--fail-fast", options.failFast, "Stop at the first file that fails");
    command.add_flag("--follow-links", options.followLinks,
                     "Follow links in folders (links out of a folder are passed over otherwise)");
}

bool isBatch(const std::vector<std::string>& inputs) {
    std::error_code code;
    return inputs.size() > 1 ||
           (inputs.size() == 1 && stdfs::is_directory(pathOf(inputs[0]), code));
}

void runFiles(const std::string& command, const BatchOptions& options, bool asJson,
              const std::vector<std::string>& extensions,
              const std::function<FileResult(const BatchInput&)>& work) {
    std::vector<BatchInput> inputs = gatherInputs(options, extensions);
    if (inputs.empty()) {
        std::string where;
        for (const std::string& input : options.inputs)
            where += (where.empty() ? "" : ", ") + input;
        std::string kinds;
        for (const std::string& extension : extensions)
            kinds += (kinds.empty() ? "" : " or ") + extension;
        throw ToolError(where, "holds no " + kinds + " file",
                        "looked through every folder below it, without regard to case");
    }
    if (!isBatch(options.inputs)) return runAlone(command, inputs.front(), asJson, work);
    const int status = BatchRun(command, std::move(inputs), options, asJson).run(work);
    if (status != 0) throw ExitStatus{status};
}

void refuseJsonBesideOutput(bool asJson, const std::string& output) {
    if (asJson && output == "-") {
        throw UsageError("--json prints its lines on standard output; give -o a file name");
    }
}

std::string outputFor(const std::string& folder, const BatchInput& input,
                      const std::string& extension) {
    stdfs::path relative = pathOf(input.relative);
    relative.replace_extension(extension);
    const stdfs::path path = pathOf(folder) / relative;
    if (path.has_parent_path()) prepareOutputFolder(textOf(path.parent_path()));
    return textOf(path);
}

}  // namespace tool
