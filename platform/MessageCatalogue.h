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

// A message that is being rendered: a template in which texts replace the placeholders "[&n]".
//
// Not shared between threads. Allocates nothing, so that each thread may keep one without a destructor.
class Message {
public:
    // The maximum length of a text after substitution, in bytes. A longer text is truncated between two UTF-8
    // characters.
    static constexpr std::size_t LONGEST_RENDERED = 2047;

    // Borrows `text`, which must be a string literal. Without substitution its length is not limited.
    explicit constexpr Message(const char* text) : original(text) {}

    // Replaces every "[&index]" by `text`. A placeholder inside `text` is left for a later call. REQUIRES: `text` is
    // not null.
    void substitute(unsigned int index, const char* text);
    // The text, including placeholders that have not been replaced.
    const char* getMessage() const { return original != nullptr ? original : rendered; }

private:
    // Null after the first substitution.
    const char* original;
    char rendered[LONGEST_RENDERED + 1] = {};
};

// One message text of the catalogue, registered as long as the object lives. Borrows its texts, which must be string
// literals. Number, language and the two flags are for the catalogue's tools; the lookup by (subsystem, situation) does
// not read them. Neither copied nor moved.
class MTE {
public:
    // A null `owner` means the process-wide catalogue; any other must outlive the entry.
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
// Thread-safe. Borrows its entries, which remove themselves. Of two entries for one pair it keeps the first.
class MessageHandler {
public:
    // The catalogue of the process. It outlives every entry that was registered with it at load.
    static MessageHandler& object();

    // The message of the pair, ready for substitution, or null when no entry has the pair. It belongs to the calling
    // thread and is valid until that thread requests another message, from any catalogue. The last one is valid until
    // the thread has ended, which includes the destructors of its thread_local objects.
    Message* find(const char* subsystem, const char* situation);
    // The message for a pair without an entry, valid in the same way.
    Message* getDefaultMessage();

    void add(const MTE& entry);
    // Removes the entry. Does nothing when another entry has the pair.
    void remove(const MTE& entry);

    // Block every other operation while the process forks.
    void lock() { entriesLock.lock(); }
    void unlock() { entriesLock.unlock(); }

private:
    using Key = std::pair<std::string, std::string>;

    std::mutex entriesLock;
    std::map<Key, const MTE*> entries;
};

}  // namespace msg
