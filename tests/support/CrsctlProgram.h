#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace crsctl {

// A configuration with three entries.
constexpr char CONFIGURATION[] =
    "<CrsConfiguration>\n<CRS>4326</CRS>\n<CRS>CRS:84</CRS>\n<CRS mapToEpsgCode='25832'>UTM32</CRS>\n"
    "</CrsConfiguration>\n";

// The exit code and the output of a program.
struct Outcome {
    int exitCode;  // 128 plus the signal number after a signal
    std::string output;
    std::string errors;
};

// The program under test, with the PROJ directory of the tests. The destructor kills it if it is still running.
class Program {
public:
    // Takes ownership of the three descriptors.
    Program(std::vector<std::string> arguments, int input, int output, int errors);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t id() const { return process; }
    void send(int signal) const;
    // Waits until the program ends.
    int exitCode();

private:
    pid_t process;
};

// A pipe. The destructor closes the ends that nobody has taken.
class Pipe {
public:
    Pipe();
    ~Pipe();
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int takeReadEnd();
    int takeWriteEnd();
    void write(const std::string& text) const;
    void closeWriteEnd();
    void closeReadEnd();
    // Reads `size` bytes, or fewer at the end of the stream.
    std::string read(std::size_t size) const;
    std::string readToEnd() const;

private:
    int readEnd;
    int writeEnd;
};

int openFile(const std::string& path, int flags);

// Runs the program to its end. Input and output are files.
Outcome run(const std::vector<std::string>& arguments, const std::string& input = "");

// Runs the program to its end. The input is a pipe.
Outcome runOnPipe(const std::vector<std::string>& arguments, const std::string& input);

}  // namespace crsctl
