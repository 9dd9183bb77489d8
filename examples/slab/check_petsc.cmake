# Check of the slab example's distributed mode, run by CTest as
#   cmake -DSLAB=<slab program> -DMPIEXEC=<mpirun> -DMPIFLAGS=<its flags> -P check_petsc.cmake
#
# On two ranks the 8x8 and 16x16 centre deflection and moment agree with the
# serial run's to 1e-9 relative (the two solvers round differently, the
# matrices are the same), and the matrix was filled without reallocation.
# The post-processing of the 16x16 mesh, which the ranks run on their own
# elements and the piece of the mesh near the centre, prints what the serial
# run prints (the peak's node number aside: the two modes number the nodes
# differently).

set(meshes 8 16)
execute_process(COMMAND "${SLAB}" --mesh 8,16 --no-svg --no-compare --digits
  RESULT_VARIABLE rc OUTPUT_VARIABLE serial ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "serial slab failed (${rc}):\n${serial}\n${err}")
endif()
execute_process(COMMAND "${MPIEXEC}" -np 2 ${MPIFLAGS} "${SLAB}" --petsc --mesh 8,16 --no-svg --digits
  RESULT_VARIABLE rc OUTPUT_VARIABLE distributed ERROR_VARIABLE err)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "slab --petsc on 2 ranks failed (${rc}):\n${distributed}\n${err}")
endif()
if(NOT distributed MATCHES "on 2 MPI ranks")
  message(FATAL_ERROR "the distributed run did not use 2 ranks:\n${distributed}")
endif()
string(REGEX MATCHALL "preallocated from the rows, [0-9]+ mallocs" fills "${distributed}")
list(LENGTH fills count)
if(NOT count EQUAL 2 OR NOT fills MATCHES "^[^;]* 0 mallocs;[^;]* 0 mallocs$")
  message(FATAL_ERROR "the matrix was not filled without reallocation:\n${distributed}")
endif()

# A value printed as d.ddddddddddddddddde[-+]xx, as a 14-digit integer
# mantissa and an exponent, so that integer arithmetic can compare two.
function(split value mantissa exponent)
  if(NOT value MATCHES "^(-?)([0-9])\\.([0-9]+)e([-+][0-9]+)$")
    message(FATAL_ERROR "not a number: '${value}'")
  endif()
  set(lead "${CMAKE_MATCH_1}${CMAKE_MATCH_2}")
  string(SUBSTRING "${CMAKE_MATCH_3}0000000000000" 0 13 digits)
  string(REGEX REPLACE "^\\+" "" e "${CMAKE_MATCH_4}")
  set(${mantissa} "${lead}${digits}" PARENT_SCOPE)
  set(${exponent} "${e}" PARENT_SCOPE)
endfunction()

# Fails unless |a - b| <= 1e-9 |a|.
function(agree what a b)
  split("${a}" ma ea)
  split("${b}" mb eb)
  # Bring both to the larger exponent's scale; a mantissa one decade lower
  # loses its last digit, far below the tolerance.
  math(EXPR shift "${ea} - ${eb}")
  if(shift EQUAL 1)
    math(EXPR mb "${mb} / 10")
  elseif(shift EQUAL -1)
    math(EXPR ma "${ma} / 10")
  elseif(NOT shift EQUAL 0)
    message(FATAL_ERROR "${what}: ${b} differs from the serial ${a}")
  endif()
  math(EXPR diff "${ma} - ${mb}")
  string(REGEX REPLACE "^-" "" diff "${diff}")
  string(REGEX REPLACE "^-" "" size "${ma}")
  math(EXPR allowed "${size} / 1000000000")
  if(diff GREATER allowed)
    message(FATAL_ERROR "${what}: ${b} on 2 ranks, ${a} serial: more than 1e-9 apart")
  endif()
  message(STATUS "${what}: ${b} on 2 ranks, ${a} serial")
endfunction()

foreach(n IN LISTS meshes)
  set(line "centre ${n}: ([-0-9.e+]+) ([-0-9.e+]+)\n")
  if(NOT serial MATCHES "${line}")
    message(FATAL_ERROR "no ${n}x${n} centre values in the serial run:\n${serial}")
  endif()
  set(w "${CMAKE_MATCH_1}")
  set(mx "${CMAKE_MATCH_2}")
  if(NOT distributed MATCHES "${line}")
    message(FATAL_ERROR "no ${n}x${n} centre values in the distributed run:\n${distributed}")
  endif()
  agree("${n}x${n} centre deflection" "${w}" "${CMAKE_MATCH_1}")
  agree("${n}x${n} centre moment" "${mx}" "${CMAKE_MATCH_2}")
endforeach()

foreach(what IN ITEMS "error estimate \\(STERRORDLLDOTNET\\)" "Mx within a/10 of the centre \\(CASTNETFMDOTNET\\)"
                      "peak deflection at node [0-9]+")
  if(NOT serial MATCHES "  ${what}[^\n]*\n")
    message(FATAL_ERROR "no '${what}' line in the serial run:\n${serial}")
  endif()
  string(REGEX REPLACE "at node [0-9]+" "at node" expected "${CMAKE_MATCH_0}")
  if(NOT distributed MATCHES "  ${what}[^\n]*\n")
    message(FATAL_ERROR "no '${what}' line in the distributed run:\n${distributed}")
  endif()
  string(REGEX REPLACE "at node [0-9]+" "at node" got "${CMAKE_MATCH_0}")
  if(NOT got STREQUAL expected)
    message(FATAL_ERROR "the distributed run printed\n${got}where the serial run printed\n${expected}")
  endif()
  string(STRIP "${got}" got)
  message(STATUS "${got}")
endforeach()
