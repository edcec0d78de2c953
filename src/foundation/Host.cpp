#include <velmora/Host.h>

#include "foundation/Host.h"

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <mutex>

namespace velmora {

namespace {

std::mutex hostMutex;
std::function<void()> yieldHook;
// Lets the hot loops that yield skip the lock while no hook is installed.
std::atomic<bool> hookInstalled{false};
std::string folderOverride;

std::string defaultApplicationFolder() {
    std::error_code code;
    auto program = std::filesystem::read_symlink("/proc/self/exe", code);
    if (!code) {
        const std::string folder = program.parent_path().string();
        if (access(folder.c_str(), W_OK) == 0) return folder;
    }
    return std::filesystem::temp_directory_path(code).string();
}

}  // namespace

void setYieldHook(std::function<void()> hook) {
    std::lock_guard lock(hostMutex);
    yieldHook = std::move(hook);
    hookInstalled.store(static_cast<bool>(yieldHook), std::memory_order_release);
}

void setApplicationFolder(const std::string& folder) {
    std::lock_guard lock(hostMutex);
    folderOverride = folder;
}

std::string applicationFolder() {
    std::lock_guard lock(hostMutex);
    if (folderOverride.empty()) folderOverride = defaultApplicationFolder();
    return folderOverride;
}

void yieldToHost() {
    if (!hookInstalled.load(std::memory_order_acquire)) return;
    std::function<void()> hook;
    {
        std::lock_guard lock(hostMutex);
        if (!yieldHook) return;
        hook = yieldHook;
    }
    hook();
}

}  // namespace velmora
