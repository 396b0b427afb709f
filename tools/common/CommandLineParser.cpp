#include "tools/common/CommandLineParser.h"

#include <algorithm>
#include <memory>
#include <sstream>

#include <CLI/CLI.hpp>

#include "tools/common/Text.h"

namespace Tools {
namespace {

constexpr std::size_t WIDTH = 80;
constexpr std::size_t OPTION_COLUMN = 26;
constexpr std::size_t COMMAND_COLUMN = 14;
constexpr std::size_t TERM_COLUMN = 8;
constexpr char HELP_COMMAND[] = "help";
constexpr char COMPLETION_COMMAND[] = "completion";

// The words of `text` in lines. The first line follows `head`, the others are indented.
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

// A head that is too long gets a line of its own.
std::string entry(const std::string& head, const std::string& text, std::size_t column) {
    if (head.size() + 2 <= column) return wrapped(text, head, column);
    return head + "\n" + wrapped(text, "", column);
}

std::vector<std::string> paragraphsOf(const std::string& description) {
    std::vector<std::string> paragraphs;
    std::size_t begin = 0;
    for (std::size_t end = 0; end != std::string::npos; begin = end + 2) {
        end = description.find("\n\n", begin);
        paragraphs.push_back(description.substr(begin, end - begin));
    }
    return paragraphs;
}

std::string nameOf(const CLI::App& app) {
    return (app.get_parent() == nullptr ? "" : app.get_parent()->get_name() + " ") + app.get_name();
}

bool isFlag(const CLI::Option& option) { return option.get_items_expected_max() == 0; }

// CLI11 appends its description of the validators.
std::string valueName(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    return type.substr(0, type.find(':'));
}

std::string flagsOf(const CLI::Option& option) {
    std::string flags;
    for (const std::string& name : option.get_snames()) flags += "-" + name + ", ";
    for (const std::string& name : option.get_lnames()) flags += "--" + name + ", ";
    flags.resize(flags.size() - 2);
    return flags + (isFlag(option) ? "" : " " + valueName(option));
}

std::string positionalName(const CLI::Option& option) {
    const std::string name = option.get_name(true) + (option.get_items_expected_max() > 1 ? "..." : "");
    return option.get_required() ? name : "[" + name + "]";
}

bool takesArguments(const CLI::App& app) {
    const std::vector<const CLI::Option*> options = app.get_options();
    return std::any_of(options.begin(), options.end(), [](const CLI::Option* it) { return it->get_positional(); });
}

std::string usage(const CLI::App& app) {
    std::string line = "usage: " + nameOf(app) + " [OPTION...]";
    for (const CLI::Option* const option : app.get_options())
        if (option->nonpositional() && option->get_required()) line += " " + flagsOf(*option);
    for (const CLI::Option* const option : app.get_options())
        if (option->get_positional()) line += " " + positionalName(*option);
    if (app.get_require_subcommand_max() == 0 || app.get_subcommands({}).empty()) return line + "\n";
    if (takesArguments(app)) line += "\nusage: " + nameOf(app);
    return line + " COMMAND\n";
}

std::string commandList(const CLI::App& app) {
    std::string list;
    for (const CLI::App* const command : app.get_subcommands({}))
        list += entry("  " + command->get_name(), paragraphsOf(command->get_description()).front(), COMMAND_COLUMN);
    return list.empty() ? "" : "\nCommands:\n" + list;
}

std::string optionList(const CLI::App& app) {
    std::string list = "\nOptions:\n";
    for (const CLI::Option* const option : app.get_options())
        if (option->nonpositional()) list += entry("  " + flagsOf(*option), option->get_description(), OPTION_COLUMN);
    return list;
}

class HelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string /*name*/, CLI::AppFormatMode /*mode*/) const override {
        std::string help = usage(*app);
        for (const std::string& paragraph : paragraphsOf(app->get_description()))
            help += "\n" + wrapped(paragraph, "", 0);
        return help + commandList(*app) + optionList(*app) + app->get_footer();
    }
};

void addHelpAndVersion(CLI::App& app, const std::string& version) {
    app.set_help_flag("-h,--help", "Write this help.");
    app.set_version_flag("-V,--version", version, "Write the version.");
}

const CLI::App& selectedIn(const CLI::App& program) {
    const std::vector<CLI::App*> selected = program.get_subcommands();
    return selected.empty() ? program : *selected.back();
}

