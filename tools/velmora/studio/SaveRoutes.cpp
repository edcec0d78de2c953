#include "../ModelReport.h"
#include "Studio.h"

#include <filesystem>
#include <fstream>

namespace tool::studio {

namespace {

namespace stdfs = std::filesystem;

void writeBytes(const std::string& path, const std::string& bytes) {
    std::ofstream out(pathOf(path), std::ios::binary);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) throw ToolError(path, "could not be written");
}

// Writes `bytes` to `target` by the tool's output rule: beside it, read back as a model and
// compared, then moved into place.
void saveBytes(const std::string& target, const std::string& bytes) {
    Output(target, Output::Stream::Refused)
        .write([&](const std::string& path) { writeBytes(path, bytes); },
               [&](const std::string& path) {
                   velmora::MDLObject written;
                   written.readMDL(path);
                   if (bytesOf(written) != bytes) {
                       throw ToolError(path, "reads back other than what was saved");
                   }
               });
}

// A name to save a model as beside its file: a plain file name ending in .mdl.
std::string checkedName(const json& name) {
    if (!name.is_string()) throw UsageError("\"as\" takes a file name, such as \"house2.mdl\"");
    const std::string text = name.get<std::string>();
    const bool plain = !text.empty() && text.find_first_of("/\\:") == std::string::npos &&
                       text != "." && text != "..";
    if (!plain || text.size() < 5 || lowercase(text.substr(text.size() - 4)) != ".mdl") {
        throw UsageError("bad name '" + text +
                         "': give a file name ending in .mdl, without a folder");
    }
    return text;
}

void saveAs(Studio& studio, const Entry& entry, const std::string& name,
            httplib::Response& response) {
    const std::string target = textOf(pathOf(entry.path).parent_path() / pathOf(name));
    std::error_code code;
    if (stdfs::exists(pathOf(target), code)) {
        return answerError(response, 409,
                           name + " exists beside " + entry.file + ": choose another name");
    }
    std::string bytes;
    {
        const std::lock_guard<std::mutex> lock(studio.catalogue.lockOf(entry));
        bytes = bytesOf(*studio.load(entry));
    }
    saveBytes(target, bytes);
    const Entry& saved = studio.catalogue.addBeside(entry, name);
    studio.drafts.clear(entry.id);
    studio.changed(entry);
    answerJson(response, recordOf(studio, saved, *studio.load(saved)));
}

}  // namespace

void addSaveRoutes(httplib::Server& server, Studio& studio) {
    server.Post(R"(/api/models/([0-9a-f]{12})/undo)",
                forModel(studio, [&studio](const Entry& entry, const httplib::Request&,
                                           httplib::Response& response) {
                    const std::lock_guard<std::mutex> lock(studio.catalogue.lockOf(entry));
                    if (!studio.drafts.undo(entry.id)) {
                        return answerError(response, 409, "there is no unsaved edit to undo");
                    }
                    studio.changed(entry);
                    answerJson(response, modelReport(entry.path, *studio.load(entry)));
                }));
    server.Post(
        R"(/api/models/([0-9a-f]{12})/save)",
        forModel(studio, [&studio](const Entry& entry, const httplib::Request& request,
                                   httplib::Response& response) {
            const json body =
                request.body.empty() ? json::object() : json::parse(request.body, nullptr, false);
            if (!body.is_object()) throw UsageError("the body is not a JSON object");
            for (const auto& [key, value] : body.items()) {
                if (key != "as") throw UsageError("unknown key \"" + key + "\"");
            }
            if (body.contains("as"))
                return saveAs(studio, entry, checkedName(body["as"]), response);
            if (entry.compiled) {
                return answerError(response, 409,
                                   "model " + std::to_string(entry.model) + " of " + entry.file +
                                       " is inside a compiled file: save it as an .mdl file");
            }
            const std::lock_guard<std::mutex> lock(studio.catalogue.lockOf(entry));
            if (const auto draft = studio.drafts.current(entry.id)) {
                saveBytes(entry.path, *draft);
                studio.drafts.clear(entry.id);
                studio.changed(entry);
            }
            answerJson(response, modelReport(entry.path, *studio.load(entry)));
        }));
}

}  // namespace tool::studio
