# What `cmake --install` and CPack deliver.

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/HxSSOServices)
set(data_dir ${CMAKE_INSTALL_DATADIR}/HxSSOServices)
set(license_dir ${data_dir}/licenses)

# --- Headers and library ----------------------------------------------------------

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)
set_target_properties(HxSSOPluginHeaders PROPERTIES EXPORT_NAME Plugin)
install(TARGETS HxSSOServices HxSSOPluginHeaders EXPORT HxSSOServicesTargets)
install(DIRECTORY examples DESTINATION ${data_dir})
install(DIRECTORY docs/schemas DESTINATION ${data_dir})
install(FILES LICENSE DESTINATION ${license_dir} RENAME HxSSOServices.txt)

# --- For those who build against it -----------------------------------------------

include(CMakePackageConfigHelpers)
# The processor is looked at with the rest, by HxSSOServicesConfig.cmake.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/HxSSOServicesConfigVersion.cmake
    COMPATIBILITY SameMajorVersion ARCH_INDEPENDENT)
math(EXPR hxsso_bits "8 * ${CMAKE_SIZEOF_VOID_P}")
string(TOLOWER "${CMAKE_SYSTEM_PROCESSOR}" hxsso_processor)
string(REPLACE amd64 x86_64 hxsso_processor "${hxsso_processor}")
configure_file(cmake/HxSSOServicesConfig.cmake.in HxSSOServicesConfig.cmake @ONLY)
install(EXPORT HxSSOServicesTargets NAMESPACE HxSSOServices:: DESTINATION ${package_dir})
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/HxSSOServicesConfig.cmake
    cmake/HxSSOPlugin.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/HxSSOServicesConfigVersion.cmake
    DESTINATION ${package_dir})

# Relative, so that the tree may be moved.
set(pkgconfig_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_prefix ${pkgconfig_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_libdir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_LIBDIR})
file(RELATIVE_PATH pc_includedir ${CMAKE_INSTALL_PREFIX} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/HxSSOServices.pc.in HxSSOServices.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/HxSSOServices.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# --- What lies beside the DLL, and its licences -----------------------------------

if(MINGW)
    # jsoncpp's folder, as scripts/setup fills it, holds the compiler's runtime too.
    get_target_property(jsoncpp_dll jsoncpp_lib LOCATION)
    cmake_path(GET jsoncpp_dll PARENT_PATH runtime_dir)
    file(GLOB runtime_dlls ${runtime_dir}/*.dll)
    install(PROGRAMS ${runtime_dlls} DESTINATION ${CMAKE_INSTALL_BINDIR})

    # Boost is inside the library.
    install(FILES ${runtime_dir}/../share/licenses/boost.txt ${runtime_dir}/../share/licenses/jsoncpp.txt
        DESTINATION ${license_dir})
    set(debian x86-64)
    if(CMAKE_SIZEOF_VOID_P EQUAL 4)
        set(debian i686)
    endif()
    install(FILES /usr/share/doc/gcc-mingw-w64-${debian}-posix-runtime/copyright
        DESTINATION ${license_dir} RENAME gcc-runtime.txt)
    install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${license_dir} RENAME GPL-3.txt)
    install(FILES /usr/share/doc/mingw-w64-${debian}-dev/copyright
        DESTINATION ${license_dir} RENAME winpthreads.txt)
endif()

# --- CPack ------------------------------------------------------------------------

if(NOT PROJECT_IS_TOP_LEVEL)
    return()
endif()

set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION}) # with its fourth part
set(CPACK_PACKAGE_VENDOR "HxSSOServices developers")
set(CPACK_PACKAGE_CONTACT "HxSSOServices developers <hxssoservices@invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_RESOURCE_FILE_LICENSE ${CMAKE_CURRENT_SOURCE_DIR}/LICENSE)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_STRIP_FILES ON)
if(WIN32)
    set(CPACK_GENERATOR ZIP)
    math(EXPR bits "${CMAKE_SIZEOF_VOID_P} * 8")
    string(REPLACE 32 86 bits ${bits})
    set(CPACK_PACKAGE_FILE_NAME HxSSOServices-${PROJECT_VERSION}-windows-x${bits})
else()
    set(CPACK_GENERATOR DEB)
    set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
    set(CPACK_DEBIAN_PACKAGE_NAME hxssoservices)
    set(CPACK_DEBIAN_PACKAGE_SECTION libdevel)
    # With it comes the call that makes the system know the new library.
    set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
    find_program(HXSSO_DPKG_SHLIBDEPS dpkg-shlibdeps)
    mark_as_advanced(HXSSO_DPKG_SHLIBDEPS)
    if(HXSSO_DPKG_SHLIBDEPS)
        set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
    endif()
    install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/hxssoservices RENAME copyright)
endif()
include(CPack)
