#include "Studio.h"

#include <algorithm>
#include <random>

namespace tool::studio {

namespace {

const char* const kCookie = "velmora_token";

// Compares in a time that doesn't depend on where the texts first differ.
bool sameSecret(const std::string& given, const std::string& token) {
    if (given.size() != token.size()) return false;
    unsigned char differ = 0;
    for (std::size_t i = 0; i < token.size(); ++i)
        differ |= static_cast<unsigned char>(given[i] ^ token[i]);
    return differ == 0;
}

std::string cookieValue(const std::string& header, const std::string& name) {
    std::size_t at = 0;
    while (at < header.size()) {
        const std::size_t end = std::min(header.find(';', at), header.size());
        std::string pair = header.substr(at, end - at);
        pair.erase(0, pair.find_first_not_of(' '));
        if (pair.rfind(name + "=", 0) == 0) return pair.substr(name.size() + 1);
        at = end + 1;
    }
    return "";
}

bool carriesToken(const httplib::Request& request, const std::string& token) {
    const std::string authorization = request.get_header_value("Authorization");
    if (authorization.rfind("Bearer ", 0) == 0 && sameSecret(authorization.substr(7), token)) {
        return true;
    }
    for (std::size_t i = 0; i < request.get_header_value_count("Cookie"); ++i) {
        if (sameSecret(cookieValue(request.get_header_value("Cookie", i), kCookie), token)) {
            return true;
        }
    }
    return false;
}

}  // namespace

std::string newToken() {
    std::random_device source;
    std::string token;
    const char* const digits = "0123456789abcdef";
    while (token.size() < 32) {
        const unsigned int bits = source();
        for (int shift = 0; shift < 32 && token.size() < 32; shift += 4)
            token += digits[(bits >> shift) & 15];
    }
    return token;
}

void guardRequests(httplib::Server& server, int port, const std::string& token) {
    const std::string suffix = ":" + std::to_string(port);
    const std::vector<std::string> hosts = {"127.0.0.1" + suffix, "localhost" + suffix};
    const std::vector<std::string> origins = {"http://" + hosts[0], "http://" + hosts[1]};
    server.set_pre_routing_handler(
        [=](const httplib::Request& request, httplib::Response& response) {
            const auto in = [](const std::vector<std::string>& allowed, const std::string& value) {
                return std::find(allowed.begin(), allowed.end(), value) != allowed.end();
            };
            // Another name for this address is another site's page reaching in (DNS rebinding).
            if (!in(hosts, request.get_header_value("Host"))) {
                answerError(response, 403, "this server answers only to " + hosts[0]);
                return httplib::Server::HandlerResponse::Handled;
            }
            if (request.has_header("Origin") && !in(origins, request.get_header_value("Origin"))) {
                answerError(response, 403, "requests from other sites' pages are refused");
                return httplib::Server::HandlerResponse::Handled;
            }
            if (request.path == "/" && request.has_param("token") &&
                sameSecret(request.get_param_value("token"), token)) {
                response.set_header("Set-Cookie", std::string(kCookie) + "=" + token +
                                                      "; Path=/; HttpOnly; SameSite=Strict");
                return httplib::Server::HandlerResponse::Unhandled;
            }
            if (!carriesToken(request, token)) {
                answerError(response, 401, "give the token of the address the studio printed");
                return httplib::Server::HandlerResponse::Handled;
            }
            return httplib::Server::HandlerResponse::Unhandled;
        });
}

}  // namespace tool::studio
