# coordtrans_harden(TARGET): makes a memory error in the library or a tool stop the process rather than serve an attacker.
# Bounds are checked in the functions of the C library, return addresses are guarded by canaries, a large stack frame is
# probed page by page, the processor is shown the targets of indirect calls, the tables of the dynamic linker are
# read-only, and programs lie at random addresses. That is for optimised builds; a sanitizer sees more by itself.

include(CheckCXXCompilerFlag)
include(CheckCXXSourceCompiles)
include(CheckLinkerFlag)
include(CheckPIESupported)

set(coordtrans_hardening_flags)
set(coordtrans_hardening_link_flags)

# Takes the highest level that the C library has. A distribution's compiler or a packager's flags may define one already:
# that one holds.
function(coordtrans_fortify)
  set(CMAKE_REQUIRED_FLAGS "-O2 ${CMAKE_CXX_FLAGS_RELEASE}")
  check_cxx_source_compiles("#ifdef _FORTIFY_SOURCE\n#error\n#endif\nint main() {}" COORDTRANS_FORTIFICATION_IS_OPEN)
  if(NOT COORDTRANS_FORTIFICATION_IS_OPEN)
    return()
  endif()
  foreach(level 3 2)
    set(CMAKE_REQUIRED_DEFINITIONS -D_FORTIFY_SOURCE=${level})
    check_cxx_source_compiles("#include <cstdio>\n#if __USE_FORTIFY_LEVEL < ${level}\n#error\n#endif\nint main() {}"
                              COORDTRANS_HAS_FORTIFICATION_${level})
    if(COORDTRANS_HAS_FORTIFICATION_${level})
      set(coordtrans_hardening_flags ${coordtrans_hardening_flags} -D_FORTIFY_SOURCE=${level} PARENT_SCOPE)
      return()
    endif()
  endforeach()
endfunction()

if(COORDTRANS_HARDENING AND NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
  coordtrans_fortify()
  # -fcf-protection is for x86 alone; other compilers refuse it.
  foreach(flag -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    string(MAKE_C_IDENTIFIER COORDTRANS_HAS${flag} has_flag)
    check_cxx_compiler_flag(${flag} ${has_flag})
    if(${has_flag})
      list(APPEND coordtrans_hardening_flags ${flag})
    endif()
  endforeach()
  check_linker_flag(CXX -Wl,-z,relro,-z,now COORDTRANS_HAS_READ_ONLY_RELOCATIONS)
  if(COORDTRANS_HAS_READ_ONLY_RELOCATIONS)
    list(APPEND coordtrans_hardening_link_flags -Wl,-z,relro,-z,now)
  endif()
  check_pie_supported(OUTPUT_VARIABLE ignored LANGUAGES CXX)
endif()

function(coordtrans_harden target)
  set(optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)
  target_compile_options(${target} PRIVATE "$<${optimised}:${coordtrans_hardening_flags}>")
  target_link_options(${target} PRIVATE "$<${optimised}:${coordtrans_hardening_link_flags}>")
endfunction()

# coordtrans_harden_program(PROGRAM CORE): the program and the static library that is the most of it.
function(coordtrans_harden_program program core)
  coordtrans_harden(${program})
  coordtrans_harden(${core})
  if(CMAKE_CXX_LINK_PIE_SUPPORTED)
    set_target_properties(${program} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${core} PRIVATE ${CMAKE_CXX_COMPILE_OPTIONS_PIE})
  endif()
endfunction()
