#include "Studio.h"

#include <filesystem>

namespace tool::studio {

namespace {

namespace stdfs = std::filesystem;

// How many of the model's textures have an image of their name in `folder`.
int texturesIn(const velmora::MDLObject& model, const stdfs::path& folder) {
    int found = 0;
    std::error_code code;
    for (const auto& texture : *model.TextureList()) {
        const std::string name = velmora::utf8FromWindows1252(texture->bitmap());
        if (!name.empty() && stdfs::is_regular_file(folder / pathOf(name), code)) ++found;
    }
    return found;
}

}  // namespace

std::string textureFolderFor(const velmora::MDLObject& model, const std::string& path,
                             const std::string& textures) {
    const stdfs::path beside = pathOf(path).parent_path();
    std::vector<stdfs::path> candidates;
    if (!textures.empty()) candidates.push_back(pathOf(textures));
    candidates.push_back(beside.empty() ? stdfs::path(".") : beside);
    candidates.push_back(beside / "texture");
    candidates.push_back(beside / "textures");
    stdfs::path best = candidates.front();
    int most = -1;
    for (const stdfs::path& candidate : candidates) {
        const int found = texturesIn(model, candidate);
        if (found > most) {
            best = candidate;
            most = found;
        }
    }
    return textOf(best);
}

void answerJson(httplib::Response& response, const json& body, int status) {
    response.status = status;
    response.set_content(body.dump(), "application/json");
}

void answerError(httplib::Response& response, int status, const std::string& message) {
    answerJson(response, {{"error", message}}, status);
}

}  // namespace tool::studio
