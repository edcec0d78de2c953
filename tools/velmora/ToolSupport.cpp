#include "Tool.h"

#include <cmath>
#include <cstdio>
#include <filesystem>
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
    const std::string place = error.file().empty() ? file : error.file();
    json context{{"number", error.number()},
                 {"source", error.source()},
                 {"description", error.description()}};
    if (!error.section().empty()) context["section"] = error.section();
    if (error.offset() >= 0) context["offset"] = error.offset();
    if (error.command() > 0) context["command"] = error.command();
    // What an edit can't do is said in the words of the edit alone.
    if (error.source() == "Velmora.ModelEdit" && !error.detail().empty()) {
        return ToolError(place, error.detail(), hint).library(context);
    }
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
    return ToolError(place, what, hint).library(context);
}

void checkInputFile(const std::string& path) {
    std::error_code code;
    if (stdfs::is_directory(pathOf(path), code)) throw ToolError(path, "is a folder, not a file");
    if (!stdfs::exists(pathOf(path), code)) throw ToolError(path, "no such file");
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

json jsonNumber(const std::string& text) {
    if (text.empty() || text.find_first_not_of("+-0123456789.eE") != std::string::npos) {
        return nullptr;
    }
    try {
        std::size_t used = 0;
        if (text.find_first_of(".eE") == std::string::npos) {
            const long long whole = std::stoll(text, &used);
            if (used == text.size()) return whole;
        }
        const double value = std::stod(text, &used);
        if (used == text.size() && std::isfinite(value)) return value;
    } catch (const std::exception&) {
    }
    return nullptr;
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

void showProgress(const std::string& what, int done, int total) {
    static const bool terminal = standardErrorIsTerminal();
    if (!terminal) return;
    std::cerr << "\r" << what << " " << done << "/" << total << (done == total ? "\n" : "")
              << std::flush;
}

}  // namespace tool
