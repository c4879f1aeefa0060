# kalvento_add_plugin(NAME SOURCES... [LIBRARIES ...]): a plug-in, a shared object that the host loads by its path. It is
# built into the folder KALVENTO_PLUGIN_DIR and installed into `plugins`, beside the folder of the program.
#
# Serves this tree and, through the package, projects outside of it.
if(NOT DEFINED KALVENTO_PLUGIN_DIR)
    set(KALVENTO_PLUGIN_DIR "${CMAKE_CURRENT_BINARY_DIR}/plugins")
endif()

function(kalvento_add_plugin name)
    cmake_parse_arguments(arg "" "" "LIBRARIES" ${ARGN})
    add_library(${name} MODULE ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PRIVATE KalventoIncludes::Core ${arg_LIBRARIES})
    if(TARGET kalvento_warnings) # in this tree
        target_link_libraries(${name} PRIVATE kalvento_warnings)
        target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}/plugins")
    endif()
    set_target_properties(${name} PROPERTIES PREFIX "" LIBRARY_OUTPUT_DIRECTORY "${KALVENTO_PLUGIN_DIR}"
        CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    # A unique symbol, such as the table of a standard template, could keep the plug-in loaded until the process ends.
    target_compile_options(${name} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
    # What no library of the plug-in has is found here and not at its loading. A sanitizer's part comes with the program.
    if(NOT KALVENTO_SANITIZE)
        target_link_options(${name} PRIVATE -Wl,--no-undefined)
    endif()
    install(TARGETS ${name} LIBRARY DESTINATION plugins)
endfunction()
