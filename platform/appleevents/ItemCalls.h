// Licence: MIT, see LICENSE.
// What the calls by index, by keyword and by attribute have in common: putting caller's data in and
// handing an item out.
#ifndef PLATFORM_APPLEEVENTS_ITEMCALLS_H
#define PLATFORM_APPLEEVENTS_ITEMCALLS_H

#include "platform/appleevents/Items.h"

namespace platform::appleevents {

/// Data on its way into a list, record or event: a caller's block, or a descriptor's. The data of a
/// descriptor that is itself changed by the call is copied first.
class Incoming final {
 public:
  Incoming(DescType type, const void* data, Size size);
  Incoming(const AEDesc* desc, const AEDesc* into);
  ~Incoming() { delete copy.dataHandle; }
  Incoming(const Incoming&) = delete;
  Incoming& operator=(const Incoming&) = delete;

  /// Whether it may be put: paramErr, memFullErr, or errAECorruptData for what is no list, record
  /// or event or would lie too deep.
  OSErr status() const { return state; }
  DescType type() const { return dataType; }
  Bytes data() const { return bytes; }

 private:
  void check();

  DescType dataType = typeNull;
  Bytes bytes;
  OSErr state = noErr;
  AEDesc copy = kNullDesc;
};

/// A caller's buffer for an item, and what it learns about it.
struct Outgoing {
  DescType desiredType;
  DescType* actualType;  // may be null, as the last
  void* data;
  Size maximumSize;
  Size* actualSize;
};

OSErr getItem(const Item& item, const Outgoing& to);
OSErr getItem(const Item& item, DescType desiredType, AEDesc* result);
/// Either result may be null.
OSErr describeItem(const Item& item, DescType* type, Size* size);

}  // namespace platform::appleevents

#endif
