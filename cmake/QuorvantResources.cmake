# quorvant_resource_file(OUTPUT INPUT): builds a classic resource file from its description, the text form
# that platform/resources/ResourceDescription.h tells about. OUTPUT is in the build folder of the
# directory that calls, and is for targets of the same directory to depend on.
function(quorvant_resource_file output input)
  cmake_path(ABSOLUTE_PATH output BASE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}")
  cmake_path(ABSOLUTE_PATH input BASE_DIRECTORY "${CMAKE_CURRENT_SOURCE_DIR}")
  cmake_path(GET output PARENT_PATH folder)
  add_custom_command(OUTPUT "${output}"
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${folder}"
    COMMAND quorvant_resource_writer "${input}" "${output}"
    DEPENDS "${input}" quorvant_resource_writer
    VERBATIM)
endfunction()
