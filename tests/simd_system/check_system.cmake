# Builds and tests the library with ZO_SIMD=system against a stand-in for an installed Simd library.
#   cmake -DSOURCE_DIR= -DWORK_DIR= -DC_COMPILER= -DCXX_COMPILER= -DGENERATOR= [-DPREFIX_PATH=folder|folder] -P check_system.cmake

function(run_into result_variable output_variable)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(${result_variable} "${result}" PARENT_SCOPE)
  set(${output_variable} "${output}" PARENT_SCOPE)
endfunction()

function(run)
  run_into(result output ${ARGN})
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

# Configures the project and checks which library it takes; EXPECTED is system, bundled or the text of an error.
function(expect_configured build_dir expected)
  run_into(result output ${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${build_dir}" ${common} ${project_options} ${ARGN})
  if(expected MATCHES "^(system|bundled)$")
    set(wanted "Simd image library: ${expected}\n")
    set(should_fail FALSE)
  else()
    set(wanted "${expected}")
    set(should_fail TRUE)
  endif()
  string(REGEX REPLACE "[ \n]+" " " flat "${output}\n")
  string(REGEX REPLACE "[ \n]+" " " flat_wanted "${wanted}")
  string(FIND "${flat}" "${flat_wanted}" found)
  if(found EQUAL -1 OR (should_fail AND result EQUAL 0) OR (NOT should_fail AND NOT result EQUAL 0))
    message(FATAL_ERROR "configuring with ${ARGN} ended with ${result}; expected \"${wanted}\":\n${output}")
  endif()
endfunction()

set(common -G "${GENERATOR}" "-DCMAKE_BUILD_TYPE=Release"
  "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
set(project_options "-DZO_BUILD_TOOLS=OFF" "-DZO_BUILD_EXAMPLES=OFF" "-DZO_WARNINGS_AS_ERRORS=ON")
set(prefix "${WORK_DIR}/prefix")
set(bare_prefix "${WORK_DIR}/bare-prefix")
set(old_prefix "${WORK_DIR}/old-prefix")
file(REMOVE_RECURSE "${prefix}" "${bare_prefix}" "${old_prefix}" "${WORK_DIR}/project" "${WORK_DIR}/other")

run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/tests/simd_system/double" -B "${WORK_DIR}/double" ${common}
  "-DBUNDLED_DIR=${SOURCE_DIR}/simd" "-DCMAKE_INSTALL_PREFIX=${prefix}" -DCMAKE_INSTALL_LIBDIR=lib)
run(${CMAKE_COMMAND} --build "${WORK_DIR}/double" --target install)

string(REPLACE "|" "\\;" more_prefixes "${PREFIX_PATH}")  # where FFmpeg may be
expect_configured("${WORK_DIR}/project" system -DZO_SIMD=system "-DCMAKE_PREFIX_PATH=${prefix}\\;${more_prefixes}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/project"
  --target zo_video zo_image_io_test zo_text_drawing_test zo_line_drawing_test)
foreach(test zo_image_io_test zo_text_drawing_test zo_line_drawing_test)
  # What becomes of damaged files is up to each library, and takes long to try.
  run("${WORK_DIR}/project/tests/zo_video/${test}" --gtest_filter=-*Damage*)
endforeach()

expect_configured("${WORK_DIR}/project" system -DZO_SIMD=auto)
expect_configured("${WORK_DIR}/project" bundled -DZO_SIMD=bundled)

# Header and library without a package.
file(COPY "${prefix}/include" DESTINATION "${bare_prefix}")
file(COPY "${prefix}/lib/libSimd.so" DESTINATION "${bare_prefix}/lib")
expect_configured("${WORK_DIR}/other" system -DZO_SIMD=auto "-DCMAKE_PREFIX_PATH=${bare_prefix}\\;${more_prefixes}")
file(REMOVE_RECURSE "${WORK_DIR}/other")

# An older release, which lacks one of the functions.
file(COPY "${bare_prefix}/include" "${bare_prefix}/lib" DESTINATION "${old_prefix}")
file(READ "${old_prefix}/include/Simd/SimdLib.h" header)
string(REGEX REPLACE "uint8_t[*] SimdNv12SaveAsJpegToMemory[^;]*;" "" older_header "${header}")
if(older_header STREQUAL header)
  message(FATAL_ERROR "the header of the stand-in does not declare what the older one is to lack")
endif()
file(WRITE "${old_prefix}/include/Simd/SimdLib.h" "${older_header}")
expect_configured("${WORK_DIR}/other" bundled -DZO_SIMD=auto "-DCMAKE_PREFIX_PATH=${old_prefix}\\;${more_prefixes}")
expect_configured("${WORK_DIR}/other" "the installed Simd image library lacks functions that are called here"
  -DZO_SIMD=system)
file(REMOVE_RECURSE "${WORK_DIR}/other")

expect_configured("${WORK_DIR}/other" "the Simd image library was not found" -DZO_SIMD=system
  -DCMAKE_DISABLE_FIND_PACKAGE_simd=ON -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY "-DCMAKE_FIND_ROOT_PATH=${WORK_DIR}/no"
  -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=NEVER)
expect_configured("${WORK_DIR}/other" "it must be auto, system or bundled" -DZO_SIMD=other)
