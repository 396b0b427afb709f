#include "platform/MessageCatalogue.h"

#include <pthread.h>
#include <type_traits>

namespace msg {
namespace {

constexpr char DEFAULT_MESSAGE[] = "No message is registered for this failure.";

// Has no destructor. A destructor would run before those of the host's own objects, which may still fail, and a thread
// that has yet to run it would keep the library loaded.
thread_local Message currentMessage("");
static_assert(std::is_trivially_destructible_v<Message>);

Message* returnCopy(const char* text) {
    currentMessage = Message(text);
    return &currentMessage;
}

bool isInsideCharacter(const std::string& text, std::size_t position) {
    return (static_cast<unsigned char>(text[position]) & 0xC0U) == 0x80U;
}

void truncate(std::string& text, std::size_t length) {
    if (text.size() <= length) return;
    while (length > 0 && isInsideCharacter(text, length)) --length;
    text.resize(length);
}

}  // namespace

void Message::substitute(unsigned int index, const char* text) {
    const std::string placeholder = "[&" + std::to_string(index) + "]";
    const std::string replacement = text;
    std::string result = getMessage();
    for (auto at = result.find(placeholder); at != std::string::npos;
         at = result.find(placeholder, at + replacement.size()))
        result.replace(at, placeholder.size(), replacement);
    truncate(result, LONGEST_RENDERED);
    rendered[result.copy(rendered, LONGEST_RENDERED)] = '\0';
    original = nullptr;
}

MTE::MTE(unsigned int entryNumber, const char* entryLanguage, const char* subsystemName, const char* situationName,
         const char* messageText, MessageHandler* owner, bool first, bool second)
    : number(entryNumber),
      language(entryLanguage),
      subsystem(subsystemName),
      situation(situationName),
      text(messageText),
      handler(owner != nullptr ? owner : &MessageHandler::object()),
      firstFlag(first),
      secondFlag(second) {
    handler->add(*this);
}

MTE::~MTE() { handler->remove(*this); }

MessageHandler& MessageHandler::object() {
    // Never released: threads may still run when the process ends.
    static auto& handler = *new MessageHandler;
    return handler;
}

Message* MessageHandler::find(const char* subsystem, const char* situation) {
    const Key key(subsystem, situation);
    const std::lock_guard<std::mutex> lock(entriesLock);
    const auto found = entries.find(key);
    return found == entries.end() ? nullptr : returnCopy(found->second->getText());
}

Message* MessageHandler::getDefaultMessage() { return returnCopy(DEFAULT_MESSAGE); }

void MessageHandler::add(const MTE& entry) {
    const std::lock_guard<std::mutex> lock(entriesLock);
    entries.emplace(Key(entry.getSubsystem(), entry.getSituation()), &entry);
}

void MessageHandler::remove(const MTE& entry) {
    const std::lock_guard<std::mutex> lock(entriesLock);
    const auto found = entries.find(Key(entry.getSubsystem(), entry.getSituation()));
    if (found != entries.end() && found->second == &entry) entries.erase(found);
}

namespace {

void beforeFork() { MessageHandler::object().lock(); }
void afterFork() { MessageHandler::object().unlock(); }

// The child of a fork finds the lock free. The C library removes the handlers when the library is unloaded.
[[maybe_unused]] const int registered = pthread_atfork(beforeFork, afterFork, afterFork);

}  // namespace
}  // namespace msg
