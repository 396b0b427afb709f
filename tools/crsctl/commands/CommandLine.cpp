#include "tools/crsctl/commands/CommandLine.h"

#include <algorithm>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "tools/common/FixedDecimals.h"
#include "tools/common/Text.h"
#include "tools/crsctl/commands/CommandTexts.h"
#include "tools/crsctl/commands/Help.h"
#include "tools/crsctl/commands/ManPage.h"
#include "tools/crsctl/points/CoordinateLine.h"
#include "tools/crsctl/start/Failures.h"

namespace crsctl {

using Tools::MAX_DECIMALS;
using Tools::printable;

namespace {

constexpr unsigned int MAX_JOBS = 64;
constexpr unsigned int MAX_POINTS_PER_EDGE = 10000;

bool hasFlag(const OptionText& option, const std::string& flag) {
    return option.flags == flag || option.flags.find("," + flag) != std::string::npos;
}

// The words of an option; an option without words is a mistake of this program.
const OptionText& optionText(const CommandText& command, const char* flag) {
    for (const std::vector<OptionText>* options : {&command.options, &commonOptionTexts()})
        for (const OptionText& option : *options)
            if (hasFlag(option, flag)) return option;
    throw std::logic_error(std::string("no text for ") + flag);
}

template <typename Value>
CLI::Option* addOption(CLI::App& app, const CommandText& text, const char* flag, Value& value) {
    const OptionText& option = optionText(text, flag);
    return app.add_option(option.flags, value, option.text)->type_name(option.value);
}

CLI::Option* addFlag(CLI::App& app, const CommandText& text, const char* flag, bool& value) {
    const OptionText& option = optionText(text, flag);
    return app.add_flag(option.flags, value, option.text);
}

// Options that are understood once all is read.
struct OptionWords {
    std::string manual;
    std::string area;
    std::string kind;
};

// CLI11 takes an argument in brackets for a list, and a number such as -.5 for an option. A character in front prevents
// that. An argument that begins with that character gets another one, so that what is taken off again was put there.
constexpr char GUARD = '\x01';

bool isInBrackets(const std::string& argument) { return argument.front() == '[' && argument.back() == ']'; }

// By itself, or the first of a list.
bool isNegativeFraction(const std::string& argument) {
    return argument.compare(0, 2, "-.") == 0 && isNumber(argument.substr(0, argument.find(',')));
}

bool needsGuard(const std::string& argument) {
    if (argument.empty()) return false;
    return argument.front() == GUARD || isInBrackets(argument) || isNegativeFraction(argument);
}

std::vector<std::string> guardedArguments(int argc, const char* const* argv) {
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    for (std::string& argument : arguments)
        if (needsGuard(argument)) argument.insert(0, 1, GUARD);
    std::reverse(arguments.begin(), arguments.end());
    return arguments;
}

void removeGuards(CommandRequest& request, OptionWords& words) {
    TransformOptions& transform = request.transform;
    std::vector<std::string*> texts = {
        &request.common.configFile, &request.common.projDir, &transform.from, &transform.to,
        &transform.columns,         &transform.comment,      &words.manual,   &words.area};
    for (std::string& argument : request.arguments) texts.push_back(&argument);
    for (std::string& file : transform.files) texts.push_back(&file);
    for (std::string* const text : texts)
        if (!text->empty() && text->front() == GUARD) text->erase(0, 1);
}

// CLI11's messages have the arguments in them.
std::string withoutGuards(std::string message) {
    for (const char* const guarded : {"\x01[", "\x01-", "\x01\x01"})
        for (std::size_t at = 0; (at = message.find(guarded, at)) != std::string::npos; ++at) message.erase(at, 1);
    return message;
}

// The options that stand before or behind the command alike.
void addCommonOptions(CLI::App& app, const CommandText& text, CommonOptions& common) {
    addOption(app, text, "--config", common.configFile);
    addOption(app, text, "--proj-dir", common.projDir);
    addFlag(app, text, "--json", common.json);
    const OptionText& help = optionText(text, "--help");
    app.set_help_flag(help.flags, help.text);
    const OptionText& version = optionText(text, "--version");
    app.set_version_flag(version.flags, "", version.text);
}

void addTransformOptions(CLI::App& app, const CommandText& text, TransformOptions& options) {
    addOption(app, text, "--from", options.from);
    addOption(app, text, "--to", options.to);
    addFlag(app, text, "--inverse", options.inverse);
    addOption(app, text, "--columns", options.columns);
    addOption(app, text, "--separator", options.separator)
        ->check(CLI::IsMember({"auto", "space", "comma", "semicolon"}));
    addFlag(app, text, "--header", options.header);
    addOption(app, text, "--comment", options.comment);
    addOption(app, text, "--output", options.output)->check(CLI::IsMember({"text", "csv", "json"}));
    addOption(app, text, "--decimals", options.decimals)->check(CLI::Range(0, MAX_DECIMALS));
    addOption(app, text, "--errors", options.errors)->check(CLI::IsMember({"stop", "mark", "skip"}));
    CLI::Option* const bounds = addFlag(app, text, "--bounds", options.bounds);
    addOption(app, text, "--points-per-edge", options.pointsPerEdge)
        ->check(CLI::Range(0U, MAX_POINTS_PER_EDGE))
        ->needs(bounds);
    addOption(app, text, "--jobs", options.jobs)->check(CLI::Range(1U, MAX_JOBS));
    app.add_option("FILE", options.files);
}

void addFindOptions(CLI::App& app, const CommandText& text, CommandRequest& request, OptionWords& words) {
    addOption(app, text, "--area", words.area);
    addOption(app, text, "--kind", words.kind)
        ->check(CLI::IsMember({"geographic", "geocentric", "projected", "compound"}));
    app.add_option("TEXT", request.arguments);
}

void addCheckOptions(CLI::App& app, const CommandText& text, CommandRequest& request, OptionWords& words) {
    addOption(app, text, "--area", words.area);
    addOption(app, text, "--accuracy", request.expected.accuracy)
        ->check(CLI::NonNegativeNumber)
        ->each([&request](const std::string&) { request.expected.areGiven = true; });
    app.add_option("FILE", request.arguments);
}

CLI::App& addCommand(CLI::App& program, const CommandText& text, CommandRequest& request, OptionWords& words) {
    CLI::App& command = *program.add_subcommand(text.name, text.summary);
    addCommonOptions(command, text, request.common);
    if (text.name == "transform") addTransformOptions(command, text, request.transform);
    if (text.name == "resolve") command.add_option("NAME", request.arguments);
    if (text.name == "check") addCheckOptions(command, text, request, words);
    if (text.name == "find") addFindOptions(command, text, request, words);
    command.callback([&request, &text] { request.command = text.name; });
    return command;
}

std::string manPageOf(const std::string& name) {
    const CommandText* const command = findCommandText(name == "crsctl" ? "" : name);
    if (command == nullptr) throw SetUpError("--man " + printable(name) + ": there is no such command");
    return manPage(*command);
}

// Of the command whose arguments were being read.
const CommandText& textOfSelected(const CLI::App& program) {
    const auto selected = program.get_subcommands();
    return *findCommandText(selected.empty() ? "" : selected.back()->get_name());
}

std::string inOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return printable(text, 300);
}

void requireArguments(const CommandRequest& request) {
    const bool isTransform = request.command == "transform";
    if (request.command == "resolve" && request.arguments.empty()) throw SetUpError("a NAME is needed");
    if (request.command == "check" && request.arguments.size() != 1) throw SetUpError("one FILE is needed");
    if (request.command == "find" && request.arguments.empty() && !request.searched.area)
        throw SetUpError("a TEXT or an --area is needed");
    if (isTransform && request.transform.from.empty()) throw SetUpError("--from NAME is needed");
    if (isTransform && request.transform.to.empty()) throw SetUpError("--to NAME is needed");
}

void readOptionWords(CommandRequest& request, const OptionWords& words) {
    if (!words.manual.empty()) request.text = manPageOf(words.manual);
    if (!words.kind.empty()) request.searched.kind = kindNamed(words.kind);
    if (words.area.empty()) return;
    request.searched.area = request.expected.area = readBox(words.area);
    request.expected.areGiven = true;
}

std::string commandsInWords() {
    std::string words;
    for (const CommandText& command : commandTexts())
        if (!command.name.empty()) words += (words.empty() ? "" : ", ") + command.name;
    return words;
}

}  // namespace