std::vector<std::string> commandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* const command : program.get_subcommands({})) names.push_back(command->get_name());
    return names;
}

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    return names;
}

bool has(const std::vector<std::string>& words, const std::string& word) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// Two exchanged characters are one mistake, but the edit distance counts two.
std::optional<std::string> meantBy(const std::string& word, const std::vector<std::string>& known) {
    for (std::size_t i = 1; i < word.size(); ++i) {
        std::string exchanged = word;
        std::swap(exchanged[i - 1], exchanged[i]);
        if (has(known, exchanged)) return exchanged;
    }
    return closest(word, known);
}

std::string didYouMean(const std::string& word, const std::vector<std::string>& known) {
    const std::optional<std::string> meant = meantBy(word, known);
    return meant ? "; did you mean " + *meant + "?" : "";
}

std::string suggestionFor(const CLI::App& program) {
    const std::vector<std::string> unexpected = program.remaining(true);
    if (unexpected.empty() || unexpected.front().empty()) return "";
    const CLI::App& selected = selectedIn(program);
    if (unexpected.front().front() == '-') return didYouMean(unexpected.front(), optionNames(selected));
    if (&selected != &program) return "";
    const std::vector<std::string> commands = commandNames(program);
    return has(commands, unexpected.front()) ? "; a command is the first argument"
                                             : didYouMean(unexpected.front(), commands);
}

const CLI::App& commandNamed(const CLI::App& program, const std::string& name) {
    for (const CLI::App* const command : program.get_subcommands({}))
        if (command->get_name() == name) return *command;
    throw UsageError("there is no command " + printable(name) + didYouMean(name, commandNames(program)));
}

std::string joined(const std::vector<std::string>& words) {
    std::string text;
    for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
    return text;
}

// The words that may follow a command as its first argument.
std::vector<std::string> argumentsOf(const CLI::App& command) {
    if (command.get_name() == HELP_COMMAND) return commandNames(*command.get_parent());
    if (command.get_name() == COMPLETION_COMMAND) return {"bash", "zsh", "fish"};
    return commandNames(command);
}

// The name of a shell function: "_crs_projdir".
std::string functionOf(const CLI::App& program) {
    std::string name = "_" + program.get_name();
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

std::string bashWords(const CLI::App& app) {
    return "options='" + joined(optionNames(app)) + "' arguments='" + joined(argumentsOf(app)) + "'";
}

// Files are offered where no word fits.
std::string bashCompletion(const CLI::App& program) {
    const std::string function = functionOf(program);
    std::string script = function + "() {\n    local word words=arguments " + bashWords(program) +
                         "\n    for word in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n        case $word in\n";
    for (const CLI::App* const command : program.get_subcommands({}))
        script += "            " + command->get_name() + ") " + bashWords(*command) + " ;;\n";
    return script + "        esac\n    done\n    [[ $2 == -* ]] && words=options\n" +
           "    COMPREPLY=($(compgen -W \"${!words}\" -- \"$2\"))\n}\ncomplete -o default" +
           (takesArguments(program) ? " -o plusdirs" : "") + " -F " + function + " " + program.get_name() + "\n";
}

// In single quotes, where `escape` is how the shell writes a quote.
std::string quotedFor(const std::string& text, const std::string& escape) {
    std::string quoted;
    for (const char character : text) quoted += character == '\'' ? escape : std::string(1, character);
    return "'" + quoted + "'";
}

constexpr char ZSH_QUOTE[] = "'\\''";
constexpr char FISH_QUOTE[] = "\\'";

// The first sentence; a shell has one line for it.
std::string summaryOf(const std::string& description) {
    const std::size_t end = std::min(description.find(". "), description.find(".\n"));
    return end == std::string::npos ? description : description.substr(0, end + 1);
}

// _arguments ends a description at a bracket and a message at a colon.
std::string withoutSpecials(std::string text) {
    text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return c == '[' || c == ']' || c == ':'; }),
               text.end());
    return text;
}

// A program that takes arguments offers files beside its commands.
std::string zshArguments(const CLI::App& app) {
    const std::string words = joined(argumentsOf(app));
    if (words.empty()) return "'*:file:_files'";
    const bool hasFiles = app.get_parent() == nullptr && takesArguments(app);
    return hasFiles ? "'1:word:{compadd " + words + "; _files}'" : "'1:word:(" + words + ")'";
}

