# Check of the slab example's distributed mode, run by CTest as
#   cmake -DSLAB=<slab program> -DMPIEXEC=<mpirun> -DMPIFLAGS=<its flags>
#         -DDIVISION=<the partitioner expected: ptscotch, parmetis or strips> -P check_petsc.cmake
#
# On two ranks the centre deflection and moment agree with the serial run's
# to 1e-9 relative (the two solvers round differently, the matrices are the
# same), and the matrix was filled without reallocation: on 8x8 and 16x16
# meshes with the nodes divided by PETSc's graph partitioner, and on 7x7 and
# 15x15 (the centre inside an element) in strips with the compatible
# single-precision routines, six shell unknowns per node, the point load and
# the factor out of core. The post-processing of the last mesh, which the
# ranks run on their own elements and the elements near the centre and the
# peak gathered on one rank, prints what the serial run prints (the peak's
# node number aside: the two modes number the nodes differently), and the
# pictures drawn from the gathered results are the serial run's, byte for
# byte (at 16x16 no value lies near a band edge).

set(out "${CMAKE_CURRENT_BINARY_DIR}/slab_petsc_check")
file(REMOVE_RECURSE "${out}")
file(MAKE_DIRECTORY "${out}/serial" "${out}/graph")

# Runs the serial program.
function(run_serial result)
  execute_process(COMMAND "${SLAB}" --no-compare --digits ${ARGN}
    RESULT_VARIABLE rc OUTPUT_VARIABLE text ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "slab ${ARGN} failed (${rc}):\n${text}\n${err}")
  endif()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

# Runs the distributed mode on 2 ranks; checks the division and the fill.
function(run_distributed result division)
  execute_process(COMMAND "${MPIEXEC}" -np 2 ${MPIFLAGS} "${SLAB}" --petsc ${ARGN}
    RESULT_VARIABLE rc OUTPUT_VARIABLE text ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "slab --petsc ${ARGN} on 2 ranks failed (${rc}):\n${text}\n${err}")
  endif()
  if(NOT text MATCHES "on 2 MPI ranks")
    message(FATAL_ERROR "the distributed run did not use 2 ranks:\n${text}")
  endif()
  if(NOT text MATCHES "nodes divided by ${division}: ")
    message(FATAL_ERROR "the nodes were not divided by ${division}:\n${text}")
  endif()
  string(REGEX MATCHALL "preallocated from the rows, [0-9]+ mallocs" fills "${text}")
  list(LENGTH fills count)
  if(NOT count EQUAL 2 OR NOT fills MATCHES "^[^;]* 0 mallocs;[^;]* 0 mallocs$")
    message(FATAL_ERROR "the matrix was not filled without reallocation:\n${text}")
  endif()
  set(${result} "${text}" PARENT_SCOPE)
endfunction()

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

# The centre values and the post-processing lines of a distributed run
# against the serial run's.
function(compare distributed serial how meshes)
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
    agree("${n}x${n} centre deflection, ${how}" "${w}" "${CMAKE_MATCH_1}")
    agree("${n}x${n} centre moment, ${how}" "${mx}" "${CMAKE_MATCH_2}")
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
endfunction()

run_serial(serial --mesh 8,16 --svg "${out}/serial")
run_distributed(graph "${DIVISION}" --mesh 8,16 --svg "${out}/graph" --digits)
compare("${graph}" "${serial}" "graph partition" "8;16")
# Strips, the compatible routines with shell unknowns under the point load,
# and the factor out of core in the test's own directory.
set(ENV{MUMPS_OOC_TMPDIR} "${out}")
set(model --route compatible --dofs shell --load point)
run_serial(serial --mesh 7,15 --no-svg ${model})
run_distributed(strips "strips" --mesh 7,15 --no-svg --digits ${model} -mat_partitioning_type current
                -mat_mumps_icntl_22 1)
compare("${strips}" "${serial}" "strips, compatible routines, shell unknowns, point load, factor out of core" "7;15")
foreach(picture IN ITEMS slab_ss_deflection.svg slab_ss_mx.svg)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E compare_files "${out}/serial/${picture}" "${out}/graph/${picture}"
    RESULT_VARIABLE differ)
  if(NOT differ EQUAL 0)
    message(FATAL_ERROR "the distributed run's ${picture} differs from the serial run's")
  endif()
  message(STATUS "${picture}: the serial run's")
endforeach()
