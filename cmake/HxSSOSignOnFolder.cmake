# The sign-on folder: what a host finds by the value Location, whole, with hxsso in it under the
# name that the library looks for, and the open plugin.

# Not where tests run: the library looks into the current directory.
configure_file(plugins/openid/SSOVersionCompatibility.config.in
    sign-on/SSOVersionCompatibility.config @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/sign-on/SSOVersionCompatibility.config DESTINATION ${sign_on_dir})
install(TARGETS HxSSOOpenID LIBRARY DESTINATION ${sign_on_dir})
install(FILES plugins/openid/HxSSOOpenID.json DESTINATION ${data_dir})

if(WIN32)
    # By itself it is an installation, which needs nothing beside it.
    install(TARGETS hxsso hxsso-doctor hxsso-plugin-loader HxSSOServices
        RUNTIME DESTINATION ${sign_on_dir})
    install(FILES tools/hxsso/SSOClient.config DESTINATION ${sign_on_dir})
    install(PROGRAMS ${runtime_dlls} DESTINATION ${sign_on_dir})
else()
    file(RELATIVE_PATH program
        ${CMAKE_INSTALL_PREFIX}/${sign_on_dir} ${CMAKE_INSTALL_FULL_BINDIR}/hxsso)
    install(CODE "file(CREATE_LINK ${program}
        \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${sign_on_dir}/HxSSO.exe\" SYMBOLIC)")
endif()
