# The libraries that the project rests on, each from the system.
find_package(Threads REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(ZO_FFMPEG REQUIRED IMPORTED_TARGET
  libavformat>=57.41 libavcodec>=57.48 libavutil>=55 libswscale>=4)
pkg_check_modules(ZO_TURBOJPEG REQUIRED IMPORTED_TARGET libturbojpeg>=1.4)

# The Simd image library: ZO_SIMD_USED becomes system or bundled. An installed one becomes the target
# zo_system_simd, whatever its package calls it.
include(ZoFindSimd)
if(ZO_SIMD_USED STREQUAL bundled OR ZO_BUILD_TESTS)
  find_package(PNG REQUIRED)
  find_package(JPEG REQUIRED)
endif()
