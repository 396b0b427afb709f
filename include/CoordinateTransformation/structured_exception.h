#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "CoordinateTransformation/Export.h"

struct _EXCEPTION_POINTERS;

/// Root of the library's own failures, and itself the class of translated platform faults: a what text, the place
/// of a fault, and the (subsystem, situation) pair with its parameters under which the message catalogue renders it.
///
/// Thread-compatible: an object is thrown by value, caught by reference and used by one thread.
///
/// The object owns its reserve buffer, its parameter copies and its what text; `subsystem` and `situation`
/// are borrowed and must be string literals. A copy is deep, with two intended peculiarities: it takes as its
/// what text whatever the source's `what()` answers, and its reserve buffer has the length of the text in the
/// source's buffer (one byte), not 4096. Assignment leaves the target without parameters.
class COORDTRANS_EXPORT structured_exception : public std::exception {
public:
    /// Library-wide switch: while false, no exception allocates a reserve buffer. Starts true; the library
    /// never changes it. Write it before other threads use the library.
    static bool reserveBufferEnabled;

    /// \param whatText text answered by `what()`, copied; null means "no text".
    /// \param reserve ask for a reserve buffer of 4096 zero bytes.
    /// \param subsystemName,situationName catalogue key, borrowed (string literals).
    /// \param count number of entries in `list`.
    /// \param list NUL-terminated texts, entries may be null; may itself be null.
    /// \param copyParameters copy the list; a list given without this flag is dropped, never borrowed.
    structured_exception(const char* whatText, bool reserve, const char* subsystemName, const char* situationName,
                         std::uint32_t count, const char* const* list, bool copyParameters);

    /// From a platform fault: takes the faulting address from `fault->ExceptionRecord->ExceptionAddress`
    /// and reports under ("exception", "default") without parameters. The reserve buffer is never
    /// allocated for the stack-overflow code 0xC00000FD, when no memory may be asked for.
    /// REQUIRES: `fault` and its record are not null.
    structured_exception(std::uint32_t code, const _EXCEPTION_POINTERS* fault, const char* text, bool reserve);

    /// A deep copy, with the two peculiarities stated at the class.
    structured_exception(const structured_exception& other);
    ~structured_exception() override;

    /// The what text, or "Unknown exception" when there is none.
    const char* what() const noexcept override;

    /// A readable text; "structured_exception" for an object of this class itself.
    virtual std::string getDetailedMessage() const;

    /// The message as the catalogue renders it for (subsystem, situation), or the catalogue's default
    /// message when the pair is unknown. The text belongs to the catalogue and holds until the calling
    /// thread asks it again.
    ///
    /// REQUIRES: the catalogue does not know the pair of an exception that carries parameters. Substitution
    /// reads the list as the caller handed it in, which is null once construction has finished; for such an
    /// exception this call faults with an access violation.
    virtual const char* getCatalogMessage() const;

    /// Copies code, address, reserve text and catalogue key. The what text stays, the previous reserve
    /// buffer is not released, and the target ends without parameters whatever `other` held.
    structured_exception& operator=(const structured_exception& other);

    /// Replaces the parameters by copies of the `count` entries of `list`; none when either is 0 or null.
    void setParameters(std::uint32_t count, const char* const* list);

    /// Platform code of a translated fault, else 0.
    std::uint32_t getExceptionCode() const { return exceptionCode; }
    /// Instruction address of a translated fault, else 0.
    std::uintptr_t getExceptionAddress() const { return exceptionAddress; }
    /// First half of the catalogue key.
    const char* getSubsystem() const { return subsystem; }
    /// Second half of the catalogue key.
    const char* getSituation() const { return situation; }
    /// Number of owned parameters.
    std::uint32_t getParameterCount() const { return parameterCount; }
    /// Parameter `i`, null where the caller's entry was null. REQUIRES: i < getParameterCount().
    const char* getParameter(std::uint32_t i) const { return parameters[i]; }
    /// The reserve buffer, or null. Owned by the exception.
    const char* getReserveBuffer() const { return reserveBuffer; }
    /// Length of the text in the reserve buffer; no operation writes one, so it is 0.
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
