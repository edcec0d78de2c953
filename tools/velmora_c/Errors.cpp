#include "Handles.h"
#include "Tool.h"

#include <new>

namespace {

// The last failure of the calling thread, as the velmora_last_error functions give it.
struct LastError {
    std::string message;
    int number = 0;
    std::string json = "{}";
};

thread_local LastError last;

void remember(const std::string& message, tool::json said) {
    said["message"] = message;
    if (!said.contains("refused")) said["refused"] = false;
    last.message = message;
    last.number = said.value("number", 0);
    // Texts from a model may hold bytes that are not UTF-8; they are replaced, not refused.
    last.json = said.dump(-1, ' ', false, tool::json::error_handler_t::replace);
}

tool::json platformError(int number, const char* description) {
    return {{"number", number}, {"source", "Velmora"}, {"description", description}};
}

// "FILE: what", or what alone without a file.
std::string placed(const std::string& file, const std::string& what) {
    return file.empty() ? what : file + ": " + what;
}

tool::json contextOf(const velmora::Error& error) {
    tool::json said{{"number", error.number()},
                    {"source", error.source()},
                    {"description", error.description()}};
    if (!error.file().empty()) said["file"] = error.file();
    if (!error.section().empty()) said["section"] = error.section();
    if (error.offset() >= 0) said["offset"] = error.offset();
    if (error.command() > 0) said["command"] = error.command();
    if (!error.detail().empty()) said["detail"] = error.detail();
    return said;
}

}  // namespace

namespace capi {

int guarded(const std::string& file, const std::function<void()>& work) {
    try {
        work();
        return VELMORA_OK;
    } catch (const velmora::EditRefused& refused) {
        tool::json said = contextOf(refused);
        said["refused"] = true;
        said["reasons"] = refused.reasons();
        if (!file.empty()) said["file"] = file;
        remember(tool::saidOf(tool::editRefusal(refused, file)), said);
        return VELMORA_REFUSED;
    } catch (const velmora::Error& raised) {
        velmora::Error error = raised;
        if (!file.empty()) error.setFile(file);
        remember(error.what(), contextOf(error));
    } catch (const tool::UsageError& error) {
        remember(error.what(), platformError(5, "Invalid procedure call or argument"));
        return VELMORA_BAD_ARGUMENT;
    } catch (const tool::ToolError& error) {
        tool::json said =
            error.library().empty() ? platformError(75, "Path/File access error") : error.library();
        said["file"] = error.file();
        remember(tool::saidOf(error), said);
    } catch (const std::bad_alloc&) {
        remember(placed(file, "out of memory"), platformError(7, "Out of memory"));
    } catch (const std::exception& error) {
        remember(placed(file, error.what()),
                 platformError(5, "Invalid procedure call or argument"));
    }
    return VELMORA_FAILED;
}

int missing(const char* what) {
    remember(std::string(what) + " is NULL",
             platformError(91, "Object variable or With block variable not set"));
    return VELMORA_BAD_ARGUMENT;
}

}  // namespace capi

extern "C" {

const char* velmora_last_error(void) {
    return last.message.c_str();
}

int velmora_last_error_number(void) {
    return last.number;
}

const char* velmora_last_error_json(void) {
    return last.json.c_str();
}

}  // extern "C"
