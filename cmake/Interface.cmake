# The interface description, src/frame/interface.json, is the one place that
# lists the exported routines with their arguments in order: type, scalar or
# array, intent, and the extent of every array. Everything else that names
# the routines derives from it or is checked against it.
#
# Included by the build: shellfe_interface() writes the linker inputs that
# restrict the shared library to the described routines and adds the target
# api_docs. Run as a script:
#   cmake -DACTION=check_header -DINTERFACE=<json> -DHEADER=<shellfe.h> -DVERSION=<x.y.z> -P Interface.cmake
#     checks the description itself and that the header declares exactly its
#     routines, argument by argument, and carries the project version;
#   cmake -DACTION=write_docs -DINTERFACE=<json> -DDOCS=<api.md> -P Interface.cmake
#     writes the API reference;
#   cmake -DACTION=check_docs -DINTERFACE=<json> -DDOCS=<api.md> -DBUILD_DIR=<dir> -P Interface.cmake
#     fails when the committed API reference differs from what the
#     description gives.
if(CMAKE_SCRIPT_MODE_FILE)
  cmake_minimum_required(VERSION 3.25)
endif()

# Copies the named members of the JSON object in variable `json_var` into
# <prefix>_<MEMBER>, the member upper-cased, in the caller's scope; a missing
# or null member reads as empty. Appends the variable names to the caller's
# `kept`.
function(_shellfe_members json_var prefix)
  foreach(member IN LISTS ARGN)
    string(JSON value ERROR_VARIABLE missing GET "${${json_var}}" ${member})
    if(missing)
      set(value "")
    endif()
    string(TOUPPER "${member}" var)
    set(var "${prefix}_${var}")
    set(${var} "${value}" PARENT_SCOPE)
    list(APPEND kept ${var})
  endforeach()
  set(kept "${kept}" PARENT_SCOPE)
endfunction()

# For each object of the JSON array `member` of the document in `json_var`:
# appends its member `key` to the list `list_var` and copies the other named
# members into SHELLFE_<key>_<MEMBER>, all in the caller's scope. Each object
# is taken out of the document once and read from there.
function(_shellfe_objects json_var member key list_var)
  string(JSON count LENGTH "${${json_var}}" ${member})
  math(EXPR last "${count} - 1")
  foreach(i RANGE ${last})
    string(JSON object GET "${${json_var}}" ${member} ${i})
    string(JSON id GET "${object}" ${key})
    list(APPEND ${list_var} "${id}")
    _shellfe_members(object SHELLFE_${id} ${ARGN})
  endforeach()
  return(PROPAGATE kept ${kept} ${list_var})
endfunction()

# Reads the description into the caller's scope:
#   SHELLFE_FAMILIES, SHELLFE_ROUTINES          ids and names, in order
#   SHELLFE_<family>_TITLE, _SUMMARY
#   SHELLFE_<routine>_FAMILY, _RETURNS, _SUMMARY, _NARGS
#   SHELLFE_<routine>_<position>_NAME, _TYPE, _KIND, _INTENT, _EXTENT,
#     _EXTENT_NOTE, _MEANING                    positions from 1
function(shellfe_read_interface file)
  file(READ "${file}" doc)
  set(kept SHELLFE_FAMILIES SHELLFE_ROUTINES)
  set(SHELLFE_FAMILIES "")
  set(SHELLFE_ROUTINES "")
  _shellfe_objects(doc families id SHELLFE_FAMILIES title summary)
  _shellfe_objects(doc routines name SHELLFE_ROUTINES family returns summary)
  string(JSON routines GET "${doc}" routines)
  foreach(name IN LISTS SHELLFE_ROUTINES)
    list(FIND SHELLFE_ROUTINES "${name}" i)
    string(JSON args GET "${routines}" ${i} args)
    string(JSON nargs LENGTH "${args}")
    set(SHELLFE_${name}_NARGS ${nargs})
    list(APPEND kept SHELLFE_${name}_NARGS)
    foreach(pos RANGE 1 ${nargs})
      math(EXPR j "${pos} - 1")
      string(JSON arg GET "${args}" ${j})
      _shellfe_members(arg SHELLFE_${name}_${pos} name type kind intent extent extent_note meaning)
    endforeach()
  endforeach()
  return(PROPAGATE ${kept})
