// Licence: MIT, see LICENSE.
// Events that arrive as messages.
#include <new>
#include <utility>

#include "platform/appleevents/Attributes.h"
#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Dispatch.h"
#include "platform/appleevents/Validation.h"
#include "platform/mach/MessageBlock.h"

namespace platform::appleevents {
namespace {

/// A code in a body that need not be well-formed.
std::optional<UInt32> peekCode(mach::Bytes body, const Region& attributes, AEKeyword keyword) {
  const std::optional<Item> item = findItem(body, attributes, keyword);
  if (!item || item->type != typeType || item->data.size() != kWord) return std::nullopt;
  return loadWord(item->data.data());
}

/// Writes what only the receiver knows: where the event arrived, and that it came from elsewhere
/// unless it says that it is this process's own.
OSErr markArrival(AppleEvent& event, mach_port_name_t receiver) {
  forgetPorts(typeAppleEvent, event.dataHandle->writable());
  DescType addressType = typeNull;
  OSErr status = AESizeOfAttribute(&event, keyAddressAttr, &addressType, nullptr);
  if (status == noErr && addressType == typeMachPort) {
    status = putAttribute(event, keyAddressAttr, typeMachPort, receiver);
  }
  const auto source = attribute<AEEventSource>(event, keyEventSourceAttr, typeSInt16);
  if (status == noErr && source != AEEventSource{kAESameProcess}) {
    status = putAttribute(event, keyEventSourceAttr, typeSInt16, AEEventSource{kAELocalProcess});
  }
  return status;
}

OSErr makeReply(const AppleEvent& event, std::shared_ptr<ReplyRight> right, AppleEvent* reply) {
  const mach_port_name_t name = right->name();
  HeldDesc target;
  OSErr status = AECreateDesc(typeMachPort, &name, sizeof name, target.out());
  if (status == noErr) status = createReply(event, target.get(), reply);
  if (status == noErr) reply->dataHandle->replyRight = std::move(right);
  return status;
}

std::shared_ptr<ReplyRight> holdRight(mach_port_name_t name) {
  try {
    return std::make_shared<ReplyRight>(name);
  } catch (const std::bad_alloc&) {
    mach_port_deallocate(mach_task_self(), name);
    return nullptr;
  }
}

}  // namespace

std::optional<EventKind> peekKind(mach::Bytes body) {
  const std::optional<Region> attributes = findRegion(typeAppleEvent, body, Part::kAttributes);
  if (!attributes) return std::nullopt;
  const auto eventClass = peekCode(body, *attributes, keyEventClassAttr);
  const auto eventID = peekCode(body, *attributes, keyEventIDAttr);
  if (!eventClass || !eventID) return std::nullopt;
  return EventKind{*eventClass, *eventID};
}

OSStatus decodeMessage(mach::Message message, AppleEvent* event, AppleEvent* reply) {
  *event = kNullDesc;
  if (reply != nullptr) *reply = kNullDesc;
  std::shared_ptr<ReplyRight> right;
  if (message.reply != MACH_PORT_NULL) {
    right = holdRight(message.reply);
    if (right == nullptr) return memFullErr;
  }
  if (message.id != mach::kAppleEventMessageID || !isMessage(message.body.bytes())) {
    return errAECorruptData;
  }
  std::unique_ptr<Storage> storage = Storage::adopt(std::move(message.body));
  if (storage == nullptr) return memFullErr;
  HeldDesc arrived;
  *arrived.out() = {typeAppleEvent, storage.release()};
  OSErr status = markArrival(*arrived.out(), message.receiver);
  if (status == noErr) status = trackReads(arrived.get());
  if (status == noErr && right != nullptr && reply != nullptr) {
    status = makeReply(arrived.get(), std::move(right), reply);
  }
  if (status == noErr) *event = arrived.take();
  return status;
}

}  // namespace platform::appleevents
