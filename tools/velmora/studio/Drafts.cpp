#include "Studio.h"

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace tool::studio {

namespace stdfs = std::filesystem;

std::optional<std::string> Drafts::current(const std::string& id) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = steps_.find(id);
    if (found == steps_.end() || found->second.empty()) return std::nullopt;
    return found->second.back();
}

std::size_t Drafts::steps(const std::string& id) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = steps_.find(id);
    return found == steps_.end() ? 0 : found->second.size();
}

void Drafts::push(const std::string& id, std::string bytes) {
    const std::lock_guard<std::mutex> lock(mutex_);
    steps_[id].push_back(std::move(bytes));
}

bool Drafts::undo(const std::string& id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = steps_.find(id);
    if (found == steps_.end() || found->second.empty()) return false;
    found->second.pop_back();
    return true;
}

void Drafts::clear(const std::string& id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    steps_.erase(id);
}

std::string temporaryFile(const std::string& name) {
    static std::atomic<int> counter = 0;
    return textOf(stdfs::temp_directory_path() /
                  pathOf("velmora-studio-" + std::to_string(processId()) + "-" +
                         std::to_string(counter++) + "-" + name));
}

std::string readAndRemove(const std::string& path) {
    std::string bytes;
    {
        std::ifstream in(pathOf(path), std::ios::binary);
        std::ostringstream out;
        out << in.rdbuf();
        bytes = out.str();
    }
    std::error_code ignored;
    stdfs::remove(pathOf(path), ignored);
    return bytes;
}

std::string bytesOf(velmora::MDLObject& model) {
    const std::string path = temporaryFile("draft.mdl");
    try {
        model.saveMDL(path);
    } catch (...) {
        std::error_code ignored;
        stdfs::remove(pathOf(path), ignored);
        throw;
    }
    return readAndRemove(path);
}

std::shared_ptr<velmora::MDLObject> Studio::load(const Entry& entry) const {
    const std::optional<std::string> draft = drafts.current(entry.id);
    if (!draft) return catalogue.load(entry);
    auto model = std::make_shared<velmora::MDLObject>();
    model->readMDLBytes(*draft, entry.path);
    return model;
}

void Studio::changed(const Entry& entry) {
    thumbnails.forget(entry.id);
    records.forget(entry.id);
}

}  // namespace tool::studio
