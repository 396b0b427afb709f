// crsctl: shows how a server uses coordinate reference systems.

#include <exception>

#include "tools/common/Process.h"
#include "tools/crsctl/CommandLine.h"
#include "tools/crsctl/Output.h"

int main(int argc, char** argv) {
    Tools::openMissingStandardDescriptors();
    Tools::ignoreClosedPipes();
    crsctl::CommandRequest request;
    try {
        crsctl::readCommandLine(argc, argv, request);
        return request.run(request);
    } catch (const crsctl::CommandFailure& failure) {
        crsctl::printError(request.commandName, failure.what());
        return failure.getExitCode();
    } catch (const std::exception& failure) {
        crsctl::printError(request.commandName, failure.what());
        return crsctl::EXIT_SET_UP;
    }
}
