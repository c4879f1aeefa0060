# A Debian package of the library, the tool and the plug-ins: `cpack` in the build folder.
#
# It lies in a folder of its own, since the program finds everything from the folder above that of its executable, and the
# parts of that folder that are written lie where a system keeps what varies.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kalvento)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "KalventoIncludes maintainers <maintainers@kalvento.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Market data: candles, histories, live views in a terminal, and the library behind them")
set(CPACK_PACKAGING_INSTALL_PREFIX /opt/kalvento)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Our own library is found beside the programs that need it, also while the package is made.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
# Zones come from the system's files, which no library names.
set(CPACK_DEBIAN_PACKAGE_DEPENDS tzdata)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${CMAKE_CURRENT_LIST_DIR}/debian/postinst" "${CMAKE_CURRENT_LIST_DIR}/debian/prerm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
