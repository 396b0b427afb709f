#include "platform/MessageCatalogue.h"

namespace msg {

namespace {

constexpr char DEFAULT_MESSAGE[] = "No message is registered for this failure.";

Message* handOut(std::string text) {
    thread_local Message message{std::string()};
    message = Message(std::move(text));
    return &message;
}

}  // namespace

Message::Message(std::string text) : rendered(std::move(text)) {}

void Message::substitute(unsigned int index, const char* text) {
    const std::string placeholder = "[&" + std::to_string(index) + "]";
    const std::string replacement = text;
    for (auto at = rendered.find(placeholder); at != std::string::npos;
         at = rendered.find(placeholder, at + replacement.size()))
        rendered.replace(at, placeholder.size(), replacement);
}

const char* Message::getMessage() const { return rendered.c_str(); }

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
    return found == entries.end() ? nullptr : handOut(found->second->getText());
}

Message* MessageHandler::getDefaultMessage() { return handOut(DEFAULT_MESSAGE); }

void MessageHandler::add(const MTE& entry) {
    const std::lock_guard<std::mutex> lock(entriesLock);
    entries.emplace(Key(entry.getSubsystem(), entry.getSituation()), &entry);
}

void MessageHandler::remove(const MTE& entry) {
    const std::lock_guard<std::mutex> lock(entriesLock);
    const auto found = entries.find(Key(entry.getSubsystem(), entry.getSituation()));
    if (found != entries.end() && found->second == &entry) entries.erase(found);
}

}  // namespace msg
