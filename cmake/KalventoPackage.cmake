# A Debian package of the library, the tool and the plug-ins: `cpack` in the build folder.
#
# It lies in a folder of its own, since the program finds everything from the folder above that of its executable. Nobody
# writes there: each user's files are in a folder of that user's (platform/ProgramTree.h).
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kalvento)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "KalventoIncludes maintainers <maintainers@kalvento.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Market data: candles, histories, live views in a terminal, and the library behind them")
set(CPACK_PACKAGE_DESCRIPTION
    "Folds ticks and short candles into longer candles, live or over a whole history, adjusts histories, and shows
instruments of a folder of files or of a PostgreSQL database in a terminal. Holds as well what plug-ins and programs of
one's own are built with: headers, libraries, a CMake package and a pkg-config file, below /usr/lib/kalvento.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr/lib/kalvento)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/debian/ArrangePackage.cmake")
set(CPACK_KALVENTO_DEBIAN "${CMAKE_CURRENT_LIST_DIR}/debian") # for that script, with the next
set(CPACK_KALVENTO_CHANGES "${PROJECT_SOURCE_DIR}/CHANGELOG.md")
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Our own library is found beside the programs that need it, also while the package is made.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
# Zones come from the system's files, which no library names.
set(CPACK_DEBIAN_PACKAGE_DEPENDS tzdata)
# What building a plug-in needs, and a server for those who keep more than files.
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "cmake, g++, libboost1.81-dev, libgtest-dev, postgresql")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
