# What the two Windows toolchain files share. Everything is computed from where
# this file lies, so that it also holds inside try_compile, which passes on the
# toolchain file but no variables.
#
# Needs mingw_triplet and mingw_platform from the including file.

get_filename_component(mingw_repository "${CMAKE_CURRENT_LIST_DIR}/../.." ABSOLUTE)
set(mingw_libraries "${mingw_repository}/.deps/${mingw_platform}")

set(CMAKE_SYSTEM_NAME Windows)

# The -posix compilers: std::thread and std::mutex need them.
set(CMAKE_C_COMPILER ${mingw_triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw_triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw_triplet}-windres)

# Libraries come from the folder that scripts/setup fills, or from the compiler's
# own; programs are those of the machine that builds. A path outside that is
# named in full (add_subdirectory(/usr/src/googletest)) is not affected.
set(CMAKE_FIND_ROOT_PATH "${mingw_libraries}" "/usr/${mingw_triplet}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Otherwise pkg-config answers with the libraries of the machine that builds.
set(ENV{PKG_CONFIG_LIBDIR} "${mingw_libraries}/lib/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")

# How CMake and CTest run what they build.
set(CMAKE_CROSSCOMPILING_EMULATOR "${mingw_repository}/scripts/wine")