CommandRequest readCommandLine(int argc, const char* const* argv, std::string& commandName) {
    commandName = "crsctl";
    CommandRequest request;
    OptionWords words;
    CLI::App program;
    const CommandText& text = *findCommandText("");
    addCommonOptions(program, text, request.common);
    addOption(program, text, "--man", words.manual);
    for (const CommandText& command : commandTexts())
        if (!command.name.empty()) addCommand(program, command, request, words);
    program.require_subcommand(0, 1);
    try {
        program.parse(guardedArguments(argc, argv));
    } catch (const CLI::CallForHelp&) {
        request.text = helpText(textOfSelected(program));
        return request;
    } catch (const CLI::CallForVersion&) {
        request.text = "crsctl " COORDTRANS_VERSION "\n";
        return request;
    } catch (const CLI::ParseError& failure) {
        commandName = fullNameOf(textOfSelected(program));
        throw SetUpError(inOneLine(withoutGuards(failure.what())));
    }
    commandName = fullNameOf(textOfSelected(program));
    removeGuards(request, words);
    readOptionWords(request, words);
    if (request.text) return request;
    if (request.command.empty()) throw SetUpError("a command is needed: " + commandsInWords() + " (see --help)");
    requireArguments(request);
    request.searched.words = request.arguments;
    return request;
}

}  // namespace crsctl
