#include "tools/projdir/PipelineText.h"

#include <sstream>
#include <utility>

#include "tools/projdir/Numbers.h"

namespace ProjDir {

namespace {

void addParameter(PipelineStep& step, const std::pair<std::string, std::string>& parameter) {
    if (parameter.first == "proj")
        step.projection = parameter.second;
    else if (parameter.first == "inv")
        step.isInverse = true;
    else
        step.parameters.insert(parameter);
}

}  // namespace

double PipelineStep::number(const std::string& key) const {
    const auto found = parameters.find(key);
    return found == parameters.end() ? 0 : readNumber(found->second);
}

std::vector<std::pair<std::string, std::string>> parseParameters(const std::string& text) {
    std::vector<std::pair<std::string, std::string>> parameters;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word.front() == '+') word.erase(0, 1);
        const std::size_t equals = word.find('=');
        if (equals == std::string::npos)
            parameters.emplace_back(word, "");
        else
            parameters.emplace_back(word.substr(0, equals), word.substr(equals + 1));
    }
    return parameters;
}

// What stands before the first "+step" belongs to the pipeline as a whole.
std::vector<PipelineStep> parsePipeline(const std::string& text) {
    std::vector<PipelineStep> steps(1);
    for (const auto& parameter : parseParameters(text)) {
        if (parameter.first == "step")
            steps.emplace_back();
        else
            addParameter(steps.back(), parameter);
    }
    if (steps.front().projection == "pipeline") steps.erase(steps.begin());
    return steps;
}

}  // namespace ProjDir
