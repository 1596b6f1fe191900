# 32-bit Arm (armhf) with Debian's cross compiler; programs run under qemu-arm, which finds the
# armhf loader and Debian's multiarch armhf libraries (dpkg --add-architecture armhf).
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER arm-linux-gnueabihf-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm)
# GCC notes every std::vector instantiation whose Arm argument passing changed in GCC 7.1; it is
# about mixing objects built by GCC 6 and older, which nothing here does.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")
