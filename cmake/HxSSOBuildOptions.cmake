# What every target of this project is compiled with.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
    # Executables and modules side by side, so that they run from the build tree.
    set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
    set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/bin)
endif()

add_library(hxsso_build_options INTERFACE)
if(MSVC)
    target_compile_options(hxsso_build_options INTERFACE /W4 /WX /permissive- /utf-8)
else()
    target_compile_options(hxsso_build_options INTERFACE -Wall -Wextra -Wpedantic -Werror)
endif()
include(HxSSOHardening)
