# kalvento_add_plugin(NAME SOURCES... [LIBRARIES ...]): a plug-in, a shared object that the host loads by its path.
#
# In the build tree all plug-ins lie where the tool looks for them: in the folder `plugins` beside the tool's own folder.
set(KALVENTO_PLUGIN_DIR "${PROJECT_BINARY_DIR}/apps/plugins")

function(kalvento_add_plugin name)
    cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE KalventoIncludes::Core kalvento_warnings ${arg_LIBRARIES})
    target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/plugins")
    # A symbol that no library of the plug-in has is found here, not at its loading.
    target_link_options(${name} PRIVATE $<$<NOT:$<BOOL:${KALVENTO_SANITIZE}>>:-Wl,--no-undefined>)
    set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${KALVENTO_PLUGIN_DIR}")
endfunction()
