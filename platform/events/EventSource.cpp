// Licence: MIT, see LICENSE.
#include "platform/events/EventSource.h"

#include <CarbonCore/MacErrors.h>

#include <new>

#include "platform/appleevents/Dispatch.h"
#include "platform/host/Ticks.h"
#include "platform/mach/MessageBlock.h"
#include "platform/processes/ProcessTable.h"

namespace platform::events {

EventSource& EventSource::prepared() {
  static EventSource& instance = *new EventSource;  // call-backs may come while the process exits
  ProcessSerialNumber self;
  if (processes::checkIn(self) == noErr) instance.attach();
  return instance;
}

void EventSource::attach() {
  const mach_port_name_t name = processes::privatePort();
  if (port && CFMachPortIsValid(port.get()) && CFMachPortGetPort(port.get()) == name) return;
  CFMachPortContext context = {0, this, nullptr, nullptr, nullptr};
  port = corefoundation::Held<CFMachPortRef>(
      CFMachPortCreateWithPort(nullptr, name, &EventSource::arrived, &context, nullptr));
  source = corefoundation::Held<CFRunLoopSourceRef>(
      port ? CFMachPortCreateRunLoopSource(nullptr, port.get(), 0) : nullptr);
  listenWhileThereIsRoom();
}

void EventSource::arrived(CFMachPortRef, void* message, CFIndex, void* info) {
  try {
    std::optional<mach::Message> taken =
        mach::takeFromBlock(static_cast<mach_msg_header_t*>(message));
    if (taken) static_cast<EventSource*>(info)->receive(std::move(*taken));
  } catch (const std::bad_alloc&) {
    // An event that there is no room for is lost; its sender learns that nobody will answer.
  }
}

void EventSource::receive(mach::Message message) {
  queue.append(std::move(message), host::ticksAt(host::monotonicNow()));
  if (queue.isFull()) listenWhileThereIsRoom();
}

// A source that is left in the loop without being served would keep the loop from sleeping.
void EventSource::listenWhileThereIsRoom() {
  if (!source) return;
  if (queue.isFull()) {
    CFRunLoopRemoveSource(CFRunLoopGetMain(), source.get(), kCFRunLoopDefaultMode);
  } else {
    CFRunLoopAddSource(CFRunLoopGetMain(), source.get(), kCFRunLoopDefaultMode);
  }
}

void EventSource::drain() {
  if (!port) return;
  mach::Message message;
  while (!queue.isFull() && mach::receive(CFMachPortGetPort(port.get()), message,
                                          host::Deadline::immediate()) == KERN_SUCCESS) {
    receive(std::move(message));
  }
}

/// Has the queue give something up, and listens again if it was full.
template <typename Taking>
auto EventSource::takeOut(Taking taking) {
  const bool wasFull = queue.isFull();
  auto taken = taking(queue);
  if (wasFull) listenWhileThereIsRoom();
  return taken;
}

OSStatus EventSource::process(const EventRecord& record) {
  auto message = takeOut([&](EventQueue& events) { return events.take(record); });
  return message ? appleevents::processMessage(message->take()) : OSStatus{errAENotAppleEvent};
}

OSStatus EventSource::processOldest() {
  auto message = takeOut([](EventQueue& events) { return events.takeOldest(); });
  return message ? appleevents::processMessage(message->take()) : OSStatus{errAENotAppleEvent};
}

void EventSource::setAsideOldest() {
  takeOut([](EventQueue& events) {
    events.setAsideOldest();
    return true;
  });
}

}  // namespace platform::events
