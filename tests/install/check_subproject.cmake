# Builds a project that carries the library as a subfolder, and runs its program.
#   cmake -DSOURCE_DIR= -DWORK_DIR= -DC_COMPILER= -DCXX_COMPILER= [-DGENERATOR=] [-DTOOLCHAIN= -DSYSROOT=]
#     [-DEMULATOR=program|argument] [-DPREFIX_PATH=folder|folder] -P check_subproject.cmake
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")

function(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    string(REPLACE ";" " " command "${ARGN}")
    message(FATAL_ERROR "${command}\nended with ${result}:\n${output}")
  endif()
endfunction()

set(arguments "-DZO_VIDEO_SOURCE_DIR=${SOURCE_DIR}")
if(GENERATOR)
  list(APPEND arguments -G "${GENERATOR}")
endif()
if(PREFIX_PATH)
  string(REPLACE "|" "\\;" prefix_path "${PREFIX_PATH}")
  list(APPEND arguments "-DCMAKE_PREFIX_PATH=${prefix_path}")
endif()
if(TOOLCHAIN)
  list(APPEND arguments "-DCMAKE_TOOLCHAIN_FILE=${TOOLCHAIN}" "-DARMEL_SYSROOT=${SYSROOT}")
else()
  list(APPEND arguments "-DCMAKE_C_COMPILER=${C_COMPILER}" "-DCMAKE_CXX_COMPILER=${CXX_COMPILER}")
endif()
# Once without a build type, which is the parent's affair.
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/tests/install/subproject" -B "${WORK_DIR}/plain" ${arguments})
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}/tests/install/subproject" -B "${WORK_DIR}" ${arguments}
  "-DCMAKE_BUILD_TYPE=Release")
run(${CMAKE_COMMAND} --build "${WORK_DIR}" --target parent)
run(${EMULATOR} "${WORK_DIR}/parent")
