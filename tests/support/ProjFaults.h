#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>

// Where PROJ does not survive the end of memory, so that there is no outcome to test.
namespace TestSupport {

// osgeo::proj::operation::OperationMethod::getEPSGCode() const: it is noexcept and copies a string, so it ends the
// process. PROJ 9.6 calls it for each operation, PROJ 9.1 does not.
constexpr char FATAL_FUNCTION[] = "_ZNK5osgeo4proj9operation15OperationMethod11getEPSGCodeEv";

// osgeo::proj::io::PROJStringParser::createFromPROJString(std::string const&): an exception leaves the context's log
// with a string that is gone, and PROJ reports the exception into it.
constexpr char TRIAL_FUNCTION[] =
    "_ZN5osgeo4proj2io16PROJStringParser20createFromPROJStringERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";

// Whether the function is at work on this thread.
inline bool isWithin(const char* function) {
    std::array<void*, 64> callers;
    const int count = backtrace(callers.data(), static_cast<int>(callers.size()));
    return std::any_of(callers.begin(), callers.begin() + count, [function](void* address) {
        Dl_info found;
        return dladdr(address, &found) != 0 && found.dli_sname != nullptr &&
               std::strcmp(found.dli_sname, function) == 0;
    });
}

}  // namespace TestSupport
