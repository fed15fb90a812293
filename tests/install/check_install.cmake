# Installs the build to a temporary folder, moves it, and builds and runs other people's programs against it:
# a CMake project, and C and C++ programs by pkg-config, in a folder that knows nothing of this source tree.
#   cmake -DBUILD_DIR= -DCONSUMER_DIR= -DC_COMPILER= -DCXX_COMPILER= -DLIBDIR= -DINCLUDEDIR= -DBINDIR=
#     [-DGENERATOR=] [-DTOOLCHAIN= -DSYSROOT=] [-DEMULATOR=program|argument] [-DHAS_TOOL=1] -P check_install.cmake
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
set(work "$ENV{TMPDIR}")
if(NOT work)
  set(work /tmp)
endif()
string(RANDOM LENGTH 10 suffix)
set(work "${work}/zo-install-test-${suffix}")
set(first "${work}/made")
set(prefix "${work}/moved/here")

function(stop message)
  file(REMOVE_RECURSE "${work}")
  message(FATAL_ERROR "${message}")
endfunction()

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output
    WORKING_DIRECTORY "${work}")
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    stop("${command}\nended with ${result}:\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

file(MAKE_DIRECTORY "${work}/moved" "${work}/consumer")
run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${first}")
file(RENAME "${first}" "${prefix}")
file(COPY "${CONSUMER_DIR}/" DESTINATION "${work}/consumer")

# No installed text names the folders of this machine.
file(GLOB_RECURSE texts "${prefix}/${LIBDIR}/cmake/*" "${prefix}/${LIBDIR}/pkgconfig/*"
  "${prefix}/${INCLUDEDIR}/*.h")
list(LENGTH texts text_count)
if(text_count LESS 25)
  stop("only ${text_count} headers and package files were installed")
endif()
get_filename_component(source_dir "${CONSUMER_DIR}/../../.." ABSOLUTE)
foreach(text IN LISTS texts)
  file(READ "${text}" content)
  foreach(folder "${BUILD_DIR}" "${source_dir}" "${work}")
    string(FIND "${content}" "${folder}" position)
    if(NOT position EQUAL -1)
      stop("${text} names ${folder}")
    endif()
  endforeach()
endforeach()

# By CMake.
set(arguments "-DCMAKE_BUILD_TYPE=Release" "-DCMAKE_PREFIX_PATH=${prefix}")
if(GENERATOR)
  list(APPEND arguments -G "${GENERATOR}")
endif()
if(TOOLCHAIN)
  list(APPEND arguments "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DARMEL_SYSROOT=${SYSROOT}"
    "-Dzo_video_DIR=${prefix}/${LIBDIR}/cmake/zo_video")
else()
  list(APPEND arguments "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
endif()
if(EXTRA_FLAGS)
  list(APPEND arguments "-DCMAKE_C_FLAGS=${EXTRA_FLAGS}" "-DCMAKE_CXX_FLAGS=${EXTRA_FLAGS}")
endif()
run(${CMAKE_COMMAND} -S "${work}/consumer" -B "${work}/consumer-build" ${arguments})
run(${CMAKE_COMMAND} --build "${work}/consumer-build")
foreach(program consumer_cpp consumer_core consumer_c consumer_one_call)
  run(${EMULATOR} "${work}/consumer-build/${program}")
  string(STRIP "${output}" output)
  if(NOT output STREQUAL "${program}: ok")
    stop("${program} printed: ${output}")
  endif()
  message(STATUS "${output} (CMake)")
endforeach()

# By pkg-config: the installed folder alone is asked, so nothing else can be needed.
set(ENV{PKG_CONFIG_LIBDIR} "${prefix}/${LIBDIR}/pkgconfig")
set(ENV{PKG_CONFIG_PATH} "")
unset(ENV{PKG_CONFIG_SYSROOT_DIR})
function(build_by_pkg_config package output_name)
  run(${PKG_CONFIG} --cflags --libs ${package})
  separate_arguments(flags UNIX_COMMAND "${output}")
  separate_arguments(extra UNIX_COMMAND "${EXTRA_FLAGS}")
  set(sysroot_flag "")
  if(SYSROOT)
    set(sysroot_flag "--sysroot=${SYSROOT}")
  endif()
  run(${ARGN} ${extra} ${sysroot_flag} -o "${work}/${output_name}" ${flags}
    "-Wl,-rpath,${prefix}/${LIBDIR}")
  run(${EMULATOR} "${work}/${output_name}")
  string(STRIP "${output}" output)
  message(STATUS "${output} (pkg-config)")
endfunction()
build_by_pkg_config(zo_video pc_c "${C_COMPILER}" -std=c99 -Wall -Wextra -Wpedantic -Werror
  "${work}/consumer/consumer.c")
build_by_pkg_config(zo_video pc_one_call "${C_COMPILER}" -std=c99 -Wall -Wextra -Wpedantic -Werror
  "${work}/consumer/one_call.c")
build_by_pkg_config(zo_video pc_cpp "${CXX_COMPILER}" -std=c++17 -Wno-psabi "${work}/consumer/consumer.cpp")
build_by_pkg_config(zo_core pc_core "${CXX_COMPILER}" -std=c++17 -Wno-psabi "${work}/consumer/core_only.cpp")
run(${PKG_CONFIG} --modversion zo_video)
string(STRIP "${output}" output)
if(NOT output STREQUAL VERSION)
  stop("pkg-config says version ${output}, not ${VERSION}")
endif()

# The tool finds its libraries from where it lies.
if(HAS_TOOL)
  run(${EMULATOR} "${prefix}/${BINDIR}/zo-video" --help)
  message(STATUS "zo-video: ok")
endif()

file(REMOVE_RECURSE "${work}")
