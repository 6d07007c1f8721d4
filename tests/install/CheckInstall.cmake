# Installs BUILD below PREFIX and looks at what is there.
file(REMOVE_RECURSE "${PREFIX}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

foreach(file
    bin/qrl bin/qrlagentd
    ${LIBDIR}/libquorvant.so ${LIBDIR}/libquorvant.so.1
    ${LIBDIR}/cmake/quorvant/quorvantConfig.cmake ${LIBDIR}/pkgconfig/quorvant.pc
    ${LIBDIR}/quorvant/qrlagentd.app/Contents/Info.plist
    ${LIBDIR}/quorvant/qrlagentd.app/Contents/MacOS/qrlagentd
    include/quorvant/quorvant.h include/quorvant/util/util.h
    include/quorvant/frameworks/CoreFoundation/CoreFoundation.h
    share/man/man1/qrl.1 share/man/man8/qrlagentd.8)
  if(NOT EXISTS "${PREFIX}/${file}")
    message(SEND_ERROR "not installed: ${file}")
  endif()
endforeach()

file(GLOB_RECURSE resources "${PREFIX}/${LIBDIR}/quorvant/qrlagentd.app/Contents/Resources/*")
if(NOT resources)
  message(SEND_ERROR "the agent's bundle has no resources")
endif()

file(GLOB_RECURSE inside RELATIVE "${PREFIX}" "${PREFIX}/include/quorvant/platform/*")
if(inside)
  message(SEND_ERROR "headers of the platform's inside are installed: ${inside}")
endif()
