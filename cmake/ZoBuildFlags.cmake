# Compiler and linker settings that every target of the project shares.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

# 64-bit file offsets on 32-bit targets too; clock_gettime and friends in plain C99 mode.
add_compile_definitions(_FILE_OFFSET_BITS=64 _POSIX_C_SOURCE=200809L)

# Warnings for our own code only.
add_library(zo_warnings INTERFACE)
target_compile_options(zo_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wcast-qual -Wformat=2 -Wundef -Wvla -Wno-psabi
  # As strict as on processors that trap unaligned access, wherever the code is compiled.
  $<IF:$<C_COMPILER_ID:GNU>,-Wcast-align=strict,-Wcast-align>
  $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor -Woverloaded-virtual>
  $<$<BOOL:${ZO_WARNINGS_AS_ERRORS}>:-Werror>)

if(ZO_SANITIZE)
  set(zo_sanitize_flags -fsanitize=${ZO_SANITIZE} -fno-omit-frame-pointer)
  if(ZO_SANITIZE MATCHES "undefined")
    list(APPEND zo_sanitize_flags -fno-sanitize-recover=undefined)
  endif()
  add_compile_options(${zo_sanitize_flags})
  add_link_options(${zo_sanitize_flags})
endif()

# The fuzzing engine is told which branches an input takes, in the libraries as well.
if(ZO_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "ZO_BUILD_FUZZERS needs Clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# Hardening of optimised builds: checked stack frames and buffer functions, and tables that are read-only once
# the program has started. Sanitizer builds have their own checks.
option(ZO_HARDENING "Compile and link optimised builds with the usual hardening" ON)
if(ZO_HARDENING AND NOT ZO_SANITIZE)
  include(CheckCXXCompilerFlag)
  set(zo_hardening_flags -fstack-protector-strong)
  check_cxx_compiler_flag(-fstack-clash-protection ZO_HAS_STACK_CLASH_PROTECTION)
  if(ZO_HAS_STACK_CLASH_PROTECTION)
    list(APPEND zo_hardening_flags -fstack-clash-protection)
  endif()
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|AMD64|amd64)$")
    list(APPEND zo_hardening_flags -fcf-protection=full)
  endif()
  add_compile_options("$<$<NOT:$<CONFIG:Debug>>:${zo_hardening_flags};-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
  add_link_options(LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
endif()

# Programs that are built to be run a few times, not to be fast: compiling them is what takes long, with sanitizers
# above all. For the targets of the current folder and those below.
macro(zo_compile_quickly)
  if(ZO_SANITIZE)
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-O0>")
  else()
    add_compile_options("$<$<NOT:$<CONFIG:Debug>>:-O1>")
  endif()
endmacro()

# Sets what the two shared libraries have in common: version, soname, the list of names that may leave it.
function(zo_shared_library target version_script)
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    LINK_DEPENDS ${version_script})
  target_link_options(${target} PRIVATE "LINKER:--version-script=${version_script}")
  if(NOT ZO_SANITIZE)
    target_link_options(${target} PRIVATE LINKER:--no-undefined)
  endif()
endfunction()
