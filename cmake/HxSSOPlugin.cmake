# hxsso_add_plugin(<target> <sources>...)
#
# Makes a client plugin: a module without a prefix that exports the factory
# procedure under the name that the library looks for. The sources define
# GetSSOClientFactory as plugin/ISSOClientFactory.h declares it.

function(hxsso_add_plugin target)
    set(factory_export
        "?GetSSOClientFactory@@YA?AV?$shared_ptr@VISSOClientFactory@SSOServices@Halvorix@@@std@@XZ")
    add_library(${target} MODULE ${ARGN})
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_link_libraries(${target} PRIVATE HxSSOServices::Plugin)
    if(WIN32)
        # By a file: generators do not agree on how a dollar sign gets into an option.
        set(definition ${CMAKE_CURRENT_BINARY_DIR}/${target}.def)
        if(MSVC)
            set(export "${factory_export}")
        else()
            # GCC decorates the name its own way: the export carries the other one.
            set(export "\"${factory_export}\"=_Z19GetSSOClientFactoryv")
        endif()
        file(WRITE ${definition} "EXPORTS\n    ${export}\n")
        target_sources(${target} PRIVATE ${definition})
    else()
        # The declaration in the header says nothing about visibility.
        set_target_properties(${target} PROPERTIES
            CXX_VISIBILITY_PRESET default
            BUILD_RPATH_USE_ORIGIN ON
            INSTALL_RPATH "$ORIGIN")
    endif()
endfunction()
