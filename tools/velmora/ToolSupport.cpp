#include "Tool.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

namespace tool {

namespace stdfs = std::filesystem;

ToolError::ToolError(std::string file, const std::string& what, std::string hint)
    : std::runtime_error(what), file_(std::move(file)), hint_(std::move(hint)) {}

namespace {

std::map<std::string, std::string>& synopses() {
    static std::map<std::string, std::string> all;
    return all;
}

}  // namespace

CLI::App* addCommand(CLI::App& app, const std::string& name, const std::string& description,
                     const std::string& synopsis) {
    synopses()[name] = synopsis;
    return app.add_subcommand(name, description);
}

std::string synopsisOf(const std::string& name) {
    const auto found = synopses().find(name);
    return found != synopses().end() ? found->second : "velmora COMMAND [options]";
}

std::string lowercase(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return text;
}

ToolError fromLibrary(const velmora::Error& error, const std::string& file,
                      const std::string& hint) {
    // what() starts with the file when the error knows it; the tool puts the file in front itself.
    std::string what = error.what();
    if (!error.file().empty() && what.rfind(error.file(), 0) == 0) {
        what.erase(0, error.file().size());
        while (!what.empty() && (what.front() == ':' || what.front() == ' '))
            what.erase(0, 1);
    }
    const std::string numbered =
        "error " + std::to_string(error.number()) + ": " + error.description();
    if (what == error.description() || what == "(" + numbered + ")") what = numbered;
    return ToolError(error.file().empty() ? file : error.file(), what, hint);
}

void checkInputFile(const std::string& path) {
    std::error_code code;
    if (stdfs::is_directory(path, code)) throw ToolError(path, "is a folder, not a file");
    if (!stdfs::exists(path, code)) throw ToolError(path, "no such file");
}

std::shared_ptr<velmora::MDLObject> loadModel(const std::string& path) {
    checkInputFile(path);
    auto model = std::make_shared<velmora::MDLObject>();
    try {
        model->readMDL(path);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, path, "the file is damaged or is not a scenery model");
    }
    return model;
}

namespace {

// A file without any write permission is read-only for everyone, root included.
bool isReadOnly(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return false;
    if ((status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return true;
    return access(path.c_str(), W_OK) != 0;
}

std::string temporaryBeside(const stdfs::path& target) {
    static int counter = 0;
    const stdfs::path folder = target.has_parent_path() ? target.parent_path() : ".";
    // The target's extension stays last: some writers derive names from it.
    return (folder / (".velmora-" + std::to_string(getpid()) + "-" + std::to_string(counter++) +
                      "-" + target.filename().string()))
        .string();
}

void copyToStandardOutput(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::cout << in.rdbuf();
    std::cout.flush();
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
        if (stream == Stream::Binary && isatty(fileno(stdout)) != 0) {
            throw UsageError(
                "won't write binary data to a terminal; redirect standard output "
                "or give a file name");
        }
        toStandardOutput_ = true;
        return;
    }
    std::error_code code;
    const stdfs::path path(target_);
    if (stdfs::is_directory(path, code)) {
        throw ToolError(target_, "is a folder", "give a file name inside it");
    }
    const stdfs::path folder = path.has_parent_path() ? path.parent_path() : ".";
    if (!stdfs::is_directory(folder, code)) {
        throw ToolError(target_, "the folder '" + folder.string() + "' does not exist",
                        "create it first");
    }
    if (stdfs::exists(path, code) && isReadOnly(target_)) {
        throw ToolError(target_, "is read-only", "remove it or choose another name");
    }
}

void Output::write(const std::function<void(const std::string& path)>& writeTo,
                   const std::function<void(const std::string& path)>& check) const {
    const std::string temporary = toStandardOutput_
                                      ? temporaryBeside(stdfs::temp_directory_path() / streamName_)
                                      : temporaryBeside(target_);
    std::error_code ignored;
    try {
        writeTo(temporary);
        if (check) check(temporary);
        if (toStandardOutput_) {
            copyToStandardOutput(temporary);
            stdfs::remove(temporary, ignored);
            return;
        }
        std::error_code code;
        stdfs::rename(temporary, target_, code);
        if (code) throw ToolError(target_, "cannot be replaced: " + code.message());
    } catch (const velmora::Error& e) {
        stdfs::remove(temporary, ignored);
        throw fromLibrary(e, target_);
    } catch (...) {
        stdfs::remove(temporary, ignored);
        throw;
    }
}

void prepareOutputFolder(const std::string& folder) {
    std::error_code code;
    if (stdfs::exists(folder, code) && !stdfs::is_directory(folder, code)) {
        throw ToolError(folder, "is a file, not a folder", "give the name of a folder");
    }
    stdfs::create_directories(folder, code);
    if (code) throw ToolError(folder, "cannot be created: " + code.message());
}

std::string opcodeName(int32_t opcode) {
    const velmora::BGLCommandDictEntry* row = velmora::BGLOpcodeDictionary::row(opcode);
    if (row != nullptr && !row->name.empty()) return row->name;
    return "OPCODE " + std::to_string(opcode);
}

namespace {

std::string hexBytes(const std::string& bytes) {
    static const char* digits = "0123456789abcdef";
    std::string out;
    for (const unsigned char c : bytes) {
        out.push_back(digits[c >> 4]);
        out.push_back(digits[c & 15]);
    }
    return out;
}

}  // namespace

void putModelText(json& object, const std::string& key, const std::string& bytes) {
    object[key] = velmora::utf8FromWindows1252(bytes);
    if (!velmora::isPlainAscii(bytes)) object[key + "Bytes"] = hexBytes(bytes);
}

std::string modelText(const std::string& bytes) {
    std::string out;
    for (const char c : velmora::utf8FromWindows1252(bytes)) {
        if (c == '\0') {
            out += "\\0";
        } else {
            out.push_back(c);
        }
    }
    return out;
}

bool hasKillShadow(const velmora::MDLObject& model) {
    static const std::string killShadow("BGL \0\0\0\0\xBD\0\x22\0", 12);
    const int16_t shadow = model.getRIFFSectionIndex("SHAD");
    return model.getRIFFSectionSize(shadow) > 0 && model.getRIFFSectionData(shadow) == killShadow;
}

void showProgress(const std::string& what, int done, int total) {
    static const bool terminal = isatty(fileno(stderr)) != 0;
    if (!terminal) return;
    std::cerr << "\r" << what << " " << done << "/" << total << (done == total ? "\n" : "")
              << std::flush;
}

}  // namespace tool
