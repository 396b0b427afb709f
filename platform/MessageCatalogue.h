#pragma once

#if defined(COORDTRANS_MESSAGE_CATALOGUE_HEADER)
#error "the host has brought the catalogue"
#endif

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <utility>

namespace msg {

class MessageHandler;

// A message being rendered: a template whose placeholders "[&n]" are replaced by texts. Not shared between
// threads. Owns no memory but its own, so that each thread may keep one without a destructor.
class Message {
public:
    // The longest text, in bytes, that substitution leaves; the rest is cut off, between two UTF-8 characters.
    static constexpr std::size_t LONGEST_RENDERED = 2047;

    // `text` is borrowed and must be a string literal. Without substitution its length has no bound.
    explicit constexpr Message(const char* text) : original(text) {}

    // Replaces every "[&index]" by `text`; a placeholder that `text` brings along waits for a later call.
    // REQUIRES: `text` is not null.
    void substitute(unsigned int index, const char* text);
    // The text with the placeholders that were not substituted still in it.
    const char* getMessage() const { return original != nullptr ? original : rendered; }

private:
    // Null once a text has been substituted.
    const char* original;
    char rendered[LONGEST_RENDERED + 1] = {};
};

// One message text of the catalogue, registered for as long as the object lives. The texts are borrowed and
// must be string literals. Number, language and the two flags are carried for the catalogue's tools; the
// lookup by (subsystem, situation) does not read them. Neither copied nor moved.
class MTE {
public:
    // A null `owner` stands for the process-wide one; any other must outlive the entry.
    MTE(unsigned int entryNumber, const char* entryLanguage, const char* subsystemName, const char* situationName,
        const char* messageText, MessageHandler* owner, bool first, bool second);
    ~MTE();
    MTE(const MTE&) = delete;
    MTE& operator=(const MTE&) = delete;

    unsigned int getNumber() const { return number; }
    const char* getLanguage() const { return language; }
    const char* getSubsystem() const { return subsystem; }
    const char* getSituation() const { return situation; }
    const char* getText() const { return text; }
    bool getFirstFlag() const { return firstFlag; }
    bool getSecondFlag() const { return secondFlag; }

private:
    unsigned int number;
    const char* language;
    const char* subsystem;
    const char* situation;
    const char* text;
    MessageHandler* handler;
    bool firstFlag;
    bool secondFlag;
};

// The catalogue: finds message texts by (subsystem, situation).
//
// Thread-safe. Entries are borrowed and remove themselves; of two entries for one pair the first stays and
// the second is not kept.
class MessageHandler {
public:
    // The one of the process. Lives longer than every entry that was registered with it at load.
    static MessageHandler& object();

    // The message of the pair, ready for substitution, or null when no entry has it. Belongs to the calling
    // thread and holds until that thread's next request for a message, from whichever handler; the last one
    // holds until the thread has ended altogether, destructors of its thread_local objects included.
    Message* find(const char* subsystem, const char* situation);
    // The message for a pair without an entry, under the same terms.
    Message* getDefaultMessage();

    void add(const MTE& entry);
    // Forgets the entry; nothing happens when another one holds the pair.
    void remove(const MTE& entry);

    // Hold every other operation off while the process forks.
    void lock() { entriesLock.lock(); }
    void unlock() { entriesLock.unlock(); }

private:
    using Key = std::pair<std::string, std::string>;

    std::mutex entriesLock;
    std::map<Key, const MTE*> entries;
};

}  // namespace msg
