# The interface description, src/frame/interface.json, is the one place that
# lists the exported routines with their arguments in order: type, scalar or
# array, intent, and the extent of every array. Everything else that names
# the routines derives from it or is checked against it.
#
# Included by the build: shellfe_interface() writes the linker inputs that
# restrict the shared library to the described routines.
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

# --- the build ----------------------------------------------------------------

# Writes into out_dir the two linker inputs that let exactly the described
# routines out of the library, and the names for the tests:
#   shellfe.map        GNU ld version script (Linux)
#   shellfe.def        module-definition file (Windows DLL)
#   export_names.inc   the names as C string literals
function(shellfe_interface description out_dir)
  shellfe_read_interface("${description}")
  set(map "{\n  global:\n")
  set(def "LIBRARY shellfe\nEXPORTS\n")
  set(inc "")
  foreach(name IN LISTS SHELLFE_ROUTINES)
    string(APPEND map "    ${name};\n")
    string(APPEND def "    ${name}\n")
    string(APPEND inc "\"${name}\",\n")
  endforeach()
  string(APPEND map "  local:\n    *;\n};\n")
  file(CONFIGURE OUTPUT "${out_dir}/shellfe.map" CONTENT "${map}")
  file(CONFIGURE OUTPUT "${out_dir}/shellfe.def" CONTENT "${def}")
  file(CONFIGURE OUTPUT "${out_dir}/export_names.inc" CONTENT "${inc}")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${description}")
endfunction()
