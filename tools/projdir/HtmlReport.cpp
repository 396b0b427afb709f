#include "tools/projdir/HtmlReport.h"

#include <utility>

#include "tools/projdir/ReportPage.h"

namespace ProjDir {
namespace {

constexpr char PLACE_START[] = "<!--[";
constexpr char PLACE_END[] = "]-->";

// Inside a script element "<" may begin its end or a comment; within JSON it only occurs in texts.
std::string escapeForScript(const std::string& json) {
    std::string escaped;
    escaped.reserve(json.size());
    for (const char c : json)
        if (c == '<')
            escaped += "\\u003c";
        else
            escaped += c;
    return escaped;
}

std::string fill(const std::string& name, const std::string& jsonReport) {
    const std::pair<const char*, const char*> parts[] = {
        {"STYLE", REPORT_STYLE}, {"SCRIPT", REPORT_SCRIPT}, {"COASTLINE", REPORT_COASTLINE}};
    for (const auto& [part, text] : parts)
        if (name == part) return text;
    return escapeForScript(jsonReport);
}

}  // namespace

std::string writeHtmlReport(const std::string& jsonReport) {
    const std::string page = REPORT_PAGE;
    const std::string start = PLACE_START;
    const std::string end = PLACE_END;
    std::string text;
    std::size_t done = 0;
    for (std::size_t at = page.find(start); at != std::string::npos; at = page.find(start, done)) {
        const std::size_t name = at + start.size();
        const std::size_t close = page.find(end, name);
        text += page.substr(done, at - done) + fill(page.substr(name, close - name), jsonReport);
        done = close + end.size();
    }
    return text + page.substr(done);
}

}  // namespace ProjDir
