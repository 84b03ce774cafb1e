# SPDX-License-Identifier: MIT
# The development files that describe the installed library: the pkg-config
# file and the CMake package. Both follow the prefix given at install time
# (`cmake --install <build> --prefix <staging>`, or a package's /usr), not
# the one configured.
include(CMakePackageConfigHelpers)

set(QVS_CMAKE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/qvs_utils)

# pkg-config: written when installing, with the prefix in force then.
install(CODE "
  set(PROJECT_VERSION \"${PROJECT_VERSION}\")
  set(CMAKE_INSTALL_LIBDIR \"${CMAKE_INSTALL_LIBDIR}\")
  set(CMAKE_INSTALL_INCLUDEDIR \"${CMAKE_INSTALL_INCLUDEDIR}\")
  configure_file(\"${CMAKE_SOURCE_DIR}/cmake/qvs_utils.pc.in\"
                 \"${CMAKE_BINARY_DIR}/install-pc/qvs_utils.pc\" @ONLY)
" COMPONENT development)
install(FILES ${CMAKE_BINARY_DIR}/install-pc/qvs_utils.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# CMake package: the imported target qvs_utils::qvs_utils, found relative to
# the package's own folder (relocatable). It names no platform libraries:
# the maker's libqv and liblog come with the firmware image's sysroot.
configure_package_config_file(${CMAKE_SOURCE_DIR}/cmake/qvs_utilsConfig.cmake.in
  ${CMAKE_BINARY_DIR}/qvs_utilsConfig.cmake INSTALL_DESTINATION ${QVS_CMAKE_DIR}
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/qvs_utilsConfigVersion.cmake
  VERSION ${PROJECT_VERSION} COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/qvs_utilsConfig.cmake ${CMAKE_BINARY_DIR}/qvs_utilsConfigVersion.cmake
  DESTINATION ${QVS_CMAKE_DIR} COMPONENT development)
