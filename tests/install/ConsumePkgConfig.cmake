# Builds and runs CONSUMER against the tree installed at PREFIX, by pkg-config and the compiler alone.
file(REMOVE_RECURSE "${WORK}")
set(ENV{QRL_ROOT} "${WORK}/root")
file(MAKE_DIRECTORY "$ENV{QRL_ROOT}")
set(ENV{PKG_CONFIG_PATH} "${PREFIX}/${LIBDIR}/pkgconfig")
execute_process(COMMAND pkg-config --cflags --libs quorvant
  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
execute_process(
  COMMAND "${CXX}" -std=c++20 "${CONSUMER}/consumer.cpp" -o "${WORK}/consumer" ${flags}
  COMMAND_ERROR_IS_FATAL ANY)
set(ENV{LD_LIBRARY_PATH} "${PREFIX}/${LIBDIR}")
execute_process(COMMAND "${WORK}/consumer" OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output STREQUAL "com.example.consumer.test.2 is registered\n")
  message(FATAL_ERROR "unexpected output: ${output}")
endif()
