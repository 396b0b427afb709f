#include "tools/crsctl/commands/Help.h"

#include <sstream>

#include "tools/common/Text.h"

namespace crsctl {

using Tools::padded;

namespace {

constexpr std::size_t WIDTH = 80;
constexpr std::size_t OPTION_TEXT_COLUMN = 22;

// Breaks at blanks; the first line stands behind `head`, the others behind `indent` blanks.
std::string wrapped(const std::string& text, const std::string& head, std::size_t indent) {
    std::istringstream words(text);
    std::string word;
    std::string line = padded(head, indent);
    std::string lines;
    bool isEmpty = true;
    while (words >> word) {
        if (!isEmpty && line.size() + 1 + word.size() > WIDTH) {
            lines += line + "\n";
            line = std::string(indent, ' ');
            isEmpty = true;
        }
        line += (isEmpty ? "" : " ") + word;
        isEmpty = false;
    }
    return lines + line + "\n";
}

std::string flagsInWords(const OptionText& option) {
    std::string flags = option.flags;
    const std::size_t comma = flags.find(',');
    if (comma != std::string::npos) flags.insert(comma + 1, " ");
    return "  " + flags + (option.value.empty() ? "" : " " + option.value);
}

std::string optionHelp(const OptionText& option) {
    const std::string flags = flagsInWords(option);
    if (flags.size() + 2 <= OPTION_TEXT_COLUMN) return wrapped(option.text, flags, OPTION_TEXT_COLUMN);
    return flags + "\n" + wrapped(option.text, "", OPTION_TEXT_COLUMN);
}

std::string usage(const CommandText& command) {
    return "usage: " + fullNameOf(command) + " [OPTION...] " + command.arguments + "\n";
}

std::string commandList() {
    std::string list = "\nCommands:\n";
    for (const CommandText& command : commandTexts())
        if (!command.name.empty()) list += "  " + padded(command.name, 12) + command.summary + "\n";
    return list;
}

std::string optionsHelp(const CommandText& command) {
    std::string help = "\nOptions:\n";
    for (const OptionText& option : command.options) help += optionHelp(option);
    for (const OptionText& option : commonOptionTexts()) help += optionHelp(option);
    return help;
}

std::string examplesHelp(const CommandText& command) {
    std::string help = "\nExamples:\n";
    for (const ExampleText& example : command.examples) help += "  # " + example.text + "\n  " + example.command + "\n";
    return help;
}

std::string exitHelp() {
    std::string help = "\nExit codes:\n";
    for (const ExitText& exit : exitTexts()) help += wrapped(exit.text, "  " + exit.code, 8);
    return help;
}

}  // namespace

std::string helpText(const CommandText& command) {
    std::string help = usage(command);
    for (const std::string& paragraph : command.paragraphs) help += "\n" + wrapped(paragraph, "", 0);
    if (command.name.empty()) help += commandList();
    return help + optionsHelp(command) + examplesHelp(command) + exitHelp();
}

}  // namespace crsctl
