# Windows x86 from Linux: GCC of mingw-w64 with POSIX threads.
set(CMAKE_SYSTEM_PROCESSOR X86)
set(mingw_triplet i686-w64-mingw32)
set(mingw_platform windows-x86)
include("${CMAKE_CURRENT_LIST_DIR}/mingw.cmake")