endfunction()

# The C spelling of an element type and of a result type.
set(_SHELLFE_C_int32 int32_t)
set(_SHELLFE_C_float float)
set(_SHELLFE_C_double double)
set(_SHELLFE_C_any void)
set(_SHELLFE_C_void void)

# Argument `pos` of `routine` as the header must declare it: a pointer,
# const where the routine only reads, e.g. "const float* AMAT".
function(_shellfe_c_param routine pos out_var)
  set(p SHELLFE_${routine}_${pos})
  set(decl "${_SHELLFE_C_${${p}_TYPE}}* ${${p}_NAME}")
  if(${p}_INTENT MATCHES "^(in|ignored)$")
    set(decl "const ${decl}")
  endif()
  set(${out_var} "${decl}" PARENT_SCOPE)
endfunction()

# --- the build ----------------------------------------------------------------

# Writes into out_dir the two linker inputs that let exactly the described
# routines out of the library:
#   shellfe.map        GNU ld version script (Linux)
#   shellfe.def        module-definition file (Windows DLL)
# and adds the target api_docs, which rewrites the API reference `docs`.
function(shellfe_interface description docs out_dir)
  shellfe_read_interface("${description}")
  set(map "{\n  global:\n")
  set(def "LIBRARY shellfe\nEXPORTS\n")
  foreach(name IN LISTS SHELLFE_ROUTINES)
    string(APPEND map "    ${name};\n")
    string(APPEND def "    ${name}\n")
  endforeach()
  string(APPEND map "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT "${out_dir}/shellfe.map" CONTENT "${map}")
  file(CONFIGURE OUTPUT "${out_dir}/shellfe.def" CONTENT "${def}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${description}")

  add_custom_target(api_docs
    COMMAND "${CMAKE_COMMAND}" -DACTION=write_docs "-DINTERFACE=${description}" "-DDOCS=${docs}"
            -P "${CMAKE_CURRENT_FUNCTION_LIST_FILE}"
    COMMENT "Writing ${docs} from ${description}" VERBATIM)
endfunction()

# --- checks -------------------------------------------------------------------

# Appends to `errors` what is wrong with the description in itself: unknown
# types, kinds or intents, misnamed unused slots, arrays without an extent,
# extents over anything but the routine's own integer scalars.
function(_shellfe_check_description)
  set(seen "")
  foreach(r IN LISTS SHELLFE_ROUTINES)
    if(r IN_LIST seen)
      list(APPEND errors "${r}: described twice")
    endif()
    list(APPEND seen "${r}")
    if(NOT SHELLFE_${r}_FAMILY IN_LIST SHELLFE_FAMILIES)
      list(APPEND errors "${r}: unknown family '${SHELLFE_${r}_FAMILY}'")
    endif()
    if(NOT SHELLFE_${r}_RETURNS MATCHES "^(void|double|int32)$")
      list(APPEND errors "${r}: returns '${SHELLFE_${r}_RETURNS}', not void, double or int32")
    endif()
    if(SHELLFE_${r}_SUMMARY STREQUAL "")
      list(APPEND errors "${r}: no summary")
    endif()
    # The names that an extent may use: the routine's integer scalars.
    set(names "")
    set(sizes "")
    foreach(pos RANGE 1 ${SHELLFE_${r}_NARGS})
      list(APPEND names "${SHELLFE_${r}_${pos}_NAME}")
      if(SHELLFE_${r}_${pos}_TYPE STREQUAL "int32" AND SHELLFE_${r}_${pos}_KIND STREQUAL "scalar")
        list(APPEND sizes "${SHELLFE_${r}_${pos}_NAME}")
      endif()
    endforeach()
    foreach(pos RANGE 1 ${SHELLFE_${r}_NARGS})
      set(p SHELLFE_${r}_${pos})
      set(where "${r} argument ${pos} (${${p}_NAME})")
      list(FIND names "${${p}_NAME}" first)
      math(EXPR first "${first} + 1")
      if(NOT first EQUAL pos)
        list(APPEND errors "${where}: name used twice")
      endif()
      if(NOT ${p}_TYPE MATCHES "^(int32|float|double|any)$"
         OR NOT ${p}_KIND MATCHES "^(scalar|array)$"
         OR NOT ${p}_INTENT MATCHES "^(in|out|inout|ignored)$")
        list(APPEND errors "${where}: type '${${p}_TYPE}', kind '${${p}_KIND}', intent '${${p}_INTENT}' not all known")
      endif()
      if((${p}_INTENT STREQUAL "ignored") AND NOT (${p}_TYPE STREQUAL "any"
         AND ${p}_KIND STREQUAL "scalar" AND ${p}_NAME STREQUAL "UNUSED${pos}"))
        list(APPEND errors "${where}: an ignored slot is a scalar of type any named UNUSED${pos}")
      elseif((${p}_TYPE STREQUAL "any") AND NOT (${p}_INTENT STREQUAL "ignored"))
        list(APPEND errors "${where}: only ignored slots have type any")
      endif()
      if(${p}_MEANING STREQUAL "")
        list(APPEND errors "${where}: no meaning")
      endif()
      if(${p}_KIND STREQUAL "scalar")
        if(NOT "${${p}_EXTENT}${${p}_EXTENT_NOTE}" STREQUAL "")
          list(APPEND errors "${where}: a scalar has no extent")
        endif()
      elseif(${p}_EXTENT STREQUAL "")
        if(${p}_EXTENT_NOTE STREQUAL "")
          list(APPEND errors "${where}: an array needs an extent, or an extent_note where data decide its size")
        endif()
      elseif(NOT ${p}_EXTENT MATCHES "^[A-Za-z0-9_ +*/(),<>=!&|?:-]+$")
        list(APPEND errors "${where}: extent '${${p}_EXTENT}' is not an integer expression")
      else()
        string(REGEX MATCHALL "[A-Za-z_][A-Za-z0-9_]*" used "${${p}_EXTENT}")
        foreach(u IN LISTS used)
          if(NOT u MATCHES "^(min|max)$" AND NOT u IN_LIST sizes)
            list(APPEND errors "${where}: extent uses '${u}', not an integer scalar of ${r}")
          endif()
        endforeach()
      endif()
    endforeach()
  endforeach()
  set(errors "${errors}" PARENT_SCOPE)
endfunction()

# Appends to `errors` every disagreement between the header and the
# description: each routine declared as
#   SHELLFE_API <ret> NAME(<params>) SHELLFE_NOEXCEPT;
# with its arguments in order, spelled as _shellfe_c_param() gives them, and
# no declaration that the description lacks.
function(_shellfe_check_header header version)
  file(READ "${header}" text)
  foreach(part MAJOR MINOR PATCH)
    string(REGEX MATCH "#define SHELLFE_VERSION_${part} ([0-9]+)" _ "${text}")
    list(APPEND header_version "${CMAKE_MATCH_1}")
  endforeach()
  list(JOIN header_version "." header_version)
  if(NOT header_version VERSION_EQUAL version)
    list(APPEND errors "${header}: SHELLFE_VERSION_MAJOR/MINOR/PATCH give ${header_version}, the project is ${version}")
  endif()

  # Leave out comments and preprocessor lines; the declarations remain.
  set(code "")
  while(TRUE)
    string(FIND "${text}" "/*" open)
    if(open EQUAL -1)
      break()
    endif()
    string(SUBSTRING "${text}" 0 ${open} before)
    string(APPEND code "${before}")
    string(SUBSTRING "${text}" ${open} -1 text)
    string(FIND "${text}" "*/" close)
    math(EXPR close "${close} + 2")
    string(SUBSTRING "${text}" ${close} -1 text)
  endwhile()
  string(APPEND code "${text}")
  string(REGEX REPLACE "//[^\n]*" "" code "${code}")
  string(REGEX REPLACE "\n[ \t]*#[^\n]*" "\n" code "\n${code}")

  set(declared "")
  string(REGEX MATCHALL "SHELLFE_API[^;]*" declarations "${code}")
  foreach(decl IN LISTS declarations)
    string(REGEX REPLACE "[ \t\r\n]+" " " decl "${decl}")
    if(NOT decl MATCHES "^SHELLFE_API (void|double|int32_t) ([A-Za-z_][A-Za-z0-9_]*) ?\\(([^()]*)\\) ?SHELLFE_NOEXCEPT ?$")
      list(APPEND errors "${header}: not in the form 'SHELLFE_API <ret> NAME(<params>) SHELLFE_NOEXCEPT;': ${decl}")
      continue()
    endif()
    set(ret "${CMAKE_MATCH_1}")
    set(r "${CMAKE_MATCH_2}")
    string(REGEX REPLACE " ?\\* ?" "* " params "${CMAKE_MATCH_3}")
    string(REGEX REPLACE " ?, ?" ";" params "${params}")
    string(STRIP "${params}" params)
    list(APPEND declared "${r}")
    if(NOT r IN_LIST SHELLFE_ROUTINES)
      list(APPEND errors "${r}: declared in the header but not described")
      continue()
    endif()
    if(NOT ret STREQUAL _SHELLFE_C_${SHELLFE_${r}_RETURNS})
      list(APPEND errors "${r}: the header returns ${ret}, the description ${_SHELLFE_C_${SHELLFE_${r}_RETURNS}}")
    endif()
    list(LENGTH params n)
    if(NOT n EQUAL SHELLFE_${r}_NARGS)
      list(APPEND errors "${r}: the header declares ${n} arguments, the description ${SHELLFE_${r}_NARGS}")
    endif()
    if(n GREATER SHELLFE_${r}_NARGS)
      set(n ${SHELLFE_${r}_NARGS})
    endif()
    foreach(pos RANGE 1 ${n})
      _shellfe_c_param(${r} ${pos} want)
      math(EXPR i "${pos} - 1")
      list(GET params ${i} have)
      if(NOT have STREQUAL want)
        list(APPEND errors "${r} argument ${pos} (${SHELLFE_${r}_${pos}_NAME}): the header declares '${have}', the description gives '${want}'")
      endif()
    endforeach()
  endforeach()
  foreach(r IN LISTS SHELLFE_ROUTINES)
    if(NOT r IN_LIST declared)
      list(APPEND errors "${r}: described but not declared in ${header}")
    endif()
  endforeach()
  set(errors "${errors}" PARENT_SCOPE)
endfunction()

# --- the API reference --------------------------------------------------------

# Text for a Markdown paragraph or table cell: '*' would start emphasis, '|'
# would end a cell.
function(_shellfe_md text out_var)
  string(REPLACE "*" "\\*" text "${text}")
  string(REPLACE "|" "\\|" text "${text}")
  set(${out_var} "${text}" PARENT_SCOPE)
endfunction()

# The API reference, Markdown, into `out_var`.
function(_shellfe_api_reference out_var)
  set(md [=[
# shellfe API reference

Generated from `src/frame/interface.json` by `cmake --build <build> --target api_docs`;
edit the description, not this file.

Every routine is exported under its upper-case name with C linkage, declared
in `include/shellfe.h`, and takes each argument by address. Integers are
32-bit signed; reals are 32-bit unless typed `double`. Arrays are
column-major and every dimension is indexed from 0: an array declared
`(0:L, 0:M)` holds `(L+1)*(M+1)` elements, element `(a, b)` lies at flat
position `a + b*(L+1)`, and the host passes `L`, the upper bound of the first
dimension, not the leading dimension `L+1`. Routines use indices from 1 and leave index 0
alone unless an argument says otherwise.

The extent of an array is the number of elements from its first element up
to and including the last one the routine may read or write, an expression
over the routine's integer arguments that holds for counts of at least 1;
arrays of fixed shape give the size the host must allocate. Nothing is
validated: the host allocates at least the extent, sizes and indices are its
responsibility, and counts of zero or less do no work. Intent `in` means
read only, `out` written and not read, `inout` both; an `ignored` slot is
never touched, and any address, NULL included, may be passed for it.
]=])
  foreach(family IN LISTS SHELLFE_FAMILIES)
    _shellfe_md("${SHELLFE_${family}_SUMMARY}" summary)
    string(APPEND md "\n## ${SHELLFE_${family}_TITLE}\n\n${summary}\n")
    foreach(r IN LISTS SHELLFE_ROUTINES)
      if(NOT SHELLFE_${r}_FAMILY STREQUAL family)
        continue()
      endif()
      # The prototype, wrapped before 90 columns under its first argument.
      set(line "${_SHELLFE_C_${SHELLFE_${r}_RETURNS}} ${r}(")
      string(LENGTH "${line}" indent)
      string(REPEAT " " ${indent} pad)
      set(prototype "")
      set(rows "")
      set(writes "")
      foreach(pos RANGE 1 ${SHELLFE_${r}_NARGS})
        set(p SHELLFE_${r}_${pos})
        _shellfe_c_param(${r} ${pos} decl)
        set(param "${decl},")
        if(pos EQUAL SHELLFE_${r}_NARGS)
          set(param "${decl});")
        endif()
        string(LENGTH "${line} ${param}" width)
        if(pos GREATER 1 AND width GREATER 90)
          string(APPEND prototype "${line}\n")
          set(line "${pad}")
        elseif(pos GREATER 1)
          string(APPEND line " ")
        endif()
        string(APPEND line "${param}")

        set(cell "")
        set(size "")
        _shellfe_md("${${p}_MEANING}" meaning)
        if(${p}_KIND STREQUAL "array")
          set(size "`${_SHELLFE_C_${${p}_TYPE}}[${${p}_EXTENT}]`")
          # A table cell ends at '|' even inside a code span, unless escaped.
          string(REPLACE "|" "\\|" cell " ${size}")
          set(size " (${size})")
          if(${p}_EXTENT STREQUAL "")
            _shellfe_md("${${p}_EXTENT_NOTE}" note)
            string(APPEND meaning ". Size: ${note}")
          endif()
        endif()
        string(REGEX REPLACE " [A-Za-z0-9_]+$" "" type "${decl}")
        string(APPEND rows "| ${pos} | `${${p}_NAME}` | `${type}` | ${${p}_INTENT} |${cell} | ${meaning} |\n")
        if(${p}_INTENT MATCHES "out")
          list(APPEND writes "`${${p}_NAME}`${size}")
        endif()
      endforeach()
      string(APPEND prototype "${line}")
      list(JOIN writes ", " writes)
      if(writes STREQUAL "")
        set(writes "nothing")
      endif()
      _shellfe_md("${SHELLFE_${r}_SUMMARY}" summary)
      string(APPEND md "\n### ${r}\n\n${summary}\n\n```c\n${prototype}\n```\n\n"
        "| # | Argument | Type | Intent | Extent | Meaning |\n| --- | --- | --- | --- | --- | --- |\n"
        "${rows}\nWrites: ${writes}.\n")
    endforeach()
  endforeach()
  set(${out_var} "${md}" PARENT_SCOPE)
endfunction()

# --- script mode --------------------------------------------------------------

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  shellfe_read_interface("${INTERFACE}")
  if(ACTION STREQUAL "check_header")
    set(errors "")
    _shellfe_check_description()
    _shellfe_check_header("${HEADER}" "${VERSION}")
    if(errors)
      list(JOIN errors "\n  " errors)
      message(FATAL_ERROR "${HEADER} and ${INTERFACE} disagree:\n  ${errors}")
    endif()
    list(LENGTH SHELLFE_ROUTINES n)
    message(STATUS "${HEADER} declares the ${n} described routines")
  elseif(ACTION STREQUAL "write_docs")
    _shellfe_api_reference(md)
    file(WRITE "${DOCS}" "${md}")
  elseif(ACTION STREQUAL "check_docs")
    _shellfe_api_reference(md)
    file(READ "${DOCS}" committed)
    string(REPLACE "\r" "" committed "${committed}")
    if(NOT committed STREQUAL md)
      message(FATAL_ERROR "${DOCS} is not what ${INTERFACE} gives; regenerate it with\n"
        "  cmake --build ${BUILD_DIR} --target api_docs\nand commit the result.")
    endif()
  else()
    message(FATAL_ERROR "ACTION must be check_header, write_docs or check_docs")
  endif()
endif()
