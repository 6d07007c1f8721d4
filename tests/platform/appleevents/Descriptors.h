// Licence: MIT, see LICENSE.
// Descriptors for tests: owners, makers and readers of values.
#ifndef TESTS_PLATFORM_APPLEEVENTS_DESCRIPTORS_H
#define TESTS_PLATFORM_APPLEEVENTS_DESCRIPTORS_H

#include <AE/AppleEvents.h>

#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/appleevents/Storage.h"

namespace tests {

/// Owns a descriptor.
class Desc final {
 public:
  Desc() = default;
  ~Desc() { AEDisposeDesc(&desc); }
  Desc(const Desc&) = delete;
  Desc& operator=(const Desc&) = delete;
  Desc(Desc&& other) noexcept : desc(other.desc) { AEInitializeDesc(&other.desc); }

  AEDesc* operator&() { return &desc; }
  const AEDesc* operator&() const { return &desc; }
  const AEDesc* get() const { return &desc; }
  DescType type() const { return desc.descriptorType; }
  Size size() const { return AEGetDescDataSize(&desc); }
  bool isNull() const { return desc.descriptorType == typeNull && desc.dataHandle == nullptr; }

 private:
  AEDesc desc = {typeNull, nullptr};
};

template <typename T>
Desc makeValue(DescType type, const T& value) {
  Desc desc;
  AECreateDesc(type, &value, sizeof value, &desc);
  return desc;
}

inline Desc makeText(std::string_view text) {
  Desc desc;
  AECreateDesc(typeChar, text.data(), static_cast<Size>(text.size()), &desc);
  return desc;
}

inline Desc makeList() {
  Desc desc;
  AECreateList(nullptr, 0, false, &desc);
  return desc;
}

inline Desc makeRecord() {
  Desc desc;
  AECreateList(nullptr, 0, true, &desc);
  return desc;
}

/// An event without a target, of return ID 7 and transaction 9.
inline Desc makeEvent(AEEventClass eventClass = 'test', AEEventID eventID = 'case') {
  Desc desc;
  AECreateAppleEvent(eventClass, eventID, nullptr, 7, 9, &desc);
  return desc;
}

/// The one value of a type that a descriptor holds.
template <typename T>
std::optional<T> valueOf(const Desc& desc) {
  T value;
  if (desc.size() != static_cast<Size>(sizeof value)) return std::nullopt;
  if (AEGetDescData(&desc, &value, sizeof value) != noErr) return std::nullopt;
  return value;
}

/// How many items a list or record has; -1 if that cannot be told.
inline SInt32 countOf(const Desc& list) {
  SInt32 count = -1;
  AECountItems(&list, &count);
  return count;
}

inline std::string textOf(const Desc& desc) {
  std::string text(static_cast<std::size_t>(desc.size()), '\0');
  AEGetDescData(&desc, text.data(), desc.size());
  return text;
}

inline std::vector<std::byte> bytesOf(const Desc& desc) {
  const platform::mach::Bytes bytes = platform::appleevents::bytesOf(*&desc);
  return {bytes.begin(), bytes.end()};
}

/// Reads a parameter that is a number of the type; nothing if it cannot be read.
template <typename T>
std::optional<T> parameter(const Desc& event, AEKeyword keyword, DescType type) {
  T value;
  Size size = 0;
  const OSErr status = AEGetParamPtr(&event, keyword, type, nullptr, &value, sizeof value, &size);
  if (status != noErr || size != static_cast<Size>(sizeof value)) return std::nullopt;
  return value;
}

template <typename T>
std::optional<T> attribute(const Desc& event, AEKeyword keyword, DescType type) {
  T value;
  Size size = 0;
  const OSErr status =
      AEGetAttributePtr(&event, keyword, type, nullptr, &value, sizeof value, &size);
  if (status != noErr || size != static_cast<Size>(sizeof value)) return std::nullopt;
  return value;
}

template <typename T>
OSErr putParameter(Desc& event, AEKeyword keyword, DescType type, const T& value) {
  return AEPutParamPtr(&event, keyword, type, &value, sizeof value);
}

}  // namespace tests

#endif
