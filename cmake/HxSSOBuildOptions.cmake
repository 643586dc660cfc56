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
    target_compile_options(hxsso_build_options INTERFACE /W4 /permissive- /utf-8)
    # Of functions such as getenv, in whose place it has some of its own.
    target_compile_definitions(hxsso_build_options INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(hxsso_build_options INTERFACE -Wall -Wextra -Wpedantic)
endif()
if(MINGW)
    # The same inputs give the same bytes.
    target_link_options(hxsso_build_options INTERFACE LINKER:--no-insert-timestamp)
endif()
if(HXSSO_WARNINGS_AS_ERRORS)
    target_compile_options(hxsso_build_options INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
endif()

# With CMAKE_UNITY_BUILD: the sources of each folder are compiled as one, since most of
# the time goes into the headers that they share. A file can then clash with names of its
# own folder only. The preset linux compiles each by itself, which shows a missing include.
function(hxsso_compile_by_folder target)
    get_target_property(folder_of_target ${target} SOURCE_DIR)
    get_target_property(sources ${target} SOURCES)
    foreach(source ${sources})
        cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY ${folder_of_target} OUTPUT_VARIABLE path)
        cmake_path(GET path PARENT_PATH folder)
        string(MAKE_C_IDENTIFIER ${folder} group)
        set_source_files_properties(${path} TARGET_DIRECTORY ${target}
            PROPERTIES UNITY_GROUP ${group})
    endforeach()
    set_target_properties(${target} PROPERTIES UNITY_BUILD_MODE GROUP)
endfunction()

# By whoever sets the flags: a sanitizer, or counters of lines as well.
set(HXSSO_SANITIZED 0)
set(HXSSO_INSTRUMENTED 0)
if(CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    set(HXSSO_SANITIZED 1)
endif()
if(HXSSO_SANITIZED OR CMAKE_CXX_FLAGS MATCHES "--coverage")
    set(HXSSO_INSTRUMENTED 1)
endif()
include(HxSSOHardening)
