// A feature server for WFS 2.0, WFS 1.1 and OGC API - Features. SIGHUP reads the CRS on offer again while requests run;
// SIGINT and SIGTERM end the server after the requests that have begun.

#include <algorithm>
#include <chrono>
#include <fstream>
#include <httplib.h>
#include <iostream>
#include <signal.h>
#include <thread>

#include <CLI/CLI.hpp>

#include "Service.h"

namespace {

using namespace FeatureServer;

struct Options {
    std::filesystem::path folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string data = folder / "data" / "europe.gpkg", crs = folder / "crs.xml", projDirectory = folder / "proj";
    std::string host = "127.0.0.1";
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
    app.add_option("--host", options.host, "Address to listen at");
    app.add_option("--port", options.port, "Port; 0 for any that is free")->check(CLI::Range(0, 65535));
    app.add_option("--threads", options.threads, "Worker threads")->check(CLI::Range(1, 1000));
    app.add_option("--max-features", options.mostFeatures, "Most features in an answer")->check(CLI::PositiveNumber);
}

// The CRS on offer, which requests share and a signal replaces.
using SharedOffer = std::shared_ptr<const Offer>;

SharedOffer readOffer(const Options& options, const Store& store) {
    SharedOffer offer = std::make_shared<const Offer>(options.crs, options.projDirectory);
    for (const Layer& layer : store.layers())
        if (!offer->offers(layer.crsCode)) throw std::runtime_error("The CRS of " + layer.name + " is not offered");
    return offer;
}

// Makes new configurations and swaps them in; requests go on with those that they began with. Keeps the present ones
// if the new ones cannot be made.
void reload(SharedOffer& offer, const Options& options, const Store& store) {
    try {
        std::atomic_store(&offer, readOffer(options, store));
        std::cout << "read the CRS again" << std::endl;
    } catch (...) {
        std::cout << "kept the CRS: " << currentFailure() << std::endl;
    }
}

// Whether the request can be repeated in XML and JSON. All that the server knows is of these characters.
bool isText(const httplib::Request& request) {
    const std::string host = request.get_header_value("Host");
    std::string text = request.path + host;
    for (const auto& [name, value] : request.params) text += name + value;
    return host.find_first_of("<>&\"\\") == std::string::npos &&
           std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= ' ' && c < 0x7F; });
}

void respond(const Context& context, const httplib::Request& request, httplib::Response& response) {
    Request asked{request.path, "http://" + request.get_header_value("Host"), {}};
    for (const auto& [name, value] : request.params) asked.parameters.emplace(lower(name), value);
    Answer answered = answer(context, asked);
    response.status = answered.status;
    response.body = std::move(answered.body);
    response.set_header("Content-Type", answered.type);
    if (!answered.contentCrs.empty()) response.set_header("Content-Crs", "<" + answered.contentCrs + ">");
}

void setLimits(httplib::Server& http, std::size_t threads) {
    constexpr std::size_t LONGEST_BODY = 65536, REQUESTS_PER_CONNECTION = 10000, SECONDS = 5;
    http.new_task_queue = [threads] { return new httplib::ThreadPool(threads); };
    http.set_payload_max_length(LONGEST_BODY);
    http.set_read_timeout(SECONDS);
    http.set_write_timeout(SECONDS);
    http.set_keep_alive_timeout(SECONDS);
    http.set_keep_alive_max_count(REQUESTS_PER_CONNECTION);
    http.set_tcp_nodelay(true);
}

// The page for a browser, and documents for all others.
void addHandlers(httplib::Server& http, const Options& options, const httplib::Server::Handler& respond) {
    http.set_mount_point("/static", options.folder / "static");
    http.Get(".*", [&options, respond](const httplib::Request& request, httplib::Response& response) {
        std::ifstream page(options.folder / "static" / "index.html");
        if (request.path == "/" && page && request.get_header_value("Accept").find("text/html") != std::string::npos)
            return response.set_content({std::istreambuf_iterator<char>(page), {}}, "text/html; charset=utf-8");
        if (isText(request)) return respond(request, response);
        response.status = 400;
        response.set_content("The request has characters other than those of ASCII.\n", "text/plain");
    });
    http.Post(".*", [](const httplib::Request&, httplib::Response& response) { response.status = 405; });
}

void serve(const Options& options, const sigset_t& signals) {
    const Store store(options.data);
    const Templates templates = readTemplates(options.folder / "templates");
    SharedOffer offer = readOffer(options, store);
    httplib::Server http;
    setLimits(http, options.threads);
    addHandlers(http, options, [&](const httplib::Request& request, httplib::Response& response) {
        const SharedOffer current = std::atomic_load(&offer);
        respond({*current, store, templates, options.mostFeatures}, request, response);
    });
    const int port = options.port == 0                               ? http.bind_to_any_port(options.host)
                     : http.bind_to_port(options.host, options.port) ? options.port
                                                                     : -1;
    if (port < 0) throw std::runtime_error("Cannot listen at " + options.host);
    std::thread listener([&http] { http.listen_after_bind(); });
    // A server that does not run yet cannot be stopped.
    while (!http.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::cout << "http://" << options.host << ":" << port << "/" << std::endl;
    int signal = 0;
    while (sigwait(&signals, &signal) == 0 && signal == SIGHUP) reload(offer, options, store);
    http.stop();
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
