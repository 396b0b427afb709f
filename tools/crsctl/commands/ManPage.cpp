#include "tools/crsctl/commands/ManPage.h"

#include <algorithm>
#include <cctype>

namespace crsctl {
namespace {

// A backslash, a hyphen that is to stay one, and a dot or quote at the beginning of a line are not meant as roff.
std::string escaped(const std::string& text) {
    std::string out = !text.empty() && (text.front() == '.' || text.front() == '\'') ? "\\&" : "";
    for (const char character : text) {
        if (character == '\\')
            out += "\\e";
        else if (character == '-')
            out += "\\-";
        else
            out += character;
    }
    return out;
}

std::string pageName(const CommandText& command) { return command.name.empty() ? "crsctl" : "crsctl-" + command.name; }

std::string upperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::toupper(character)); });
    return text;
}

std::string section(const char* name) { return std::string(".SH ") + name + "\n"; }

std::string optionEntry(const OptionText& option) {
    std::string flags = option.flags;
    const std::size_t comma = flags.find(',');
    if (comma != std::string::npos) flags.insert(comma + 1, " ");
    const std::string value = option.value.empty() ? "" : " \\fI" + escaped(option.value) + "\\fR";
    return ".TP\n\\fB" + escaped(flags) + "\\fR" + value + "\n" + escaped(option.text) + "\n";
}

std::string headOf(const CommandText& command) {
    return ".TH " + upperCase(pageName(command)) + " 1 \"\" \"crsctl " COORDTRANS_VERSION "\" \"User Commands\"\n" +
           section("NAME") + escaped(pageName(command)) + " \\- " + escaped(command.summary) + "\n" +
           section("SYNOPSIS") + "\\fB" + escaped(fullNameOf(command)) + "\\fR [\\fIOPTION\\fR...] " +
           escaped(command.arguments) + "\n";
}

std::string descriptionOf(const CommandText& command) {
    std::string text = section("DESCRIPTION");
    for (const std::string& paragraph : command.paragraphs) text += ".PP\n" + escaped(paragraph) + "\n";
    return text;
}

std::string optionsOf(const CommandText& command) {
    std::string text = section("OPTIONS");
    for (const OptionText& option : command.options) text += optionEntry(option);
    for (const OptionText& option : commonOptionTexts()) text += optionEntry(option);
    return text;
}

std::string exitStatus() {
    std::string text = section("EXIT STATUS");
    for (const ExitText& exit : exitTexts()) text += ".TP\n\\fB" + exit.code + "\\fR\n" + escaped(exit.text) + "\n";
    return text;
}

std::string examplesOf(const CommandText& command) {
    std::string text = section("EXAMPLES");
    for (const ExampleText& example : command.examples)
        text += ".PP\n" + escaped(example.text) + "\n.PP\n.RS 4\n.nf\n" + escaped(example.command) + "\n.fi\n.RE\n";
    return text;
}

std::string seeAlso(const CommandText& command) {
    std::string list;
    for (const CommandText& other : commandTexts())
        if (other.name != command.name)
            list += (list.empty() ? "" : ",\n") + ("\\fB" + escaped(pageName(other)) + "\\fR(1)");
    return section("SEE ALSO") + list + "\n";
}

}  // namespace

std::string manPage(const CommandText& command) {
    return headOf(command) + descriptionOf(command) + optionsOf(command) + exitStatus() + examplesOf(command) +
           seeAlso(command);
}

}  // namespace crsctl
