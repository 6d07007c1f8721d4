# The library that is shipped: every folder in one shared object. It takes the folders' objects, not
# their archives, so that all of them are in it, and once.

get_property(components GLOBAL PROPERTY QRL_COMPONENTS)
list(REMOVE_ITEM components agent_core)
add_library(quorvant SHARED "${CMAKE_SOURCE_DIR}/cmake/quorvant.cpp")
target_link_libraries(quorvant PRIVATE quorvant_options)
foreach(component IN LISTS components)
  target_sources(quorvant PRIVATE "$<TARGET_OBJECTS:${component}>")
endforeach()
