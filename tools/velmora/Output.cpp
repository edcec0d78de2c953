#include "Tool.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace tool {

namespace {

namespace stdfs = std::filesystem;

std::string temporaryBeside(const stdfs::path& target) {
    static std::atomic<int> counter = 0;
    const stdfs::path folder = target.has_parent_path() ? target.parent_path() : ".";
    // The target's extension stays last: some writers derive names from it.
    return textOf(folder / pathOf(".velmora-" + std::to_string(processId()) + "-" +
                                  std::to_string(counter++) + "-" + textOf(target.filename())));
}

void copyToStandardOutput(const std::string& path) {
    std::ifstream in(pathOf(path), std::ios::binary);
    std::cout << in.rdbuf();
    std::cout.flush();
    if (!std::cout) {
        throw ToolError("standard output",
                        std::string("could not be written: ") + std::strerror(errno));
    }
}

// The library's error about a temporary file, said of the target the user gave.
ToolError aboutTarget(const velmora::Error& error, const std::string& temporary,
                      const std::string& target) {
    const ToolError said = fromLibrary(error, target);
    std::string what = said.what();
    for (auto at = what.find(temporary); at != std::string::npos; at = what.find(temporary, at))
        what.replace(at, temporary.size(), target);
    return ToolError(said.file() == temporary ? target : said.file(), what, said.hint());
}

}  // namespace

Output::Output(std::string target, Stream stream, std::string streamName)
    : target_(std::move(target)), streamName_(std::move(streamName)) {
    if (target_ == "-") {
        if (stream == Stream::Refused) {
            throw UsageError(
                "this command writes more than one file, so it can't write to "
                "standard output (-); give a file name");
        }
        if (stream == Stream::Binary && standardOutputIsTerminal()) {
            throw UsageError(
                "won't write binary data to a terminal; redirect standard output "
                "or give a file name");
        }
        toStandardOutput_ = true;
        return;
    }
    std::error_code code;
    const stdfs::path path = pathOf(target_);
    if (stdfs::is_directory(path, code)) {
        throw ToolError(target_, "is a folder", "give a file name inside it");
    }
    const stdfs::path folder = path.has_parent_path() ? path.parent_path() : ".";
    if (!stdfs::is_directory(folder, code)) {
        throw ToolError(target_, "the folder '" + textOf(folder) + "' does not exist",
                        "create it first");
    }
    if (stdfs::exists(path, code) && isReadOnlyFile(target_)) {
        throw ToolError(target_, "is read-only", "remove it or choose another name");
    }
}

std::string Output::said() const {
    return toStandardOutput_ ? std::string("standard output") : target_;
}

void Output::write(const std::function<void(const std::string& path)>& writeTo,
                   const std::function<void(const std::string& path)>& check) const {
    const std::string temporary =
        toStandardOutput_ ? temporaryBeside(stdfs::temp_directory_path() / pathOf(streamName_))
                          : temporaryBeside(pathOf(target_));
    std::error_code ignored;
    try {
        writeTo(temporary);
        if (check) check(temporary);
        if (toStandardOutput_) {
            copyToStandardOutput(temporary);
            stdfs::remove(pathOf(temporary), ignored);
            return;
        }
        std::error_code code;
        replaceWith(temporary, target_, code);
        if (code) throw ToolError(target_, "cannot be replaced: " + code.message());
    } catch (const velmora::Error& e) {
        stdfs::remove(pathOf(temporary), ignored);
        throw aboutTarget(e, temporary, toStandardOutput_ ? said() : target_);
    } catch (...) {
        stdfs::remove(pathOf(temporary), ignored);
        throw;
    }
}

void prepareOutputFolder(const std::string& folder) {
    std::error_code code;
    if (stdfs::exists(pathOf(folder), code) && !stdfs::is_directory(pathOf(folder), code)) {
        throw ToolError(folder, "is a file, not a folder", "give the name of a folder");
    }
    stdfs::create_directories(pathOf(folder), code);
    if (code) throw ToolError(folder, "cannot be created: " + code.message());
}

}  // namespace tool
