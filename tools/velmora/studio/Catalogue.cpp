#include "../Batch.h"
#include "Studio.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace tool::studio {

namespace {

namespace stdfs = std::filesystem;

// 12 hex digits of a 64-bit FNV-1a hash of the entry's folder, path and position.
std::string idOf(std::size_t folderIndex, const std::string& relative, int model) {
    const std::string key =
        std::to_string(folderIndex) + "\n" + relative + "\n" + std::to_string(model);
    uint64_t hash = 14695981039346656037ull;
    for (const unsigned char c : key) {
        hash ^= c;
        hash *= 1099511628211ull;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%012llx",
                  static_cast<unsigned long long>(hash & 0xffffffffffffull));
    return text;
}

std::shared_ptr<velmora::ModelList> modelsOf(const std::string& path) {
    velmora::BGLObject bgl;
    if (!bgl.isXMLBGL(path)) return nullptr;
    try {
        bgl.readXMLBGL(path);
    } catch (const velmora::Error& e) {
        throw fromLibrary(e, path, "the file is damaged");
    }
    return bgl.ModelList();
}

// The models of one compiled file, or a note on standard error where it can't be read.
int countModels(const std::string& path) {
    try {
        const auto models = modelsOf(path);
        if (models) return models->Count();
        std::fprintf(stderr, "velmora studio: %s: passed over: not an XML-style compiled file\n",
                     path.c_str());
    } catch (const ToolError& e) {
        std::fprintf(stderr, "velmora studio: passed over %s\n", saidOf(e).c_str());
    }
    return 0;
}

}  // namespace

Stamp stampOf(const std::string& path) {
    std::error_code code;
    const auto time = stdfs::last_write_time(pathOf(path), code);
    const auto size = stdfs::file_size(pathOf(path), code);
    if (code) return {};
    return {static_cast<int64_t>(time.time_since_epoch().count()), static_cast<int64_t>(size)};
}

Catalogue::Catalogue(const std::vector<std::string>& folders, bool followLinks)
    : folders_(folders) {
    for (std::size_t index = 0; index < folders.size(); ++index) {
        const std::string& folder = folders[index];
        std::error_code code;
        if (!stdfs::is_directory(pathOf(folder), code)) {
            throw ToolError(folder, "is not a folder", "give folders of models");
        }
        for (const BatchInput& input : searchFolder(folder, followLinks, {".mdl", ".bgl"})) {
            const bool compiled = lowercase(textOf(pathOf(input.path).extension())) == ".bgl";
            const int count = compiled ? countModels(input.path) : 1;
            for (int model = 1; model <= count; ++model) {
                entries_.push_back({idOf(index, input.relative, model), input.path, input.relative,
                                    folder, model, compiled});
            }
            locks_.emplace(input.path, std::make_unique<std::mutex>());
        }
    }
}

std::vector<Entry> Catalogue::entries() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    return {entries_.begin(), entries_.end()};
}

const Entry* Catalogue::find(const std::string& id) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    for (const Entry& entry : entries_) {
        if (entry.id == id) return &entry;
    }
    return nullptr;
}

const Entry& Catalogue::addBeside(const Entry& next, const std::string& name) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const std::string path = textOf(pathOf(next.path).parent_path() / pathOf(name));
    const std::string parent = textOf(pathOf(next.file).parent_path());
    const std::string relative = parent.empty() ? name : parent + "/" + name;
    const auto folder = std::find(folders_.begin(), folders_.end(), next.folder);
    const std::string id = idOf(static_cast<std::size_t>(folder - folders_.begin()), relative, 1);
    for (const Entry& entry : entries_) {
        if (entry.id == id) return entry;
    }
    locks_.emplace(path, std::make_unique<std::mutex>());
    return entries_.emplace_back(Entry{id, path, relative, next.folder, 1, false});
}

std::shared_ptr<velmora::MDLObject> Catalogue::load(const Entry& entry) const {
    if (!entry.compiled) return loadModel(entry.path);
    const auto models = modelsOf(entry.path);
    if (!models || models->Count() < entry.model) {
        throw ToolError(entry.path, "no longer holds model " + std::to_string(entry.model));
    }
    return models->Item(entry.model);
}

std::mutex& Catalogue::lockOf(const Entry& entry) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return *locks_.at(entry.path);
}

std::optional<std::string> AnswerCache::get(const std::string& key, const Stamp& stamp) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = answers_.find(key);
    if (found == answers_.end() || !(found->second.first == stamp)) return std::nullopt;
    return found->second.second;
}

void AnswerCache::put(const std::string& key, const Stamp& stamp, std::string answer) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_[key] = {stamp, std::move(answer)};
}

void AnswerCache::forget(const std::string& key) {
    const std::lock_guard<std::mutex> lock(mutex_);
    answers_.erase(key);
}

}  // namespace tool::studio
