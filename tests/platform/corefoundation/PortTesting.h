// Licence: MIT, see LICENSE.
// Ports whose call-backs are lambdas, in a name space of the test's own.
#ifndef TESTS_PLATFORM_COREFOUNDATION_PORTTESTING_H
#define TESTS_PLATFORM_COREFOUNDATION_PORTTESTING_H

#include <CoreFoundation/CFMachPort.h>
#include <gtest/gtest.h>
#include <mach/mach.h>

#include <functional>
#include <string>
#include <string_view>

#include "platform/mach/MessageBlock.h"
#include "platform/mach/PortSpace.h"
#include "tests/platform/corefoundation/RunLoopTesting.h"
#include "tests/support/PrivateRoot.h"

namespace tests {

inline constexpr mach_msg_id_t kTestMessage = 4711;

/// Sends text to a right; `replyPort` may be null.
inline kern_return_t sendText(mach_port_t to, std::string_view text,
                              mach_port_t replyPort = MACH_PORT_NULL,
                              mach_msg_id_t id = kTestMessage) {
  return platform::mach::send(to, replyPort, id, std::as_bytes(std::span(text.data(), text.size())),
                              platform::mach::Deadline::after(30'000'000'000));
}

/// The text of a message that a call-back was handed.
inline std::string textOf(void* message) {
  const auto* block = static_cast<const platform::mach::MessageBlock*>(message);
  return {static_cast<const char*>(block->data.address), block->data.size};
}

inline bool isReceiveRight(mach_port_t port) {
  mach_port_type_t type = 0;
  return mach_port_type(mach_task_self(), port, &type) == KERN_SUCCESS &&
         (type & MACH_PORT_TYPE_RECEIVE) != 0;
}

class PortTest : public RunLoopTest {
 private:
  PrivateRoot root;
};

/// A port with a source in the default mode of a loop; both go with it.
class TestPort final {
 public:
  using OnMessage = std::function<void(void* message, CFIndex size)>;

  explicit TestPort(CFRunLoopRef loop = CFRunLoopGetCurrent(), OnMessage action = {})
      : onMessage(std::move(action)) {
    CFMachPortContext context{0, this, nullptr, nullptr, nullptr};
    port = CFMachPortCreate(
        nullptr,
        [](CFMachPortRef, void* message, CFIndex size, void* info) {
          static_cast<TestPort*>(info)->onMessage(message, size);
        },
        &context, nullptr);
    source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
    CFRunLoopAddSource(loop, source, kCFRunLoopDefaultMode);
  }
  ~TestPort() {
    CFMachPortInvalidate(port);
    CFRelease(source);
    CFRelease(port);
  }
  TestPort(const TestPort&) = delete;
  TestPort& operator=(const TestPort&) = delete;

  operator CFMachPortRef() const { return port; }
  mach_port_t name() const { return CFMachPortGetPort(port); }
  CFRunLoopSourceRef runLoopSource() const { return source; }
  void send(std::string_view text = "message") const {
    EXPECT_EQ(sendText(name(), text), MACH_MSG_SUCCESS);
  }

  OnMessage onMessage;

 private:
  CFMachPortRef port = nullptr;
  CFRunLoopSourceRef source = nullptr;
};

}  // namespace tests

#endif
