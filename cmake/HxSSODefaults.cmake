# What holds where whoever configures says nothing: for those who come without a preset.

get_property(several_configurations GLOBAL PROPERTY GENERATOR_IS_MULTI_CONFIG)
if(NOT several_configurations AND NOT CMAKE_BUILD_TYPE)
    set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Debug, Release, RelWithDebInfo" FORCE)
    message(STATUS "CMAKE_BUILD_TYPE is not given: ${CMAKE_BUILD_TYPE}")
endif()

# Whoever asks for the tests gets them or an error.
if(NOT DEFINED HXSSO_BUILD_TESTS)
    if(MINGW)
        set(packages googletest)
        find_path(GOOGLETEST_SOURCE_DIR googletest/CMakeLists.txt
            PATHS /usr/src/googletest NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)
    else()
        set(packages "libgtest-dev and libgmock-dev")
        find_package(GTest QUIET)
    endif()
    if(NOT GOOGLETEST_SOURCE_DIR AND NOT TARGET GTest::gmock)
        message(STATUS "GoogleTest with GoogleMock is not installed, so the tests are not built. To have "
            "them, install it (on Debian ${packages}) and set HXSSO_BUILD_TESTS to ON")
        set(HXSSO_BUILD_TESTS OFF CACHE BOOL "Build the tests")
    endif()
endif()
