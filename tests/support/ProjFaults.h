#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <dlfcn.h>
#include <execinfo.h>

// Functions of PROJ that do not survive a failed allocation, so tests must spare them.
namespace TestSupport {

// osgeo::proj::operation::OperationMethod::getEPSGCode() const is noexcept and copies a string, so a failed allocation
// ends the process. PROJ 9.6 calls it for each operation. PROJ 9.1 does not.
constexpr char FATAL_FUNCTION[] = "_ZNK5osgeo4proj9operation15OperationMethod11getEPSGCodeEv";

// osgeo::proj::io::PROJStringParser::createFromPROJString(std::string const&): when an exception leaves it, the log of
// the context refers to a destroyed string. PROJ then reports the exception to that log.
constexpr char TRIAL_FUNCTION[] =
    "_ZN5osgeo4proj2io16PROJStringParser20createFromPROJStringERKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";

// Returns whether this thread is inside `function`.
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
