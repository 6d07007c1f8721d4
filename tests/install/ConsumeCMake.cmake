# Builds and runs CONSUMER against the tree installed at PREFIX, by find_package.
file(REMOVE_RECURSE "${WORK}")
set(ENV{QRL_ROOT} "${WORK}/root")
file(MAKE_DIRECTORY "$ENV{QRL_ROOT}")
execute_process(
  COMMAND "${CMAKE_COMMAND}" -S "${CONSUMER}" -B "${WORK}/build" -G Ninja
    "-DCMAKE_PREFIX_PATH=${PREFIX}" "-DCMAKE_CXX_COMPILER=${CXX}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${WORK}/build"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${WORK}/build/consumer" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output STREQUAL "com.example.consumer.test.2 is registered\n")
  message(FATAL_ERROR "unexpected output: ${output}")
endif()
