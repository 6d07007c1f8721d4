// Licence: MIT, see LICENSE.
#include "tests/aemessaging/FrameworkCalls.h"

#include <cstdlib>

namespace {

std::atomic<tests::FrameworkCalls*> gCalls{nullptr};

// Counts the call; answers it with `instead`, if there is one, else with `real`.
template <typename Signature, typename Real, typename... Arguments>
auto lead(tests::Call<Signature> tests::FrameworkCalls::*member, Real real,
          Arguments... arguments) {
  tests::FrameworkCalls* calls = gCalls;
  if (calls == nullptr) return real();
  auto& call = calls->*member;
  ++call.count;
  return call.instead ? call.instead(arguments...) : real();
}

}  // namespace

namespace tests {

FrameworkCalls::FrameworkCalls() {
  if (gCalls.exchange(this) != nullptr) std::abort();
}

FrameworkCalls::~FrameworkCalls() { gCalls = nullptr; }

}  // namespace tests

using tests::FrameworkCalls;

extern "C" {

OSErr __real_GetCurrentProcess(ProcessSerialNumber* psn);
kern_return_t __real_task_get_special_port(task_t task, int which, mach_port_t* port);
kern_return_t __real_mach_port_allocate(task_t task, mach_port_right_t right,
                                        mach_port_name_t* name);
kern_return_t __real_mach_port_destroy(task_t task, mach_port_name_t name);
kern_return_t __real_bootstrap_look_up(mach_port_t bootstrap, const char* name, mach_port_t* port);
kern_return_t __real_bootstrap_register(mach_port_t bootstrap, const char* name, mach_port_t port);
CFMachPortRef __real_CFMachPortCreate(CFAllocatorRef allocator, CFMachPortCallBack callBack,
                                      CFMachPortContext* context, Boolean* shouldFreeInfo);
mach_port_t __real_CFMachPortGetPort(CFMachPortRef port);
CFRunLoopSourceRef __real_CFMachPortCreateRunLoopSource(CFAllocatorRef allocator,
                                                        CFMachPortRef port, CFIndex order);
OSErr __real_AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID,
                                const AEAddressDesc* target, AEReturnID returnID,
                                AETransactionID transactionID, AppleEvent* result);
OSErr __real_AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type,
                               const void* data, Size size);
OSErr __real_AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                               DescType* actualType, void* data, Size maximumSize,
                               Size* actualSize);
OSErr __real_AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                           Size size);
OSErr __real_AESend(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                    AESendPriority priority, SInt32 timeOutInTicks, AEIdleUPP idle,
                    AEFilterUPP filter);
OSStatus __real_AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                              SInt32 timeOutInTicks);

OSErr __wrap_GetCurrentProcess(ProcessSerialNumber* psn) {
  return lead(
      &FrameworkCalls::getCurrentProcess, [&] { return __real_GetCurrentProcess(psn); }, psn);
}

kern_return_t __wrap_task_get_special_port(task_t task, int which, mach_port_t* port) {
  return lead(
      &FrameworkCalls::getSpecialPort,
      [&] { return __real_task_get_special_port(task, which, port); }, port);
}

kern_return_t __wrap_mach_port_allocate(task_t task, mach_port_right_t right,
                                        mach_port_name_t* name) {
  return lead(
      &FrameworkCalls::portAllocate, [&] { return __real_mach_port_allocate(task, right, name); },
      name);
}

kern_return_t __wrap_mach_port_destroy(task_t task, mach_port_name_t name) {
  return lead(
      &FrameworkCalls::portDestroy, [&] { return __real_mach_port_destroy(task, name); }, name);
}

kern_return_t __wrap_bootstrap_look_up(mach_port_t bootstrap, const char* name, mach_port_t* port) {
  return lead(
      &FrameworkCalls::lookUp, [&] { return __real_bootstrap_look_up(bootstrap, name, port); },
      name, port);
}

kern_return_t __wrap_bootstrap_register(mach_port_t bootstrap, const char* name, mach_port_t port) {
  return lead(
      &FrameworkCalls::registerName,
      [&] { return __real_bootstrap_register(bootstrap, name, port); }, name, port);
}

CFMachPortRef __wrap_CFMachPortCreate(CFAllocatorRef allocator, CFMachPortCallBack callBack,
                                      CFMachPortContext* context, Boolean* shouldFreeInfo) {
  return lead(&FrameworkCalls::machPortCreate, [&] {
    return __real_CFMachPortCreate(allocator, callBack, context, shouldFreeInfo);
  });
}

mach_port_t __wrap_CFMachPortGetPort(CFMachPortRef port) {
  return lead(
      &FrameworkCalls::machPortGetPort, [&] { return __real_CFMachPortGetPort(port); }, port);
}

CFRunLoopSourceRef __wrap_CFMachPortCreateRunLoopSource(CFAllocatorRef allocator,
                                                        CFMachPortRef port, CFIndex order) {
  return lead(&FrameworkCalls::createSource,
              [&] { return __real_CFMachPortCreateRunLoopSource(allocator, port, order); });
}

OSErr __wrap_AECreateAppleEvent(AEEventClass eventClass, AEEventID eventID,
                                const AEAddressDesc* target, AEReturnID returnID,
                                AETransactionID transactionID, AppleEvent* result) {
  return lead(
      &FrameworkCalls::createAppleEvent,
      [&] {
        return __real_AECreateAppleEvent(eventClass, eventID, target, returnID, transactionID,
                                         result);
      },
      result);
}

OSErr __wrap_AEPutAttributePtr(AppleEvent* event, AEKeyword keyword, DescType type,
                               const void* data, Size size) {
  return lead(
      &FrameworkCalls::putAttribute,
      [&] { return __real_AEPutAttributePtr(event, keyword, type, data, size); }, keyword);
}

OSErr __wrap_AEGetAttributePtr(const AppleEvent* event, AEKeyword keyword, DescType desiredType,
                               DescType* actualType, void* data, Size maximumSize,
                               Size* actualSize) {
  const tests::FrameworkCalls* calls = gCalls;
  if (calls != nullptr && calls->getAttribute.instead) {
    const OSErr answer = calls->getAttribute.instead(keyword);
    if (answer != noErr) return answer;
  }
  return __real_AEGetAttributePtr(event, keyword, desiredType, actualType, data, maximumSize,
                                  actualSize);
}

OSErr __wrap_AEPutParamPtr(AppleEvent* event, AEKeyword keyword, DescType type, const void* data,
                           Size size) {
  return lead(
      &FrameworkCalls::putParam,
      [&] { return __real_AEPutParamPtr(event, keyword, type, data, size); }, keyword);
}

OSErr __wrap_AESend(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                    AESendPriority priority, SInt32 timeOutInTicks, AEIdleUPP idle,
                    AEFilterUPP filter) {
  return lead(
      &FrameworkCalls::send,
      [&] { return __real_AESend(event, reply, sendMode, priority, timeOutInTicks, idle, filter); },
      event, reply, sendMode, priority, timeOutInTicks, idle, filter);
}

OSStatus __wrap_AESendMessage(const AppleEvent* event, AppleEvent* reply, AESendMode sendMode,
                              SInt32 timeOutInTicks) {
  return lead(
      &FrameworkCalls::sendMessage,
      [&] { return __real_AESendMessage(event, reply, sendMode, timeOutInTicks); }, event, reply,
      sendMode, timeOutInTicks);
}

}  // extern "C"