std::string zshOptions(const CLI::App& app) {
    std::string specs;
    for (const CLI::Option* const option : app.get_options())
        for (const std::string& name : option->get_lnames())
            specs += " \\\n            " +
                     quotedFor("--" + name + "[" + withoutSpecials(summaryOf(option->get_description())) + "]" +
                                   (isFlag(*option) ? "" : ":" + valueName(*option) + ":_files"),
                               ZSH_QUOTE);
    return specs + " \\\n            " + zshArguments(app);
}

std::string zshCompletion(const CLI::App& program) {
    const std::string names = joined(commandNames(program));
    std::string script =
        "#compdef " + program.get_name() + "\nlocal word command\nlocal -a commands=(" + names +
        ")\nfor word in ${words[2,CURRENT-1]}; do\n" +
        "    (( ${commands[(Ie)$word]} )) && { command=$word; shift words; (( CURRENT-- )); break; }\n" +
        "done\ncase $command in\n";
    for (const CLI::App* const command : program.get_subcommands({}))
        script += "    " + command->get_name() + ")\n        _arguments" + zshOptions(*command) + " ;;\n";
    return script + "    *)\n        _arguments" + zshOptions(program) + " ;;\nesac\n";
}

std::string fishOptions(const CLI::App& app, const std::string& head) {
    std::string lines;
    for (const CLI::Option* const option : app.get_options()) {
        if (!option->nonpositional()) continue;
        lines += head;
        for (const std::string& name : option->get_snames()) lines += " -s " + name;
        for (const std::string& name : option->get_lnames()) lines += " -l " + name;
        lines +=
            (isFlag(*option) ? " -d " : " -r -d ") + quotedFor(summaryOf(option->get_description()), FISH_QUOTE) + "\n";
    }
    return lines;
}

std::string fishCompletion(const CLI::App& program) {
    const std::string head = "complete -c " + program.get_name();
    const std::string withoutCommand = " -n 'not __fish_seen_subcommand_from " + joined(commandNames(program)) + "'";
    const std::string withoutFiles = takesArguments(program) ? "" : " -f";
    std::string script = fishOptions(program, head + withoutCommand);
    for (const CLI::App* const command : program.get_subcommands({})) {
        const std::string seen = head + " -n '__fish_seen_subcommand_from " + command->get_name() + "'";
        script += head + withoutFiles + " -n __fish_use_subcommand -a " + command->get_name() + " -d " +
                  quotedFor(summaryOf(command->get_description()), FISH_QUOTE) + "\n" + fishOptions(*command, seen);
        const std::string arguments = joined(argumentsOf(*command));
        if (!arguments.empty()) script.append(seen).append(" -f -a '").append(arguments).append("'\n");
    }
    return script;
}

std::string completionFor(const CLI::App& program, const std::string& shell) {
    if (shell == "bash") return bashCompletion(program);
    if (shell == "zsh") return zshCompletion(program);
    if (shell == "fish") return fishCompletion(program);
    throw UsageError("completion needs a SHELL, bash, zsh or fish, not \"" + printable(shell) + "\"");
}

// CLI11 takes an argument in brackets for a list, and a number such as -.5 for an option. A character in front
// prevents both. An argument that begins with that character gets a second one.
constexpr char GUARD = '\x01';

bool needsGuard(const std::string& argument) {
    if (argument.empty()) return false;
    const bool isInBrackets = argument.front() == '[' && argument.back() == ']';
    const bool isFraction =
        argument.compare(0, 2, "-.") == 0 && argument.size() > 2 && argument[2] >= '0' && argument[2] <= '9';
    return argument.front() == GUARD || isInBrackets || isFraction;
}

