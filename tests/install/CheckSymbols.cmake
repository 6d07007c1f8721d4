# LIBRARY shows its classes and the frameworks' functions, and nothing of its inside.
execute_process(COMMAND "${NM}" -D --defined-only -C "${LIBRARY}" OUTPUT_VARIABLE symbols
  COMMAND_ERROR_IS_FATAL ANY)
foreach(wanted
    CFStringGetLength bootstrap_look_up AESendMessage RunApplicationEventLoop RelString PtrAndHand
    "QRLAEMakePortName\\(" "NFReallocHandle\\(" "pcstrcpy\\(" "HexDump\\("
    "QRLPortAEMachPortListener::ListenOnPort\\("
    "QRLPortAppleEvent::QRLPortAppleEvent\\(" "vtable for QRLProcessDestinationAddress")
  if(NOT symbols MATCHES " [TVWDBR] ${wanted}")
    message(SEND_ERROR "not visible: ${wanted}")
  endif()
endforeach()
string(REGEX MATCHALL "[^\n]* [TVWDBR] [^\n]*platform::[^\n]*" inside "${symbols}")
# Instances of the standard library's templates are as visible as the standard library.
list(FILTER inside EXCLUDE REGEX " [VW] ")
if(inside)
  list(JOIN inside "\n" inside)
  message(SEND_ERROR "visible from inside:\n${inside}")
endif()
