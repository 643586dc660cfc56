# hxsso_add_plugin(<target> <sources>...)
#
# Makes a client plugin: a module without a prefix that exports the factory
# procedure under the name that the library looks for. The sources define
# GetSSOClientFactory as plugin/ISSOClientFactory.h declares it. The library, which has
# loaded the plugin anyway, is linked if the sources use its classes.

include(CheckLinkerFlag)

function(hxsso_add_plugin target)
    set(factory_export
        "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ")
    add_library(${target} MODULE ${ARGN})
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_link_libraries(${target} PRIVATE HxSSOServices::Plugin HxSSOServices::HxSSOServices)
    if(WIN32)
        # By a file: generators do not agree on how a dollar sign gets into an option.
        set(definition ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
        if(MSVC)
            set(export "${factory_export}")
        else()
            # GCC decorates the name its own way: the export carries the other one.
            set(export "\"${factory_export}\"=_Z19GetSSOClientFactoryv")
        endif()
        file(CONFIGURE OUTPUT ${definition} CONTENT "EXPORTS\n    @export@\n" @ONLY)
        target_sources(${target} PRIVATE ${definition})
    else()
        # The declaration in the header says nothing about visibility.
        set_target_properties(${target} PROPERTIES
            CXX_VISIBILITY_PRESET default
            BUILD_RPATH_USE_ORIGIN ON
            INSTALL_RPATH "$ORIGIN")
        target_link_options(${target} PRIVATE LINKER:--as-needed)
        # A factory procedure that nobody has defined is told by the linker, as on Windows.
        check_linker_flag(CXX LINKER:--require-defined=main HXSSO_LINKER_REQUIRES_SYMBOLS)
        if(HXSSO_LINKER_REQUIRES_SYMBOLS)
            target_link_options(${target} PRIVATE LINKER:--require-defined=_Z19GetSSOClientFactoryv)
        endif()
        # What is missing is told here and not when the library loads the plugin. Clang's
        # sanitizers are found in the program only.
        string(TOUPPER "${CMAKE_BUILD_TYPE}" configuration)
        get_directory_property(options COMPILE_OPTIONS)
        set(options "${options} ${CMAKE_CXX_FLAGS} ${CMAKE_CXX_FLAGS_${configuration}} ${CMAKE_MODULE_LINKER_FLAGS}")
        if(NOT (CMAKE_CXX_COMPILER_ID MATCHES "Clang" AND options MATCHES "-fsanitize"))
            target_link_options(${target} PRIVATE LINKER:-z,defs)
        endif()
        # At the end of the folder's list: the property may yet be changed.
        cmake_language(EVAL CODE "cmake_language(DEFER CALL hxsso_check_run_path [[${target}]])")
    endif()
endfunction()

function(hxsso_check_run_path target)
    get_target_property(run_path ${target} INSTALL_RPATH)
    if(CMAKE_SKIP_RPATH OR CMAKE_SKIP_INSTALL_RPATH OR NOT "$ORIGIN" IN_LIST run_path)
        message(WARNING "${target} is installed without the run path $ORIGIN: "
            "the system will not find modules that lie beside the plugin")
    endif()
endfunction()
