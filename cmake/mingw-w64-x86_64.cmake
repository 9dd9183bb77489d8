# Cross-compiles the Windows DLL and test executables with MinGW-w64
# (Debian: g++-mingw-w64-x86-64). Test executables run under Wine:
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(_triple x86_64-w64-mingw32)
# The posix thread model gives std::thread and std::mutex, which GoogleTest uses.
find_program(CMAKE_C_COMPILER NAMES ${_triple}-gcc-posix ${_triple}-gcc REQUIRED)
find_program(CMAKE_CXX_COMPILER NAMES ${_triple}-g++-posix ${_triple}-g++ REQUIRED)
find_program(CMAKE_RC_COMPILER NAMES ${_triple}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${_triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# ctest runs the Windows executables through Wine in a throw-away prefix.
find_program(SHELLFE_WINE NAMES wine64 PATHS /usr/lib/wine NO_DEFAULT_PATH)
if(NOT SHELLFE_WINE)
  find_program(SHELLFE_WINE NAMES wine64 wine)
endif()
if(SHELLFE_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR "${SHELLFE_WINE}")
endif()
