#pragma once

#include <string>
#include <vector>

namespace crsctl {

struct OptionText {
    std::string flags;  // "-h,--help", as the command line takes them
    std::string value;  // "FILE"; empty for a flag
    std::string text;
};

struct ExampleText {
    std::string command;
    std::string text;
};

// Everything that is said about a command, to the person at the terminal and in the manual alike.
struct CommandText {
    std::string name;       // "resolve"; empty for the program itself
    std::string arguments;  // "NAME..."
    std::string summary;    // one line, without a full stop
    std::vector<std::string> paragraphs;
    std::vector<OptionText> options;
    std::vector<ExampleText> examples;
};

// The program itself, then its commands.
const std::vector<CommandText>& commandTexts();

// Null when there is no such command.
const CommandText* findCommandText(const std::string& name);

// "crsctl resolve"; "crsctl" for the program itself.
std::string fullNameOf(const CommandText& command);

// What every command takes, the program itself included.
const std::vector<OptionText>& commonOptionTexts();

// A code that the program exits with, and when.
struct ExitText {
    std::string code;
    std::string text;
};

const std::vector<ExitText>& exitTexts();

}  // namespace crsctl
