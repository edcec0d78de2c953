#include "Studio.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <iostream>
#include <thread>

namespace tool {

namespace {

using studio::StudioOptions;

std::atomic<bool> stopAsked = false;

extern "C" void askToStop(int) {
    stopAsked = true;
}

int listenOn(httplib::Server& server, int port) {
    if (port == 0) return server.bind_to_any_port("127.0.0.1");
    return server.bind_to_port("127.0.0.1", port) ? port : -1;
}

// Runs the server until SIGINT or SIGTERM: a signal handler may only set a flag, so a watcher
// stops the server when it sees it.
void serveUntilStopped(httplib::Server& server) {
    std::atomic<bool> ended = false;
    std::signal(SIGINT, askToStop);
    std::signal(SIGTERM, askToStop);
    std::thread watcher([&] {
        while (!stopAsked && !ended)
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        server.stop();
    });
    const bool listened = server.listen_after_bind();
    ended = true;
    watcher.join();
    if (!listened && !stopAsked) throw ToolError("127.0.0.1", "the server stopped listening");
}

void serve(const StudioOptions& o) {
    const std::vector<std::string> folders =
        o.folders.empty() ? std::vector<std::string>{"."} : o.folders;
    studio::Studio studio{studio::Catalogue(folders, o.followLinks), o.textures, {}, {}, {}};
    httplib::Server server;
    server.set_payload_max_length(1 << 20);
    const int port = listenOn(server, o.port);
    if (port <= 0) {
        throw ToolError("127.0.0.1:" + std::to_string(o.port), "can't be listened on",
                        "give another --port, or none for a free one");
    }
    const std::string token = studio::newToken();
    studio::guardRequests(server, port, token);
    studio::addModelRoutes(server, studio);
    studio::addViewRoutes(server, studio);
    studio::addEditRoute(server, studio);
    studio::addSaveRoutes(server, studio);
    studio::addPage(server);

    const std::string url = "http://127.0.0.1:" + std::to_string(port) + "/?token=" + token;
    std::cout << url << std::endl;
    std::cerr << "velmora studio: " << studio.catalogue.entries().size()
              << " model(s); stop with Ctrl+C\n";
    if (!o.noBrowser) {
        // The browser may take its time to start; the server doesn't wait for it.
        std::thread([url] {
            if (!openInBrowser(url)) {
                std::cerr << "velmora studio: note: no browser could be opened; open " << url
                          << " yourself\n";
            }
        }).detach();
    }
    serveUntilStopped(server);
}

}  // namespace

void addStudioCommand(CLI::App& app) {
    auto* command = addCommand(
        app, "studio", "Serve the models of folders to the studio's page in a browser",
        "velmora studio [FOLDER...] [--port N] [--no-browser] [--textures DIR] [--follow-links]");
    auto o = std::make_shared<StudioOptions>();
    command->add_option("FOLDER", o->folders, "Folders of models (default: the current one)");
    command->add_option("--port", o->port, "Port on 127.0.0.1 (default: a free one)")
        ->check(numberFrom(0, 65535, true));
    command->add_flag("--no-browser", o->noBrowser, "Only print the address; open no browser");
    command->add_option("--textures", o->textures,
                        "Folder of texture images, besides those next to the models");
    command->add_flag("--follow-links", o->followLinks,
                      "Follow links in folders (links out of a folder are passed over otherwise)");
    command->callback([o] { serve(*o); });
}

}  // namespace tool
