// Licence: MIT, see LICENSE.
// What fills the process's event queue: a source in the default mode of the main run loop that
// takes the messages of the private port in and does nothing else. Main thread.
#ifndef PLATFORM_EVENTS_EVENTSOURCE_H
#define PLATFORM_EVENTS_EVENTSOURCE_H

#include <CoreFoundation/CFMachPort.h>
#include <CoreFoundation/CFRunLoop.h>

#include <optional>

#include "platform/corefoundation/CFRuntime.h"
#include "platform/events/EventQueue.h"

namespace platform::events {

class EventSource final {
 public:
  /// The process's own. It has checked the process in, if that is possible.
  static EventSource& prepared();

  EventSource(const EventSource&) = delete;
  EventSource& operator=(const EventSource&) = delete;

  EventQueue& events() { return queue; }

  /// Takes in what waits at the port, as far as the queue has room.
  void drain();

  /// Hands the event that a record describes, or the oldest, to its handler, and sends the reply.
  OSStatus process(const EventRecord& record);
  OSStatus processOldest();
  /// Takes the oldest event out of the queue for the process() that is to come.
  void setAsideOldest();

 private:
  EventSource() = default;
  void attach();
  void receive(mach::Message message);
  void listenWhileThereIsRoom();
  template <typename Taking>
  auto takeOut(Taking taking);
  static void arrived(CFMachPortRef port, void* message, CFIndex size, void* info);

  EventQueue queue;
  corefoundation::Held<CFMachPortRef> port;
  corefoundation::Held<CFRunLoopSourceRef> source;
};

}  // namespace platform::events

#endif
