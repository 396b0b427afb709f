// crsctl: ask the library what a server would do.

#include <cerrno>
#include <cstring>
#include <exception>
#include <string>
#include <unistd.h>

#include "tools/common/Process.h"
#include "tools/crsctl/commands/CommandLine.h"
#include "tools/crsctl/commands/ReportCommands.h"
#include "tools/crsctl/commands/TransformCommand.h"
#include "tools/crsctl/start/Failures.h"

using namespace crsctl;
using Tools::ignoreClosedPipes;
using Tools::occupyStandardDescriptors;
using Tools::writeAll;
using Tools::WriteOutcome;

namespace {

void printError(const std::string& commandName, const std::string& text) {
    writeAll(STDERR_FILENO, commandName + ": " + text + "\n");
}

int writeOutput(const std::string& output, int exitCode) {
    const WriteOutcome outcome = writeAll(STDOUT_FILENO, output);
    if (outcome == WriteOutcome::FAILED) throw SetUpError(std::string("standard output: ") + std::strerror(errno));
    return outcome == WriteOutcome::PIPE_CLOSED ? EXIT_REFUSED : exitCode;
}

CommandResult runReportCommand(const CommandRequest& request) {
    if (request.command == "resolve") return resolveCommand(request.common, request.arguments);
    if (request.command == "check") return checkCommand(request.common, request.arguments.front(), request.expected);
    if (request.command == "find") return findCommand(request.common, request.searched);
    return namesCommand(request.common);
}

int run(const CommandRequest& request, const std::string& commandName) {
    if (request.text) return writeOutput(*request.text, EXIT_DONE);
    if (request.command == "transform") return transformCommand(request.common, request.transform);
    const CommandResult result = runReportCommand(request);
    const int exitCode = writeOutput(result.output, result.exitCode);
    for (const std::string& note : result.notes) printError(commandName, note);
    return exitCode;
}

}  // namespace

int main(int argc, char** argv) {
    occupyStandardDescriptors();
    ignoreClosedPipes();
    std::string commandName;
    try {
        return run(readCommandLine(argc, argv, commandName), commandName);
    } catch (const CommandFailure& failure) {
        printError(commandName, failure.what());
        return failure.getExitCode();
    } catch (const std::exception& failure) {
        printError(commandName, failure.what());
        return EXIT_SET_UP;
    }
}
