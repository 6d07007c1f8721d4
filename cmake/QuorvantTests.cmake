# Tests are GoogleTest programs, one a folder; CTest runs each case as a process of its own.

set(QRL_GOOGLETEST_SOURCE /usr/src/googletest CACHE PATH "GoogleTest's sources")
set(INSTALL_GTEST OFF)
add_subdirectory("${QRL_GOOGLETEST_SOURCE}" "${CMAKE_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL SYSTEM)
if(QRL_SANITIZE)
  foreach(library gtest gtest_main gmock gmock_main)
    target_compile_options(${library} PRIVATE -fsanitize=${QRL_SANITIZE})
  endforeach()
endif()
include(GoogleTest)

# Environment of every test: the runner with which processes start programs of this build.
set(QRL_TEST_ENVIRONMENT "QRL_UI=none")
if(CMAKE_CROSSCOMPILING_EMULATOR)
  string(REPLACE ";" " " runner "${CMAKE_CROSSCOMPILING_EMULATOR}")
  list(APPEND QRL_TEST_ENVIRONMENT "QRL_RUNNER=${runner}")
endif()
if(QRL_SANITIZE MATCHES "address")
  list(APPEND QRL_TEST_ENVIRONMENT
    "LSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/tests/support/leaks.supp:print_suppressions=0"
    "UBSAN_OPTIONS=print_stacktrace=1")
endif()

# One precompiled header serves all test programs.
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/test_headers.cpp" CONTENT "int main() {}\n")
add_executable(test_headers EXCLUDE_FROM_ALL "${CMAKE_BINARY_DIR}/test_headers.cpp")
target_link_libraries(test_headers PRIVATE quorvant_options gtest_main gmock)
target_precompile_headers(test_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h>)

# quorvant_tests(NAME SOURCES ... LIBRARIES ... [LABELS ...]): the test program of one folder,
# test_NAME. The cases of a fixture whose name ends in AsRoot get the label needs-root.
function(quorvant_tests name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES;LABELS" ${ARGN})
  add_executable(test_${name} ${arg_SOURCES})
  target_link_libraries(test_${name} PRIVATE
    quorvant_options test_support ${arg_LIBRARIES} gtest_main gmock)
  target_compile_options(test_${name} PRIVATE "SHELL:-iquote ${CMAKE_SOURCE_DIR}")
  target_precompile_headers(test_${name} REUSE_FROM test_headers)
  gtest_discover_tests(test_${name} TEST_PREFIX "${name}." DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT 120)
  set(properties "${CMAKE_CURRENT_BINARY_DIR}/test_${name}_properties.cmake")
  configure_file("${CMAKE_SOURCE_DIR}/cmake/QuorvantTestProperties.cmake.in" "${properties}" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${properties}")
endfunction()
