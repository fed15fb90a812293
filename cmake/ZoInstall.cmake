# Install rules: headers, both libraries, the CMake package zo_video and pkg-config files. Nothing that is
# installed names a folder of this machine, so the tree can be moved as a whole.
include(CMakePackageConfigHelpers)

set(zo_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/zo_video")

install(TARGETS zo_core zo_video
  EXPORT zo_video_targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}")
install(DIRECTORY
  "${PROJECT_SOURCE_DIR}/core/include/zo_core"
  "${PROJECT_SOURCE_DIR}/include/zo_video"
  "${PROJECT_SOURCE_DIR}/include/zo_video_c"
  DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}" COMPONENT development
  FILES_MATCHING PATTERN "*.h")

# The CMake package. Callers see no type of another library, so there is nothing else for it to find.
install(EXPORT zo_video_targets
  NAMESPACE zo:: DESTINATION "${zo_package_dir}" COMPONENT development)
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/zo_video-config.cmake.in" "${PROJECT_BINARY_DIR}/zo_video-config.cmake"
  INSTALL_DESTINATION "${zo_package_dir}" NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/zo_video-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/zo_video-config.cmake"
  "${PROJECT_BINARY_DIR}/zo_video-config-version.cmake"
  DESTINATION "${zo_package_dir}" COMPONENT development)

# pkg-config files, with the prefix counted from where the file itself lies. A library or header folder given
# as an absolute path cannot move and is written as it is.
set(zo_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH zo_up "/prefix/${zo_pkgconfig_dir}" "/prefix")
string(REGEX REPLACE "/$" "" zo_up "${zo_up}")
if(IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
  set(ZO_PC_PREFIX "${CMAKE_INSTALL_PREFIX}")
else()
  set(ZO_PC_PREFIX "\${pcfiledir}/${zo_up}")
endif()
foreach(dir LIBDIR INCLUDEDIR)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_${dir}}")
    set(ZO_PC_${dir} "${CMAKE_INSTALL_${dir}}")
  else()
    set(ZO_PC_${dir} "\${prefix}/${CMAKE_INSTALL_${dir}}")
  endif()
endforeach()
foreach(library zo_core zo_video)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${library}.pc.in" "${PROJECT_BINARY_DIR}/${library}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${library}.pc" DESTINATION "${zo_pkgconfig_dir}" COMPONENT development)
endforeach()

# The Python package, where Debian's Python looks for packages; elsewhere pip does this.
option(ZO_INSTALL_PYTHON "Install the Python package zo_video into lib/python3/dist-packages" OFF)
if(ZO_INSTALL_PYTHON)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/bindings/python/zo_video"
    DESTINATION lib/python3/dist-packages COMPONENT python PATTERN __pycache__ EXCLUDE)
endif()

# The command line tool finds the libraries beside it, wherever the tree lies; those in a fixed folder, there.
if(TARGET zo-video)
  if(IS_ABSOLUTE "${CMAKE_INSTALL_BINDIR}" OR IS_ABSOLUTE "${CMAKE_INSTALL_LIBDIR}")
    set(zo_libs_for_bin "${CMAKE_INSTALL_FULL_LIBDIR}")
  else()
    file(RELATIVE_PATH zo_libs_for_bin "/prefix/${CMAKE_INSTALL_BINDIR}" "/prefix/${CMAKE_INSTALL_LIBDIR}")
    string(PREPEND zo_libs_for_bin "$ORIGIN/")
  endif()
  set_target_properties(zo-video PROPERTIES INSTALL_RPATH "${zo_libs_for_bin};${CMAKE_INSTALL_RPATH}")
  install(TARGETS zo-video RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT tool)
endif()
