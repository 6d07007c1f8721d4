// Licence: MIT, see LICENSE.
// Uses the installed library: a server and its client in one process, without an event loop.
#include <quorvant/quorvant.h>
#include <cstdio>

namespace {

SInt32 ignore(UInt32, UInt32, const AEDesc*, AEDesc*, void*) { return 0; }

int failure(const char* what, SInt32 result) {
  std::fprintf(stderr, "%s: %d\n", what, static_cast<int>(result));
  return 1;
}

}  // namespace

int main() {
  char name[128];
  SInt32 result = QRLAEMakePortName(name, sizeof name, "com.example.consumer", false, "test", 2);
  if (result != noErr) return failure("QRLAEMakePortName", result);

  QRLPortAEMachPortListener listener;
  result = listener.ListenOnPort(name, CFRunLoopGetCurrent(), ignore, nullptr);
  if (result != noErr) return failure("ListenOnPort", result);

  QRLPortDestinationAddress address;
  std::snprintf(address.name, sizeof address.name, "%s", name);
  result = address.initialize();
  if (result != noErr) return failure("initialize", result);
  std::printf("%s is registered\n", name);
  return 0;
}
