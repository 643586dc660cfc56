# What holds where whoever configures says nothing: for those who come without a preset.

get_property(several_configurations GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(NOT several_configurations AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo" FORCE)
    message(STATUS "CMAKE_BUILD_TYPE is not given: ${CMAKE_BUILD_TYPE}")
endif()

# Whoever asks for the tests gets them or an error.
if(NOT DEFINED HXSSO_BUILD_TESTS AND NOT MINGW)
    find_package(GTest QUIET)
    if(NOT GTest_FOUND)
        message(STATUS "GoogleTest is not installed, so the tests are not built. To have them, "
            "install it (on Debian libgtest-dev and libgmock-dev) and set HXSSO_BUILD_TESTS to ON")
        set(HXSSO_BUILD_TESTS OFF CACHE BOOL "Build the tests")
    endif()
endif()
