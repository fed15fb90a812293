# Decides where the Simd image library comes from, by ZO_SIMD: auto, system or bundled.
# Sets ZO_SIMD_USED (system or bundled) and, for system, makes the target zo_system_simd.

# Whether the library found has all that is called here; older releases lack some of it.
function(zo_check_system_simd usable)
  set(CMAKE_REQUIRED_LIBRARIES zo_system_simd)
  set(CMAKE_REQUIRED_QUIET TRUE)
  set(CMAKE_TRY_COMPILE_TARGET_TYPE EXECUTABLE)
  unset(ZO_SIMD_USABLE CACHE)
  check_cxx_source_compiles([[
    #include <array>
    #include <string>
    #include <Simd/SimdFont.hpp>
    #include <Simd/SimdLib.hpp>
    int main() {
      std::size_t size = 0;
      std::size_t side = 0;
      SimdPixelFormatType format = SimdPixelFormatBgr24;
      const uint8_t pixel[16] = {};
      SimdFree(SimdImageLoadFromFile("a.pgm", &size, &side, &side, &format));
      SimdFree(SimdImageLoadFromMemory(pixel, 16, &size, &side, &side, &format));
      SimdImageSaveToFile(pixel, 3, 1, 1, format, SimdImageFilePng, 90, "a.png");
      SimdFree(SimdImageSaveToMemory(pixel, 3, 1, 1, format, SimdImageFileJpeg, 90, &size));
      SimdFree(SimdNv12SaveAsJpegToMemory(pixel, 2, pixel, 2, 2, 2, SimdYuvTrect871, 90, &size));
      SimdFree(SimdYuv420pSaveAsJpegToMemory(pixel, 2, pixel, 1, pixel, 1, 2, 2, SimdYuvTrect871, 90, &size));
      uint8_t plane[48] = {};
      Simd::Font::View canvas(4, 4, 12, Simd::Font::View::Bgr24, plane);
      const std::array<uint8_t, 3> color = {{1, 2, 3}};
      Simd::Font(static_cast<std::size_t>(16)).Draw(canvas, std::string("a"), Simd::Font::Point(0, 0), color);
      return 0;
    }
    ]] ZO_SIMD_USABLE)
  set(${usable} ${ZO_SIMD_USABLE} PARENT_SCOPE)
endfunction()

# Looks for the package first, then for header and library as such.
function(zo_find_system_simd found)
  set(${found} FALSE PARENT_SCOPE)
  find_package(simd CONFIG QUIET)
  if(simd_FOUND)
    foreach(target simd::simd simd::Simd Simd::Simd Simd::simd simd Simd)
      if(TARGET ${target})
        add_library(zo_system_simd INTERFACE IMPORTED GLOBAL)
        target_link_libraries(zo_system_simd INTERFACE ${target})
        set(${found} TRUE PARENT_SCOPE)
        return()
      endif()
    endforeach()
  endif()
  find_path(ZO_SIMD_INCLUDE_DIR Simd/SimdFont.hpp HINTS ${simd_INCLUDE_DIRS} ${simd_INCLUDE_DIR})
  find_library(ZO_SIMD_LIBRARY Simd HINTS ${simd_LIBRARY_DIRS} ${simd_LIBRARY_DIR})
  mark_as_advanced(ZO_SIMD_INCLUDE_DIR ZO_SIMD_LIBRARY)
  if(ZO_SIMD_INCLUDE_DIR AND ZO_SIMD_LIBRARY)
    add_library(zo_system_simd INTERFACE IMPORTED GLOBAL)
    target_include_directories(zo_system_simd SYSTEM INTERFACE ${ZO_SIMD_INCLUDE_DIR})
    target_link_libraries(zo_system_simd INTERFACE ${ZO_SIMD_LIBRARY})
    set(${found} TRUE PARENT_SCOPE)
  endif()
endfunction()

include(CheckCXXSourceCompiles)
if(ZO_SIMD STREQUAL bundled)
  set(ZO_SIMD_USED bundled)
elseif(ZO_SIMD STREQUAL auto OR ZO_SIMD STREQUAL system)
  zo_find_system_simd(zo_simd_found)
  set(zo_simd_usable FALSE)
  if(zo_simd_found)
    zo_check_system_simd(zo_simd_usable)
  endif()
  if(zo_simd_usable)
    set(ZO_SIMD_USED system)
  elseif(ZO_SIMD STREQUAL system AND zo_simd_found)
    message(FATAL_ERROR "ZO_SIMD=system, but the installed Simd image library lacks functions that are called here. "
      "Install a newer one, or use ZO_SIMD=bundled.")
  elseif(ZO_SIMD STREQUAL system)
    message(FATAL_ERROR "ZO_SIMD=system, but the Simd image library was not found. "
      "Install it, point CMAKE_PREFIX_PATH to it, or use ZO_SIMD=bundled.")
  else()
    set(ZO_SIMD_USED bundled)
  endif()
else()
  message(FATAL_ERROR "ZO_SIMD is '${ZO_SIMD}'; it must be auto, system or bundled")
endif()
message(STATUS "Simd image library: ${ZO_SIMD_USED}")
