#pragma once

#include <string>
#include <utility>
#include <vector>

// A host's message catalogue, which keeps account of what it is asked.
namespace msg {

class MessageHandler;

class Message {
public:
    void substitute(unsigned int index, const char* text);
    const char* getMessage() const;

private:
    friend class MessageHandler;

    std::string text;
};

class MTE {
public:
    MTE(unsigned int number, const char* language, const char* subsystem, const char* situation, const char* text,
        MessageHandler* handler, bool first, bool second);
    ~MTE();
    MTE(const MTE&) = delete;
    MTE& operator=(const MTE&) = delete;

    const unsigned int number;
    const std::string language;
    const std::string subsystem;
    const std::string situation;
    const std::string text;
    const MessageHandler* const handler;
    const bool first;
    const bool second;
};

class MessageHandler {
public:
    using Pair = std::pair<std::string, std::string>;

    static MessageHandler& object();
    // Ends the process with 1 when an entry is still there.
    ~MessageHandler();

    Message* find(const char* subsystem, const char* situation);
    Message* getDefaultMessage();

    std::vector<const MTE*> entries;
    std::vector<Pair> asked;

private:
    Message message;
};

}  // namespace msg
