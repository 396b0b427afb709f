#pragma once

#include <map>
#include <string>

#include "Offer.h"
#include "Store.h"

namespace FeatureServer {

struct IgnoresCase {
    bool operator()(const std::string& one, const std::string& other) const;
};
using Values = std::map<std::string, std::string>;

struct Request {
    std::string path;
    std::string base;  // the address of the server, such as "http://127.0.0.1:8080"
    std::map<std::string, std::string, IgnoresCase> parameters;

    // The value of a parameter, or `absent`.
    std::string value(const std::string& name, const std::string& absent = "") const;
    // Reads an integer from `least` to `most`; a greater one counts as `most`. Throws Refusal.
    std::size_t count(const std::string& name, std::size_t least, std::size_t most, std::size_t absent) const;
};

struct Answer {
    int status;
    std::string type;
    std::string body;
    std::string contentCrs = {};
};

// Texts by name, with places for values such as {title}, from a file in which "== name" begins a text.
class Templates {
public:
    // Throws std::runtime_error.
    explicit Templates(const std::string& path);
    bool has(const std::string& name) const { return texts.count(name) != 0; }
    std::string fill(const std::string& name, const Values& values) const;

private:
    std::map<std::string, std::string> texts;
};

// What an answer is made from. The offer is that of the time when the request came in.
struct Context {
    const Offer& offer;
    const Store& store;
    const Templates& wfs11;
    const Templates& wfs20;
    const Templates& api;
    std::size_t mostFeatures;
};

Answer answerWfs(const Context& context, const Request& request);
Answer answerApi(const Context& context, const Request& request);

// Adds west, south, east and north of a box to `values`.
Values withBox(const Bounds& box, Values values);

}  // namespace FeatureServer
