// A feature server for WFS 2.0, WFS 1.1 and OGC API - Features. SIGHUP reads the CRS on offer again while requests run;
// SIGINT and SIGTERM end the server after the requests that have begun.

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <httplib.h>
#include <iostream>
#include <iterator>
#include <memory>
#include <signal.h>
#include <stdexcept>
#include <thread>

#include <CLI/CLI.hpp>

#include "Service.h"

namespace {

using namespace FeatureServer;

struct Options {
    std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string data = folder / "data" / "europe.gpkg", crs = folder / "crs.xml", projDirectory = folder / "proj";
    std::string pages = folder / "static", host = "127.0.0.1";
    int port = 8080;
    std::size_t threads = 16, mostFeatures = 10000;
};

void addOptions(CLI::App& app, Options& options) {
    if (!std::filesystem::exists(options.projDirectory))
        options.projDirectory = CoordinateTransformation::installedProjDirectory();
    app.option_defaults()->always_capture_default();
    app.add_option("--data", options.data, "GeoPackage, or connection string of GDAL such as PG:dbname=...");
    app.add_option("--crs", options.crs, "XML fragment with the CRS on offer");
    app.add_option("--proj-dir", options.projDirectory, "PROJ directory");
    app.add_option("--static", options.pages, "Folder of the web page");
    app.add_option("--host", options.host, "Address to listen at");
    app.add_option("--port", options.port, "Port; 0 for any that is free")->check(CLI::Range(0, 65535));
    app.add_option("--threads", options.threads, "Worker threads")->check(CLI::Range(1, 1000));
    app.add_option("--max-features", options.mostFeatures, "Most features in an answer")
        ->check(CLI::Range(1, 10000000));
}

class Server {
public:
    explicit Server(const Options& chosen)
        : options(chosen),
          store(chosen.data),
          wfs11(chosen.folder / "templates" / "wfs-1.1.0.txt"),
          wfs20(chosen.folder / "templates" / "wfs-2.0.0.txt"),
          api(chosen.folder / "templates" / "api.txt") {
        reload();
        setLimits();
        http.set_mount_point("/static", options.pages);
        http.Get(".*",
                 [this](const httplib::Request& request, httplib::Response& response) { handle(request, response); });
        http.Post(".*", [](const httplib::Request&, httplib::Response& response) { response.status = 405; });
    }

    // Makes new configurations and swaps them in; requests go on with those that they began with. Throws and keeps the
    // present ones if the new ones cannot be made.
    void reload() {
        const auto fresh = std::make_shared<const Offer>(options.crs, options.projDirectory);
        for (const Layer& layer : store.layers())
            if (!fresh->offers(layer.crsCode)) throw std::runtime_error("The CRS of " + layer.name + " is not offered");
        std::atomic_store(&offer, fresh);
    }

    // Returns the port.
    int bind() {
        if (options.port == 0)
            options.port = http.bind_to_any_port(options.host);
        else if (!http.bind_to_port(options.host, options.port))
            options.port = -1;
        if (options.port < 0) throw std::runtime_error("Cannot listen at " + options.host);
        return options.port;
    }
    void run() { http.listen_after_bind(); }
    bool isRunning() const { return http.is_running(); }
    void stop() { http.stop(); }

private:
    void setLimits() {
        constexpr std::size_t LONGEST_BODY = 65536, REQUESTS_PER_CONNECTION = 10000;
        constexpr int SECONDS = 5;
        http.new_task_queue = [this] { return new httplib::ThreadPool(options.threads); };
        http.set_payload_max_length(LONGEST_BODY);
        http.set_read_timeout(SECONDS);
        http.set_write_timeout(SECONDS);
        http.set_keep_alive_timeout(SECONDS);
        http.set_keep_alive_max_count(REQUESTS_PER_CONNECTION);
        http.set_tcp_nodelay(true);
    }

