# Benchmarks are Google Benchmark programs, one a folder, which compare ours with peers in the same
# run (bench/support/Comparison.h). `bench/run` builds them as they ship and runs them.

find_package(benchmark REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(SDBUS REQUIRED IMPORTED_TARGET libsystemd)

add_custom_target(benchmarks)

# quorvant_bench(NAME SOURCES ... LIBRARIES ...): the benchmark program of one folder, bench_NAME.
# Its test is a run as short as can be: that it runs and has all its figures, not what they are.
function(quorvant_bench name)
  cmake_parse_arguments(arg "" "" "SOURCES;LIBRARIES" ${ARGN})
  add_executable(bench_${name} ${arg_SOURCES})
  set_target_properties(bench_${name} PROPERTIES
    RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/benchmarks")
  target_link_libraries(bench_${name} PRIVATE quorvant_options bench_support ${arg_LIBRARIES})
  add_dependencies(benchmarks bench_${name})
  add_test(NAME bench_${name}.smoke COMMAND bench_${name} --smoke)
  set_tests_properties(bench_${name}.smoke PROPERTIES
    TIMEOUT 120 LABELS bench ENVIRONMENT "QRL_UI=none")
endfunction()
