# Debian packages by CPack: the libraries, what developers need, the tool, and the Python package. scripts/package makes them.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zo-video)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_CONTACT "The libzo_video developers <developers@zo-video.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(TARGET zo-video)
  list(APPEND CPACK_COMPONENTS_ALL tool)
endif()
if(ZO_INSTALL_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# The number behind the library's name is that of its binary interface, so two of them can be installed.
set(zo_runtime_package "libzo-video${PROJECT_VERSION_MAJOR}")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${zo_runtime_package}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Shared libraries. libzo_video reads video files and streams picture by picture or at any frame number, converts and
draws, and reads and writes JPEG, PNG, PGM and PPM. libzo_core has the types that it shares with its callers.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzo-video-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${zo_runtime_package} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Development files: headers, CMake package and pkg-config files of libzo_video and libzo_core, for programs in C++17 and C99.")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME zo-video)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION video)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
  "Command line tool: zo-video tells what is in a video file, extracts frames by number, makes contact sheets, and
checks that reading in order and jumping give the same pictures.")

set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-zo-video)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "${zo_runtime_package} (= ${PROJECT_VERSION}), python3 (>= 3.8)")
set(CPACK_DEBIAN_PYTHON_PACKAGE_RECOMMENDS python3-numpy)
set(CPACK_DEBIAN_PYTHON_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/bindings/python/debian/prerm")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
  "Python package: zo_video reads video files and streams picture by picture or at any frame number. Pictures are numpy
arrays without copying where numpy is installed.")

# What the programs need of the system: found by the package tools, or given where they cannot look, which is
# when building for another architecture.
set(ZO_PACKAGE_DEPENDS "" CACHE STRING "Packages that the libraries depend on, when cross building packages")
set(ZO_PACKAGE_TOOL_DEPENDS "" CACHE STRING "Packages that the tool depends on, when cross building packages")
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "${ZO_PACKAGE_DEPENDS}")
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${zo_runtime_package} (= ${PROJECT_VERSION})")
  if(ZO_PACKAGE_TOOL_DEPENDS)
    string(APPEND CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS ", ${ZO_PACKAGE_TOOL_DEPENDS}")
  endif()
  if(CMAKE_LIBRARY_ARCHITECTURE STREQUAL arm-linux-gnueabi)
    set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armel)
  endif()
else()
  set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_TOOL_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/core;${PROJECT_BINARY_DIR}/src")
  set(CPACK_DEBIAN_TOOL_PACKAGE_DEPENDS "${zo_runtime_package} (= ${PROJECT_VERSION})")
endif()
# Lets the loader learn of the libraries when they are installed.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_GENERATE_SHLIBS_POLICY "=")

include(CPack)
