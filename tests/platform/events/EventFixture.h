// Licence: MIT, see LICENSE.
// What the tests of events share: a name space of their own, an empty queue, handlers that write
// down what they were called for, and events from this process to its own queue.
#ifndef TESTS_PLATFORM_EVENTS_EVENTFIXTURE_H
#define TESTS_PLATFORM_EVENTS_EVENTFIXTURE_H

#include <AE/AEMach.h>
#include <AE/AppleEvents.h>
#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>
#include <HIToolbox/Events.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/PrivateRoot.h"

namespace tests {

inline constexpr AEEventClass kTestClass = 'TsT1';
/// No wait of a test that succeeds lasts as long as this.
inline constexpr double kPatienceSeconds = 60;

/// An event without parameters for this process, by its number and not as a direct call.
AppleEvent makeEvent(AEEventID eventID, AEEventClass eventClass = kTestClass);

/// Sends an event to this process's private port.
void post(AEEventID eventID, AEEventClass eventClass = kTestClass);

/// Calls a function once on the main run loop.
void later(std::function<void()> call, double seconds = 0);

/// A port in the main run loop that calls a function for each message.
class TestPort final {
 public:
  explicit TestPort(std::function<void()> onMessage);
  ~TestPort();
  TestPort(const TestPort&) = delete;
  TestPort& operator=(const TestPort&) = delete;

  void send() const;

 private:
  std::function<void()> call;
  CFMachPortRef port;
};

/// Runs the main run loop in the default mode until something holds; fails the test if it never
/// does.
void runUntil(const std::function<bool()>& holds);

class EventFixture : public testing::Test {
 protected:
  EventFixture();
  /// Removes the handlers, empties the queue and gives up the turn.
  ~EventFixture() override;

  /// Has a function handle events of the test's class.
  void handle(AEEventID eventID, std::function<OSErr()> handler,
              AEEventClass eventClass = kTestClass);

  /// The IDs of the waiting events in their order; they are taken.
  static std::vector<AEEventID> takeAll();

  PrivateRoot root;
  std::vector<std::string> log;

 private:
  std::vector<std::pair<AEEventClass, AEEventID>> installed;
};

AEEventID idOf(const EventRecord& record);

}  // namespace tests

#endif
