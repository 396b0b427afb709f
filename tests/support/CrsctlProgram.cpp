#include "tests/support/CrsctlProgram.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/TemporaryFile.h"
#include "tools/crsctl/Session.h"

namespace crsctl {
namespace {

[[noreturn]] void execute(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    // The tests may run with these signals ignored.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) ::signal(signal, SIG_DFL);
    unsetenv("QUARVELSRV_PROJ4_CONF_DIR");
    execv(CRSCTL_PROGRAM, argv.data());
    _exit(127);
}

void closeOnce(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
}

int taken(int& descriptor) {
    const int given = descriptor;
    descriptor = -1;
    return given;
}

}  // namespace

Program::Program(std::vector<std::string> arguments, int input, int output, int errors) : process(-1) {
    arguments.insert(arguments.begin(), {"crsctl", "--proj-dir", COORDTRANS_SOURCE_DIR "/data/proj"});
    process = fork();
    if (process == 0) {
        dup2(input, STDIN_FILENO);
        dup2(output, STDOUT_FILENO);
        dup2(errors, STDERR_FILENO);
        execute(arguments);
    }
    for (const int descriptor : {input, output, errors}) close(descriptor);
}

Program::~Program() {
    if (process < 0) return;
    send(SIGKILL);
    exitCode();
}

void Program::send(int signal) const { kill(process, signal); }

int Program::exitCode() {
    int status = 0;
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) continue;
    process = -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

Pipe::Pipe() : readEnd(-1), writeEnd(-1) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) return;
    readEnd = ends[0];
    writeEnd = ends[1];
}

Pipe::~Pipe() {
    closeReadEnd();
    closeWriteEnd();
}

int Pipe::takeReadEnd() { return taken(readEnd); }
int Pipe::takeWriteEnd() { return taken(writeEnd); }
void Pipe::closeWriteEnd() { closeOnce(writeEnd); }
void Pipe::closeReadEnd() { closeOnce(readEnd); }

void Pipe::write(const std::string& text) const {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(writeEnd, text.data() + written, text.size() - written);
        if (count < 0) return;
        written += static_cast<std::size_t>(count);
    }
}

std::string Pipe::read(std::size_t size) const {
    std::string text(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::read(readEnd, text.data() + done, size - done);
        if (count <= 0) break;
        done += static_cast<std::size_t>(count);
    }
    text.resize(done);
    return text;
}

std::string Pipe::readToEnd() const {
    std::string text;
    for (std::string part; !(part = read(4096)).empty();) text += part;
    return text;
}

int openFile(const std::string& path, int flags) { return open(path.c_str(), flags | O_CLOEXEC, 0600); }

Outcome run(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryFile in(input);
    const TemporaryFile out("");
    const TemporaryFile err("");
    Program program(arguments, openFile(in.path(), O_RDONLY), openFile(out.path(), O_WRONLY),
                    openFile(err.path(), O_WRONLY));
    const int exitCode = program.exitCode();
    return {exitCode, readTextFile(out.path()), readTextFile(err.path())};
}

Outcome runOnPipe(const std::vector<std::string>& arguments, const std::string& input) {
    const TemporaryFile out("");
    const TemporaryFile err("");
    Pipe in;
    Program program(arguments, in.takeReadEnd(), openFile(out.path(), O_WRONLY), openFile(err.path(), O_WRONLY));
    in.write(input);
    in.closeWriteEnd();
    const int exitCode = program.exitCode();
    return {exitCode, readTextFile(out.path()), readTextFile(err.path())};
}

}  // namespace crsctl
