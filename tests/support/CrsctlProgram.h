#pragma once

#include <string>
#include <sys/types.h>
#include <vector>

namespace crsctl {

// How a program ended and what it wrote.
struct Outcome {
    int exitCode;  // 128 and the signal when one ended it
    std::string output;
    std::string errors;
};

// The program under test, started with the test PROJ directory. Ended, if it still runs, with the object.
class Program {
public:
    // Takes the three descriptors over.
    Program(std::vector<std::string> arguments, int input, int output, int errors);
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    pid_t id() const { return process; }
    void send(int signal) const;
    // Waits for its end.
    int exitCode();

private:
    pid_t process;
};

// A pipe whose ends are closed with the object, unless they have been handed on.
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
    // Up to `size` bytes; less only at the end.
    std::string read(std::size_t size) const;
    std::string readToEnd() const;

private:
    int readEnd;
    int writeEnd;
};

int openFile(const std::string& path, int flags);

// Runs the program to its end on the given input, through files.
Outcome run(const std::vector<std::string>& arguments, const std::string& input = "");

// The same with the input through a pipe.
Outcome runOnPipe(const std::vector<std::string>& arguments, const std::string& input);

}  // namespace crsctl
