# Windows x64 from Linux: GCC of mingw-w64 with POSIX threads.
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(mingw_triplet x86_64-w64-mingw32)
set(mingw_platform windows-x64)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
