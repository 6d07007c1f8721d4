include("${CMAKE_CURRENT_LIST_DIR}/quorvantTargets.cmake")
