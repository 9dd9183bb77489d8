# Tests that hold the built library to the interface description.

# The library exports exactly the described routines and nothing else.
add_test(NAME exports_exact
  COMMAND "${CMAKE_COMMAND}" -DLIBRARY=$<TARGET_FILE:shellfe> "-DINTERFACE=${SHELLFE_INTERFACE}"
          "-DNM=${CMAKE_NM}" "-DOBJDUMP=${CMAKE_OBJDUMP}"
          -P "${PROJECT_SOURCE_DIR}/tests/check_exports.cmake")
