// Licence: MIT, see LICENSE.
// Events that arrive as messages.
#include <new>
#include <span>
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

OSErr makeReply(const AppleEvent& event, std::shared_ptr<ReplyRight> right, AppleEvent* reply) {
  const mach_port_name_t name = right->name();
  const OSErr status = createReply(event, typeMachPort, std::as_bytes(std::span(&name, 1)), reply);
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
  const bool hasFront = startsWithFront(message.body.bytes());
  const Front front = hasFront ? Front::kThere : Front::kUnknown;
  if (message.id != mach::kAppleEventMessageID || !isMessage(message.body.bytes(), front)) {
    return errAECorruptData;
  }
  std::unique_ptr<Storage> storage = Storage::adopt(std::move(message.body));
  if (storage == nullptr) return memFullErr;
  if (hasFront) storage->setHasFront();
  forgetPorts(typeAppleEvent, storage->writable(), front);
  writeArrival(storage->writable(), message.receiver, message.isOwn, front);
  HeldDesc arrived;
  *arrived.out() = {typeAppleEvent, storage.release()};
  OSErr status = trackReads(arrived.get());
  if (status == noErr && right != nullptr && reply != nullptr) {
    status = makeReply(arrived.get(), std::move(right), reply);
  }
  if (status == noErr) *event = arrived.take();
  return status;
}

}  // namespace platform::appleevents
