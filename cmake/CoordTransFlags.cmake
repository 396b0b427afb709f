# The compiler flags of this project. The targets are imported: a project that embeds this one does not see them, and an
# installation does not name them.

include(CheckIPOSupported)
include(CheckPIESupported)

set(coordtrans_is_gnu_like $<CXX_COMPILER_ID:GNU,Clang,AppleClang>)
set(coordtrans_is_optimised $<CONFIG:Release,RelWithDebInfo,MinSizeRel>)

# Warnings are errors, for developers.
add_library(coordtrans_developer INTERFACE IMPORTED)
if(COORDTRANS_DEVELOPER)
  target_compile_options(
    coordtrans_developer
    INTERFACE
      "$<${coordtrans_is_gnu_like}:-Wall;-Wextra;-Wpedantic;-Wconversion;-Wshadow;-Werror>"
      "$<$<CXX_COMPILER_ID:MSVC>:/W4;/WX>")
endif()

# A sanitizer needs everything to be built with it.
if(COORDTRANS_SANITIZERS)
  list(JOIN COORDTRANS_SANITIZERS "," names)
  set(coordtrans_sanitizer_flags -fsanitize=${names} -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_compile_options(${coordtrans_sanitizer_flags} $<$<CONFIG:Debug>:-O1>)
  # Calls into AddressSanitizer instead of inline code compile in two thirds of the time.
  if("address" IN_LIST COORDTRANS_SANITIZERS)
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:--param=asan-instrumentation-with-call-threshold=0>)
  endif()
  add_link_options(${coordtrans_sanitizer_flags})
endif()

# A memory error in the library or a tool must stop the process rather than serve an attacker. The C library's functions
# check bounds, canaries guard return addresses, a large stack frame is probed page by page, the targets of indirect
# calls are marked for the processor, and the tables of the dynamic linker are read-only. Only optimised builds are
# hardened; sanitizers find more.
add_library(coordtrans_hardening INTERFACE IMPORTED)
if(COORDTRANS_HARDENING AND NOT COORDTRANS_SANITIZERS)
  set(is_hardened $<AND:${coordtrans_is_gnu_like},${coordtrans_is_optimised}>)
  set(is_old_gnu $<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,12>>)
  target_compile_options(
    coordtrans_hardening
    INTERFACE
      "$<${is_hardened}:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=$<IF:${is_old_gnu},2,3>>"
      "$<${is_hardened}:-fstack-protector-strong;-fstack-clash-protection>")
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|i[3-6]86)$")
    target_compile_options(coordtrans_hardening INTERFACE $<${is_hardened}:-fcf-protection>)
  endif()
  target_link_options(
    coordtrans_hardening
    INTERFACE $<$<AND:$<PLATFORM_ID:Linux>,${coordtrans_is_optimised}>:LINKER:-z,relro,-z,now>)
  check_pie_supported(OUTPUT_VARIABLE ignored LANGUAGES CXX)
endif()

# coordtrans_harden_program(PROGRAM CORE): hardens a program and CORE, the static library with most of its code. The
# program is loaded at random addresses.
function(coordtrans_harden_program program core)
  target_link_libraries(${program} PRIVATE coordtrans_hardening)
  target_link_libraries(${core} PRIVATE coordtrans_hardening)
  if(COORDTRANS_HARDENING)
    set_target_properties(${program} PROPERTIES POSITION_INDEPENDENT_CODE ON)
    target_compile_options(${core} PRIVATE ${CMAKE_CXX_COMPILE_OPTIONS_PIE})
  endif()
endfunction()

# A point passes through five sources; inlining across them saves a third of the time that the library adds to PROJ. A
# static library is not inlined, for users with other compilers.
if(COORDTRANS_INTERPROCEDURAL AND BUILD_SHARED_LIBS)
  check_ipo_supported(RESULT coordtrans_inlines_across_sources OUTPUT ignored LANGUAGES CXX)
endif()
set(coordtrans_is_inlined $<CONFIG:Release,RelWithDebInfo>)

function(coordtrans_inline_across_sources target)
  if(coordtrans_inlines_across_sources)
    set_target_properties(
      ${target}
      PROPERTIES
        INTERPROCEDURAL_OPTIMIZATION_RELEASE ON
        INTERPROCEDURAL_OPTIMIZATION_RELWITHDEBINFO ON)
  endif()
endfunction()

# coordtrans_inline_objects(OBJECTS): inlines across the objects in the library alone. Optimising them again for each of
# forty programs takes minutes, so programs link them as they are; g++ can make objects for both.
function(coordtrans_inline_objects objects)
  coordtrans_inline_across_sources(${objects})
  if(coordtrans_inlines_across_sources)
    set(is_library $<BOOL:$<TARGET_PROPERTY:INTERPROCEDURAL_OPTIMIZATION_RELEASE>>)
    set(is_gnu $<AND:$<CXX_COMPILER_ID:GNU>,${coordtrans_is_inlined}>)
    set(is_other $<AND:$<NOT:$<CXX_COMPILER_ID:GNU>>,${coordtrans_is_inlined}>)
    target_compile_options(${objects} PRIVATE $<${is_gnu}:-ffat-lto-objects>)
    target_link_options(
      ${objects}
      INTERFACE
        $<$<AND:$<NOT:${is_library}>,${is_gnu}>:-fno-lto>
        "$<$<AND:$<NOT:${is_library}>,${is_other}>:${CMAKE_CXX_COMPILE_OPTIONS_IPO}>")
  endif()
endfunction()
