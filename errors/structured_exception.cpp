#include "CoordinateTransformation/structured_exception.h"

#include <cstring>
#include <memory>

#include "errors/StructuredExceptionTranslation.h"
#include "platform/WindowsFaults.h"
#if defined(COORDTRANS_MESSAGE_CATALOGUE_HEADER)
#include COORDTRANS_MESSAGE_CATALOGUE_HEADER
#else
#include "platform/MessageCatalogue.h"
#endif

namespace {

// The catalogue key of every platform fault.
constexpr char PLATFORM_FAULT_SUBSYSTEM[] = "exception";
constexpr char PLATFORM_FAULT_SITUATION[] = "default";

constexpr std::uint32_t RESERVE_BUFFER_SIZE = 4096;

// Made at load or earlier: the static initialisers of a host that links the static library may run first.
void registerPlatformFaultEntry() {
    static const msg::MTE entry(0, "en", PLATFORM_FAULT_SUBSYSTEM, PLATFORM_FAULT_SITUATION,
                                "Meldung: Das Subsystem [&0] hat die Fehlersituation [&1] gemeldet. Text: [&2], "
                                "Parameter sind 1: [&3], 2: [&4], 3: [&5], usw.",
                                nullptr, false, false);
}

// The work at load is in this source because every user of the library links it.
bool registerAtLoad() {
    registerPlatformFaultEntry();
    return CoordinateTransformation::registerStructuredExceptionTranslator();
}
[[maybe_unused]] const bool registered = registerAtLoad();

char* duplicate(const char* text) {
    if (text == nullptr) return nullptr;
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}

char* allocateReserveBuffer(bool requested) {
    return requested && structured_exception::reserveBufferEnabled ? new char[RESERVE_BUFFER_SIZE]() : nullptr;
}

// Copies only the text: as nothing writes into the buffer of 4096 bytes, its copy is one byte long.
char* copyReserveText(const char* buffer, std::uint32_t length) {
    if (buffer == nullptr) return nullptr;
    char* copy = new char[std::size_t{length} + 1];
    std::memcpy(copy, buffer, length);
    copy[length] = '\0';
    return copy;
}

}  // namespace

bool structured_exception::reserveBufferEnabled = true;

structured_exception::structured_exception(const char* whatTextToCopy, bool reserve, const char* subsystemName,
                                           const char* situationName, std::uint32_t count, const char* const* list,
                                           bool copyParameters)
    : whatText(nullptr),
      exceptionAddress(0),
      exceptionCode(0),
      reserveBuffer(nullptr),
      reserveLength(0),
      subsystem(subsystemName),
      situation(situationName),
      parameterCount(count),
      givenParameters(list),
      parameters(nullptr),
      ownsParameters(copyParameters) {
    std::unique_ptr<char[]> text(duplicate(whatTextToCopy));
    std::unique_ptr<char[]> buffer(allocateReserveBuffer(reserve));
    copyGivenParameters();
    whatText = text.release();
    reserveBuffer = buffer.release();
}

structured_exception::structured_exception(std::uint32_t code, const _EXCEPTION_POINTERS* fault, const char* text,
                                           bool reserve)
    : structured_exception(text, reserve && code != STACK_OVERFLOW_FAULT, PLATFORM_FAULT_SUBSYSTEM,
                           PLATFORM_FAULT_SITUATION, 0, nullptr, false) {
    exceptionCode = code;
    exceptionAddress = reinterpret_cast<std::uintptr_t>(fault->ExceptionRecord->ExceptionAddress);
}

structured_exception::structured_exception(const structured_exception& other)
    : structured_exception(other.what(), false, other.subsystem, other.situation, other.parameterCount,
                           other.parameters, other.ownsParameters) {
    exceptionAddress = other.exceptionAddress;
    exceptionCode = other.exceptionCode;
    reserveBuffer = copyReserveText(other.reserveBuffer, other.reserveLength);
    reserveLength = other.reserveLength;
}

structured_exception::~structured_exception() {
    delete[] reserveBuffer;
    releaseParameters();
    delete[] whatText;
}

const char* structured_exception::what() const noexcept { return whatText != nullptr ? whatText : "Unknown exception"; }

std::string structured_exception::getDetailedMessage() const { return "structured_exception"; }

const char* structured_exception::getCatalogMessage() const {
    registerPlatformFaultEntry();
    msg::MessageHandler& handler = msg::MessageHandler::object();
    msg::Message* message = handler.find(subsystem, situation);
    if (message == nullptr) return handler.getDefaultMessage()->getMessage();
    // Intended: this is the caller's list, null by now, so an exception with parameters faults here.
    for (std::uint32_t i = 0; i < parameterCount; ++i) message->substitute(i, givenParameters[i]);
    return message->getMessage();
}

structured_exception& structured_exception::operator=(const structured_exception& other) {
    // Intended: the previous buffer is not released, and the parameters of `other` are not copied.
    reserveBuffer = copyReserveText(other.reserveBuffer, other.reserveLength);
    reserveLength = other.reserveLength;
    exceptionCode = other.exceptionCode;
    exceptionAddress = other.exceptionAddress;
    subsystem = other.subsystem;
    situation = other.situation;
    releaseParameters();
    return *this;
}

void structured_exception::setParameters(std::uint32_t count, const char* const* list) {
    releaseParameters();
    givenParameters = list;
    parameterCount = count;
    ownsParameters = true;
    copyGivenParameters();
}

void structured_exception::copyGivenParameters() {
    if (parameterCount == 0 || givenParameters == nullptr || !ownsParameters) {
        releaseParameters();
        return;
    }
    try {
        parameters = new char*[parameterCount]();
        for (std::uint32_t i = 0; i < parameterCount; ++i) parameters[i] = duplicate(givenParameters[i]);
    } catch (...) {
        releaseParameters();
        throw;
    }
    givenParameters = nullptr;
}

void structured_exception::releaseParameters() {
    for (std::uint32_t i = 0; parameters != nullptr && i < parameterCount; ++i) delete[] parameters[i];
    delete[] parameters;
    parameters = nullptr;
    givenParameters = nullptr;
    parameterCount = 0;
    ownsParameters = false;
}
