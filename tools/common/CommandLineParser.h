#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}  // namespace CLI

namespace Tools {

// A command line that cannot be understood. The text is one line.
class UsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// What both programs do alike on the command line. A program calls addProgramOptions first, then adds its options and
// commands, and reads the arguments by parseArguments.
//
// In a program that has arguments of its own, a command is the first argument.
//
// A description is paragraphs with an empty line between them. The first paragraph is a summary, one sentence.

// Sets the layout of the help and adds the options --help and --version and the commands "help" and "completion".
// `version` is the line that --version writes: "crsctl 1.0.0".
void addProgramOptions(CLI::App& program, const std::string& version);

// A command of the program, with the options --help and --version.
CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description);

// Reads the arguments (without the name of the program) into the options of `program`. Returns the text that they ask
// for instead of a command (help, the version or a completion script), or nothing. UsageError for arguments that
// cannot be understood, with a suggestion for a mistyped command or option.
std::optional<std::string> parseArguments(CLI::App& program, const std::vector<std::string>& arguments);

// The command whose arguments were read last, or the program itself: "crsctl resolve".
std::string fullName(const CLI::App& program);

// The command that a mistyped word means. Nothing for the name of a command, for an option, and if no command is close
// to the word.
std::optional<std::string> mistypedCommand(const CLI::App& program, const std::string& word);

// Sections of a help, to be joined as the footer of a program or a command.
using HelpTerms = std::vector<std::pair<std::string, std::string>>;
std::string helpSection(const std::string& title, const HelpTerms& terms);
// Each term is a command line, and its text a comment above it.
std::string exampleSection(const HelpTerms& examples);

}  // namespace Tools
