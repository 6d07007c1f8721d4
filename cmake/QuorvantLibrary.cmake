# The library that is shipped: every folder in one shared object.

get_property(components GLOBAL PROPERTY QRL_COMPONENTS)
list(REMOVE_ITEM components agent_core)
add_library(quorvant SHARED "${CMAKE_SOURCE_DIR}/cmake/quorvant.cpp")
foreach(component IN LISTS components)
  target_link_libraries(quorvant PRIVATE "$<LINK_LIBRARY:WHOLE_ARCHIVE,${component}>")
endforeach()
# The folders also come in plainly, as each other's dependencies; whole they stay.
list(JOIN components "," all)
set_target_properties(quorvant PROPERTIES LINK_LIBRARY_OVERRIDE "WHOLE_ARCHIVE,${all}")
