# Tests that hold the built library, the public header and the committed API
# reference to the interface description.

# Runs cmake/Interface.cmake as a script with ACTION `action` on the
# description, plus the given -D definitions.
function(_shellfe_interface_test name action)
  add_test(NAME ${name}
    COMMAND "${CMAKE_COMMAND}" -DACTION=${action} "-DINTERFACE=${SHELLFE_INTERFACE}" ${ARGN}
            -P "${PROJECT_SOURCE_DIR}/cmake/Interface.cmake")
endfunction()

# The library exports exactly the described routines and nothing else.
add_test(NAME exports_exact
  COMMAND "${CMAKE_COMMAND}" -DLIBRARY=$<TARGET_FILE:shellfe> "-DINTERFACE=${SHELLFE_INTERFACE}"
          "-DNM=${CMAKE_NM}" "-DOBJDUMP=${CMAKE_OBJDUMP}"
          -P "${PROJECT_SOURCE_DIR}/tests/check_exports.cmake")

# The header declares each described routine argument by argument, no other
# routine, and the project's version.
_shellfe_interface_test(interface_header check_header
  "-DHEADER=${PROJECT_SOURCE_DIR}/include/shellfe.h" "-DVERSION=${PROJECT_VERSION}")

# The committed API reference is what the description gives.
_shellfe_interface_test(interface_docs check_docs
  "-DDOCS=${SHELLFE_API_DOCS}" "-DBUILD_DIR=${PROJECT_BINARY_DIR}")