    // Names and values are repeated in documents, which must be well-formed: UTF-8 without control characters.
    static bool isText(const std::string& bytes) {
        int following = 0;
        for (const unsigned char c : bytes) {
            if (following > 0 ? (c & 0xC0) != 0x80 : c < 0x20 || c == 0x7F || (c >= 0x80 && c < 0xC2) || c > 0xF4)
                return false;
            following = following > 0 ? following - 1 : c >= 0xF0 ? 3 : c >= 0xE0 ? 2 : c >= 0xC2 ? 1 : 0;
        }
        // U+FFFE, U+FFFF and surrogates are not characters of XML.
        return following == 0 && bytes.find("\xEF\xBF\xBE") == std::string::npos &&
               bytes.find("\xEF\xBF\xBF") == std::string::npos && bytes.find("\xED\xA0") == std::string::npos;
    }

    static bool isText(const httplib::Request& request) {
        return isText(request.path) &&
               std::all_of(request.params.begin(), request.params.end(),
                           [](const auto& parameter) { return isText(parameter.first) && isText(parameter.second); });
    }

    void handle(const httplib::Request& request, httplib::Response& response) const {
        if (!isText(request)) {
            response.status = 400;
            return response.set_content("The request is not UTF-8, or has control characters.\n", "text/plain");
        }
        if (request.path == "/" && request.get_header_value("Accept").find("text/html") != std::string::npos) {
            std::ifstream file(options.pages + "/index.html");
            if (file)
                return response.set_content({std::istreambuf_iterator<char>(file), {}}, "text/html; charset=utf-8");
        }
        const std::shared_ptr<const Offer> current = std::atomic_load(&offer);
        const Context context{*current, store, wfs11, wfs20, api, options.mostFeatures};
        Request asked{request.path, "http://" + hostOf(request), {}};
        for (const auto& [name, value] : request.params) asked.parameters.emplace(name, value);
        Answer answer = request.path == "/wfs" ? answerWfs(context, asked) : answerApi(context, asked);
        response.status = answer.status;
        response.body = std::move(answer.body);
        response.set_header("Content-Type", answer.type);
        if (!answer.contentCrs.empty()) response.set_header("Content-Crs", "<" + answer.contentCrs + ">");
    }

    // A name with other characters than those of host and port would need quoting in the documents.
    std::string hostOf(const httplib::Request& request) const {
        const std::string host = request.get_header_value("Host");
        const bool isPlain = std::all_of(host.begin(), host.end(), [](unsigned char c) {
            return std::isalnum(c) != 0 || std::strchr(".:-[]", c) != nullptr;
        });
        return isPlain && !host.empty() ? host : options.host + ":" + std::to_string(options.port);
    }

    Options options;
    Store store;
    Templates wfs11, wfs20, api;
    std::shared_ptr<const Offer> offer;
    httplib::Server http;
};

void reload(Server& server) {
    try {
        server.reload();
        std::cout << "read the CRS again" << std::endl;
    } catch (const Refusal& failure) {
        std::cout << "kept the CRS: " << failure.text << std::endl;
    } catch (const std::exception& failure) {
        std::cout << "kept the CRS: " << failure.what() << std::endl;
    }
}

void serve(const Options& options, const sigset_t& signals) {
    Server server(options);
    const int port = server.bind();
    std::thread listener([&server] { server.run(); });
    // A server that does not run yet cannot be stopped.
    while (!server.isRunning()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::cout << "http://" << options.host << ":" << port << "/" << std::endl;
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal == SIGHUP) reload(server);
    server.stop();
    listener.join();
}

}  // namespace

int main(int argc, char** argv) {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        Options options;
        CLI::App app("Serves features by WFS 2.0, WFS 1.1 and OGC API - Features.", "feature-server");
        addOptions(app, options);
        CLI11_PARSE(app, argc, argv);
        serve(options, signals);
    } catch (const std::exception& failure) {
        std::cerr << "feature-server: " << failure.what() << std::endl;
        return 1;
    }
}
