// Licence: MIT, see LICENSE.
#include "tests/platform/events/EventFixture.h"

#include <CarbonCore/MacErrors.h>
#include <HIServices/Processes.h>
#include <HIToolbox/AEInteraction.h>
#include <mach/mach.h>

#include <map>
#include <memory>

#include "platform/events/Interaction.h"
#include "platform/mach/PortSpace.h"

namespace tests {
namespace {

using Handlers = std::map<SInt32, std::function<OSErr()>>;

Handlers& handlers() {
  static Handlers installed;
  return installed;
}

OSErr callHandler(const AppleEvent*, AppleEvent*, SInt32 refcon) { return handlers().at(refcon)(); }

void fire(CFRunLoopTimerRef, void* info) {
  const std::unique_ptr<std::function<void()>> call(static_cast<std::function<void()>*>(info));
  (*call)();
}

void receive(CFMachPortRef, void*, CFIndex, void* info) {
  (*static_cast<std::function<void()>*>(info))();
}

}  // namespace

AEEventID idOf(const EventRecord& record) {
  return static_cast<AEEventID>(static_cast<UInt16>(record.where.v)) << 16 |
         static_cast<UInt16>(record.where.h);
}

AppleEvent makeEvent(AEEventID eventID, AEEventClass eventClass) {
  ProcessSerialNumber self = {0, kNoProcess};
  EXPECT_EQ(GetCurrentProcess(&self), noErr);
  AEAddressDesc target;
  EXPECT_EQ(AECreateDesc(typeProcessSerialNumber, &self, sizeof self, &target), noErr);
  AppleEvent event;
  EXPECT_EQ(AECreateAppleEvent(eventClass, eventID, &target, kAutoGenerateReturnID,
                               kAnyTransactionID, &event),
            noErr);
  AEDisposeDesc(&target);
  return event;
}

void post(AEEventID eventID, AEEventClass eventClass) {
  AppleEvent event = makeEvent(eventID, eventClass);
  EXPECT_EQ(AESendMessage(&event, nullptr, kAENoReply, kAEDefaultTimeout), noErr);
  AEDisposeDesc(&event);
}

void later(std::function<void()> call, double seconds) {
  CFRunLoopTimerContext context = {0, new std::function<void()>(std::move(call)), nullptr, nullptr,
                                   nullptr};
  const CFRunLoopTimerRef timer =
      CFRunLoopTimerCreate(nullptr, CFAbsoluteTimeGetCurrent() + seconds, 0, 0, 0, &fire, &context);
  CFRunLoopAddTimer(CFRunLoopGetMain(), timer, kCFRunLoopDefaultMode);
  CFRelease(timer);
}

TestPort::TestPort(std::function<void()> onMessage) : call(std::move(onMessage)) {
  CFMachPortContext context = {0, &call, nullptr, nullptr, nullptr};
  port = CFMachPortCreate(nullptr, &receive, &context, nullptr);
  const CFRunLoopSourceRef source = CFMachPortCreateRunLoopSource(nullptr, port, 0);
  CFRunLoopAddSource(CFRunLoopGetMain(), source, kCFRunLoopDefaultMode);
  CFRelease(source);
}

TestPort::~TestPort() {
  CFMachPortInvalidate(port);
  CFRelease(port);
}

void TestPort::send() const {
  using namespace platform::mach;
  EXPECT_EQ(
      platform::mach::send(CFMachPortGetPort(port), MACH_PORT_NULL, 1, {}, Deadline::immediate()),
      KERN_SUCCESS);
}

void runUntil(const std::function<bool()>& holds) {
  const CFAbsoluteTime end = CFAbsoluteTimeGetCurrent() + kPatienceSeconds;
  while (!holds()) {
    const CFTimeInterval left = end - CFAbsoluteTimeGetCurrent();
    if (left <= 0) {
      ADD_FAILURE() << "it never came";
      return;
    }
    CFRunLoopRunInMode(kCFRunLoopDefaultMode, left, true);
  }
}

EventFixture::EventFixture() {
  EventRecord record;
  EventAvail(0, &record);
  // What an earlier test's quit has signalled.
  CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0, true);
}

EventFixture::~EventFixture() {
  for (const auto& [eventClass, eventID] : installed) {
    AERemoveEventHandler(eventClass, eventID, nullptr, false);
  }
  handlers().clear();
  takeAll();
  const platform::events::Presentation last;
  AESetInteractionAllowed(kAEInteractWithLocal);
}

void EventFixture::handle(AEEventID eventID, std::function<OSErr()> handler,
                          AEEventClass eventClass) {
  const auto refcon = static_cast<SInt32>(handlers().size());
  handlers()[refcon] = std::move(handler);
  EXPECT_EQ(AEInstallEventHandler(eventClass, eventID, &callHandler, refcon, false), noErr);
  installed.emplace_back(eventClass, eventID);
}

std::vector<AEEventID> EventFixture::takeAll() {
  std::vector<AEEventID> taken;
  EventRecord record;
  while (WaitNextEvent(everyEvent, &record, 0, nullptr)) taken.push_back(idOf(record));
  return taken;
}

}  // namespace tests
