#pragma once

#include <functional>
#include <string>

namespace velmora {

// Installs what the library calls to give the host one turn during long operations
// (loading, decoding, preparing the preview). Nothing is called by default.
void setYieldHook(std::function<void()> hook);

// The folder of the scratch files. By default the folder of the running program, or the
// system's temporary folder where that is not writable.
void setApplicationFolder(const std::string& folder);
std::string applicationFolder();

}  // namespace velmora
