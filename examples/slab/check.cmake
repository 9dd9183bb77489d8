# Checks of the slab example, run by CTest as
#   cmake -DSLAB=<path of the slab program> -P check.cmake
#
# 1. The default problem at 4x4 and 8x8: the program succeeds, the two
#    assembly routes agree, and the 8x8 centre deflection of the hard simply
#    supported plate lies within 0.1 % of the Navier series.
# 2. Bad options end with exit code 2 and a message, never a crash or a table.

execute_process(COMMAND "${SLAB}" --mesh 4,8 --no-svg
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "slab --mesh 4,8 failed (${rc}):\n${out}\n${err}")
endif()
if(out MATCHES "DIFFER" OR NOT out MATCHES "displacements agree")
  message(FATAL_ERROR "the assembly routes do not agree:\n${out}")
endif()
# Table row: N, unknowns, w, relative error, order, Mx, reference.
if(NOT out MATCHES "\n +8 +[0-9]+ +([0-9.]+) +([-+][0-9.]+e[-+][0-9]+) ")
  message(FATAL_ERROR "no 8x8 row in the table:\n${out}")
endif()
set(error "${CMAKE_MATCH_2}")
string(REGEX REPLACE "^[-+]" "" magnitude "${error}")
# CMake compares numbers as doubles when both sides parse as numbers.
if(magnitude GREATER 1.0e-3)
  message(FATAL_ERROR "8x8 centre deflection off the series by ${error} (more than 0.1 %):\n${out}")
endif()
message(STATUS "8x8 centre deflection within ${error} of the series")

foreach(bad "--mesh;-4" "--mesh;0" "--support;soft" "--thickness;0" "--thickness;-1" "--load;snow"
            "--nu;0.5" "--mesh;8,x" "--frobnicate" "--size" "--petsc;--assembly;skyline" "-ksp_type;cg")
  execute_process(COMMAND "${SLAB}" ${bad} --no-svg
    RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  string(REPLACE ";" " " shown "${bad}")
  if(NOT rc EQUAL 2)
    message(FATAL_ERROR "slab ${shown}: exit ${rc}, expected 2\n${out}${err}")
  endif()
  if(NOT err MATCHES "^slab: [^\n]+\n$" OR NOT out STREQUAL "")
    message(FATAL_ERROR "slab ${shown}: expected one message on stderr and nothing else, got\n${out}${err}")
  endif()
endforeach()
