#pragma once

#include <map>
#include <string>
#include <vector>

namespace ProjDir {

// One step of a PROJ operation's text.
struct PipelineStep {
    std::string projection;
    bool isInverse = false;
    // Key to value; the value is empty where there is none.
    std::map<std::string, std::string> parameters;

    bool has(const std::string& key) const { return parameters.count(key) != 0; }
    // 0 for a missing key.
    double number(const std::string& key) const;
};

// The parameters of a text such as "+proj=utm +zone=32", in order, without "+".
std::vector<std::pair<std::string, std::string>> parseParameters(const std::string& text);

// The steps of "+proj=pipeline +step ...", or the one step of any other operation.
std::vector<PipelineStep> parsePipeline(const std::string& text);

}  // namespace ProjDir
