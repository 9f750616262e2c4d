# The shape of the test programs: how they are compiled, and how CTest runs them.

find_package(GTest REQUIRED)
include(GoogleTest)

# The headers that nearly every test includes are compiled once, for all programs. A compiler cache does not
# reuse what was compiled with them, so under one each source is compiled by itself, which also shows what a
# source forgot to include.
set(ZX_PRECOMPILED_TESTS ON)
if(CMAKE_CXX_COMPILER_LAUNCHER MATCHES "ccache|sccache")
  set(ZX_PRECOMPILED_TESTS OFF)
endif()

# zx_test_options(TARGET): tests are compiled more often than they run for long, so they are optimised less
# than the library. Under the sanitizers they do without the checks of single pointers, which would surround
# each assertion: the address sanitizer sees null pointers and short objects by itself, and the library's own
# code keeps all checks.
function(zx_test_options name)
  target_compile_options(${name} PRIVATE -Wall -Wextra "$<$<CONFIG:Release>:-O1>")
  if(ZX_COVERAGE) # of the library; it would be the tests that take the time
    target_compile_options(${name} PRIVATE -O1)
  endif()
  if(ZX_SANITIZE)
    target_compile_options(${name} PRIVATE
      -fno-sanitize=null,alignment,object-size,pointer-overflow,vptr)
  endif()
  if(ZX_PRECOMPILED_TESTS AND NOT name STREQUAL "zx_test_headers")
    target_precompile_headers(${name} REUSE_FROM zx_test_headers)
  endif()
endfunction()

if(ZX_PRECOMPILED_TESTS)
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/zx_test_headers.cpp" CONTENT "int main() {}\n")
  add_executable(zx_test_headers EXCLUDE_FROM_ALL "${CMAKE_CURRENT_BINARY_DIR}/zx_test_headers.cpp")
  zx_test_options(zx_test_headers)
  target_link_libraries(zx_test_headers PRIVATE GTest::gtest)
  target_precompile_headers(zx_test_headers PRIVATE
    <algorithm> <cmath> <cstdint> <cstring> <functional> <limits> <string> <vector> <gmock/gmock.h> <gtest/gtest.h>)
endif()

# zx_add_shards(NAME TARGET COUNT [ENVIRONMENT var...]): the program's tests in COUNT runs of equal length.
function(zx_add_shards name target count)
  cmake_parse_arguments(ARG "" "" "ENVIRONMENT" ${ARGN})
  math(EXPR last "${count} - 1")
  foreach(shard RANGE ${last})
    math(EXPR number "${shard} + 1")
    add_test(NAME ${name}_${number}_of_${count} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(${name}_${number}_of_${count} PROPERTIES
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${count};GTEST_SHARD_INDEX=${shard};${ARG_ENVIRONMENT}"
      SKIP_RETURN_CODE 77 LABELS ${target})
  endforeach()
endfunction()

# zx_add_tests(TARGET [SHARDS count]): each test by its name. Under the sanitizers a program takes longer to
# start than most tests to run, so there its tests run in shards.
function(zx_add_tests target)
  cmake_parse_arguments(ARG "" "SHARDS" "" ${ARGN})
  if(NOT ZX_SANITIZE)
    gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS ${target})
  else()
    if(NOT ARG_SHARDS)
      set(ARG_SHARDS 2)
    endif()
    zx_add_shards(${target} ${target} ${ARG_SHARDS})
  endif()
endfunction()
