#include "../ModelReport.h"
#include "../Rendering.h"
#include "Studio.h"

#include <filesystem>

namespace tool::studio {

namespace {

namespace stdfs = std::filesystem;

const char* const kModelPath = R"(/api/models/([0-9a-f]{12}))";

std::string thumbnailOf(Studio& studio, const Entry& entry) {
    const auto model = studio.load(entry);
    // The render command's view and defaults, at the size of a thumbnail.
    RenderOptions options;
    options.size = "256x192";
    options.textures = textureFolderFor(*model, entry.path, studio.textures);
    const RenderSettings settings = checkRenderSettings(options);
    const Picture picture = renderModel(*model, settings);
    const std::string path = temporaryFile("thumbnail.png");
    try {
        velmora::savePixelsPNG(picture.rgb, picture.width, picture.height, path);
    } catch (...) {
        std::error_code ignored;
        stdfs::remove(pathOf(path), ignored);
        throw;
    }
    return readAndRemove(path);
}

std::string glbOf(Studio& studio, const Entry& entry, const httplib::Request& request) {
    const RenderOptions options = scenarioOptions(request);
    const std::string doubleSided = request.get_param_value("double-sided");
    const auto model = studio.load(entry);
    const velmora::GLTFOptions gltf{
        textureFolderFor(*model, entry.path, studio.textures), scenarioOf(options),
        request.has_param("double-sided") && doubleSided != "0" && doubleSided != "false"};
    const std::string path = temporaryFile("model.glb");
    try {
        model->exportGLTF(path, gltf);
    } catch (...) {
        std::error_code ignored;
        stdfs::remove(pathOf(path), ignored);
        throw;
    }
    return readAndRemove(path);
}

// An answer about the entry from the cache while its file is unchanged and it has no unsaved
// edits; made by `make` otherwise.
std::string cachedAnswer(Studio& studio, AnswerCache& cache, const Entry& entry,
                         const std::function<std::string()>& make) {
    if (studio.drafts.steps(entry.id) != 0) return make();
    const Stamp stamp = stampOf(entry.path);
    if (auto known = cache.get(entry.id, stamp)) return *known;
    std::string answer = make();
    cache.put(entry.id, stamp, answer);
    return answer;
}

}  // namespace

RenderOptions scenarioOptions(const httplib::Request& request) {
    RenderOptions options;
    const auto yes = [&](const char* name) {
        const std::string value = request.get_param_value(name);
        return request.has_param(name) && value != "0" && value != "false";
    };
    if (request.has_param("day")) {
        const std::string day = request.get_param_value("day");
        if (day.empty() || day.size() > 3 ||
            day.find_first_not_of("0123456789") != std::string::npos || std::stoi(day) < 1 ||
            std::stoi(day) > 366) {
            throw UsageError("bad day '" + day + "': give a day of the year from 1 to 366");
        }
        options.day = std::stoi(day);
    }
    options.season = request.get_param_value("season");
    options.night = yes("night");
    for (std::size_t i = 0; i < request.get_param_value_count("set"); ++i)
        options.set.push_back(request.get_param_value("set", i));
    return options;
}

json recordOf(const Studio& studio, const Entry& entry, const velmora::MDLObject& model) {
    const velmora::StreamAnalysis analysis(*model.BGLCommandList());
    const velmora::GuardAnalysis& guard = analysis.guard();
    return {{"id", entry.id},
            {"file", entry.file},
            {"folder", entry.folder},
            {"model", entry.model},
            {"guard", guard.guardedCall() == 0 ? json(nullptr) : json(guard.formula())},
            {"vertices", model.VertexList()->Count()},
            {"commands", model.BGLCommandList()->Count()},
            {"reversedTriangles", velmora::reversedTriangles(model).size()},
            {"seasons", !analysis.seasonalRuns().empty()},
            {"lights", analysis.lights().size()},
            {"editable", !entry.compiled},
            {"unsaved", studio.drafts.steps(entry.id)}};
}

// Runs `answer` for the model the address names; unknown ids are 404, the tool's failures 400
// for bad values and 500 otherwise.
httplib::Server::Handler forModel(
    Studio& studio,
    std::function<void(const Entry&, const httplib::Request&, httplib::Response&)> answer) {
    return [&studio, answer](const httplib::Request& request, httplib::Response& response) {
        const Entry* entry = studio.catalogue.find(request.matches[1]);
        if (!entry) return answerError(response, 404, "no model has this id");
        try {
            answer(*entry, request, response);
        } catch (const UsageError& e) {
            answerError(response, 400, e.what());
        } catch (const ToolError& e) {
            answerError(response, 500, saidOf(e));
        } catch (const velmora::Error& e) {
            answerError(response, 500, saidOf(fromLibrary(e, entry->path)));
        }
    };
}

void addModelRoutes(httplib::Server& server, Studio& studio) {
    server.Get("/api/models", [&studio](const httplib::Request&, httplib::Response& response) {
        json records = json::array();
        for (const Entry& entry : studio.catalogue.entries()) {
            try {
                records.push_back(json::parse(cachedAnswer(studio, studio.records, entry, [&] {
                    return recordOf(studio, entry, *studio.load(entry)).dump();
                })));
            } catch (const std::exception& e) {
                records.push_back({{"id", entry.id}, {"file", entry.file}, {"error", e.what()}});
            }
        }
        answerJson(response, records);
    });
    server.Get(kModelPath, forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                                      httplib::Response& response) {
                   answerJson(response, modelReport(entry.path, *studio.load(entry)));
               }));
    server.Get(std::string(kModelPath) + "/thumbnail.png",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                          httplib::Response& response) {
                   const std::string png = cachedAnswer(studio, studio.thumbnails, entry,
                                                        [&] { return thumbnailOf(studio, entry); });
                   response.set_content(png, "image/png");
               }));
    server.Get(std::string(kModelPath) + "/model.glb",
               forModel(studio, [&studio](const Entry& entry, const httplib::Request& request,
                                          httplib::Response& response) {
                   response.set_content(glbOf(studio, entry, request), "model/gltf-binary");
               }));
}

}  // namespace tool::studio