std::vector<std::string> guarded(std::vector<std::string> arguments) {
    for (std::string& argument : arguments)
        if (needsGuard(argument)) argument.insert(0, 1, GUARD);
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

std::string removeGuard(std::string& value) {
    if (!value.empty() && value.front() == GUARD) value.erase(0, 1);
    return {};
}

void removeGuardsFrom(CLI::App& app) {
    for (CLI::Option* const option : app.get_options())
        if (!isFlag(*option)) option->transform(CLI::Validator(removeGuard, ""));
    for (CLI::App* const command : app.get_subcommands([](CLI::App* /*any*/) { return true; }))
        removeGuardsFrom(*command);
}

// CLI11 fills the required arguments of a program before it looks for commands, and looks for them everywhere.
void expectCommandInFront(CLI::App& program, const std::string& first) {
    const bool isCommand = has(commandNames(program), first);
    for (CLI::Option* const option : program.get_options([](CLI::Option* it) { return it->get_positional(); }))
        option->required(option->get_required() && !isCommand);
    for (CLI::App* const command : program.get_subcommands([](CLI::App* /*any*/) { return true; }))
        command->disabled(!isCommand);
}

// CLI11 would write the help of the command that was read last instead.
std::string helpOf(const CLI::App& app) { return app.get_formatter()->make_help(&app, "", CLI::AppFormatMode::Normal); }

// The text of the command "help" or "completion"; CLI11 would take its argument for a further command.
std::optional<std::string> requestedText(const CLI::App& program, const std::vector<std::string>& arguments) {
    const std::string argument = arguments.size() > 1 ? arguments[1] : "";
    if (arguments.empty() || argument.rfind('-', 0) == 0) return std::nullopt;
    if (arguments.front() == COMPLETION_COMMAND) return completionFor(program, argument);
    if (arguments.front() != HELP_COMMAND) return std::nullopt;
    return helpOf(argument.empty() ? program : commandNamed(program, argument));
}

// The message of CLI11 has the arguments in it.
std::string messageOf(const CLI::ParseError& failure) {
    std::string message = failure.what();
    message.erase(std::remove(message.begin(), message.end(), GUARD), message.end());
    std::replace(message.begin(), message.end(), '\n', ' ');
    return printable(message, 300);
}

}  // namespace

void addProgramOptions(CLI::App& program, const std::string& version) {
    program.formatter(std::make_shared<HelpFormatter>());
    addHelpAndVersion(program, version);
    addCommand(program, HELP_COMMAND, "Show the help of a command.").add_option("COMMAND");
    addCommand(program, COMPLETION_COMMAND, "Write a completion script for a shell: bash, zsh or fish.")
        .add_option("SHELL")
        ->required();
}

CLI::App& addCommand(CLI::App& program, const std::string& name, const std::string& description) {
    CLI::App& command = *program.add_subcommand(name, description);
    addHelpAndVersion(command, program.version());
    return command;
}

std::optional<std::string> parseArguments(CLI::App& program, const std::vector<std::string>& arguments) {
    if (std::optional<std::string> text = requestedText(program, arguments)) return text;
    removeGuardsFrom(program);
    if (takesArguments(program)) expectCommandInFront(program, arguments.empty() ? "" : arguments.front());
    try {
        program.parse(guarded(arguments));
    } catch (const CLI::CallForHelp&) {
        return helpOf(selectedIn(program));
    } catch (const CLI::CallForVersion&) {
        return program.version() + "\n";
    } catch (const CLI::ParseError& failure) {
        throw UsageError(messageOf(failure) + suggestionFor(program));
    }
    if (const std::string name = selectedIn(program).get_name(); name == HELP_COMMAND || name == COMPLETION_COMMAND)
        throw UsageError("the argument of " + name + " cannot begin with -");
    return std::nullopt;
}

std::optional<std::string> mistypedCommand(const CLI::App& program, const std::string& word) {
    const std::vector<std::string> names = commandNames(program);
    return word.rfind('-', 0) == 0 || has(names, word) ? std::nullopt : meantBy(word, names);
}

std::string fullName(const CLI::App& program) { return nameOf(selectedIn(program)); }

std::string helpSection(const std::string& title, const HelpTerms& terms) {
    std::string section = "\n" + title + ":\n";
    std::size_t column = TERM_COLUMN;
    for (const auto& [term, text] : terms)
        if (term.size() + 4 < OPTION_COLUMN) column = std::max(column, term.size() + 4);
    for (const auto& [term, text] : terms) section += entry("  " + term, text, column);
    return section;
}

std::string exampleSection(const HelpTerms& examples) {
    std::string section = "\nExamples:\n";
    for (const auto& [command, text] : examples)
        section.append("  # ").append(text).append("\n  ").append(command).append("\n");
    return section;
}

}  // namespace Tools
