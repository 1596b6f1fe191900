# What `cmake --install` puts where (GNU install dirs), in three components that scripts/package
# turns into .deb files: runtime (the shared libraries), tools (troxd, pymctl, the default
# configuration) and dev (headers, the test kit, the CMake package and pkg-config files).
#
# The host binder kit and the interface backend stand in for platform libraries and keep their
# Android names (libbinder_ndk.so, ...), so they live in a private directory, not on the system's
# library path; whatever links them finds them through its RUNPATH.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(VEXAL_PRIVATE_LIBDIR ${CMAKE_INSTALL_LIBDIR}/vexal-pym-client)
set(VEXAL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/vexal-pym-client)
set(VEXAL_DATADIR ${CMAKE_INSTALL_DATADIR}/vexal-pym-client)
set(VEXAL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/VexalPymClient)
file(RELATIVE_PATH VEXAL_BIN_TO_LIB /${CMAKE_INSTALL_BINDIR} /${CMAKE_INSTALL_LIBDIR})

set_target_properties(vexal-pym-client PROPERTIES EXPORT_NAME client
  INSTALL_RPATH "$ORIGIN/vexal-pym-client;${VEXAL_ANDROID_LIBDIR}")
set_target_properties(binder_ndk binder vendor.vexal.hardware.trox-V1-ndk PROPERTIES
  INSTALL_RPATH "$ORIGIN;${VEXAL_ANDROID_LIBDIR}")
set_target_properties(troxd pymctl PROPERTIES
  INSTALL_RPATH "$ORIGIN/${VEXAL_BIN_TO_LIB};$ORIGIN/${VEXAL_BIN_TO_LIB}/vexal-pym-client;${VEXAL_ANDROID_LIBDIR}")
set_target_properties(vendor.vexal.hardware.trox-V1-ndk PROPERTIES EXPORT_NAME interface)

install(TARGETS vexal-pym-client EXPORT VexalPymClientTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev
  INCLUDES DESTINATION ${VEXAL_INCLUDEDIR} ${VEXAL_INCLUDEDIR}/host)
install(TARGETS binder_ndk binder vendor.vexal.hardware.trox-V1-ndk EXPORT VexalPymClientTargets
  LIBRARY DESTINATION ${VEXAL_PRIVATE_LIBDIR} COMPONENT runtime
  INCLUDES DESTINATION ${VEXAL_INCLUDEDIR}/host)
install(TARGETS troxd pymctl EXPORT VexalPymClientTargets
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES sim/config/default.json DESTINATION ${VEXAL_DATADIR} COMPONENT tools)

install(DIRECTORY common/include/ pym/include/ wrapper/include/ client/include/
  DESTINATION ${VEXAL_INCLUDEDIR} COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(DIRECTORY host/binder/include/ host/trox/include/
  DESTINATION ${VEXAL_INCLUDEDIR}/host COMPONENT dev FILES_MATCHING PATTERN "*.h")
install(EXPORT VexalPymClientTargets NAMESPACE VexalPymClient:: DESTINATION ${VEXAL_CMAKEDIR}
  COMPONENT dev)

# The test kit, for callers' tests: the fake service, log capture, child processes and the
# embedded reference service (trox_sim), behind one target; its GoogleTest main on its own, so
# that a caller without GoogleTest can still find the package.
if(TARGET vexal_test_kit)
  add_library(vexal_testkit INTERFACE)
  target_link_libraries(vexal_testkit INTERFACE vexal_test_kit trox_sim vexal-pym-client)
  set_target_properties(vexal_testkit PROPERTIES EXPORT_NAME testkit)
  set_target_properties(vexal_test_main PROPERTIES EXPORT_NAME testkit_main)
  install(TARGETS vexal_testkit vexal_test_kit trox_sim EXPORT VexalPymClientTestkitTargets
    ARCHIVE DESTINATION ${VEXAL_PRIVATE_LIBDIR} COMPONENT dev
    INCLUDES DESTINATION ${VEXAL_INCLUDEDIR}/testkit)
  # A GoogleTest built from source here is not installed, so its main cannot be either.
  set(sets Testkit)
  if(NOT VEXAL_GTEST_FROM_SOURCE)
    install(TARGETS vexal_test_main EXPORT VexalPymClientTestMainTargets
      ARCHIVE DESTINATION ${VEXAL_PRIVATE_LIBDIR} COMPONENT dev)
    list(APPEND sets TestMain)
  endif()
  install(FILES tests/kit/FakeTrox.h tests/kit/FakeTroxService.h tests/kit/LogCapture.h
                tests/kit/ChildProcess.h tests/kit/RecordingCallback.h
    DESTINATION ${VEXAL_INCLUDEDIR}/testkit COMPONENT dev)
  install(DIRECTORY sim/include/ DESTINATION ${VEXAL_INCLUDEDIR}/testkit COMPONENT dev)
  foreach(set ${sets})
    install(EXPORT VexalPymClient${set}Targets NAMESPACE VexalPymClient:: DESTINATION ${VEXAL_CMAKEDIR}
      COMPONENT dev)
  endforeach()
endif()

configure_package_config_file(cmake/install/VexalPymClientConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/VexalPymClientConfig.cmake
  INSTALL_DESTINATION ${VEXAL_CMAKEDIR} PATH_VARS VEXAL_DATADIR)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VexalPymClientConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VexalPymClientConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VexalPymClientConfigVersion.cmake
              cmake/AndroidHostLibs.cmake
  DESTINATION ${VEXAL_CMAKEDIR} COMPONENT dev)

# pkg-config files name absolute paths, so they are written when the prefix is known: at install.
foreach(pc vexal-pym-client vexal-pym-testkit)
  install(CODE "
    set(VEXAL_PC_PREFIX \"\${CMAKE_INSTALL_PREFIX}\")
    set(CMAKE_INSTALL_LIBDIR ${CMAKE_INSTALL_LIBDIR})
    set(CMAKE_INSTALL_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR})
    set(PROJECT_VERSION ${PROJECT_VERSION})
    set(VEXAL_ANDROID_LIBDIR ${VEXAL_ANDROID_LIBDIR})
    set(VEXAL_ANDROID_INCLUDE ${VEXAL_ANDROID_INCLUDE})
    configure_file(\"${CMAKE_CURRENT_SOURCE_DIR}/cmake/install/${pc}.pc.in\"
                   \"${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${pc}.pc\" @ONLY)
    file(INSTALL \"${CMAKE_CURRENT_BINARY_DIR}/pkgconfig/${pc}.pc\"
         DESTINATION \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig\")"
    COMPONENT dev)
endforeach()
