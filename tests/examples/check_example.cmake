# Runs one example and compares what it prints:
#   cmake -DEXAMPLE=... -DWORK_DIR=... -DEMULATOR=... -DMEDIA=... ... -P check_example.cmake
string(REPLACE "|" ";" EMULATOR "${EMULATOR}")
file(REMOVE_RECURSE "${WORK_DIR}")
file(MAKE_DIRECTORY "${WORK_DIR}")
set(clip "${WORK_DIR}/clip.mp4")
set(missing "${WORK_DIR}/missing.mp4")

# expect(<exit status> <standard output, a regular expression> <standard error, likewise> <command>...)
function(expect status output error)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE actual_status OUTPUT_VARIABLE actual_output
    ERROR_VARIABLE actual_error)
  if(NOT actual_status STREQUAL status OR NOT actual_output MATCHES "^${output}$"
      OR NOT actual_error MATCHES "^${error}$")
    message(FATAL_ERROR "${ARGN}\nexit status ${actual_status}, expected ${status}\n"
      "standard output:\n${actual_output}\nexpected:\n${output}\n"
      "standard error:\n${actual_error}\nexpected:\n${error}\n")
  endif()
endfunction()

expect(0 "" "" ${EMULATOR} "${MEDIA}" clip "${clip}")
set(open_error "error 20: Failed to open video stream: \"[^\n]*missing.mp4\"[^\n]*")

if(EXAMPLE STREQUAL exact_frame)
  foreach(index 0 17 29)
    math(EXPR time "${index} * 40")
    set(image "${WORK_DIR}/frame${index}.jpg")
    expect(0 "frame ${index} of 30 at ${time} ms, 64 x 48: [^\n]*frame${index}.jpg\n" ""
      ${EMULATOR} "${EXACT_FRAME}" "${clip}" ${index} "${image}")
    expect(0 "64 x 48 number ${index}\n" "" ${EMULATOR} "${MEDIA}" number "${image}")
  endforeach()
  expect(1 "" "[^\n]*: error 5: [^\n]*frame index is out of range.\n"
    ${EMULATOR} "${EXACT_FRAME}" "${clip}" 30 "${WORK_DIR}/none.jpg")
  expect(1 "" "[^\n]*: ${open_error}\n" ${EMULATOR} "${EXACT_FRAME}" "${missing}" 0 "${WORK_DIR}/none.jpg")
  expect(1 "" "[^\n]*: error 20: [^\n]*none/none.jpg[^\n]*\n"
    ${EMULATOR} "${EXACT_FRAME}" "${clip}" 0 "${WORK_DIR}/none/none.jpg")
  expect(2 "" "usage: [^\n]*\n" ${EMULATOR} "${EXACT_FRAME}" "${clip}" seven "${WORK_DIR}/none.jpg")
  expect(2 "" "usage: [^\n]*\n" ${EMULATOR} "${EXACT_FRAME}")

elseif(EXAMPLE STREQUAL frame_table)
  function(make_table variable first last)
    set(table " +frame +ms +size +planes +mean\n")
    foreach(index RANGE ${first} ${last})
      math(EXPR time "${index} * 40")
      string(APPEND table " +${index} +${time} +64 x +48 +3 +[0-9]+\\.[0-9]\n")
    endforeach()
    set(${variable} "${table}" PARENT_SCOPE)
  endfunction()
  make_table(all 0 29)
  make_table(some 25 27)
  make_table(rest 28 29)
  expect(0 "${all}" "" ${EMULATOR} "${FRAME_TABLE}" "${clip}")
  expect(0 "${some}" "" ${EMULATOR} "${FRAME_TABLE}" "${clip}" 25 3)
  expect(0 "${rest}" "" ${EMULATOR} "${FRAME_TABLE}" "${clip}" 28 100)
  expect(1 " +frame [^\n]*\n" "[^\n]*: error 5: [^\n]*frame index is out of range.\n"
    ${EMULATOR} "${FRAME_TABLE}" "${clip}" 30)
  expect(1 "" "[^\n]*: ${open_error}\n" ${EMULATOR} "${FRAME_TABLE}" "${missing}")
  expect(2 "" "usage: [^\n]*\n" ${EMULATOR} "${FRAME_TABLE}")

elseif(EXAMPLE STREQUAL frames_ctypes)
  set(head "30 frames of 64 x 48, 25 a second\n")
  set(data "format 6, 3 planes, first bytes [0-9a-f ]+, mean [0-9]+\\.[0-9]")
  set(frames "")
  foreach(index 17 3 29)
    math(EXPR time "${index} * 40")
    string(APPEND frames "frame ${index}: ${time} ms, ${data}\n")
  endforeach()
  expect(0 "${head}${frames}" "" "${PYTHON}" "${FRAMES_CTYPES}" --library "${LIBRARY}" "${clip}" 17 3 29)
  expect(0 "${head}frame 5: 200 ms, ${data}\n" ""
    "${CMAKE_COMMAND}" -E env "ZO_VIDEO_LIBRARY=${LIBRARY}" "${PYTHON}" "${FRAMES_CTYPES}" "${clip}" 5)
  expect(1 "${head}" "frames_ctypes.py: error 5: [^\n]*frame index is out of range.\n"
    "${PYTHON}" "${FRAMES_CTYPES}" --library "${LIBRARY}" "${clip}" 30)
  expect(1 "" "frames_ctypes.py: ${open_error}\n"
    "${PYTHON}" "${FRAMES_CTYPES}" --library "${LIBRARY}" "${missing}" 0)
  expect(1 "" "frames_ctypes.py: [^\n]*none.so[^\n]*\n"
    "${PYTHON}" "${FRAMES_CTYPES}" --library "${WORK_DIR}/none.so" "${clip}" 0)

else()
  message(FATAL_ERROR "no such example: ${EXAMPLE}")
endif()
