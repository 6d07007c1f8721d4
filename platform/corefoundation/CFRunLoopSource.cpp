// Licence: MIT, see LICENSE.
#include <CoreFoundation/CFRunLoop.h>

#include "platform/corefoundation/RunLoop.h"
#include "platform/corefoundation/RunLoopSource.h"
#include "platform/mach/MessageBlock.h"
#include "platform/mach/PortSpace.h"

namespace platform::corefoundation {

namespace {

using mach::Deadline;
using mach::MessageBlock;

// Sends what a version-1 source answered, and frees it. Nobody waits for a peer that does not read:
// an answer that cannot go at once is dropped with the right to answer.
void sendAnswer(void* answer, CFAllocatorRef allocator) {
  if (auto message = mach::takeFromBlock(static_cast<mach_msg_header_t*>(answer))) {
    if (mach::send(message->reply, MACH_PORT_NULL, message->id, message->body.bytes(),
                   Deadline::immediate()) != MACH_MSG_SUCCESS) {
      mach_port_deallocate(mach_task_self(), message->reply);
    }
  }
  CFAllocatorDeallocate(allocator, answer);
}

template <typename Source, typename Context>
CFRunLoopSourceRef createSource(CFAllocatorRef allocator, CFIndex order, const Context& context) {
  InfoReference info = makeContextInfo();
  if (info == nullptr) return nullptr;
  Source* source = create<Source>(allocator, context, order, info);
  if (source != nullptr) info->adopt(&context);
  return referenceTo<CFRunLoopSourceRef>(source);
}

}  // namespace

RunLoopSource::RunLoopSource(CFIndex version, CFIndex order, InfoReference info)
    : RunLoopItem(Kind::kSource, order, std::move(info)), contextVersion(version) {}

CFTypeID RunLoopSource::type() {
  static const CFTypeID id = registerType("CFRunLoopSource");
  return id;
}

bool RunLoopSource::equals(const Object& other) const {
  const auto& source = static_cast<const RunLoopSource&>(other);
  return source.version() == version() && source.order() == order() && isAlike(source);
}

CFHashCode RunLoopSource::hash() const { return hashOfInfo(nullptr); }

bool RunLoopSource::haveEqualInfo(const RunLoopSource& other, Equal function) const {
  if (function != nullptr) return function(infoValue(), other.infoValue());
  return infoValue() == other.infoValue();
}

CFHashCode RunLoopSource::hashOfInfo(Hash function) const {
  return function != nullptr ? function(infoValue()) : reinterpret_cast<CFHashCode>(infoValue());
}

SignalledSource::SignalledSource(const CFRunLoopSourceContext& context, CFIndex order,
                                 InfoReference info)
    : RunLoopSource(0, order, std::move(info)), callBacks(context) {}

bool SignalledSource::isAlike(const RunLoopSource& other) const {
  const auto& source = static_cast<const SignalledSource&>(other);
  return source.callBacks.perform == callBacks.perform && haveEqualInfo(source, callBacks.equal);
}

void SignalledSource::copyContext(CFRunLoopSourceContext* into) const {
  *into = callBacks;
  into->info = infoValue();
}

void SignalledSource::joinedMode(RunLoop& loop, CFStringRef mode) {
  if (callBacks.schedule == nullptr) return;
  callBacks.schedule(infoValue(), referenceTo<CFRunLoopRef>(&loop), mode);
}

void SignalledSource::leftMode(RunLoop& loop, CFStringRef mode) {
  if (callBacks.cancel == nullptr) return;
  callBacks.cancel(infoValue(), referenceTo<CFRunLoopRef>(&loop), mode);
}

PortSource::PortSource(const CFRunLoopSourceContext1& context, CFIndex order, InfoReference info)
    : RunLoopSource(1, order, std::move(info)), callBacks(context) {}

bool PortSource::isAlike(const RunLoopSource& other) const {
  const auto& source = static_cast<const PortSource&>(other);
  return source.callBacks.perform == callBacks.perform && haveEqualInfo(source, callBacks.equal);
}

void PortSource::copyContext(CFRunLoopSourceContext* into) const {
  auto* context = reinterpret_cast<CFRunLoopSourceContext1*>(into);
  *context = callBacks;
  context->info = infoValue();
}

bool PortSource::serve(mach_port_name_t port) {
  mach::Message message;
  if (mach::receive(port, message, Deadline::immediate()) != MACH_MSG_SUCCESS) return false;
  MessageBlock block = mach::makeBlock(std::move(message));
  void* answer = callBacks.perform(&block, sizeof block, allocator(), infoValue());
  mach::destroyBlock(block);
  if (answer != nullptr) sendAnswer(answer, allocator());
  return true;
}

}  // namespace platform::corefoundation

using namespace platform::corefoundation;

CFTypeID CFRunLoopSourceGetTypeID() { return RunLoopSource::type(); }

CFRunLoopSourceRef CFRunLoopSourceCreate(CFAllocatorRef allocator, CFIndex order,
                                         CFRunLoopSourceContext* context) {
  if (context == nullptr) return nullptr;
  if (context->version == 0 && context->perform != nullptr) {
    return createSource<SignalledSource>(allocator, order, *context);
  }
  if (context->version != 1) return nullptr;
  const auto& portContext = *reinterpret_cast<const CFRunLoopSourceContext1*>(context);
  if (portContext.getPort == nullptr || portContext.perform == nullptr) return nullptr;
  return createSource<PortSource>(allocator, order, portContext);
}

CFIndex CFRunLoopSourceGetOrder(CFRunLoopSourceRef reference) {
  const auto* source = checkedObject<RunLoopSource>(reference);
  return source != nullptr ? source->order() : 0;
}

void CFRunLoopSourceInvalidate(CFRunLoopSourceRef reference) {
  if (auto* source = checkedObject<RunLoopSource>(reference)) source->invalidate();
}

Boolean CFRunLoopSourceIsValid(CFRunLoopSourceRef reference) {
  const auto* source = checkedObject<RunLoopSource>(reference);
  return source != nullptr && source->isValid();
}

void CFRunLoopSourceGetContext(CFRunLoopSourceRef reference, CFRunLoopSourceContext* context) {
  const auto* source = checkedObject<RunLoopSource>(reference);
  if (source == nullptr || context == nullptr || context->version != source->version()) return;
  source->copyContext(context);
}

void CFRunLoopSourceSignal(CFRunLoopSourceRef reference) {
  if (auto* source = checkedObject<RunLoopSource>(reference)) source->signal();
}
