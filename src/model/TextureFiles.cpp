#include <velmora/TextureList.h>
#include <velmora/Windows1252.h>

#include "foundation/Errors.h"
#include "foundation/GeneralFunctions.h"
#include "foundation/NativeFiles.h"
#include "model/TextureFiles.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace velmora {

namespace stdfs = std::filesystem;

std::vector<std::string> detail::textureFiles(const TextureList& textures,
                                              const std::string& folder) {
    std::map<std::string, std::string> files;
    std::error_code code;
    for (const auto& entry : stdfs::directory_iterator(fs::nativePath(folder), code)) {
        if (entry.is_regular_file()) {
            files[asciiLower(fs::utf8Path(entry.path().filename()))] = fs::utf8Path(entry.path());
        }
    }
    if (code) {
        throw platformError(kPathNotFound)
            .setFile(folder)
            .setDetail("the texture folder can't be read: " + code.message());
    }
    std::vector<std::string> found;
    for (const auto& entry : textures) {
        // Only the name's last part counts: a model's name never reaches outside the folder.
        // Its bytes are matched as the file system's UTF-8 names.
        std::string name = fileNameFromModelText(entry->bitmap());
        const auto cut = name.find_last_of("/\\");
        if (cut != std::string::npos) name = name.substr(cut + 1);
        const std::string stem = asciiLower(name.substr(0, name.rfind('.')));
        std::vector<std::string> candidates{asciiLower(name)};
        for (const char* extension : {".bmp", ".dds", ".tga", ".png", ".jpg", ".jpeg"})
            candidates.push_back(stem + extension);
        found.emplace_back();
        for (const auto& candidate : candidates) {
            const auto match = files.find(candidate);
            if (match != files.end()) {
                found.back() = match->second;
                break;
            }
        }
    }
    return found;
}

int32_t TextureList::findFiles(const std::string& folder) {
    const std::vector<std::string> found = detail::textureFiles(*this, folder);
    int32_t count = 0;
    for (std::size_t i = 0; i < found.size(); ++i) {
        if (found[i].empty()) continue;
        items_.at0(i)->file(found[i]);
        ++count;
    }
    return count;
}

}  // namespace velmora
