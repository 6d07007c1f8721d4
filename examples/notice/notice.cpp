// Licence: MIT, see LICENSE.
// notice TEXT: asks for the person's attention and waits until the notice was dismissed.
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Notification.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

static void dismissed(NMRecPtr) { CFRunLoopStop(CFRunLoopGetMain()); }

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: notice TEXT (up to 255 MacRoman characters)\n", stderr);
    return 2;
  }
  Str255 text;
  text[0] = static_cast<unsigned char>(std::min<std::size_t>(std::strlen(argv[1]), 255));
  std::memcpy(text + 1, argv[1], text[0]);

  NMRec record{};
  record.qType = nmType;
  record.nmStr = text;
  record.nmResp = NewNMUPP(dismissed);
  if (const OSErr status = NMInstall(&record); status != 0) {
    std::fprintf(stderr, "notice: NMInstall: %d\n", status);
    return 1;
  }
  CFRunLoopRun();
  NMRemove(&record);
  DisposeNMUPP(record.nmResp);
  std::puts("dismissed");
  return 0;
}
