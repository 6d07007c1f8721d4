# What `cmake --install` puts in place: the library with its headers and the files by which other
# projects find it, the programs and their man pages. The agent's folder installs its bundle itself.
include(CMakePackageConfigHelpers)

set(QRL_FRAMEWORKS_DIR "${CMAKE_INSTALL_INCLUDEDIR}/quorvant/frameworks")
set(QRL_PACKAGE_DIR "${CMAKE_INSTALL_LIBDIR}/cmake/quorvant")

set_target_properties(quorvant PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
target_compile_features(quorvant INTERFACE cxx_std_20)
target_include_directories(quorvant INTERFACE
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>" "$<INSTALL_INTERFACE:${QRL_FRAMEWORKS_DIR}>")
# The frameworks' constants are four-character codes.
target_compile_options(quorvant INTERFACE -Wno-multichar)

install(TARGETS quorvant EXPORT quorvant LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
install(EXPORT quorvant NAMESPACE quorvant:: DESTINATION "${QRL_PACKAGE_DIR}"
  FILE quorvantTargets.cmake)
write_basic_package_version_file("${CMAKE_BINARY_DIR}/quorvantConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
configure_file("${CMAKE_CURRENT_LIST_DIR}/quorvantConfig.cmake"
  "${CMAKE_BINARY_DIR}/quorvantConfig.cmake" COPYONLY)
install(FILES "${CMAKE_BINARY_DIR}/quorvantConfig.cmake"
  "${CMAKE_BINARY_DIR}/quorvantConfigVersion.cmake" DESTINATION "${QRL_PACKAGE_DIR}")

# The place of the library relative to the .pc file, so that an installed tree can be moved.
file(RELATIVE_PATH QRL_PREFIX_FROM_PKGCONFIG
  "/prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/prefix")
configure_file("${CMAKE_CURRENT_LIST_DIR}/quorvant.pc.in" "${CMAKE_BINARY_DIR}/quorvant.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/quorvant.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

set(product_folders
  agent aemessaging devicemonitor launch cfutil threads debug deviceid util)
foreach(folder IN LISTS product_folders)
  if(IS_DIRECTORY "${CMAKE_SOURCE_DIR}/${folder}")
    install(DIRECTORY "${folder}/" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quorvant/${folder}"
      FILES_MATCHING PATTERN "*.h")
  endif()
endforeach()
install(FILES quorvant.h DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/quorvant")
install(DIRECTORY platform/include/ DESTINATION "${QRL_FRAMEWORKS_DIR}")

install(TARGETS qrl RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(FILES docs/man/qrl.1 DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES docs/man/qrlagentd.8 DESTINATION "${CMAKE_INSTALL_MANDIR}/man8")
