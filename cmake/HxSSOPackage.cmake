# What `cmake --install` and CPack deliver.

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/HxSSOServices)
set(data_dir ${CMAKE_INSTALL_DATADIR}/HxSSOServices)
set(license_dir ${data_dir}/licenses)
set(document_dir ${CMAKE_INSTALL_DATADIR}/doc/HxSSOServices)
# Where the system's loader does not look: on Windows at the top, so that it is seen in the ZIP.
set(sign_on_dir lib/HxSSO)
if(WIN32)
    set(sign_on_dir sign-on)
endif()

# --- Headers and library ----------------------------------------------------------

install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN *.h)
set_target_properties(HxSSOPluginHeaders PROPERTIES EXPORT_NAME Plugin)
install(TARGETS HxSSOServices HxSSOPluginHeaders EXPORT HxSSOServicesTargets)
install(DIRECTORY examples DESTINATION ${data_dir})
install(DIRECTORY docs/schemas DESTINATION ${data_dir})
install(FILES LICENSE DESTINATION ${license_dir} RENAME HxSSOServices.txt)

# --- Documents --------------------------------------------------------------------

# As they lie here, so that their links hold. On Windows the ZIP has them, at its top.
set(texts LICENSE README.md CHANGELOG.md CONTRIBUTING.md SECURITY.md)
if(NOT WIN32)
    install(FILES ${texts} DESTINATION ${document_dir})
    install(DIRECTORY docs DESTINATION ${document_dir}
        FILES_MATCHING PATTERN *.md PATTERN schemas EXCLUDE)
endif()

# As HTML, if the target `documents` was built.

find_program(HXSSO_DOXYGEN doxygen NO_CMAKE_FIND_ROOT_PATH)
mark_as_advanced(HXSSO_DOXYGEN)
if(HXSSO_DOXYGEN)
    file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
        "@INCLUDE = docs/Doxyfile\nOUTPUT_DIRECTORY = ${CMAKE_CURRENT_BINARY_DIR}/html\n")
    add_custom_target(documents
        COMMAND ${HXSSO_DOXYGEN} ${CMAKE_CURRENT_BINARY_DIR}/Doxyfile
        WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
    install(DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/html DESTINATION ${data_dir} OPTIONAL)
endif()

# --- For those who build against it -----------------------------------------------

include(CMakePackageConfigHelpers)
# A tree of other bits does not fit by its version, so that find_package goes on to the one
# beside it. The rest is looked at by HxSSOServicesConfig.cmake.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/HxSSOServicesConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
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
    # For the ZIP alone: a prefix is not this project's own.
    list(APPEND texts docs)
    list(TRANSFORM texts PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
    list(JOIN texts "\" \"" texts)
    file(CONFIGURE OUTPUT HxSSOPackageTexts.cmake @ONLY CONTENT
        "file(COPY \"@texts@\" DESTINATION \${CPACK_TEMPORARY_DIRECTORY} FILES_MATCHING PATTERN *.md PATTERN LICENSE PATTERN schemas EXCLUDE)\n")
    set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/HxSSOPackageTexts.cmake)
    if(MINGW)
        configure_file(cmake/HxSSOPackageFiles.cmake.in HxSSOPackageFiles.cmake @ONLY)
        list(APPEND CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_BINARY_DIR}/HxSSOPackageFiles.cmake)
    endif()
else()
    set(CPACK_GENERATOR TGZ) # debian/ makes Debian's packages
endif()
string(REGEX REPLACE "([][+.*()^$?|\\\\])" "\\\\\\1" root "${CMAKE_CURRENT_SOURCE_DIR}")
set(CPACK_SOURCE_IGNORE_FILES "^${root}/(build|[.]deps|[.]git|[.]cache)(/|$)" "[.]swp$" "~$")
set(CPACK_SOURCE_GENERATOR TGZ)
set(CPACK_SOURCE_PACKAGE_FILE_NAME HxSSOServices-${PROJECT_VERSION}-source)
include(CPack)
