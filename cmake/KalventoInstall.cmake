# What an outside project gets: the library, its headers with their folders, and two ways to find it, find_package and pkg-config.
include(CMakePackageConfigHelpers)

set(KALVENTO_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/KalventoIncludes")

install(TARGETS kalvento_core kalvento_provider_kit kalvento_contract_kit EXPORT KalventoIncludesTargets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}"
    RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kalvento"
    FILES_MATCHING PATTERN "*.h")
# The kits: providers over a store, and the contract of providers and consumers as tests.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/libs/provider_kit" "${PROJECT_SOURCE_DIR}/testkit/contract_kit"
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/kalvento" FILES_MATCHING PATTERN "*.h")
install(EXPORT KalventoIncludesTargets NAMESPACE KalventoIncludes:: DESTINATION "${KALVENTO_PACKAGE_DIR}")

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/KalventoIncludesConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/KalventoIncludesConfig.cmake" INSTALL_DESTINATION "${KALVENTO_PACKAGE_DIR}")
# Before 1.0 every minor version may change the interface.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/KalventoIncludesConfigVersion.cmake"
    COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/KalventoIncludesConfig.cmake"
    "${PROJECT_BINARY_DIR}/KalventoIncludesConfigVersion.cmake" "${CMAKE_CURRENT_LIST_DIR}/KalventoPlugins.cmake"
    DESTINATION "${KALVENTO_PACKAGE_DIR}")

# The file finds its prefix from its own place, so that an installed tree can be moved.
file(RELATIVE_PATH KALVENTO_PC_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${CMAKE_CURRENT_LIST_DIR}/kalvento-core.pc.in" "${PROJECT_BINARY_DIR}/kalvento-core.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/kalvento-core.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
