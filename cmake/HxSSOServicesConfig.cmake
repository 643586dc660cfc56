# The public headers need nothing but the standard library. Who calls the JSON
# functions of SSOServicesPrivate.h finds jsoncpp besides.
include(${CMAKE_CURRENT_LIST_DIR}/HxSSOServicesTargets.cmake)
include(${CMAKE_CURRENT_LIST_DIR}/HxSSOPlugin.cmake)
