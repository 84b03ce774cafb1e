# SPDX-License-Identifier: MIT
# Debian packages with CPack (`make package`): the runtime package holds the
# .so.1 and its soname link, the development package the headers, the .so
# link, the section 3 manual pages, the pkg-config file and the CMake
# package. qvsctl, qvstore and the simulated platform are never packaged.
if(CMAKE_CROSSCOMPILING)
  set(QVS_DEB_ARCH armhf)
else()
  execute_process(COMMAND dpkg --print-architecture OUTPUT_VARIABLE QVS_DEB_ARCH
                  OUTPUT_STRIP_TRAILING_WHITESPACE)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qvs-utils)
set(CPACK_PACKAGE_VENDOR "qvs_utils maintainers")
set(CPACK_PACKAGE_CONTACT "qvs_utils maintainers <qvs-utils@example.com>")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE ${QVS_DEB_ARCH})
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${CPACK_PACKAGE_CONTACT}")
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# Runtime: named after the soname (libqvs_utils.so.1 -> libqvs-utils1).
# Its only Debian dependency is the C library, worked out by dpkg-shlibdeps
# from the built object when the packages are made (cpack-config.cmake); the
# maker's libqv and liblog are part of the firmware image, not packages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqvs-utils1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/cpack-config.cmake
  INPUT ${CMAKE_SOURCE_DIR}/cmake/cpack-config.cmake.in)
set(CPACK_PROJECT_CONFIG_FILE ${CMAKE_BINARY_DIR}/cpack-config.cmake)
# The SBOMs (CycloneDX JSON) of both packages, made from the staged files
# before the packages are built, go into the -dev package.
configure_file(${CMAKE_SOURCE_DIR}/cmake/sbom-prebuild.cmake.in ${CMAKE_BINARY_DIR}/sbom-prebuild.cmake.gen @ONLY)
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/sbom-prebuild.cmake INPUT ${CMAKE_BINARY_DIR}/sbom-prebuild.cmake.gen)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_BINARY_DIR}/sbom-prebuild.cmake)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS_POLICY ">=")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "home gateway shared utility library
libqvs_utils is the shared utility library of a PON home gateway: SSID
numbering, timer rules, alarms, traffic steering lists, VPN account
retrieval, Base64 codecs, operator features and system facts, behind a
plain C interface. It works through the platform's configuration store
(libqv), Linux tools and small state files.
.
This package holds the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqvs-utils-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libqvs-utils1 (= ${PROJECT_VERSION}-1)")
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "home gateway shared utility library (development files)
libqvs_utils is the shared utility library of a PON home gateway: SSID
numbering, timer rules, alarms, traffic steering lists, VPN account
retrieval, Base64 codecs, operator features and system facts, behind a
plain C interface.
.
This package holds the headers, a manual page for every function, the
pkg-config file and the CMake package (find_package(qvs_utils CONFIG),
target qvs_utils::qvs_utils).")

# Copyright and changelog in each package's documentation folder.
foreach(comp runtime development)
  if(comp STREQUAL runtime)
    set(pkg libqvs-utils1)
  else()
    set(pkg libqvs-utils-dev)
  endif()
  install(FILES ${CMAKE_SOURCE_DIR}/packaging/copyright
    DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${pkg} COMPONENT ${comp})
  set(log ${CMAKE_BINARY_DIR}/packaging/${pkg}/changelog.Debian)
  configure_file(${CMAKE_SOURCE_DIR}/packaging/changelog.Debian.in ${log} @ONLY)
  add_custom_command(OUTPUT ${log}.gz
    COMMAND gzip -9nf -c ${log} > ${log}.gz
    DEPENDS ${log})
  add_custom_target(qvs_changelog_${comp} ALL DEPENDS ${log}.gz)
  install(FILES ${log}.gz DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/doc/${pkg} COMPONENT ${comp})
endforeach()

include(CPack)
