# Headers, the libraries, the data home, the command, and what a consumer finds them by.
include(CMakePackageConfigHelpers)

install(DIRECTORY include/dlxcomn DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(TARGETS dlxcomn dlxintl dlxunic EXPORT dlxcomn-targets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(DIRECTORY home/config home/locales home/charsets DESTINATION ${CMAKE_INSTALL_DATADIR}/dlxcomn/home)
install(DIRECTORY ${DATA_HOME}/charsets/unicode DESTINATION ${CMAKE_INSTALL_DATADIR}/dlxcomn/home/charsets)
install(TARGETS dlxcomn_command RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
set_target_properties(dlxcomn dlxintl dlxunic PROPERTIES INSTALL_RPATH "$ORIGIN")
file(RELATIVE_PATH BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
set_target_properties(dlxcomn_command PROPERTIES INSTALL_RPATH "$ORIGIN/${BIN_TO_LIB}")

set(PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/dlxcomn)
install(EXPORT dlxcomn-targets NAMESPACE dlxcomn:: DESTINATION ${PACKAGE_DIR})
configure_package_config_file(cmake/dlxcomnConfig.cmake.in ${CMAKE_BINARY_DIR}/dlxcomnConfig.cmake
    INSTALL_DESTINATION ${PACKAGE_DIR})
write_basic_package_version_file(${CMAKE_BINARY_DIR}/dlxcomnConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/dlxcomnConfig.cmake ${CMAKE_BINARY_DIR}/dlxcomnConfigVersion.cmake
    DESTINATION ${PACKAGE_DIR})

# Paths in the .pc file start from where it lies, so that an installed tree may be moved. How deep it lies
# depends on the library directory: lib, or lib/x86_64-linux-gnu.
set(PKGCONFIG_DIR ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH PKGCONFIG_TO_PREFIX ${PKGCONFIG_DIR} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH PKGCONFIG_TO_INCLUDE ${PKGCONFIG_DIR} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
configure_file(cmake/dlxcomn.pc.in ${CMAKE_BINARY_DIR}/dlxcomn.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/dlxcomn.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
