#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "CoordinateTransformation/Export.h"

struct _EXCEPTION_POINTERS;

/// The root of the library's own failures, and itself the class of translated platform faults. It has a text, the
/// address of a fault, and a pair (subsystem, situation) with parameters, from which the message catalogue makes a
/// message.
///
/// Thread-compatible: an object is thrown by value, caught by reference and used by one thread.
///
/// Owns its reserve buffer, its copies of parameters and its text; `subsystem` and `situation` are borrowed and must be
/// string literals. A copy is deep, with two intended peculiarities: its text is the result of the source's `what()`,
/// and its reserve buffer has the length of the text in the source's buffer (one byte), not 4096. Assignment leaves the
/// target without parameters.
class COORDTRANS_EXPORT structured_exception : public std::exception {
public:
    /// A switch for the whole library: while it is false, no exception allocates a reserve buffer. Initially true; the
    /// library never changes it. Set it before other threads use the library.
    static bool reserveBufferEnabled;

    /// \param whatText the text of `what()`, copied; null means "no text".
    /// \param reserve requests a reserve buffer of 4096 zero bytes.
    /// \param subsystemName,situationName catalogue key, borrowed (string literals).
    /// \param count number of entries in `list`.
    /// \param list NUL-terminated texts; entries and the list itself may be null.
    /// \param copyParameters copies the list; without this flag the list is ignored.
    structured_exception(const char* whatText, bool reserve, const char* subsystemName, const char* situationName,
                         std::uint32_t count, const char* const* list, bool copyParameters);

    /// Describes a platform fault: its address is `fault->ExceptionRecord->ExceptionAddress`, its catalogue key is
    /// ("exception", "default"), and it has no parameters. For the stack-overflow code 0xC00000FD no reserve buffer is
    /// allocated, because memory must not be requested then. REQUIRES: `fault` and its record are not null.
    structured_exception(std::uint32_t code, const _EXCEPTION_POINTERS* fault, const char* text, bool reserve);

    /// Makes a deep copy, with the two peculiarities stated at the class.
    structured_exception(const structured_exception& other);
    ~structured_exception() override;

    /// The text, or "Unknown exception" when there is none.
    const char* what() const noexcept override;

    /// A readable text; "structured_exception" for an object of this class itself.
    virtual std::string getDetailedMessage() const;

    /// The catalogue's message for (subsystem, situation), or its default message when the pair is unknown. The text
    /// belongs to the catalogue and is valid until the calling thread's next request.
    ///
    /// REQUIRES: for an exception with parameters, the catalogue does not know the pair. Substitution reads the list
    /// that the constructor was given, and that pointer is null after construction: the call then fails with an access
    /// violation.
    virtual const char* getCatalogMessage() const;

    /// Copies code, address, reserve text and catalogue key. The text stays, the previous reserve buffer is not
    /// released, and the target has no parameters afterwards, even if `other` has some.
    structured_exception& operator=(const structured_exception& other);

    /// Replaces the parameters by copies of the `count` entries of `list`; removes them when either is 0 or null.
    void setParameters(std::uint32_t count, const char* const* list);

    /// The platform code of a translated fault, otherwise 0.
    std::uint32_t getExceptionCode() const { return exceptionCode; }
    /// The instruction address of a translated fault, otherwise 0.
    std::uintptr_t getExceptionAddress() const { return exceptionAddress; }
    /// The first half of the catalogue key.
    const char* getSubsystem() const { return subsystem; }
    /// The second half of the catalogue key.
    const char* getSituation() const { return situation; }
    /// The number of owned parameters.
    std::uint32_t getParameterCount() const { return parameterCount; }
    /// Parameter `i`; null if the caller's entry was null. REQUIRES: i < getParameterCount().
    const char* getParameter(std::uint32_t i) const { return parameters[i]; }
    /// The reserve buffer, or null. The exception owns it.
    const char* getReserveBuffer() const { return reserveBuffer; }
    /// The length of the text in the reserve buffer; always 0, because no operation writes one.
    std::uint32_t getReserveLength() const { return reserveLength; }

private:
    COORDTRANS_INTERNAL void copyGivenParameters();
    COORDTRANS_INTERNAL void releaseParameters();

    char* whatText;
    std::uintptr_t exceptionAddress;
    std::uint32_t exceptionCode;
    char* reserveBuffer;
    std::uint32_t reserveLength;
    const char* subsystem;
    const char* situation;
    std::uint32_t parameterCount;
    const char* const* givenParameters;
    char** parameters;
    bool ownsParameters;
};

namespace CoordinateTransformation {
using ::structured_exception;
}  // namespace CoordinateTransformation

namespace QSHelpers {
using ::structured_exception;
}  // namespace QSHelpers
