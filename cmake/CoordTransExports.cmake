# coordtrans_limit_exports(TARGET): a shared library exports only the symbols in cmake/exports.map. Hidden visibility
# does not cover instantiations from the headers of the standard library and of Boost; only the linker can hide these.
# Systems other than ELF have no version scripts and export what the sources mark.

include(CheckLinkerFlag)

set(coordtrans_limits_exports FALSE)
if(UNIX AND NOT APPLE)
  set(coordtrans_limits_exports TRUE)
  # Some linkers refuse a script with names that an optimiser has removed; older ones do not know the flag.
  check_linker_flag(CXX LINKER:--undefined-version COORDTRANS_LINKER_MINDS_MISSING_EXPORTS)
endif()

function(coordtrans_limit_exports target)
  get_target_property(type ${target} TYPE)
  if(NOT coordtrans_limits_exports OR NOT type STREQUAL "SHARED_LIBRARY")
    return()
  endif()
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(
    ${target}
    PRIVATE
      LINKER:--version-script,${exports}
      $<$<BOOL:${COORDTRANS_LINKER_MINDS_MISSING_EXPORTS}>:LINKER:--undefined-version>)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${exports})
endfunction()
