#include "Studio.h"

namespace tool::studio {

void addPage(httplib::Server& server) {
    // The cookie set with the page carries the token for the page's own requests.
    server.Get("/", [](const httplib::Request&, httplib::Response& response) {
        response.set_header("Cache-Control", "no-store");
        const std::string_view html = pageHtml();
        response.set_content(html.data(), html.size(), "text/html; charset=utf-8");
    });
    server.Get("/studio.js", [](const httplib::Request&, httplib::Response& response) {
        response.set_header("Cache-Control", "no-store");
        const std::string_view script = pageScript();
        response.set_content(script.data(), script.size(), "text/javascript; charset=utf-8");
    });
    // The page has no icon; browsers ask for one anyway.
    server.Get("/favicon.ico",
               [](const httplib::Request&, httplib::Response& response) { response.status = 204; });
}

}  // namespace tool::studio
