# How every target of the project is compiled, and the functions that declare them.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_C_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CCACHE_PROGRAM})
endif()

find_package(Threads REQUIRED)

add_library(quorvant_options INTERFACE)
# Four-character codes are this system's native identifiers, so -Wmultichar has nothing to tell us.
target_compile_options(quorvant_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wno-multichar $<$<BOOL:${QRL_WERROR}>:-Werror>)
if(QRL_SANITIZE)
  target_compile_options(quorvant_options INTERFACE
    -fsanitize=${QRL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(quorvant_options INTERFACE -fsanitize=${QRL_SANITIZE})
endif()
if(QRL_FUZZ)
  target_compile_options(quorvant_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
target_link_libraries(quorvant_options INTERFACE Threads::Threads)

# The product includes itself as <quorvant/FOLDER/HEADER.h>, installed or not.
file(MAKE_DIRECTORY "${CMAKE_BINARY_DIR}/include")
file(CREATE_LINK "${CMAKE_SOURCE_DIR}" "${CMAKE_BINARY_DIR}/include/quorvant" SYMBOLIC)

add_library(quorvant_frameworks INTERFACE)
target_include_directories(quorvant_frameworks INTERFACE "${CMAKE_SOURCE_DIR}/platform/include")

set_property(GLOBAL PROPERTY QRL_COMPONENTS "")

# quorvant_component(NAME SOURCES ... [DEPENDS ...]): one folder of the library.
function(quorvant_component name)
  cmake_parse_arguments(arg "" "" "SOURCES;DEPENDS" ${ARGN})
  # A folder is called "debug", which target_link_libraries takes for a word of its own.
  list(TRANSFORM arg_DEPENDS REPLACE "^debug$" "$<1:debug>")
  if(NOT arg_SOURCES)
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_DEPENDS})
    return()
  endif()
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE quorvant_options PUBLIC quorvant_frameworks ${arg_DEPENDS})
  if(name MATCHES "^platform_")
    # For "..." alone: the C++ library has a <debug/debug.h> of its own.
    target_compile_options(${name} PUBLIC "SHELL:-iquote ${CMAKE_SOURCE_DIR}")
  else()
    target_include_directories(${name} PUBLIC "${CMAKE_BINARY_DIR}/include")
  endif()
  set_property(GLOBAL APPEND PROPERTY QRL_COMPONENTS ${name})
endfunction()
