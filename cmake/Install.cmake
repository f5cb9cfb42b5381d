# Installs the library, its headers under one project folder (so that the
# short folder names cannot collide with other packages), a CMake package
# giving zorv2::lbx, and a pkg-config file.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

# Consumers include through the folders ("archive/File.h") or the umbrella
# header: only the project folder is on their path, so that short class
# names such as Font.h or Text.h never shadow another package's headers.
set(ZORV2_LBX_INCLUDE_ROOT ${CMAKE_INSTALL_INCLUDEDIR}/zorv2-lbx)
target_include_directories(zorv2-lbx PUBLIC $<INSTALL_INTERFACE:${ZORV2_LBX_INCLUDE_ROOT}>)

install(TARGETS zorv2-lbx EXPORT zorv2-lbx-targets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# PixelLayout.h is the library's own: no installed header includes it.
install(DIRECTORY ${ZORV2_LBX_FOLDERS} DESTINATION ${ZORV2_LBX_INCLUDE_ROOT}
    FILES_MATCHING PATTERN "*.h" PATTERN "PixelLayout.h" EXCLUDE)
install(FILES Lbx.h DESTINATION ${ZORV2_LBX_INCLUDE_ROOT})

set(ZORV2_LBX_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/zorv2-lbx)
install(EXPORT zorv2-lbx-targets NAMESPACE zorv2:: DESTINATION ${ZORV2_LBX_CMAKE_DIR})
configure_package_config_file(cmake/zorv2-lbx-config.cmake.in
    ${PROJECT_BINARY_DIR}/zorv2-lbx-config.cmake INSTALL_DESTINATION ${ZORV2_LBX_CMAKE_DIR})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zorv2-lbx-config-version.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zorv2-lbx-config.cmake ${PROJECT_BINARY_DIR}/zorv2-lbx-config-version.cmake
    DESTINATION ${ZORV2_LBX_CMAKE_DIR})

# The pkg-config file finds the prefix from its own place, so that an install
# with --prefix or DESTDIR stays usable.
file(RELATIVE_PATH ZORV2_LBX_PC_TO_PREFIX /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/zorv2-lbx.pc.in ${PROJECT_BINARY_DIR}/zorv2-lbx.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zorv2-lbx.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
