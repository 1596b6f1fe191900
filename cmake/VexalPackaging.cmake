# CPack's .deb files (scripts/package), one per install component:
#   libvexal-pym-client1     the shared library and, privately, the host kit it runs on
#   vexal-pym-tools          troxd, pymctl and the default configuration
#   libvexal-pym-client-dev  headers, test kit, CMake package, pkg-config files
# Tools are a package of their own so the library package holds only the library, as Debian's
# policy for library packages asks; dev depends on both, since the test kit spawns troxd.
set(VEXAL_PACKAGE_MAINTAINER "libvexal-pym-client maintainers <pym-client@vexal.example.org>"
  CACHE STRING "Maintainer field of the .deb files")

set(VEXAL_DEB_NAMES runtime libvexal-pym-client1 tools vexal-pym-tools dev libvexal-pym-client-dev)
# Every package carries its copyright and changelog, compressed as Debian wants (no timestamp).
set(changelog ${CMAKE_CURRENT_BINARY_DIR}/changelog.gz)
execute_process(COMMAND gzip -9nc ${CMAKE_CURRENT_SOURCE_DIR}/cmake/install/changelog
  OUTPUT_FILE ${changelog} COMMAND_ERROR_IS_FATAL ANY)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/cmake/install/changelog)
set(names ${VEXAL_DEB_NAMES})
while(names)
  list(POP_FRONT names component deb)
  install(FILES cmake/install/copyright ${changelog}
    DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${deb} COMPONENT ${component})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME ${deb})
endwhile()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME libvexal-pym-client)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT ${VEXAL_PACKAGE_MAINTAINER})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime tools dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# ldconfig through its trigger, as Debian wants, not from maintainer scripts.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_SOURCE_DIR}/cmake/install/triggers)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the binaries link (readelf -d; versions as dpkg-shlibdeps derives them).
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS
  "libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12), android-liblog (>= 1:29.0.6), android-libcutils (>= 1:29.0.6)")
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS
  "libvexal-pym-client1 (= ${PROJECT_VERSION}), libc6 (>= 2.34), libgcc-s1 (>= 3.0), libstdc++6 (>= 12), android-liblog (>= 1:29.0.6)")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS
  "libvexal-pym-client1 (= ${PROJECT_VERSION}), vexal-pym-tools (= ${PROJECT_VERSION}), android-liblog-dev, android-libcutils-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS "libgtest-dev, libgmock-dev")
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "client library of the vendor resource-control service\nLets vendor processes ask the resource-control binder service to raise,\nlimit or read CPU/GPU frequencies, core counts, bus boosts, task placement\nand thermal settings. This is the host build, with the binder kit it runs\non, for testing callers' code off-device.")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "reference resource-control service and command-line client\ntroxd serves the resource-control interface over the host binder kit's\nsockets; pymctl calls it through each of the client library's doors.")
set(CPACK_COMPONENT_DEV_DESCRIPTION
  "client library of the vendor resource-control service - development files\nHeaders, CMake package (find_package(VexalPymClient)) and pkg-config files,\nand the test kit: a fake service with scripted answers and recorded\nparcels, log capture and the embedded reference service.")
include(CPack)
