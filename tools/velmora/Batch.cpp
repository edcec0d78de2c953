#include "Batch.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

namespace tool {

namespace {

namespace stdfs = std::filesystem;

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

}  // namespace

void addBatchOptions(CLI::App& command, BatchOptions& options) {
    command.add_option("--jobs", options.jobs, "Files worked on at once (default: every core)");
    command.add_flag("--fail-fast", options.failFast, "Stop at the first file that fails");
    command.add_flag("--follow-links", options.followLinks,
                     "Follow links in folders (links out of a folder are passed over otherwise)");
}

bool isBatch(const std::vector<std::string>& inputs) {
    std::error_code code;
    return inputs.size() > 1 || (inputs.size() == 1 && stdfs::is_directory(inputs[0], code));
}

std::vector<BatchInput> gatherInputs(const BatchOptions& options,
                                     const std::vector<std::string>& extensions) {
    std::vector<BatchInput> inputs;
    for (const std::string& argument : options.inputs) {
        std::error_code code;
        if (!stdfs::is_directory(argument, code)) {
            checkInputFile(argument);
            inputs.push_back({argument, stdfs::path(argument).filename().string()});
            continue;
        }
        std::vector<BatchInput> found;
        const auto follow = options.followLinks ? stdfs::directory_options::follow_directory_symlink
                                                : stdfs::directory_options::none;
        for (auto it = stdfs::recursive_directory_iterator(argument, follow, code);
             !code && it != stdfs::recursive_directory_iterator(); it.increment(code)) {
            if (leavesTree(*it, argument, options.followLinks)) {
                it.disable_recursion_pending();
                continue;
            }
            if (!it->is_regular_file()) continue;
            const std::string extension = lowercase(it->path().extension().string());
            if (std::find(extensions.begin(), extensions.end(), extension) == extensions.end()) {
                continue;
            }
            found.push_back(
                {it->path().string(), stdfs::relative(it->path(), argument).generic_string()});
        }
        if (code) throw ToolError(argument, "can't be searched: " + code.message());
        std::sort(found.begin(), found.end(),
                  [](const BatchInput& a, const BatchInput& b) { return a.relative < b.relative; });
        inputs.insert(inputs.end(), found.begin(), found.end());
    }
    return inputs;
}

std::string outputFor(const std::string& folder, const BatchInput& input,
                      const std::string& extension) {
    stdfs::path relative(input.relative);
    relative.replace_extension(extension);
    const stdfs::path path = stdfs::path(folder) / relative;
    if (path.has_parent_path()) prepareOutputFolder(path.parent_path().string());
    return path.string();
}

FileResult::Failure failureOf(const std::exception_ptr& error, const std::string& file) {
    FileResult::Failure failure;
    json context{{"file", file}};
    try {
        std::rethrow_exception(error);
    } catch (const velmora::Error& e) {
        const ToolError said = fromLibrary(e, file);
        failure.message = said.what();
        context = {{"file", said.file()},
                   {"number", e.number()},
                   {"source", e.source()},
                   {"description", e.description()}};
        if (!e.section().empty()) context["section"] = e.section();
        if (e.offset() >= 0) context["offset"] = e.offset();
        if (e.command() > 0) context["command"] = e.command();
    } catch (const ToolError& e) {
        failure.message = std::string(e.what()) + (e.hint().empty() ? "" : "; " + e.hint());
        context["file"] = e.file().empty() ? file : e.file();
    } catch (const std::exception& e) {
        failure.message = e.what();
    }
    context["message"] = failure.message;
    failure.error = context;
    return failure;
}

int runBatch(const std::string& command, const std::vector<BatchInput>& inputs,
             const BatchOptions& options, bool asJson,
             const std::function<FileResult(const BatchInput&)>& work) {
    const auto started = std::chrono::steady_clock::now();
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const std::size_t jobs =
        std::min<std::size_t>(options.jobs > 0 ? static_cast<std::size_t>(options.jobs) : cores,
                              std::max<std::size_t>(inputs.size(), 1));

    std::mutex mutex;
    std::vector<std::optional<FileResult>> results(inputs.size());
    std::size_t nextToPrint = 0;
    std::atomic<std::size_t> nextToTake{0};
    std::atomic<bool> stopping{false};
    int64_t files = 0, models = 0, bytes = 0;
    std::vector<std::pair<std::string, std::string>> failures;  // file, message
    const bool terminal = isatty(fileno(stderr)) != 0;
    auto lastProgress = started;

    const auto progress = [&](bool last) {
        const auto now = std::chrono::steady_clock::now();
        if (!terminal || (!last && now - lastProgress < std::chrono::milliseconds(100))) return;
        lastProgress = now;
        const double seconds = std::chrono::duration<double>(now - started).count();
        std::ostringstream line;
        line << "\r" << files << "/" << inputs.size() << " files, " << models << " models, "
             << std::fixed << std::setprecision(1)
             << (seconds > 0 ? static_cast<double>(bytes) / (1 << 20) / seconds : 0.0) << " MiB/s, "
             << failures.size() << " failed\x1b[K";
        std::cerr << line.str() << (last ? "\n" : "") << std::flush;
    };

    // Prints the results that are ready in input order; holds the lock.
    const auto printReady = [&] {
        while (nextToPrint < results.size() && results[nextToPrint]) {
            FileResult& result = *results[nextToPrint];
            for (const std::string& line : result.lines)
                std::cout << line << "\n";
            ++files;
            models += result.models;
            bytes += result.bytes;
            if (result.failure) {
                failures.emplace_back(inputs[nextToPrint].path, result.failure->message);
                if (asJson) std::cout << json{{"failure", result.failure->error}}.dump() << "\n";
            }
            std::cout.flush();
            results[nextToPrint].reset();  // printed: nothing of it is kept
            ++nextToPrint;
        }
        progress(false);
    };

    const auto worker = [&] {
        for (;;) {
            if (stopping) return;
            const std::size_t index = nextToTake.fetch_add(1);
            if (index >= inputs.size()) return;
            FileResult result;
            try {
                result = work(inputs[index]);
            } catch (...) {
                result.failure = failureOf(std::current_exception(), inputs[index].path);
            }
            if (result.failure && options.failFast) stopping = true;
            const std::lock_guard lock(mutex);
            results[index] = std::move(result);
            printReady();
        }
    };
    std::vector<std::thread> threads;
    for (std::size_t j = 1; j < jobs; ++j)
        threads.emplace_back(worker);
    worker();
    for (std::thread& thread : threads)
        thread.join();
    {
        const std::lock_guard lock(mutex);
        printReady();
        progress(true);
    }

    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (asJson) {
        std::cout << json{{"summary",
                           {{"files", files},
                            {"models", models},
                            {"bytes", bytes},
                            {"failures", failures.size()},
                            {"seconds", seconds},
                            {"jobs", jobs},
                            {"peakHeapBytes", peakHeapBytes()}}}}
                         .dump()
                  << "\n";
    } else {
        std::cout << files << " file(s), " << models << " model(s), " << bytes << " bytes, "
                  << failures.size() << " failed, " << std::fixed << std::setprecision(2) << seconds
                  << " s\n";
    }
    std::cout.flush();
    if (failures.empty()) return 0;
    std::cerr << "velmora " << command << ": " << failures.size() << " of " << files
              << " file(s) failed"
              << (files < static_cast<int64_t>(inputs.size())
                      ? " (stopped at the first: --fail-fast)"
                      : "")
              << ":\n";
    for (const auto& [file, message] : failures)
        std::cerr << "  " << file << ": " << message << "\n";
    return 1;
}

}  // namespace tool
