# What makes an error in memory harder to use, in builds that are shipped: not
# without optimisation, which some of it needs, nor under a sanitizer or coverage,
# which have their own ways. tests/hardening looks at what comes of it.

get_property(several_configurations GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
set(HXSSO_HARDENED OFF)
if((several_configurations OR CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
    AND NOT HXSSO_INSTRUMENTED)
    set(HXSSO_HARDENED ON)
endif()

# Programs at addresses of the system's choice, as libraries are anyway.
if(NOT WIN32)
    include(CheckPIESupported)
    check_pie_supported(LANGUAGES CXX)
endif()

if(NOT HXSSO_HARDENED)
    return()
endif()

if(MSVC)
    set(release $<NOT:$<CONFIG:Debug>>)
    target_compile_options(hxsso_build_options INTERFACE /sdl $<${release}:/guard:cf>)
    target_link_options(hxsso_build_options INTERFACE
        /DYNAMICBASE /NXCOMPAT $<${release}:/guard:cf>)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        target_link_options(hxsso_build_options INTERFACE /HIGHENTROPYVA)
    endif()
    if(NOT CMAKE_CXX_COMPILER_ARCHITECTURE_ID MATCHES "ARM")
        target_link_options(hxsso_build_options INTERFACE $<${release}:/CETCOMPAT>)
    endif()
    return()
endif()

# The distribution's compiler may define the level itself, to another value.
target_compile_options(hxsso_build_options INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)

if(WIN32)
    # Stacks are probed anyway, and a PE file has no mark for -fcf-protection.
    target_link_options(hxsso_build_options INTERFACE
        LINKER:--dynamicbase LINKER:--nxcompat)
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        target_link_options(hxsso_build_options INTERFACE LINKER:--high-entropy-va)
    endif()
    # The guard's runtime goes into each module: otherwise one more DLL would have
    # to lie beside the library.
    execute_process(COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=libssp.a
        OUTPUT_VARIABLE guard_runtime OUTPUT_STRIP_TRAILING_WHITESPACE)
    target_link_libraries(hxsso_build_options INTERFACE ${guard_runtime})
else()
    include(CheckCXXCompilerFlag)
    foreach(flag -fstack-clash-protection -fcf-protection)
        string(MAKE_C_IDENTIFIER HXSSO_HAS${flag} known)
        check_cxx_compiler_flag(${flag} ${known})
        if(${known})
            target_compile_options(hxsso_build_options INTERFACE ${flag})
        endif()
    endforeach()
    target_link_options(hxsso_build_options INTERFACE
        LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()
