# Debian ships the real liblog and libcutils built for Linux, without pkg-config files. Installed
# with our CMake package too, so callers find them the same way.
set(VEXAL_ANDROID_INCLUDE /usr/include/android)
set(VEXAL_ANDROID_LIBDIR /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android)

foreach(lib log cutils)
  if(TARGET android::${lib})
    continue()
  endif()
  find_library(VEXAL_ANDROID_${lib}_LIBRARY NAMES ${lib} PATHS ${VEXAL_ANDROID_LIBDIR} NO_DEFAULT_PATH)
  if(NOT VEXAL_ANDROID_${lib}_LIBRARY)
    message(FATAL_ERROR "lib${lib} not found in ${VEXAL_ANDROID_LIBDIR}: run scripts/install-deps "
                        "(Debian: android-lib${lib}-dev)")
  endif()
  add_library(android::${lib} SHARED IMPORTED GLOBAL)
  set_target_properties(android::${lib} PROPERTIES
    IMPORTED_LOCATION ${VEXAL_ANDROID_${lib}_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${VEXAL_ANDROID_INCLUDE})
endforeach()
