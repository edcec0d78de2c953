#include <velmora/Host.h>

#include "foundation/Host.h"
#include "foundation/NativeFiles.h"

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
    const std::string folder = fs::programFolder();
    if (!folder.empty() && fs::isWritableFolder(folder)) return folder;
    std::error_code code;
    return fs::utf8Path(std::filesystem::temp_directory_path(code));
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
