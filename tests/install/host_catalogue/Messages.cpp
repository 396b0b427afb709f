#include "Messages.h"

#include <algorithm>
#include <unistd.h>

namespace msg {

void Message::substitute(unsigned int index, const char* replacement) {
    const std::string placeholder = "[&" + std::to_string(index) + "]";
    const auto at = text.find(placeholder);
    if (at != std::string::npos) text.replace(at, placeholder.size(), replacement);
}

const char* Message::getMessage() const { return text.c_str(); }

MTE::MTE(unsigned int theNumber, const char* theLanguage, const char* theSubsystem, const char* theSituation,
         const char* theText, MessageHandler* theHandler, bool theFirst, bool theSecond)
    : number(theNumber),
      language(theLanguage),
      subsystem(theSubsystem),
      situation(theSituation),
      text(theText),
      handler(theHandler),
      first(theFirst),
      second(theSecond) {
    MessageHandler::object().entries.push_back(this);
}

MTE::~MTE() {
    auto& entries = MessageHandler::object().entries;
    entries.erase(std::remove(entries.begin(), entries.end(), this), entries.end());
}

MessageHandler& MessageHandler::object() {
    static MessageHandler handler;
    return handler;
}

MessageHandler::~MessageHandler() {
    if (!entries.empty()) _exit(1);
}

Message* MessageHandler::find(const char* subsystem, const char* situation) {
    asked.emplace_back(subsystem, situation);
    const auto found = std::find_if(entries.begin(), entries.end(), [this](const MTE* entry) {
        return Pair(entry->subsystem, entry->situation) == asked.back();
    });
    if (found == entries.end()) return nullptr;
    message.text = (*found)->text;
    return &message;
}

Message* MessageHandler::getDefaultMessage() {
    message.text = "the host's default";
    return &message;
}

}  // namespace msg
