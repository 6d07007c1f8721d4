// Licence: MIT, see LICENSE.
// The framework calls of this folder under a magnifying glass: the linker leads each of them
// through here, where it is counted and then goes its way, unless a test has put an answer in its
// place.
#ifndef TESTS_AEMESSAGING_FRAMEWORKCALLS_H
#define TESTS_AEMESSAGING_FRAMEWORKCALLS_H

#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <mach/mach.h>
#include <servers/bootstrap.h>

#include <atomic>
#include <functional>

namespace tests {

/// One call. Set `instead` before other threads make it.
template <typename Signature>
struct Call {
  std::atomic<int> count{0};
  std::function<Signature> instead;
};

/// Everything is counted and nothing answered while an object of this class exists; there is one.
struct FrameworkCalls {
  FrameworkCalls();
  ~FrameworkCalls();
  FrameworkCalls(const FrameworkCalls&) = delete;
  FrameworkCalls& operator=(const FrameworkCalls&) = delete;

  Call<OSErr(ProcessSerialNumber*)> getCurrentProcess;
  Call<kern_return_t(mach_port_t*)> getSpecialPort;
  Call<kern_return_t(mach_port_name_t*)> portAllocate;
  Call<kern_return_t(mach_port_name_t)> portDestroy;
  Call<kern_return_t(const char*, mach_port_t*)> lookUp;
  Call<kern_return_t(const char*, mach_port_t)> registerName;
  Call<CFMachPortRef()> machPortCreate;
  Call<mach_port_t(CFMachPortRef)> machPortGetPort;
  Call<CFRunLoopSourceRef()> createSource;
  Call<OSErr(AppleEvent*)> createAppleEvent;
  Call<OSErr(AEKeyword)> putAttribute;
  Call<OSErr(AEKeyword)> getAttribute;  // answers for itself, or 0 to go on
  Call<OSErr(AEKeyword)> putParam;
  Call<OSErr(const AppleEvent*, AppleEvent*, AESendMode, AESendPriority, SInt32, AEIdleUPP,
             AEFilterUPP)>
      send;
  Call<OSStatus(const AppleEvent*, AppleEvent*, AESendMode, SInt32)> sendMessage;
};

}  // namespace tests

#endif
