# Cross build for 32-bit ARM Linux, soft-float EABI, against a sysroot folder made by scripts/armel-sysroot:
#   cmake --toolchain cmake/armel.cmake -DARMEL_SYSROOT=FOLDER ...
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv5tel)

if(NOT ARMEL_SYSROOT)
  set(ARMEL_SYSROOT "$ENV{ARMEL_SYSROOT}")
endif()
if(NOT EXISTS "${ARMEL_SYSROOT}/usr/include")
  message(FATAL_ERROR "ARMEL_SYSROOT='${ARMEL_SYSROOT}' is no sysroot: run scripts/armel-sysroot FOLDER")
endif()
# try_compile() reads this file again, without the cache.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ARMEL_SYSROOT)

set(CMAKE_C_COMPILER arm-linux-gnueabi-gcc)
set(CMAKE_CXX_COMPILER arm-linux-gnueabi-g++)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabi)
set(CMAKE_SYSROOT "${ARMEL_SYSROOT}")

set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi")

# ARMv5 has no 64-bit atomic instructions: std::atomic<int64_t> and the sanitizers call libatomic. Linked only
# where something uses it.
foreach(language C CXX)
  set(CMAKE_${language}_STANDARD_LIBRARIES_INIT "-Wl,--push-state,--as-needed -latomic -Wl,--pop-state")
endforeach()

# Programs come from the host, everything else from the sysroot and nowhere else.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_PATH} "")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${ARMEL_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
  "${ARMEL_SYSROOT}/usr/lib/arm-linux-gnueabi/pkgconfig:${ARMEL_SYSROOT}/usr/share/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/armel-run;${ARMEL_SYSROOT}")
