// Licence: MIT, see LICENSE.
#include "platform/appleevents/ItemCalls.h"

#include "platform/appleevents/ByteOrder.h"
#include "platform/appleevents/Coercion.h"
#include "platform/appleevents/Validation.h"

namespace platform::appleevents {

Incoming::Incoming(DescType type, const void* data, Size size) : dataType(type) {
  if (!isBlock(data, size)) {
    state = paramErr;
    return;
  }
  bytes = blockOf(data, size);
  check();
}

Incoming::Incoming(const AEDesc* desc, const AEDesc* into) {
  if (desc == nullptr) {
    state = paramErr;
    return;
  }
  if (into != nullptr && desc->dataHandle != nullptr && desc->dataHandle == into->dataHandle) {
    state = AEDuplicateDesc(desc, &copy);
    if (state != noErr) return;
    desc = &copy;
  }
  dataType = desc->descriptorType;
  bytes = bytesOf(*desc);
  check();
}

void Incoming::check() {
  if (dataType == typeNull) bytes = {};
  if (!hasItems(dataType)) return;
  if (!isWellFormed(dataType, bytes, kMaxDepth - 1)) state = errAECorruptData;
}

OSErr getItem(const Item& item, const Outgoing& to) {
  if (!isBlock(to.data, to.maximumSize)) return paramErr;
  if (satisfies(item.type, to.desiredType)) {
    reorder(item.type, item.data,
            {static_cast<std::byte*>(to.data), static_cast<std::size_t>(to.maximumSize)});
    return describeItem(item, to.actualType, to.actualSize);
  }
  HeldDesc coerced;
  const OSErr status = getItem(item, to.desiredType, coerced.out());
  if (status != noErr) return status;
  if (to.actualType != nullptr) *to.actualType = coerced.get().descriptorType;
  if (to.actualSize != nullptr) *to.actualSize = AEGetDescDataSize(&coerced.get());
  return AEGetDescData(&coerced.get(), to.data, to.maximumSize);
}

OSErr getItem(const Item& item, DescType desiredType, AEDesc* result) {
  *result = kNullDesc;
  HeldDesc stored;
  const OSErr status = makeDesc(item, stored.out());
  if (status != noErr) return status;
  if (!satisfies(item.type, desiredType)) return AECoerceDesc(&stored.get(), desiredType, result);
  *result = stored.take();
  return noErr;
}

OSErr describeItem(const Item& item, DescType* type, Size* size) {
  if (type != nullptr) *type = item.type;
  if (size != nullptr) *size = static_cast<Size>(item.data.size());
  return noErr;
}

}  // namespace platform::appleevents
