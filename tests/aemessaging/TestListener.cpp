// Licence: MIT, see LICENSE.
#include "tests/aemessaging/TestListener.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <iterator>
#include <thread>

namespace tests {

SInt32 ignoreEvent(UInt32, UInt32, const AEDesc*, AEDesc*, void*) { return 0; }

mach_port_type_t rightsOf(mach_port_t port) {
  mach_port_type_t type = MACH_PORT_TYPE_NONE;
  return mach_port_type(mach_task_self(), port, &type) == KERN_SUCCESS ? type : MACH_PORT_TYPE_NONE;
}

mach_port_urefs_t sendRightsOf(mach_port_t port) {
  mach_port_urefs_t count = 0;
  mach_port_get_refs(mach_task_self(), port, MACH_PORT_RIGHT_SEND, &count);
  return count;
}

mach_port_t portBehind(const char* name) {
  mach_port_t bootstrap = MACH_PORT_NULL;
  task_get_special_port(mach_task_self(), TASK_BOOTSTRAP_PORT, &bootstrap);
  mach_port_t port = MACH_PORT_NULL;
  if (bootstrap_look_up(bootstrap, name, &port) != BOOTSTRAP_SUCCESS) return MACH_PORT_NULL;
  mach_port_deallocate(mach_task_self(), port);
  return port;
}

std::ptrdiff_t openDescriptors() {
  return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
}

OtherPort::OtherPort(const char* name) {
  EXPECT_EQ(mach_port_allocate(mach_task_self(), MACH_PORT_RIGHT_RECEIVE, &port), KERN_SUCCESS);
  if (name == nullptr) return;
  mach_port_t bootstrap = MACH_PORT_NULL;
  task_get_special_port(mach_task_self(), TASK_BOOTSTRAP_PORT, &bootstrap);
  EXPECT_EQ(bootstrap_register(bootstrap, name, port), BOOTSTRAP_SUCCESS);
}

OtherPort::~OtherPort() { mach_port_destroy(mach_task_self(), port); }

bool whileServing(const std::function<void()>& work) {
  CFRunLoopRef runLoop = CFRunLoopGetCurrent();
  std::thread worker([&] {
    work();
    CFRunLoopStop(runLoop);
  });
  // A stop that comes before the run begins is remembered, so that exactly one run ends by it.
  const SInt32 ending = CFRunLoopRunInMode(kCFRunLoopDefaultMode, 60, false);
  worker.join();
  return ending == kCFRunLoopRunStopped;
}

}  // namespace tests
