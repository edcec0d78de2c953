#pragma once

#include "../Rendering.h"
#include "../Tool.h"

#include <httplib.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool::studio {

struct StudioOptions {
    std::vector<std::string> folders;
    int port = 0;  // 0: a free one
    bool noBrowser = false;
    std::string textures;
    bool followLinks = false;
};

// When a file was last changed and how long it is: a cached answer about it holds while this does.
struct Stamp {
    int64_t time = 0;
    int64_t size = -1;
    bool operator==(const Stamp&) const = default;
};
Stamp stampOf(const std::string& path);

// One model the studio serves: an .mdl file, or one model of a compiled file.
struct Entry {
    std::string id;  // 12 hex digits
    std::string path;
    std::string file;    // from its folder, "/" between the parts
    std::string folder;  // as given
    int model = 1;       // position in a compiled file, from 1
    bool compiled = false;
};

// Every model of the folders, found when the studio starts, with the files saved under new names
// since, and what the studio keeps of them: a lock for each file, so that edits of one file
// follow each other. Entries found stay where they are while others are added.
class Catalogue {
  public:
    Catalogue(const std::vector<std::string>& folders, bool followLinks);

    std::vector<Entry> entries() const;
    const Entry* find(const std::string& id) const;
    // Adds the model file `name` saved beside the file of `next` (an entry of the catalogue).
    const Entry& addBeside(const Entry& next, const std::string& name);
    // Reads the entry's model from its file.
    std::shared_ptr<velmora::MDLObject> load(const Entry& entry) const;
    std::mutex& lockOf(const Entry& entry);

  private:
    std::vector<std::string> folders_;
    mutable std::mutex mutex_;
    std::deque<Entry> entries_;
    std::map<std::string, std::unique_ptr<std::mutex>> locks_;
};

// The edits of each model not yet saved: the model's bytes after each of them, the last one what
// the studio shows.
class Drafts {
  public:
    // The bytes after the last unsaved edit; nothing when there is none.
    std::optional<std::string> current(const std::string& id) const;
    std::size_t steps(const std::string& id) const;
    void push(const std::string& id, std::string bytes);
    // Drops the last unsaved edit; false when there is none.
    bool undo(const std::string& id);
    void clear(const std::string& id);

  private:
    mutable std::mutex mutex_;
    std::map<std::string, std::vector<std::string>> steps_;
};

// A temporary file for one answer, named after `name`; and its bytes, the file removed once read.
std::string temporaryFile(const std::string& name);
std::string readAndRemove(const std::string& path);
// The bytes of a whole model file as `model` would be saved.
std::string bytesOf(velmora::MDLObject& model);

// Answers kept for as long as the file they are about is unchanged.
class AnswerCache {
  public:
    std::optional<std::string> get(const std::string& key, const Stamp& stamp);
    void put(const std::string& key, const Stamp& stamp, std::string answer);
    // Drops the answer, for a file changed within the stamp's resolution.
    void forget(const std::string& key);

  private:
    std::mutex mutex_;
    std::map<std::string, std::pair<Stamp, std::string>> answers_;
};

// A random token of 32 hex digits from the system's random source.
std::string newToken();

// Refuses, before a request is read further, one that is not for this server (its Host), that
// comes from another site's page (its Origin) or that lacks the token; sets the token's cookie
// when the page is asked for with the token in its address.
void guardRequests(httplib::Server& server, int port, const std::string& token);

// Where a model's textures are found: --textures, the folder beside it, or a "texture" or
// "textures" folder next to it, whichever holds the most of its textures.
std::string textureFolderFor(const velmora::MDLObject& model, const std::string& path,
                             const std::string& textures);

// The routes: the model list, a model's info, thumbnail, glTF, listing and scenario, its edits,
// undo and save, and the page.
struct Studio {
    Catalogue catalogue;
    std::string textures;
    AnswerCache thumbnails;
    AnswerCache records;  // of the model list, as JSON text
    Drafts drafts;

    // The model as the studio shows it: with its unsaved edits, else as its file holds it.
    std::shared_ptr<velmora::MDLObject> load(const Entry& entry) const;
    // Forgets the answers about the entry after it changed.
    void changed(const Entry& entry);
};
// The record of a model in the model list.
json recordOf(const Studio& studio, const Entry& entry, const velmora::MDLObject& model);
void addModelRoutes(httplib::Server& server, Studio& studio);
void addViewRoutes(httplib::Server& server, Studio& studio);
void addEditRoute(httplib::Server& server, Studio& studio);
void addSaveRoutes(httplib::Server& server, Studio& studio);
void addPage(httplib::Server& server);
// The page's HTML and its bundled script, embedded when the tool was built.
std::string_view pageHtml();
std::string_view pageScript();

// The scenario the address asks for, as --day, --season, --night and --set give it; a bad value
// is a UsageError.
RenderOptions scenarioOptions(const httplib::Request& request);

// Answers with JSON; with {"error": message} for a failure.
void answerJson(httplib::Response& response, const json& body, int status = 200);
void answerError(httplib::Response& response, int status, const std::string& message);
// Runs `answer` for the model the address names; unknown ids are 404, the tool's failures 400
// for bad values and 500 otherwise.
httplib::Server::Handler forModel(
    Studio& studio,
    std::function<void(const Entry&, const httplib::Request&, httplib::Response&)> answer);

}  // namespace tool::studio
