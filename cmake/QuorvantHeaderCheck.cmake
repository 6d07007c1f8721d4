# Target header_check: every header compiles by itself and included twice; the framework headers also
# as C.

set(header_check_folder "${CMAKE_BINARY_DIR}/header_check")
file(GLOB_RECURSE headers RELATIVE "${CMAKE_SOURCE_DIR}" CONFIGURE_DEPENDS
  "${CMAKE_SOURCE_DIR}/*.h")
list(FILTER headers EXCLUDE REGEX "^build/")

set(header_check_sources "")
function(check_header name include language)
  string(MAKE_C_IDENTIFIER "${name}" stem)
  set(source "${header_check_folder}/${stem}.${language}")
  file(CONFIGURE OUTPUT "${source}" CONTENT
    "#include ${include}\n#include ${include}\nextern int header_check_needs_a_declaration;\n")
  list(APPEND header_check_sources "${source}")
  set(header_check_sources "${header_check_sources}" PARENT_SCOPE)
endfunction()

foreach(header IN LISTS headers)
  if(header MATCHES "^platform/include/(.*)")
    check_header("${header}" "<${CMAKE_MATCH_1}>" c)
    check_header("${header}" "<${CMAKE_MATCH_1}>" cpp)
  elseif(header MATCHES "^(platform|tests|tools|examples|bench)/")
    check_header("${header}" "\"${header}\"" cpp)
  else()
    check_header("${header}" "<quorvant/${header}>" cpp)
  endif()
endforeach()

add_library(header_check OBJECT EXCLUDE_FROM_ALL ${header_check_sources})
target_compile_options(header_check PRIVATE "SHELL:-iquote ${CMAKE_SOURCE_DIR}")
target_include_directories(header_check PRIVATE "${CMAKE_BINARY_DIR}/include")
target_link_libraries(header_check PRIVATE
  quorvant_options quorvant_frameworks qrl_headers $<TARGET_NAME_IF_EXISTS:gmock>)
